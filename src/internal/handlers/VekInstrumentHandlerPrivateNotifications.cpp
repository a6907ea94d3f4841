// SPDX-License-Identifier: MIT
#include "handlers/VekInstrumentHandlerPrivate.h"

#include "calibration/RecordBytes.h"
#include "channels/OutputData.h"
#include "elements/Node.h"
#include "link/ExpStopType.h"
#include "logging/Logger.h"
#include "session/InstrumentOperator.h"

#include <QDebug>
#include <QStandardPaths>

#include <cmath>
#include <stdexcept>
#include <utility>

namespace {

#pragma pack(push, 1)
struct NodeBeginRecord_t {
    quint64 tick;      // not used
    quint16 nodeIndex; // position in the list that was uploaded
};
struct ExperimentDoneRecord_t {
    quint64 skipped;
    ExpStopType_t stopType;
};
#pragma pack(pop)
static_assert(sizeof(NodeBeginRecord_t) == 10, "the record as it travels");
static_assert(sizeof(ExperimentDoneRecord_t) == 9, "the record as it travels");

VekErrorCode verdict(FirmwareErrorCode code, VekErrorCode::ErrorCode failure)
{
    return code == FW_SUCCESS ? VekErrorCode(VekErrorCode::Success) : VekErrorCode(failure, handle_error(code));
}

} // namespace

void VekInstrumentHandlerPrivate::onThreadStarted()
{
    qRegisterMetaType<uint8_t>("uint8_t");
    qRegisterMetaType<VekExperimentNode>("VekExperimentNode");
    qRegisterMetaType<VekACData>("VekACData");
    qRegisterMetaType<VekDCData>("VekDCData");
    qRegisterMetaType<VekErrorCode>("VekErrorCode");
    qRegisterMetaType<VekExperimentEnd>("VekExperimentEnd");
    connectWithOperatorSignals();
}

void VekInstrumentHandlerPrivate::connectWithOperatorSignals()
{
    using Op = InstrumentOperator;
    using Me = VekInstrumentHandlerPrivate;
    connect(_op, &Op::experimentDataBeginning, this, &Me::onExperimentDataBeginning);
    connect(_op, &Op::experimentDataBeginning, this, &Me::experimentStarting);
    connect(_op, &Op::experimentCompleted, this, &Me::onExperimentCompleted);
    connect(_op, &Op::deviceDisconnected, this, &Me::deviceDisconnected);
    connect(_op, &Op::experimentPaused, this, &Me::onExperimentPaused);
    connect(_op, &Op::experimentResumed, this, &Me::onExperimentResumed);
    connect(_op, &Op::acktoExperimentStart, this, &Me::onExperimentStartAcknowledged);
    connect(_op, &Op::acktoManualStart, this, &Me::onManualStartAcknowledged);
    connect(_op, &Op::acktoManualOcpSet, this, &Me::onManualOcpSet);
    connect(_op, &Op::acktoManualCurrentRangeSet, this, &Me::onManualCurrentRangeSet);
    connect(_op, &Op::acktoManualVoltageRangeSet, this, &Me::onManualVoltageRangeSet);
    connect(_op, &Op::acktoManualVoltageSetPoint, this, &Me::onManualVoltageValueSet);
    connect(_op, &Op::acktoManualCurrentSetPoint, this, &Me::onManualCurrentValueSet);
    connect(_op, &Op::acktoManualSamplingIntervalSet, this, &Me::onManualSamplingIntervalSet);
    connect(_op, &Op::acktoIRComp, this, &Me::onSetOfIRComp);
    connect(_op, &Op::acktoCompRange, this, &Me::onSetOfCompRange);
    connect(_op, &Op::experimentNodeBeginning, this, &Me::onExperimentNodeBeginning);
    connect(_op, &Op::experimentNodeCompleted, this, &Me::onExperimentNodeCompleted);
    connect(_op, &Op::experimentDCDataReceived, this, &Me::onExperimentDCDataReceived);
    connect(_op, &Op::experimentACDataReceived, this, &Me::onExperimentACDataReceived);
    connect(_op, &Op::acDataInvalidated, this, &Me::onACDataInvalidated);
    connect(_op, &Op::receivedMetaData, this, &Me::onReceivedMetaData);
    connect(_op, &Op::memoryDataStart, this, &Me::onMemoryDataStart);
    connect(_op, &Op::memoryDataErased, this, &Me::onMemoryDataErased);
    connect(_op, &Op::calibrationHeaderReceived, this, &Me::onCalibrationHeaderReceived);
    connect(_op, &Op::calibrationDataReceived, this, &Me::onCalibrationDataReceived);
    connect(_op, &Op::acDataSampleFinshed, this, &Me::onACDataSampleFinshed);
    connect(_op, &Op::TareCurrentReceived, this, &Me::TareCurrentReceived);
    connect(_op, &Op::TareVoltageReceived, this, &Me::TareVoltageReceived);
    connect(_op, &Op::deviceConfigReceived, this, &Me::onConfigReceived);
    connect(_op, &Op::groundFloatStateChanged, this, &Me::onGroundFloatStateChanged);
    connect(_op, &Op::deviceNotification, this, &Me::onDeviceNotification);
    connect(_op, &Op::deviceError, this, &Me::onDeviceError);
}

