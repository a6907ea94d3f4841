// SPDX-License-Identifier: MIT
#include "simulator/SimulatedInstrument.h"

#include "hardware_models/HardwareModelFactory.h"
#include "simulator/DeviceTerminal.h"
#include "simulator/GaleFrontEnd.h"
#include "simulator/MainFrontEnd.h"
#include "simulator/Payload.h"
#include "simulator/PseudoTerminal.h"

#include <QStringList>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr quint64 switchedOnFor = 1000000000; ///< ticks before the first command: a clock that reads 0 means "unknown"
constexpr int hardwareRecordSize = 256;
constexpr int metaDataSize = 56;
constexpr quint8 unknownModel = 200;
constexpr int pacedIntervalMs = 2;
constexpr qint64 sliceNs = 10000000;
constexpr int mostCyclesOfABatch = 1000; ///< of a cycler, for which each batch is a point of its own
constexpr int fullQueue = 1 << 17;       ///< bytes that wait before time stands still

std::unique_ptr<SerialEnd> makeTerminal(const SimulatedInstrument::Setup &setup)
{
    if (!setup.devicePath.isEmpty())
        return std::make_unique<DeviceTerminal>(setup.devicePath);
    if (!setup.linkPath.isEmpty())
        return std::make_unique<PseudoTerminal>(setup.linkPath);
    return std::make_unique<PseudoTerminal>();
}

} // namespace

const SimulatedInstrument::CommandRow SimulatedInstrument::commandRows[] = {
    {PC_ECHO_TEST, &SimulatedInstrument::stayStill},
    {PC_PING, &SimulatedInstrument::answerPing},
    {PC_READ_DEVICE_STATUS, &SimulatedInstrument::answerStatus},
    {PC_READ_FLASH_CAL, &SimulatedInstrument::answerCalibration},
    {PC_WRITE_CAL_DATA, &SimulatedInstrument::takeCalibration},
    {PC_READ_HARDWARE_VERSION, &SimulatedInstrument::answerHardware},
    {PC_WRITE_HARDWARE_DATA, &SimulatedInstrument::takeHardware},
    {PC_READ_CHANNEL_COUNT, &SimulatedInstrument::answerChannelCount},
    {PC_SOFT_RESET, &SimulatedInstrument::answerReset},
    {PC_READ_FIRMWARE_VERSION, &SimulatedInstrument::answerFirmwareVersion},
    {PC_READ_META_DATA, &SimulatedInstrument::answerMetaData},
    {PC_READ_MEMORY_DATA, &SimulatedInstrument::answerMemory},
    {PC_ERASE_MEMORY_DATA, &SimulatedInstrument::answerErase},
    {PC_SET_TIME, &SimulatedInstrument::stayStill},
    {PC_SD_CAL_HEADER_WRITE, &SimulatedInstrument::answerSdWrite},
    {PC_SD_CAL_DATA_APPEND, &SimulatedInstrument::answerSdWrite},
    {PC_SD_CAL_HEADER_READ, &SimulatedInstrument::answerSdHeader},
    {PC_SD_CAL_DATA_NEXT, &SimulatedInstrument::answerSdData},
    {PC_READ_GROUND_FLOAT, &SimulatedInstrument::answerGround},
    {PC_READ_FIRMWARE_CHECKSUM, &SimulatedInstrument::answerChecksum},
    {PC_READ_CONFIG, &SimulatedInstrument::answerConfiguration},
    {PC_GALE_PRE_HANDSHAKE, &SimulatedInstrument::stayStill},
    {PC_CHANNELS_LINK, &SimulatedInstrument::answerLink},
    {PC_FAN_SPEED, &SimulatedInstrument::stayStill},
    {PC_FAN_MODE, &SimulatedInstrument::answerFanMode},
};

