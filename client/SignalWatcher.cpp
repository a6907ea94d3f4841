#include "SignalWatcher.h"

#include "ExitCode.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace client {

namespace {

// What the handler touches: a flag and the writing end of a pipe.
volatile std::sig_atomic_t signalCount = 0;
int pipeEnds[2] = {-1, -1};

SignalWatcher *theWatcher = nullptr;

void onSignal(int)
{
    if (signalCount > 0)
        _exit(Interrupted);
    signalCount = 1;
    const char byte = 0;
    const ssize_t written = write(pipeEnds[1], &byte, 1);
    static_cast<void>(written); // the pipe holds far more than the one byte that is ever written
}

int openPipe()
{
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
        return -1;
    return pipeEnds[0];
}

} // namespace

SignalWatcher::SignalWatcher() : _notifier(openPipe(), QSocketNotifier::Read)
{
    theWatcher = this;
    connect(&_notifier, &QSocketNotifier::activated, this, &SignalWatcher::onPipeReadable);
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaction(number, &action, nullptr);
}

SignalWatcher::~SignalWatcher()
{
    theWatcher = nullptr;
}

SignalWatcher *SignalWatcher::instance()
{
    return theWatcher;
}

bool SignalWatcher::wasInterrupted()
{
    return signalCount > 0;
}

void SignalWatcher::onPipeReadable()
{
    _notifier.setEnabled(false);
    Q_EMIT interrupted();
}

} // namespace client
