// SPDX-License-Identifier: MIT
#include "client/terminal/Console.h"

#include "client/terminal/TerminalText.h"
#include "lab/notation/PrintableText.h"

#include <QByteArray>
#include <QtGlobal>

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace client {

using namespace lab;

namespace {

constexpr int progressPeriodMs = 200;

struct TerminalSize {
    int rows = 1;
    int columns = 80;
};

TerminalSize terminalSize()
{
    winsize size = {};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col < 2)
        return {};
    return {qMax(1, int(size.ws_row)), int(size.ws_col)};
}

/// A message may have several lines of its own.
QByteArray shownLines(const QString &text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString &line : lines)
        line = printable(line);
    return lines.join(QLatin1Char('\n')).toLocal8Bit();
}

void showDiagnostics(QtMsgType, const QMessageLogContext &, const QString &text)
{
    std::fprintf(stderr, "%s\n", shownLines(text).constData());
}

void dropDiagnostics(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    if (type == QtFatalMsg)
        Console::instance().error(text);
}

} // namespace

Console &Console::instance()
{
    static Console console;
    return console;
}

Console::Console() : _isTerminal(isatty(STDERR_FILENO) == 1)
{
}

void Console::setVerbosity(Verbosity verbosity)
{
    _verbosity = verbosity;
    qInstallMessageHandler(verbosity == Verbosity::Verbose ? showDiagnostics : dropDiagnostics);
}

void Console::error(const QString &text)
{
    write(QStringLiteral("nimbrelle: %1").arg(text));
}

void Console::complaint(const QString &text)
{
    write(text);
}

void Console::note(const QString &text)
{
    if (_verbosity != Verbosity::Quiet)
        write(text);
}

void Console::progress(const std::function<QStringList(int room)> &makeLines)
{
    if (!_isTerminal || _verbosity == Verbosity::Quiet)
        return;
    if (_sinceProgress.isValid() && _sinceProgress.elapsed() < progressPeriodMs)
        return;
    _sinceProgress.restart();
    constexpr int rowsOfOthers = 2; // the prompt's, and that of a message above
    const QStringList lines = makeLines(qMax(1, terminalSize().rows - rowsOfOthers));
    clearProgress();
    showProgress(lines);
}

void Console::endProgress()
{
    if (_progress.isEmpty())
        return;
    std::fputc('\n', stderr);
    _progress.clear();
}

void Console::write(const QString &text)
{
    const QStringList standing = _progress;
    clearProgress();
    std::fprintf(stderr, "%s\n", shownLines(text).constData());
    showProgress(standing);
}

/// Cut to what fits in front of the cursor, so that no line is broken and all can be replaced.
void Console::showProgress(const QStringList &lines)
{
    const int columns = terminalSize().columns - 1;
    for (const QString &line : lines)
        _progress.append(cutToColumns(printable(line), columns));
    std::fputs(_progress.join(QLatin1Char('\n')).toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
}

/// A terminal that has become narrower meanwhile has broken the lines, which then take more of its rows.
void Console::clearProgress()
{
    if (_progress.isEmpty())
        return;
    const int rows = rowsOf(_progress, terminalSize().columns);
    std::fputs("\r\033[K", stderr);
    for (int row = 1; row < rows; ++row)
        std::fputs("\033[A\033[K", stderr);
    _progress.clear();
}

} // namespace client