SimulatedInstrument::SimulatedInstrument(const Setup &setup, std::vector<std::unique_ptr<Cell>> cells, QObject *parent)
    : QObject(parent), _setup(setup), _model(HardwareModelFactory::getHardwareModel(setup.model)),
      _terminal(makeTerminal(setup)), _line(*_terminal, _setup.faults), _sdCard(int(cells.size())),
      _counts(cells.size()), _now(switchedOnFor)
{
    makeChannels(std::move(cells));
    _hardwareRecord.append(char(setup.model)).append(setup.name.toUtf8().left(hardwareRecordSize - 2)).append('\n');
    _hardwareRecord.append(hardwareRecordSize - _hardwareRecord.size(), '\0');
    _firmwareChecksum = QByteArray::fromHex(_model->hexFileCheckSum().toLatin1());
    _timer.setTimerType(Qt::PreciseTimer);
    _wall.start();
    connect(&_timer, &QTimer::timeout, this, &SimulatedInstrument::onTimer);
    connect(_terminal.get(), &SerialEnd::received, this, &SimulatedInstrument::onReceived);
    connect(_terminal.get(), &SerialEnd::drained, this, &SimulatedInstrument::schedule);
}

void SimulatedInstrument::makeChannels(std::vector<std::unique_ptr<Cell>> cells)
{
    SimulatedChannel::Setup &setup = _setup.channel;
    const quint32 seed = quint32(setup.seed);
    setup.events = _setup.faults.events;
    setup.startRefusal = _setup.faults.startRefusal;
    setup.nodeRefusal = _setup.faults.nodeRefusal;
    setup.refusedNode = _setup.faults.refusedNode;
    setup.runsAc = _model->isSupportACExperiment();
    setup.hasTare = setup.hasLoadImpedance = isGale();
    setup.acCycles = isGale() ? mostCyclesOfABatch : setup.acCycles;
    if (!_model->supportsTemperature())
        setup.temperature = std::numeric_limits<double>::quiet_NaN();
    const auto response = std::make_shared<const AnalogResponse>(*_model, seed);
    if (_model->sdCardHasCalData())
        _sdCard.setContents(response->tables(), _setup.faults.sdCard);
    ChannelOutput &output = *this;
    for (auto &cell : cells) {
        const int number = int(_channels.size());
        setup.lagsFrom = _setup.faults.lagsFrom.value(number, std::numeric_limits<double>::infinity());
        std::unique_ptr<FrontEnd> frontEnd;
        if (isGale())
            frontEnd = std::make_unique<GaleFrontEnd>(seed, number, setup.noise);
        else
            frontEnd = std::make_unique<MainFrontEnd>(_model, response, _setup.harmonics, setup.noise, seed, number);
        _channels.push_back(
            std::make_unique<SimulatedChannel>(number, std::move(frontEnd), std::move(cell), setup, output));
    }
}

QString SimulatedInstrument::statistics() const
{
    QStringList lines;
    for (std::size_t i = 0; i < _counts.size(); ++i)
        lines +=
            QStringLiteral("channel %1: %2 DC records, %3 AC records").arg(i).arg(_counts[i].dc).arg(_counts[i].ac);
    return lines.join(QLatin1Char('\n'));
}

// ---- frames out ----

void SimulatedInstrument::send(int channel, Notifications_t type, const QByteArray &payload)
{
    if (type == (isGale() ? NT_AC_DATA_INVALID : NT_AC_DATA)) // a cycler's batch begins with its header
        ++_counts[std::size_t(channel)].ac;
    _line.send(quint8(type), channel, payload);
}

void SimulatedInstrument::onDcRecordSent(int channel, int nodeIndex, const DcSample &sample)
{
    if (_truth)
        _truth->append(channel, nodeIndex, sample);
    ++_counts[std::size_t(channel)].dc;
    if (_setup.faults.disconnectAfter >= 0 && --_setup.faults.disconnectAfter < 0)
        unplug();
}

void SimulatedInstrument::onPassDone(int channel, int nodeIndex, quint64 tick, double charge)
{
    if (_passes)
        _passes->append(channel, nodeIndex, tick, charge);
}

