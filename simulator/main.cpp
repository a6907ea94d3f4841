// SPDX-License-Identifier: MIT
#include "simulator/Options.h"
#include "simulator/StopSignals.h"

#include <QCoreApplication>
#include <QTimer>

#include <csignal>
#include <cstdio>

namespace {

int fail(const QString &text)
{
    std::fprintf(stderr, "nimbrelle-sim: %s\n", qPrintable(text));
    return 2;
}

void printLine(const QString &text)
{
    std::printf("%s\n", qPrintable(text));
    std::fflush(stdout);
}

/// @return what is wrong with the file, or an empty text
QString obstacleTo(const RecordFile &file, const QString &path)
{
    const QString obstacle = path.isEmpty() ? QString() : file.obstacleAt(path);
    return obstacle.isEmpty() ? obstacle : QStringLiteral("cannot write %1: %2").arg(path, obstacle);
}

/// @return what has failed, or an empty text
QString open(RecordFile &file, const QString &path)
{
    const bool isGood = path.isEmpty() || file.open(path);
    return isGood ? QString() : QStringLiteral("cannot write %1: %2").arg(path, file.errorText());
}

int run(Options options, QCoreApplication &application)
{
    TruthFile truth;
    PassFile passes;
    UpdatableInstrument instrument(options.setup, std::move(options.cells));
    for (const QString &obstacle :
         {instrument.obstacle(), obstacleTo(truth, options.truthPath), obstacleTo(passes, options.passesPath)})
        if (!obstacle.isEmpty())
            return fail(obstacle); // before the first of them is begun
    QString failure = open(truth, options.truthPath);
    if (failure.isEmpty())
        failure = open(passes, options.passesPath);
    if (!failure.isEmpty())
        return fail(failure);
    instrument.setFiles(&truth, &passes);
    QObject::connect(&instrument, &UpdatableInstrument::unplugged, &application, &QCoreApplication::quit);
    QObject::connect(&instrument, &UpdatableInstrument::cameUp, &application, printLine);
    QObject::connect(&instrument, &UpdatableInstrument::failed, &application, [&](const QString &reason) {
        failure = reason;
        QCoreApplication::quit();
    });
    QTimer::singleShot(0, &instrument, &UpdatableInstrument::start);
    application.exec();
    truth.close();
    passes.close();
    if (options.wantsStatistics)
        std::fprintf(stderr, "%s\n", qPrintable(instrument.statistics()));
    return failure.isEmpty() ? 0 : fail(failure);
}

} // namespace

int main(int argc, char **argv)
{
    int exitCode = 0;
    std::optional<Options> options = parseOptions(argc, argv, exitCode);
    if (!options)
        return exitCode;
    if (!StopSignals::hold())
        return fail(QStringLiteral("cannot watch signals"));
    std::signal(SIGPIPE, SIG_IGN); // a host may go at any moment
    QCoreApplication application(argc, argv);
    const StopSignals stopSignals(application);
    return run(std::move(*options), application);
}
