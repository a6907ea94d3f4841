// SPDX-License-Identifier: MIT
#include "session/InstrumentOperator.h"

#include "VekCompRange.h"
#include "link/SerialCommunicator.h"
#include "session/WireValues.h"
#include "waiting/BoundedWait.h"
#include "waiting/ThreadBound.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

constexpr int nodeAckTimeoutMs = 1000;
constexpr int mostPassesOnTheRoad = 60; // of such a time: no client needs longer to come out of a slot
constexpr int settingAckTimeoutMs = 50;
constexpr int statusAckTimeoutMs = 100;
constexpr int ackPasses = 3;
constexpr int calibrationWriteMs = 500;
constexpr double strayAckSeconds = 600.0;
constexpr int mostUnclaimedAcks = 1000; // an instrument may acknowledge for months what nobody awaits
constexpr int nodeSizeOnWire = 64;

quint32 channelMask(const std::vector<unsigned char> &channels)
{
    quint32 mask = 0;
    for (const unsigned char channel : channels)
        mask |= 1u << (channel % 32u);
    return mask;
}

QByteArray wireForm(const ExpNode_t &node)
{
    return QByteArray(reinterpret_cast<const char *>(&node), nodeSizeOnWire);
}

} // namespace

/**
 * A wait for the instrument, which the operator's thread ends when something comes that concerns it, or when the link is
 * lost. What comes after its construction is not missed, so it is made before the command is sent.
 *
 * Signals would not do: a connection to one would be made while it may be emitted, and what it brings would be queued
 * behind whatever holds the waiting thread.
 */
class InstrumentOperator::Wait
{
public:
    Wait(InstrumentOperator &instrument, const AckInfo &wanted, int milliseconds)
        : _instrument(instrument), _wanted(wanted), _wait(milliseconds, instrument._clock)
    {
        const QMutexLocker locker(&instrument._guard);
        instrument._waits.append(this);
        if (!instrument._connected)
            wake(WaitEnd::LinkLost);
    }
    ~Wait()
    {
        const QMutexLocker locker(&_instrument._guard);
        _instrument._waits.removeOne(this);
    }

    /// Delivers events until it is woken. @return whether it was in vain: the time was up, or the thread is to end
    bool timesOut()
    {
        const WaitEnd end = _wait.exec();
        return end == WaitEnd::TimeIsUp || end == WaitEnd::Quit;
    }
    void goOn(int milliseconds) { _wait.restart(milliseconds); }
    /// Whether nothing more is to come: a node was acknowledged, or what may have done so has come through.
    bool isOver()
    {
        const QMutexLocker locker(&_instrument._guard);
        return _nodeAck || _isRoadClear;
    }
    FirmwareErrorCode nodeVerdict()
    {
        const QMutexLocker locker(&_instrument._guard);
        return _nodeAck && _nodeAck->answersSameCommand(_wanted) ? _nodeAck->code : FW_NO_RESPONSE;
    }
    void setMark(int number)
    {
        const QMutexLocker locker(&_instrument._guard);
        _mark = number;
    }

    // For wakeWaits(), which holds the guard.
    void wake(WaitEnd reason) { _wait.endSoon(reason); }
    bool isAnsweredBy(const AckInfo &ack) const { return ack.answersSameCommand(_wanted); }
    /// Of whatever channel: see compatibility.md, first acknowledged node.
    bool takesNodeAck(const AckInfo &ack)
    {
        if (_wanted.command != ack.command)
            return false;
        _nodeAck = _nodeAck.value_or(ack);
        return true;
    }
    bool takesMark(int number)
    {
        _isRoadClear = _isRoadClear || _mark == number;
        return _mark == number;
    }

private:
    InstrumentOperator &_instrument;
    const AckInfo _wanted;
    BoundedWait _wait;
    std::optional<AckInfo> _nodeAck;
    std::optional<int> _mark;
    bool _isRoadClear = false;
};