void SimulatedInstrument::setFiles(TruthFile *truth, PassFile *passes)
{
    _truth = truth;
    _passes = passes;
}

void SimulatedInstrument::switchOff()
{
    _isOn = false;
    for (const auto &channel : _channels)
        channel->reset();
    _sdCard.rewind();
    _line.clear();
    _received.clear();
    _link = Link();
    _askedForTime = false;
    schedule();
}

void SimulatedInstrument::switchOn(const QByteArray &firmwareChecksum)
{
    _isOn = true;
    _firmwareChecksum = firmwareChecksum;
}

void SimulatedInstrument::unplug()
{
    _line.flush();
    _timer.stop();
    QTimer::singleShot(0, this, [this] {
        _terminal->unplug();
        Q_EMIT unplugged();
    });
}

// ---- frames in ----

void SimulatedInstrument::onReceived(const QByteArray &bytes)
{
    if (!_isOn)
        return;
    if (_setup.faults.echoes)
        return _line.sendRaw(bytes);
    if (_timer.isActive() && !isFree())
        runPaced();
    _received += bytes;
    const QVector<Frame> frames = takeFrames(_received, _skipped);
    for (const Frame &frame : frames) {
        const PCcommand_t command = PCcommand_t(quint8(frame.type));
        _line.beginAnswer(command);
        obey(frame);
        _line.endAnswer();
    }
    flush();
    schedule();
}

void SimulatedInstrument::flush()
{
    _line.flush();
    if (_truth)
        _truth->flush(); // what has been sent is on record, even if the process is ended in its next computation
    if (_passes)
        _passes->flush();
}

void SimulatedInstrument::obey(const Frame &frame)
{
    const PCcommand_t command = PCcommand_t(quint8(frame.type));
    const auto row = std::find_if(std::begin(commandRows), std::end(commandRows),
                                  [command](const CommandRow &each) { return each.command == command; });
    if (row != std::end(commandRows))
        return (this->*row->answer)(frame);
    for (int channel = 0; channel < int(_channels.size()); ++channel)
        if (frame.channel == allChannels || frame.channel == unsigned(channel))
            obeyOnChannel(channel, command, frame.payload);
}

void SimulatedInstrument::obeyOnChannel(int channel, PCcommand_t command, const QByteArray &payload)
{
    if (command == PC_EXPERIMENT_START) {
        if (!formGroup(channel))
            return send(channel, NT_GENERAL_ACK, packed(quint8(command), quint8(FW_CHANNEL_NOT_IDLE)));
        if (_setup.faults.disconnectAt >= 0.0 && !_unplugTick)
            _unplugTick = _now + quint64(_setup.faults.disconnectAt * ticksPerSecond);
    }
    _channels[std::size_t(channel)]->obey(command, payload, _now);
}

/// The mask knows channels modulo 32, so its group lies in the block of the channel that is started.
bool SimulatedInstrument::formGroup(int leader)
{
    const Link link = std::exchange(_link, Link());
    if (!(link.mask >> (leader % 32) & 1u))
        return true;
    std::vector<SimulatedChannel *> members;
    for (int bit = 0; bit < 32; ++bit) {
        const std::size_t channel = std::size_t(leader) / 32 * 32 + std::size_t(bit);
        if (link.mask >> bit & 1u && channel < _channels.size())
            members.push_back(_channels[channel].get());
    }
    return _channels[std::size_t(leader)]->lead(members, link.isBipolar);
}

void SimulatedInstrument::stayStill(const Frame &)
{
}

void SimulatedInstrument::answerPing(const Frame &frame)
{
    send(int(frame.channel), NT_PING_REPLY, {});
}

/**
 * Which of the first four channels run. A host looks at that only in a valid word, which this one is always: the
 * instrument knows what its channels do. Nothing is kept here from before, so no bit of that is set.
 */
