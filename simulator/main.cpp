#include "simulator/Options.h"

#include <QCoreApplication>
#include <QSocketNotifier>

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

int run(Options options, QCoreApplication &application)
{
    TruthFile truth;
    if (!options.truthPath.isEmpty() && !truth.open(options.truthPath))
        return fail(QStringLiteral("cannot write %1: %2").arg(options.truthPath, truth.errorText()));
    PassFile passes;
    if (!options.passesPath.isEmpty() && !passes.open(options.passesPath))
        return fail(QStringLiteral("cannot write %1: %2").arg(options.passesPath, passes.errorText()));
    SimulatedInstrument instrument(options.instrument, std::move(options.cells));
    instrument.setFiles(&truth, &passes);
    if (!instrument.isOpen())
        return fail(instrument.errorText());
    QObject::connect(&instrument, &SimulatedInstrument::unplugged, &application, &QCoreApplication::quit);
    std::printf("%s\n", qPrintable(instrument.portName()));
    std::fflush(stdout);
    application.exec();
    truth.close();
    passes.close();
    if (options.wantsStatistics)
        std::fprintf(stderr, "%s\n", qPrintable(instrument.statistics()));
    return 0;
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
    QCoreApplication application(argc, argv);
    QSocketNotifier stopRequest(signalFd, QSocketNotifier::Read);
    QObject::connect(&stopRequest, &QSocketNotifier::activated, &application, [] { QCoreApplication::quit(); });
    exitCode = run(std::move(*options), application);
    ::close(signalFd);
    return exitCode;
}
