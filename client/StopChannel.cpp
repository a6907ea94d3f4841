#include "StopChannel.h"

#include "VekInstrumentHandler.h"

#include <QEventLoop>
#include <QTimer>

namespace client {

namespace {

constexpr int confirmationTimeoutMs = 5000;

} // namespace

bool stopChannel(const VekInstrumentHandler &handler, unsigned char channel)
{
    QEventLoop loop;
    bool isConfirmed = false;
    QObject::connect(&handler, &VekInstrumentHandler::experimentStopped, &loop, [&](unsigned char stopped) {
        isConfirmed = isConfirmed || stopped == channel;
        if (isConfirmed)
            loop.quit();
    });
    QObject::connect(&handler, &VekInstrumentHandler::deviceDisconnected, &loop, &QEventLoop::quit);
    if (handler.stopExperiment(channel) != VekErrorCode::Success)
        return false;
    QTimer::singleShot(confirmationTimeoutMs, &loop, &QEventLoop::quit);
    if (!isConfirmed)
        loop.exec();
    return isConfirmed;
}

} // namespace client