// The course of an experiment

void VekInstrumentHandlerPrivate::onExperimentDataBeginning(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler)
        return;
    handler->setDataStatus(ChannelHandler::DATA_STARTED);
    handler->startClockOnce(double(recordFromBytes<quint64>(payload)) / factsOf(line()).ticksPerSecond);
}

void VekInstrumentHandlerPrivate::onExperimentCompleted(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler)
        return;
    reportHeldBack(channel);
    handler->capacity.endExperiment();
    endRun(*handler);
    tellEnd(channel, payload);
}

void VekInstrumentHandlerPrivate::endRun(ChannelHandler &channel)
{
    channel.setIdealConfig();
    channel.setActiveRecoverExperimentStatus(false);
    channel.setReport(VekChannelReport::Idle);
}

void VekInstrumentHandlerPrivate::tellEnd(unsigned char channel, const QByteArray &payload)
{
    const ExpStopType_t type = recordFromBytes<ExperimentDoneRecord_t>(payload).stopType;
    tellEnd(channel, experimentEndOf(type), getStopMessage(type));
}

void VekInstrumentHandlerPrivate::tellEnd(unsigned char channel, VekExperimentEnd end, const QString &reason)
{
    Q_EMIT experimentCompleted(channel, reason);
    Q_EMIT experimentEnded(channel, end, reason);
}

void VekInstrumentHandlerPrivate::onExperimentPaused(unsigned char channel)
{
    if (!isChannelBusy(channel)) // late: its experiment has ended meanwhile
        return;
    channelAt(channel)->setRunningExperimentStatus(ChannelHandler::EXPERIMENT_PAUSED);
    Q_EMIT experimentPaused(channel);
}

void VekInstrumentHandlerPrivate::onExperimentResumed(unsigned char channel)
{
    if (!isChannelBusy(channel))
        return;
    channelAt(channel)->setRunningExperimentStatus(ChannelHandler::EXPERIMENT_RUNNING);
    Q_EMIT experimentResumed(channel);
}

void VekInstrumentHandlerPrivate::onExperimentStartAcknowledged(unsigned char channel, const FirmwareErrorCode &code)
{
    takeStartVerdict(channel, PC_EXPERIMENT_START, code);
}

void VekInstrumentHandlerPrivate::onManualStartAcknowledged(unsigned char channel, const FirmwareErrorCode &code)
{
    takeStartVerdict(channel, PC_MANUAL_START, code);
}

/**
 * A refusal ends what the host took for running. Only the answer to a start that is awaited does so: where one has been
 * acknowledged, or its data have begun, the cell is driven, whatever a stray answer says.
 */
