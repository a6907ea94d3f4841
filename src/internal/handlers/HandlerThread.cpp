// SPDX-License-Identifier: MIT
#include "handlers/HandlerThread.h"

#include <QCoreApplication>
#include <QList>
#include <QMutex>

namespace {

QMutex registerLock; // guards registeredThreads
QList<HandlerThread *> registeredThreads;

QList<HandlerThread *> threadsOfThisThread()
{
    const QMutexLocker locker(&registerLock);
    QList<HandlerThread *> own;
    for (HandlerThread *thread : qAsConst(registeredThreads)) {
        if (thread->thread() == QThread::currentThread())
            own << thread;
    }
    return own;
}

/// Runs at the beginning of the application object's destructor, when no event loop is left to delete anything.
void endThreadsOfApplication()
{
    qDeleteAll(threadsOfThisThread());
}

} // namespace

HandlerThread::HandlerThread()
{
    connect(this, &QThread::finished, this, &QObject::deleteLater);
    const QMutexLocker locker(&registerLock);
    if (registeredThreads.isEmpty())
        qAddPostRoutine(endThreadsOfApplication);
    registeredThreads << this;
}

HandlerThread::~HandlerThread()
{
    {
        const QMutexLocker locker(&registerLock);
        registeredThreads.removeOne(this);
    }
    end();
}

void HandlerThread::end()
{
    quit();
    if (QThread::currentThread() != this)
        wait();
}
