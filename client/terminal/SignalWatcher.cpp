// SPDX-License-Identifier: MIT
#include "client/terminal/SignalWatcher.h"

#include "client/terminal/ExitCode.h"

#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace client {

namespace {

// What the handler touches; no two signals are handled at once.
volatile std::sig_atomic_t isInterrupted = 0;
volatile std::sig_atomic_t sigintCount = 0;
timespec firstSignal = {};
int pipeEnds[2] = {-1, -1};

SignalWatcher *theWatcher = nullptr;

/// A terminal that closes sends SIGHUP beside the shell's SIGTERM, and fingers bounce: what comes within a second is one.
bool isSecondWish()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const double seconds = double(now.tv_sec - firstSignal.tv_sec) + 1e-9 * double(now.tv_nsec - firstSignal.tv_nsec);
    return seconds > 1.0;
}

void onSignal(int number)
{
    sigintCount = sigintCount + (number == SIGINT ? 1 : 0);
    if (isInterrupted) {
        if (number == SIGINT && sigintCount > 1 && isSecondWish())
            _exit(Interrupted); // SIGTERM and SIGHUP never: their senders do not see whether the cell is off
        return;
    }
    isInterrupted = 1;
    clock_gettime(CLOCK_MONOTONIC, &firstSignal);
    const char byte = 0;
    const ssize_t written = write(pipeEnds[1], &byte, 1);
    static_cast<void>(written); // the pipe holds far more than the one byte that is ever written
}

bool isIgnored(int number)
{
    struct sigaction present = {};
    return sigaction(number, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

void watch(int number)
{
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    for (const int other : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&action.sa_mask, other);
    sigaction(number, &action, nullptr);
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
    watch(SIGINT);
    watch(SIGTERM);
    if (!isIgnored(SIGHUP)) // as nohup leaves it: the run is to outlive its terminal
        watch(SIGHUP);
    // A reader that goes, or a file that may not grow, fails a write; death by the signal would leave the cell driven.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
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
    return isInterrupted != 0;
}

void SignalWatcher::onPipeReadable()
{
    _notifier.setEnabled(false);
    Q_EMIT interrupted();
}

} // namespace client