InstrumentOperator::InstrumentOperator(const QString &port, QObject *parent, const Clock &clock)
    : QObject(parent), _clock(clock), _communicator(new SerialCommunicator(port, nullptr, clock)),
      _communicatorOwner(new QObject), _connected(true)
{
    _communicator->setParent(_communicatorOwner);
    _communicator->letReceiverTakePackets();
    // Queued: the communicator stays on this thread while the operator moves on with its handler.
    connect(_communicator, &SerialCommunicator::packetsWaiting, this, &InstrumentOperator::takePackets,
            Qt::QueuedConnection);
    connect(_communicator, &SerialCommunicator::markPassed, this, &InstrumentOperator::onMarkPassed,
            Qt::QueuedConnection);
    connect(_communicator, &SerialCommunicator::deviceDisconnected, this, &InstrumentOperator::onLinkLost,
            Qt::QueuedConnection);
    if (!_communicator->Start(true)) // the link may be lost while this waits, so its outcome alone does not decide
        _connected = false;
    if (_connected)
        pingToDevice();
}

InstrumentOperator::~InstrumentOperator()
{
    SerialCommunicator *communicator = std::exchange(_communicator, nullptr);
    communicator->Stop();
    communicator->disconnect(this); // before its own thread may begin to delete it
    // Not the communicator itself: what is to be deleted is marked beside a bit that the delivery of its events reads.
    _communicatorOwner->deleteLater();
}

void InstrumentOperator::onLinkLost()
{
    assertOnThreadOf(*this);
    _connected = false;
    Q_EMIT deviceDisconnected();
    wakeWaits([](Wait &) { return true; }, WaitEnd::LinkLost);
}

bool InstrumentOperator::isConnected() const
{
    return _connected;
}

void InstrumentOperator::disconnectDevice()
{
    if (_communicator)
        _communicator->Stop();
}

void InstrumentOperator::hangUp()
{
    if (_communicator)
        _communicator->hangUp();
}

void InstrumentOperator::sendCommandToInstr(const QByteArray &bytes)
{
    if (_communicator)
        _communicator->SendCommand(bytes);
}

bool InstrumentOperator::startExperiment(unsigned char channel)
{
    return send(PC_EXPERIMENT_START, channel);
}

bool InstrumentOperator::stopExperiment(unsigned char channel)
{
    return send(PC_EXPERIMENT_STOP, channel);
}

bool InstrumentOperator::pauseExperiment(unsigned char channel)
{
    return send(PC_EXPERIMENT_PAUSE, channel);
}

bool InstrumentOperator::resumeExperiment(unsigned char channel)
{
    return send(PC_EXPERIMENT_RESUME, channel);
}

bool InstrumentOperator::skipExperimentStep(unsigned char channel)
{
    return send(PC_SKIP_STEP, channel);
}

void InstrumentOperator::softReset(unsigned char channel)
{
    send(PC_SOFT_RESET, channel);
}

void InstrumentOperator::initDefaultSampling(unsigned char channel)
{
    send(PC_DEFAULT_SAMPLING, channel);
}

bool InstrumentOperator::startManualExperiment(unsigned char channel)
{
    return send(PC_MANUAL_START, channel);
}

bool InstrumentOperator::setManualSamplingParams(unsigned char channel, const QByteArray &samplingRecord)
{
    return sendAndWait(PC_MANUAL_SAMPLING_PARAMS, channel, samplingRecord, settingAckTimeoutMs);
}

bool InstrumentOperator::setManualGalvanoSetpoint(unsigned char channel, int rawSetpoint, unsigned char range)
{
    return send(PC_MANUAL_GALVANO_RAW, channel, packed(qint32(rawSetpoint), quint8(range)));
}

bool InstrumentOperator::setManualGalvanoSetpoint(unsigned char channel, float current)
{
    return send(PC_MANUAL_GALVANO_SETPOINT, channel, packed(current));
}

bool InstrumentOperator::setManualPotentioSetpoint(unsigned char channel, int rawSetpoint, unsigned char range)
{
    return send(PC_MANUAL_POTENTIO_RAW, channel, packed(qint32(rawSetpoint), quint8(range)));
}

bool InstrumentOperator::setManualPotentioSetpoint(unsigned char channel, float voltage)
{
    return send(PC_MANUAL_POTENTIO_SETPOINT, channel, packed(voltage));
}

bool InstrumentOperator::setManualOcp(unsigned char channel)
{
    return send(PC_MANUAL_OCP, channel);
}

bool InstrumentOperator::setVoltageRangingMode(unsigned char channel, voltageRange_t range)
{
    return send(PC_VOLTAGE_RANGE, channel, packed(quint8(range)));
}