quint16 SimulatedInstrument::status() const
{
    constexpr int reportedChannels = 4;
    unsigned word = 1u << 8;
    for (int channel = 0; channel < std::min(reportedChannels, int(_channels.size())); ++channel) {
        if (_channels[std::size_t(channel)]->isBusy())
            word |= 1u << (reportedChannels + channel);
    }
    return quint16(word);
}

/// The clock is asked for once, as after switching on.
void SimulatedInstrument::answerStatus(const Frame &)
{
    send(deviceChannel, NT_DEVICE_STATUS, packed(isGale() ? quint16(0) : status()));
    if (!_askedForTime)
        send(deviceChannel, NT_TIME_REQUEST, {});
    _askedForTime = true;
}

void SimulatedInstrument::answerCalibration(const Frame &frame)
{
    if (frame.channel < _channels.size() && !_setup.faults.missingCalibration.contains(int(frame.channel)))
        send(int(frame.channel), NT_RAW_CAL_DATA, _channels[frame.channel]->frontEnd().calibration());
}

void SimulatedInstrument::takeCalibration(const Frame &frame)
{
    if (frame.channel < _channels.size())
        _channels[frame.channel]->frontEnd().setCalibration(frame.payload);
}

/// Only a new connection asks for this record: what an earlier host had asked to be sampled is not for the new one.
void SimulatedInstrument::answerHardware(const Frame &)
{
    for (const auto &channel : _channels)
        channel->stopIdleSampling();
    _sdCard.rewind();
    QByteArray record = _hardwareRecord;
    if (_setup.faults.hasUnknownModel)
        record[0] = char(unknownModel);
    send(deviceChannel, NT_HARDWARE_VERSION, record);
}

void SimulatedInstrument::takeHardware(const Frame &frame)
{
    _hardwareRecord = frame.payload.left(hardwareRecordSize);
    _hardwareRecord.append(hardwareRecordSize - _hardwareRecord.size(), '\0');
}

void SimulatedInstrument::answerChannelCount(const Frame &)
{
    send(deviceChannel, NT_CHANNEL_COUNT, packed(quint8(_channels.size())));
}

/// Without an answer: the instrument restarts at once.
void SimulatedInstrument::answerReset(const Frame &)
{
    for (const auto &channel : _channels)
        channel->reset();
    Q_EMIT resetRequested();
}

void SimulatedInstrument::answerFirmwareVersion(const Frame &)
{
    send(deviceChannel, NT_FIRMWARE_VERSION, _model->suitableFirmware().toUtf8());
}

void SimulatedInstrument::answerChecksum(const Frame &)
{
    QByteArray checksum = _firmwareChecksum;
    if (_setup.faults.hasWrongFirmware)
        checksum =
            checksum.isEmpty() ? QByteArrayLiteral("\x01") : checksum.replace(0, 1, QByteArray(1, char(~checksum[0])));
    send(deviceChannel, NT_FIRMWARE_CHECKSUM, checksum);
}

void SimulatedInstrument::answerMetaData(const Frame &)
{
    send(deviceChannel, NT_META_DATA, QByteArray(metaDataSize, '\0'));
}

void SimulatedInstrument::answerMemory(const Frame &)
{
    send(deviceChannel, NT_MEMORY_DATA_START, packed(quint8(0))); // nothing is kept, so nothing follows
}

void SimulatedInstrument::answerErase(const Frame &)
{
    send(deviceChannel, NT_MEMORY_DATA_ERASED, packed(quint8(1)));
}

void SimulatedInstrument::answerSdWrite(const Frame &frame)
{
    send(int(frame.channel), NT_SD_CAL_WRITE_ACK, frame.payload);
}

void SimulatedInstrument::answerSdHeader(const Frame &)
{
    const SdCard::Packet packet = _sdCard.nextHeader();
    send(packet.channel, NT_SD_CAL_HEADER, packet.bytes);
}

void SimulatedInstrument::answerSdData(const Frame &)
{
    if (!_sdCard.hasData())
        return;
    const SdCard::Packet packet = _sdCard.nextData();
    send(packet.channel, NT_SD_CAL_DATA, packet.bytes);
}

