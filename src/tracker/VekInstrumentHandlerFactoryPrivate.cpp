#include "tracker/VekInstrumentHandlerFactoryPrivate.h"

#include "handlers/GaleInstrumentHandler.h"
#include "handlers/MainInstrumentHandler.h"
#include "session/InstrumentInfo.h"
#include "waiting/BoundedExec.h"

#include <QDebug>
#include <QEventLoop>
#include <QThread>

namespace {

constexpr int startUpTimeoutMs = 5000;

void startUp(VekInstrumentHandlerPrivate *handler)
{
    QEventLoop loop;
    QObject::connect(handler, &VekInstrumentHandlerPrivate::initialConnectionRequestFinished, &loop, &QEventLoop::quit,
                     Qt::QueuedConnection);
    QMetaObject::invokeMethod(handler, &VekInstrumentHandlerPrivate::sendInitialDefaults, Qt::QueuedConnection);
    execBounded(loop, startUpTimeoutMs);
}

} // namespace

VekInstrumentHandlerPrivate *makeInstrumentHandler(const InstrumentInfo &info)
{
    if (isGale(info))
        return new GaleInstrumentHandler(info);
    return new MainInstrumentHandler(info);
}

VekInstrumentHandlerPrivate *
VekInstrumentHandlerFactoryPrivate::createInstrumentHandler(const InstrumentInfo &info) const
{
    VekInstrumentHandlerPrivate *handler = makeInstrumentHandler(info);
    if (isGale(info))
        return handler;
    if (handler->thread() == QThread::currentThread()) // it has no thread of its own if its port could not be opened
        qWarning("Factory called from the instrument handler's worker thread.");
    startUp(handler);
    return handler;
}