bool InstrumentOperator::setCurrentRangingMode(unsigned char channel, currentRange_t range)
{
    return send(PC_CURRENT_RANGE, channel, packed(quint8(range)));
}

bool InstrumentOperator::setCurrentRangingMode(unsigned char channel, const Manual::RangingMode &mode)
{
    return send(PC_CURRENT_RANGE, channel, packed(mode.range));
}

void InstrumentOperator::setCompRange(unsigned char channel, const VekCompRange &compRange)
{
    send(PC_COMP_RANGE, channel, packed(compRange.getBandwidthIndex(), compRange.getStabilityFactor()));
}

void InstrumentOperator::setIRCompSettings(unsigned char channel, float uncompensatedResistance,
                                           float compensationFraction)
{
    send(PC_IR_COMP, channel, packed(uncompensatedResistance, compensationFraction));
}

void InstrumentOperator::setFFImpedance(unsigned char channel, float impedance)
{
    send(PC_FF_IMPEDANCE, channel, packed(impedance));
}

bool InstrumentOperator::setChannelLimits(unsigned char channel, double currentMin, double currentMax,
                                          double voltageMin, double voltageMax, double temperatureRatioMax)
{
    return sendAndWait(
        PC_CHANNEL_LIMITS, channel,
        packed(float(currentMin), float(currentMax), float(voltageMin), float(voltageMax), float(temperatureRatioMax)),
        settingAckTimeoutMs);
}

void InstrumentOperator::setChannelsLink(const std::vector<unsigned char> &channels, bool link)
{
    send(PC_CHANNELS_LINK, allChannels, packed(channelMask(channels), quint8(link)));
}

bool InstrumentOperator::SetFanMode(FanCtrlMode_t mode)
{
    return send(PC_FAN_MODE, deviceChannel, packed(quint8(mode)));
}

bool InstrumentOperator::SetFanSpeed(float speed)
{
    return send(PC_FAN_SPEED, deviceChannel, packed(speed));
}

bool InstrumentOperator::readDeviceStatus()
{
    return sendAndWait(PC_READ_DEVICE_STATUS, deviceChannel, QByteArray(), statusAckTimeoutMs);
}

void InstrumentOperator::readMetaData()
{
    send(PC_READ_META_DATA);
}

void InstrumentOperator::readMemoryData(bool firstBlock)
{
    send(PC_READ_MEMORY_DATA, deviceChannel, packed(quint8(firstBlock)));
}

bool InstrumentOperator::eraseMemoryData()
{
    return send(PC_ERASE_MEMORY_DATA);
}

void InstrumentOperator::requestGroundFloatState()
{
    send(PC_READ_GROUND_FLOAT);
}

void InstrumentOperator::readConfiguration(unsigned char channel)
{
    send(PC_READ_CONFIG, channel);
}

void InstrumentOperator::pingToDevice()
{
    send(PC_PING);
}

void InstrumentOperator::requestSDcardCalibrationHeader()
{
    send(PC_SD_CAL_HEADER_READ);
}

void InstrumentOperator::requestNextCalibrationData()
{
    send(PC_SD_CAL_DATA_NEXT);
}

void InstrumentOperator::requesFlashCalibrationData(unsigned char channel)
{
    send(PC_READ_FLASH_CAL, channel);
}

void InstrumentOperator::writeCalDataToDevice(unsigned char channel, const QByteArray &record)
{
    Wait wait(*this, AckInfo(channel, PC_WRITE_CAL_DATA), calibrationWriteMs);
    if (send(PC_WRITE_CAL_DATA, channel, record))
        wait.timesOut();
}

void InstrumentOperator::writeCalFileHeaderToSDCard(unsigned char channel, const QByteArray &header)
{
    send(PC_SD_CAL_HEADER_WRITE, channel, header);
}

void InstrumentOperator::calFileDataAppendToSDCard(unsigned char channel, const QByteArray &data)
{
    send(PC_SD_CAL_DATA_APPEND, channel, data);
}

void InstrumentOperator::writeHardwareDataToDevice(unsigned char channel, const QByteArray &record)
{
    send(PC_WRITE_HARDWARE_DATA, channel, record);
}

