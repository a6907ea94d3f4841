// SPDX-License-Identifier: MIT
#include "ConnectedInstrument.h"

namespace {

constexpr int connectionTimeoutMs = 20000;

} // namespace

ConnectedInstrument::ConnectedInstrument(const QString &name, const QStringList &simulatorArguments)
    : _simulator(QStringList{QStringLiteral("--name"), name} + simulatorArguments)
{
    if (!_simulator.portName().isEmpty())
        connectThroughTracker(name);
    if (isReady())
        listen();
}

ConnectedInstrument::~ConnectedInstrument()
{
    if (!isReady())
        return;
    _simulator.finish();
    if (!QTest::qWaitFor([this] { return losses > 0; }))
        qWarning("the end of the simulator was not told");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void ConnectedInstrument::connectThroughTracker(const QString &name)
{
    VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    QSignalSpy connections(tracker, &VekDeviceTracker::newDeviceConnected);
    const VekErrorCode result = tracker->connectToDeviceOnComPort(_simulator.portName());
    if (result != VekErrorCode::Success) {
        qWarning("%s", qPrintable(result.message()));
        return;
    }
    if (QTest::qWaitFor([&] { return !connections.isEmpty(); }, connectionTimeoutMs))
        _handler = &tracker->getInstrumentHandler(name);
}

void ConnectedInstrument::listen()
{
    connect(_handler, &VekInstrumentHandler::activeDCDataReady, this,
            [this](unsigned char channel, const VekDCData &data) {
                samples.push_back({channel, data});
            });
    connect(_handler, &VekInstrumentHandler::activeACDataReady, this,
            [this](unsigned char, const VekACData &data) { points.push_back(data); });
    connect(_handler, &VekInstrumentHandler::experimentNewElementStarting, this,
            [this](unsigned char channel, const VekExperimentNode &node) {
                announcements.push_back({channel, node, int(samples.size())});
            });
    connect(_handler, &VekInstrumentHandler::experimentStopped, this,
            [this](unsigned char, const QString &reason) { ends.append(reason); });
    connect(_handler, &VekInstrumentHandler::deviceDisconnected, this, [this] { ++losses; });
}

bool ConnectedInstrument::waitForEnds(int count, int timeoutMs)
{
    return QTest::qWaitFor([&] { return ends.size() >= count || losses > 0; }, timeoutMs) && ends.size() >= count;
}

bool ConnectedInstrument::complete(const VekExperiment &experiment, int timeoutMs)
{
    const VekErrorCode upload = handler().uploadExperimentToChannel(0, experiment);
    const VekErrorCode start = handler().startUploadedExperiment(0);
    const bool hasEnded = start == VekErrorCode::Success && waitForEnds(1, timeoutMs);
    if (hasEnded && ends == QStringList{"Experiment completed"})
        return true;
    qWarning("%s, %s, %s", qPrintable(upload.message()), qPrintable(start.message()), qPrintable(ends.join(' ')));
    return false;
}

std::vector<VekDCData> ConnectedInstrument::samplesOf(std::size_t announcement) const
{
    const std::size_t end = announcement + 1 < announcements.size()
                                ? std::size_t(announcements[announcement + 1].samplesBefore)
                                : samples.size();
    std::vector<VekDCData> result;
    for (std::size_t i = std::size_t(announcements[announcement].samplesBefore); i < end; ++i)
        result.push_back(samples[i].data);
    return result;
}