void VekInstrumentHandlerPrivate::takeStartVerdict(unsigned char channel, PCcommand_t start, FirmwareErrorCode code)
{
    ChannelHandler *const handler = channelAt(channel);
    const bool isAwaited = handler && handler->endAwaitOfStart(start);
    if (code == FW_SUCCESS)
        return;
    const QString reason = handle_error(code);
    if (!isAwaited) {
        qInfo().noquote() << lineOfLog(channel, QStringLiteral("A start that nobody awaits was refused: ") + reason);
        return;
    }
    for (ChannelHandler *const member : groupOf(*handler)) {
        member->capacity.endExperiment();
        member->setIdealConfig();
    }
    tellEnd(channel, refusalOf(code), reason);
}

void VekInstrumentHandlerPrivate::beginNode(unsigned char channel, const QByteArray &payload, const NodeRules &rules)
{
    if (line() != rules.line)
        return;
    if (payload.size() != int(sizeof(NodeBeginRecord_t))) {
        qWarning().noquote() << lineOfLog(
            channel + 1, QStringLiteral("Experiment Node Data size incompatible with current software. Check that the "
                                        "present software version and hardware firmware version are compatible"));
        return;
    }
    ChannelHandler *const handler = channelAt(channel);
    if (!handler)
        return;
    reportHeldBack(channel); // of the node before, whose end need not have been told
    handler->forgetThinnedPoint();
    const Node node = nodeAt(*handler, recordFromBytes<NodeBeginRecord_t>(payload).nodeIndex);
    const std::optional<VekExperimentNode> announcement = enterNode(*handler, node, rules);
    if (!announcement)
        return;
    if (handler->getExperimentMode() == ChannelHandler::MODE_RECOVERY)
        Q_EMIT recoveryExperimentNodeBeginning(channel, *announcement);
    else
        Q_EMIT activeExperimentNodeBeginning(channel, *announcement);
}

Node VekInstrumentHandlerPrivate::nodeAt(const ChannelHandler &channel, int index)
{
    try {
        return channel.getNodeAt(qBound(0, index, channel.getMaximumNodeIndex()));
    } catch (const std::out_of_range &) {
        return Node(); // a list without nodes
    }
}

// Data

bool VekInstrumentHandlerPrivate::hasExperimentData(const ChannelHandler &channel)
{
    return channel.getExperimentMode() != ChannelHandler::MODE_IDLE &&
           channel.getDataStatus() != ChannelHandler::DATA_NOT_STARTED;
}

bool VekInstrumentHandlerPrivate::hasMinVoltageDifference(unsigned char channel, double volts)
{
    if (!isChannelBusy(channel))
        return false;
    ChannelHandler *const handler = channelAt(channel);
    if (handler->voltageDifferent > std::abs(volts - handler->lastReportedVoltage))
        return false;
    handler->lastReportedVoltage = volts;
    return true;
}

void VekInstrumentHandlerPrivate::holdBack(ChannelHandler &channel, const HeldBackSample &sample) const
{
    if (_isLastSampleReported)
        channel.heldBack = sample;
    else
        channel.heldBack.reset();
}

void VekInstrumentHandlerPrivate::reportHeldBack(unsigned char channel)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler || !handler->heldBack || !isChannelBusy(channel))
        return;
    HeldBackSample sample = *handler->heldBack;
    if (sample.uncounted) {
        handler->capacity.onDcDataReceived(*sample.uncounted);
        sample.data = withCharge(sample.data, *sample.uncounted, handler->capacity);
    }
    handler->lastReportedVoltage = sample.data.workingElectrodeVoltage;
    emitDCData(channel, sample.data);
}

