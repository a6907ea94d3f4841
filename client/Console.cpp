#include "Console.h"

#include <QByteArray>
#include <QtGlobal>

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace client {

namespace {

constexpr int progressPeriodMs = 200;

/// What fits on one line of the terminal, so that the line can be replaced.
QString cutToTerminal(const QString &text)
{
    winsize size = {};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return isKnown ? text.left(size.ws_col - 1) : text;
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
    qInstallMessageHandler(verbosity == Verbosity::Verbose ? nullptr : dropDiagnostics);
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

void Console::progress(const std::function<QString()> &makeText)
{
    if (!_isTerminal || _verbosity == Verbosity::Quiet)
        return;
    if (_sinceProgress.isValid() && _sinceProgress.elapsed() < progressPeriodMs)
        return;
    _sinceProgress.restart();
    clearProgress();
    const QString text = cutToTerminal(makeText());
    std::fputs(text.toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
    _progress = text;
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
    const QString standing = _progress;
    clearProgress();
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    if (standing.isEmpty())
        return;
    std::fputs(standing.toLocal8Bit().constData(), stderr);
    _progress = standing;
}

void Console::clearProgress()
{
    if (_progress.isEmpty())
        return;
    std::fputs("\r\033[K", stderr);
    _progress.clear();
}

} // namespace client
