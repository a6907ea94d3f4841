// SPDX-License-Identifier: MIT
#include "simulator/StopSignals.h"

#include "simulator/OwnPaths.h"

#include <ctime>
#include <unistd.h>

namespace {

constexpr timespec patience = {1, 0};

sigset_t stopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

} // namespace

bool StopSignals::hold()
{
    const sigset_t signals = stopSignals();
    return sigprocmask(SIG_BLOCK, &signals, nullptr) == 0;
}

StopSignals::StopSignals(QCoreApplication &application) : _application(application), _thread([this] { wait(); })
{
}

StopSignals::~StopSignals()
{
    _isOver = true;
    pthread_kill(_thread.native_handle(), SIGTERM); // wakes it
    _thread.join();
}

void StopSignals::wait()
{
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr); // another signal would cut the patience short
    const sigset_t signals = stopSignals();
    int received = 0;
    sigwait(&signals, &received);
    if (_isOver)
        return;
    QMetaObject::invokeMethod(&_application, &QCoreApplication::quit, Qt::QueuedConnection);
    sigtimedwait(&signals, nullptr, &patience);
    if (_isOver)
        return;
    OwnPaths::removeAll();
    _exit(0);
}