void VekInstrumentHandlerPrivate::emitDCData(unsigned char channel, const VekDCData &data)
{
    ChannelHandler *const handler = channelAt(channel);
    handler->heldBack.reset();
    switch (handler->getExperimentMode()) {
    case ChannelHandler::MODE_MANUAL:
    case ChannelHandler::MODE_ACTIVE:
        Q_EMIT activeDCDataReady(channel, data);
        break;
    case ChannelHandler::MODE_RECOVERY:
        Q_EMIT recoveryDCDataReady(channel, data);
        break;
    case ChannelHandler::MODE_IDLE:
        break;
    }
}

void VekInstrumentHandlerPrivate::emitACData(unsigned char channel, const ComplexDataPoint_t &point)
{
    const ChannelHandler *const handler = channelAt(channel);
    VekACData data = AcOutputData(point);
    data.timestamp = point.timestamp - handler->startTimestamp;
    if (handler->getExperimentMode() == ChannelHandler::MODE_RECOVERY)
        Q_EMIT recoveryACDataReady(channel, data);
    else
        Q_EMIT activeACDataReady(channel, data);
}

void VekInstrumentHandlerPrivate::onACDataSampleFinshed(unsigned char)
{
}

void VekInstrumentHandlerPrivate::TareCurrentReceived(unsigned char, const QByteArray &)
{
}

void VekInstrumentHandlerPrivate::TareVoltageReceived(unsigned char, const QByteArray &)
{
}

void VekInstrumentHandlerPrivate::onConfigReceived(unsigned char, const QByteArray &)
{
}

// The instrument as a whole

QString VekInstrumentHandlerPrivate::lineOfLog(int channel, const QString &text) const
{
    return QStringLiteral("%1 channel %2: %3").arg(_info.deviceName, QString::number(channel), text);
}

void VekInstrumentHandlerPrivate::onDeviceNotification(unsigned char channel, const QString &text)
{
    qInfo().noquote() << lineOfLog(channel, text);
    Q_EMIT deviceNotification(channel, text);
}

void VekInstrumentHandlerPrivate::onDeviceError(unsigned char channel, const QString &text)
{
    if (!isValidChannel(channel))
        return reportAlarm(channel, text + QStringLiteral(" (The instrument named channel %1, which it does not have; "
                                                          "nothing was stopped.)")
                                               .arg(channel));
    _op->stopExperiment(channel); // whatever the alarm is about, the channel must not go on
    reportAlarm(channel, text);
}

void VekInstrumentHandlerPrivate::reportAlarm(unsigned char channel, const QString &text)
{
    const QString line = lineOfLog(channel, text);
    qWarning().noquote() << line;
    Logger::getInstance().logFatal(line);
    Q_EMIT deviceError(channel, QStringLiteral("%1 : %2").arg(QStringLiteral("Critical"), text));
}

void VekInstrumentHandlerPrivate::onGroundFloatStateChanged(const QByteArray &payload)
{
    _groundFloatState = recordFromBytes<quint8>(payload);
    Q_EMIT groundFloatStateChanged(_groundFloatState == 1);
}

void VekInstrumentHandlerPrivate::onMemoryDataStart(const QByteArray &payload)
{
    if (payload.size() == 1 && payload[0] != 0)
        Q_EMIT memoryDataStarting();
}

void VekInstrumentHandlerPrivate::onMemoryDataErased(const QByteArray &payload)
{
    if (payload.size() != 1)
        return;
    const bool isErased = payload[0] != 0;
    for (const auto &[number, channel] : _channels)
        channel->setRecoverDataStatus(channel->isRecoverDataAvailable() && !isErased);
    Q_EMIT memoryDataErased(isErased);
}

void VekInstrumentHandlerPrivate::onReceivedMetaData(const QByteArray &payload)
{
    if (payload.size() == int(_info.recoveryMetaData.size()))
        std::copy(payload.begin(), payload.end(), _info.recoveryMetaData.begin());
}

// Calibration from the SD card

CSVdataImporter &VekInstrumentHandlerPrivate::importerOf(unsigned char channel)
{
    return *_info.calibration[channel].getDataImporter(); // no lock: no other thread has to do with it
}