bool InstrumentOperator::uploadExperimentToInstrument(unsigned char channel, const QList<ExpNode_t> &nodes,
                                                      HardwareModel_t)
{
    _uploadVerdict = FW_SUCCESS;
    if (!_communicator)
        return false;
    pingToDevice();
    send(PC_NODE_LIST_BEGIN, channel, packed(quint16(nodes.size())));
    for (const ExpNode_t &node : nodes) {
        const FirmwareErrorCode verdict = appendNode(channel, node);
        _uploadVerdict = verdict;
        if (verdict != FW_SUCCESS)
            return false; // nothing is cleaned up: the instrument keeps what it got
    }
    return send(PC_NODE_LIST_END, channel);
}

FirmwareErrorCode InstrumentOperator::appendNode(unsigned char channel, const ExpNode_t &node)
{
    Wait wait(*this, AckInfo(channel, PC_NODE_APPEND), nodeAckTimeoutMs);
    send(PC_NODE_APPEND, channel, wireForm(node));
    if (wait.timesOut())
        letArrivedPacketsThrough(wait);
    return wait.nodeVerdict();
}

/// Lets what has reached the process come through to a wait whose time is up; all of it has when the mark has.
void InstrumentOperator::letArrivedPacketsThrough(Wait &wait)
{
    const int mark = ++_lastMark;
    wait.setMark(mark);
    _communicator->mark(mark);
    for (int pass = 0; pass < mostPassesOnTheRoad && _connected && !wait.isOver(); ++pass) {
        wait.goOn(nodeAckTimeoutMs);
        wait.timesOut();
    }
}

void InstrumentOperator::onMarkPassed(int number)
{
    assertOnThreadOf(*this);
    wakeWaits([number](Wait &wait) { return wait.takesMark(number); }, WaitEnd::Answered);
}

bool InstrumentOperator::send(PCcommand_t command, unsigned char channel, const QByteArray &payload)
{
    if (!_communicator)
        return false;
    _communicator->SendCommand(command, channel, payload);
    return true;
}

bool InstrumentOperator::sendAndWait(PCcommand_t command, unsigned char channel, const QByteArray &payload,
                                     int milliseconds)
{
    const AckInfo wanted(channel, command);
    Wait wait(*this, wanted, milliseconds);
    return send(command, channel, payload) && waitForAcknowledgment(wait, wanted, milliseconds);
}

bool InstrumentOperator::receivedAcknowledgment(const AckInfo &ack)
{
    {
        const QMutexLocker locker(&_guard);
        if (_acks.size() == mostUnclaimedAcks)
            _acks.removeFirst();
        _acks.append(ack);
    }
    wakeWaits([&ack](const Wait &wait) { return wait.isAnsweredBy(ack); }, WaitEnd::Answered);
    return true;
}

void InstrumentOperator::receivedNodeAcknowledgment(const AckInfo &ack)
{
    wakeWaits([&ack](Wait &wait) { return wait.takesNodeAck(ack); }, WaitEnd::Answered);
}

/// Wakes the waits for which a condition holds; it is asked under their guard.
template <typename Condition>
void InstrumentOperator::wakeWaits(Condition condition, WaitEnd reason)
{
    const QMutexLocker locker(&_guard);
    for (Wait *const wait : qAsConst(_waits)) {
        if (condition(*wait))
            wait->wake(reason);
    }
}

/**
 * An acknowledgement that comes after the wait is left to the next one for the same command: see compatibility.md, late
 * acknowledgements. The passes give one that a held thread kept back the time to come through.
 */
bool InstrumentOperator::waitForAcknowledgment(Wait &wait, const AckInfo &wanted, int milliseconds)
{
    for (int pass = 0; _connected;) {
        if (claimAcknowledgment(wanted))
            return true;
        if (wait.timesOut() && ++pass == ackPasses) // else woken, perhaps for what another wait has claimed
            break;
        wait.goOn(milliseconds);
    }
    return claimAcknowledgment(wanted);
}

bool InstrumentOperator::claimAcknowledgment(const AckInfo &wanted)
{
    const QMutexLocker locker(&_guard);
    for (auto ack = _acks.begin(); ack != _acks.end();) {
        if (ack->answersSameCommand(wanted)) {
            _acks.erase(ack);
            return true;
        }
        const bool isStray = ack->time - wanted.time > strayAckSeconds; // the clock was set back; old ones stay
        ack = isStray ? _acks.erase(ack) : ack + 1;
    }
    return false;
}
