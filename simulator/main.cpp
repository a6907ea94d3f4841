#include "simulator/Options.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

/// Turns SIGTERM and SIGINT into a descriptor that the event loop watches; -1 if that fails.
int watchSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    if (sigprocmask(SIG_BLOCK, &signals, nullptr) != 0)
        return -1;
    return signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC);
}

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

int run(Options options, QCoreApplication &application)
{
    TruthFile truth;
    if (!options.truthPath.isEmpty() && !truth.open(options.truthPath))
        return fail(QStringLiteral("cannot write %1: %2").arg(options.truthPath, truth.errorText()));
    PassFile passes;
    if (!options.passesPath.isEmpty() && !passes.open(options.passesPath))
        return fail(QStringLiteral("cannot write %1: %2").arg(options.passesPath, passes.errorText()));
    QString failure;
    UpdatableInstrument instrument(options.setup, std::move(options.cells));
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
    const int signalFd = watchSignals(); // before a thread exists, so that none can take the signals instead
    if (signalFd < 0)
        return fail(QStringLiteral("cannot watch signals"));
    std::signal(SIGPIPE, SIG_IGN); // a host may go at any moment
    QCoreApplication application(argc, argv);
    QSocketNotifier stopRequest(signalFd, QSocketNotifier::Read);
    QObject::connect(&stopRequest, &QSocketNotifier::activated, &application, [] { QCoreApplication::quit(); });
    exitCode = run(std::move(*options), application);
    ::close(signalFd);
    return exitCode;
}