void VekInstrumentHandlerPrivate::onCalibrationHeaderReceived(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler || !hasCalibration(channel))
        return;
    const auto header = recordFromBytes<csvDataHeader_t>(payload);
    if (header.payloadSize < 1) {
        qWarning().noquote() << lineOfLog(channel, QStringLiteral("Error loading calibration data."));
        handler->setSDCardStatus(ChannelHandler::SD_IDLE);
        return;
    }
    importerOf(channel).setCSVDataHeader(header);
    _op->requestNextCalibrationData();
}

void VekInstrumentHandlerPrivate::onCalibrationDataReceived(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler || !hasCalibration(channel))
        return;
    CSVdataImporter &importer = importerOf(channel);
    if (!importer.appendCSVRawData(payload)) {
        handler->setSDCardStatus(ChannelHandler::SD_IDLE);
        qWarning().noquote() << lineOfLog(channel, QStringLiteral("Error loading calibration data."));
    }
    if (!importer.isCSVDataPayloadFull()) {
        _op->requestNextCalibrationData(); // see compatibility.md, refused piece of a table
        return;
    }
    if (!importer.validateCSVFiles())
        qWarning().noquote() << lineOfLog(channel, QStringLiteral("Error in calibration data."));
    loadCalibrationTables(channel);
    handler->setSDCardStatus(ChannelHandler::SD_IDLE);
}

void VekInstrumentHandlerPrivate::loadCalibrationTables(unsigned char channel)
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    changeCalibration(channel, [&](CalibrationData &calibration) {
        const bool hasFolder =
            calibration.importCalData(documents + QStringLiteral("/Brenmoor Apparatus"), _info.deviceName);
        if (!hasFolder && !std::exchange(_isFolderWarningSaid, true)) // once for all channels
            qWarning("Calibration tables: the instrument's name makes no folder, its tables are left out.");
    });
}

// Acknowledgements

void VekInstrumentHandlerPrivate::onManualOcpSet(unsigned char channel, const FirmwareErrorCode &code)
{
    Q_EMIT manualOcpAck(channel, verdict(code, VekErrorCode::ManualOcpNotSet));
}

void VekInstrumentHandlerPrivate::onManualCurrentRangeSet(unsigned char channel, const FirmwareErrorCode &code)
{
    Q_EMIT manualCurrentRangeAck(channel, verdict(code, VekErrorCode::ManualCurrentRangeNotSet));
}

void VekInstrumentHandlerPrivate::onManualVoltageRangeSet(unsigned char channel, const FirmwareErrorCode &code)
{
    Q_EMIT manualVoltageRangeAck(channel, verdict(code, VekErrorCode::ManualVoltageRangeNotSet));
}

void VekInstrumentHandlerPrivate::onManualVoltageValueSet(unsigned char channel, const FirmwareErrorCode &code)
{
    Q_EMIT manualVoltageValueAck(channel, verdict(code, VekErrorCode::ManualVoltageNotSet));
}

void VekInstrumentHandlerPrivate::onManualCurrentValueSet(unsigned char channel, const FirmwareErrorCode &code)
{
    Q_EMIT manualCurrentValueAck(channel, verdict(code, VekErrorCode::ManualCurrentNotSet));
}

void VekInstrumentHandlerPrivate::onManualSamplingIntervalSet(unsigned char channel, const FirmwareErrorCode &code)
{
    Q_EMIT manualSamplingIntervalAck(channel, verdict(code, VekErrorCode::ManualSamplingNotSet));
}

void VekInstrumentHandlerPrivate::onSetOfIRComp(unsigned char channel, const FirmwareErrorCode &code)
{
    Q_EMIT irCompAck(channel, verdict(code, VekErrorCode::IRCompNotSet));
}

void VekInstrumentHandlerPrivate::onSetOfCompRange(unsigned char channel, const FirmwareErrorCode &code)
{
    Q_EMIT compRangeAck(channel, verdict(code, VekErrorCode::CompRangeNotSet));
}