void SimulatedInstrument::answerGround(const Frame &)
{
    send(deviceChannel, NT_GROUND_FLOAT, packed(quint8(1)));
}

void SimulatedInstrument::answerConfiguration(const Frame &frame)
{
    if (isGale())
        send(int(frame.channel), NT_CONFIG, packed(GaleFrontEnd::configuration(int(frame.channel) / 2)));
}

void SimulatedInstrument::answerLink(const Frame &frame)
{
    if (isGale())
        _link = {readAt<quint32>(frame.payload, 0), readAt<quint8>(frame.payload, 4) != 0};
    const FirmwareErrorCode code = isGale() ? FW_SUCCESS : FW_NOT_SUPPORTED;
    send(int(frame.channel), NT_GENERAL_ACK, packed(quint8(PC_CHANNELS_LINK), quint8(code)));
}

void SimulatedInstrument::answerFanMode(const Frame &)
{
    const FirmwareErrorCode code = _model->isFanModeSupported() ? FW_SUCCESS : FW_NOT_SUPPORTED;
    send(deviceChannel, NT_GENERAL_ACK, packed(quint8(PC_FAN_MODE), quint8(code)));
}

// ---- time ----

bool SimulatedInstrument::isFree() const
{
    return _setup.speed <= 0.0 &&
           std::any_of(_channels.begin(), _channels.end(), [](const auto &each) { return each->isRunningFreely(); });
}

void SimulatedInstrument::schedule()
{
    const bool isActive =
        std::any_of(_channels.begin(), _channels.end(), [](const auto &each) { return each->isActive(); });
    if (!isActive || !_terminal->isOpen() || _line.bytesWaiting() > fullQueue) {
        _timer.stop();
        _isAnchored = false;
        return;
    }
    if (isFree())
        _isAnchored = false;
    else if (!_isAnchored)
        anchor();
    const int interval = isFree() ? 0 : pacedIntervalMs;
    if (!_timer.isActive() || _timer.interval() != interval)
        _timer.start(interval);
}

void SimulatedInstrument::anchor()
{
    _anchorTick = _now;
    _anchorNs = _wall.nsecsElapsed();
    _isAnchored = true;
}

quint64 SimulatedInstrument::wallTick() const
{
    const double speed = _setup.speed > 0.0 ? _setup.speed : 1.0;
    return _anchorTick + quint64(double(_wall.nsecsElapsed() - _anchorNs) * 1e-9 * speed * ticksPerSecond);
}

void SimulatedInstrument::onTimer()
{
    if (isFree())
        runFreely();
    else
        runPaced();
    flush();
    schedule();
}

/// The channel whose turn comes first does its next step. @return false if none has one by then
bool SimulatedInstrument::runOne(quint64 until)
{
    const auto next = std::min_element(_channels.begin(), _channels.end(),
                                       [](const auto &a, const auto &b) { return a->nextTick() < b->nextTick(); });
    const quint64 tick = (*next)->nextTick();
    if (tick > until || !_terminal->isOpen())
        return false;
    if (_unplugTick && tick > *_unplugTick) {
        unplug();
        return false;
    }
    _now = std::max(_now, tick);
    (*next)->step();
    return true;
}

void SimulatedInstrument::runFreely()
{
    const qint64 end = _wall.nsecsElapsed() + sliceNs;
    while (isFree() && _wall.nsecsElapsed() < end && _line.bytesWaiting() < fullQueue) {
        if (!runOne(std::numeric_limits<quint64>::max() - 1))
            break;
    }
}

void SimulatedInstrument::runPaced()
{
    if (!_isAnchored)
        anchor();
    const quint64 target = wallTick();
    const qint64 end = _wall.nsecsElapsed() + sliceNs;
    while (runOne(target)) {
        if (_wall.nsecsElapsed() > end || _line.bytesWaiting() > fullQueue)
            return anchor(); // too much for one go: time runs slower
    }
    _now = std::max(_now, target);
}
