// SPDX-License-Identifier: MIT
#include "tracker/VekInstrumentHandlerFactoryPrivate.h"

#include "handlers/GaleInstrumentHandler.h"
#include "handlers/MainInstrumentHandler.h"
#include "session/InstrumentInfo.h"
#include "waiting/BoundedWait.h"

#include <QDebug>
#include <QThread>

namespace {

constexpr int startUpTimeoutMs = 5000;

void startUp(VekInstrumentHandlerPrivate *handler, const Clock &clock)
{
    BoundedWait wait(startUpTimeoutMs, clock);
    wait.endOn(handler, &VekInstrumentHandlerPrivate::initialConnectionRequestFinished, WaitEnd::Answered);
    QMetaObject::invokeMethod(handler, &VekInstrumentHandlerPrivate::sendInitialDefaults, Qt::QueuedConnection);
    wait.exec();
}

} // namespace

VekInstrumentHandlerPrivate *makeInstrumentHandler(const InstrumentInfo &info, const Clock &clock)
{
    if (isGale(info))
        return new GaleInstrumentHandler(info, clock);
    return new MainInstrumentHandler(info, clock);
}

VekInstrumentHandlerFactoryPrivate::VekInstrumentHandlerFactoryPrivate(QObject *parent, const Clock &clock)
    : QObject(parent), _clock(clock)
{
}

VekInstrumentHandlerPrivate *
VekInstrumentHandlerFactoryPrivate::createInstrumentHandler(const InstrumentInfo &info) const
{
    VekInstrumentHandlerPrivate *handler = makeInstrumentHandler(info, _clock);
    if (isGale(info))
        return handler;
    if (handler->thread() == QThread::currentThread()) // it has no thread of its own if its port could not be opened
        qWarning("Factory called from the instrument handler's worker thread.");
    startUp(handler, _clock);
    return handler;
}
