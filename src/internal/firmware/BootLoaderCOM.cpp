// SPDX-License-Identifier: MIT
#include "firmware/BootLoaderCOM.h"

#include "firmware/BootLoaderCOMWorker.h"

#include <QThread>

BootLoaderCOM *BootLoaderCOM::Instance()
{
    return ApplicationSingleton<BootLoaderCOM>::instance();
}

BootLoaderCOM::~BootLoaderCOM()
{
    const QList<QThread *> threads = findChildren<QThread *>();
    for (QThread *thread : threads) {
        thread->requestInterruption();
        thread->quit();
    }
    for (QThread *thread : threads)
        thread->wait();
}

void BootLoaderCOM::flash(QString const &port, QString const &hexFile, QString const &deviceName)
{
    auto *const thread = new QThread(this);
    auto *const worker = new BootLoaderCOMWorker(port, hexFile, deviceName);
    worker->moveToThread(thread);
    using Worker = BootLoaderCOMWorker;
    connect(worker, &Worker::ShowDialog, this, &BootLoaderCOM::ShowDialog, Qt::QueuedConnection);
    connect(worker, &Worker::Found, this, &BootLoaderCOM::Found, Qt::QueuedConnection);
    connect(worker, &Worker::Started, this, &BootLoaderCOM::Started, Qt::QueuedConnection);
    connect(worker, &Worker::Progress, this, &BootLoaderCOM::Progress, Qt::QueuedConnection);
    connect(worker, &Worker::Finished, this, &BootLoaderCOM::Finished, Qt::QueuedConnection);
    connect(thread, &QThread::started, worker, &Worker::process, Qt::QueuedConnection);
    connect(worker, &Worker::finished, thread, &QThread::quit, Qt::QueuedConnection);
    connect(worker, &Worker::finished, worker, &Worker::deleteLater);
    connect(thread, &QThread::finished, worker, &Worker::deleteLater); // of an update that has failed
    connect(thread, &QThread::finished, thread, &QThread::deleteLater, Qt::QueuedConnection);
    thread->start(QThread::InheritPriority);
}
