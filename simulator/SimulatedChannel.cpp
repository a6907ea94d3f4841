// SPDX-License-Identifier: MIT
#include "simulator/SimulatedChannel.h"

#include "simulator/Payload.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr quint64 never = std::numeric_limits<quint64>::max();
constexpr double idleInterval = 1.0;   ///< seconds, also of a manual experiment before the host says otherwise
constexpr double toleratedOver = 1.05; ///< of the model's limits, before the instrument protects itself
constexpr int highestCompensation = 10;
constexpr int samplesOfALag = 2; ///< of one, a member would still meet the sample before of a leader, who reports last

} // namespace

const SimulatedChannel::CommandRow SimulatedChannel::commandRows[] = {
    {PC_EXPERIMENT_START, &SimulatedChannel::startExperiment},
    {PC_EXPERIMENT_STOP, &SimulatedChannel::stopExperiment},
    {PC_EXPERIMENT_PAUSE, &SimulatedChannel::pauseExperiment},
    {PC_EXPERIMENT_RESUME, &SimulatedChannel::resumeExperiment},
    {PC_DEFAULT_SAMPLING, &SimulatedChannel::startIdleSampling},
    {PC_MANUAL_START, &SimulatedChannel::startManual},
    {PC_MANUAL_SAMPLING_PARAMS, &SimulatedChannel::setManualSampling},
    {PC_MANUAL_GALVANO_RAW, &SimulatedChannel::setManualCurrentCode},
    {PC_MANUAL_POTENTIO_RAW, &SimulatedChannel::setManualVoltageCode},
    {PC_MANUAL_OCP, &SimulatedChannel::setManualOpenCircuit},
    {PC_CURRENT_RANGE, &SimulatedChannel::setManualCurrentRange},
    {PC_COMP_RANGE, &SimulatedChannel::setCompensation},
    {PC_SKIP_STEP, &SimulatedChannel::skipStep},
    {PC_IR_COMP, &SimulatedChannel::setIrCompensation},
    {PC_VOLTAGE_RANGE, &SimulatedChannel::setManualVoltageRange},
    {PC_MANUAL_GALVANO_SETPOINT, &SimulatedChannel::setManualCurrent},
    {PC_MANUAL_POTENTIO_SETPOINT, &SimulatedChannel::setManualVoltage},
    {PC_FF_IMPEDANCE, &SimulatedChannel::setLoadImpedance},
    {PC_CHANNEL_LIMITS, &SimulatedChannel::setSafetyLimits},
};

SimulatedChannel::SimulatedChannel(int number, std::unique_ptr<FrontEnd> frontEnd, std::unique_ptr<Cell> cell,
                                   const Setup &setup, ChannelOutput &output)
    : _number(number), _output(output), _setup(setup), _random(setup.seed * 64 + quint64(number)),
      _frontEnd(std::move(frontEnd)), _regulator(std::move(cell)), _parts{{this, 1.0, 1.0}}
{
}

// ---- time ----

quint64 SimulatedChannel::nextTick() const
{
    switch (_mode) {
    case Mode::Experiment:
        return _runner->nextTick();
    case Mode::Idle:
    case Mode::Manual:
        return _freeRun->nextTick();
    case Mode::Stopped:
    case Mode::Member:
        break;
    }
    return never;
}

void SimulatedChannel::step()
{
    if (_mode == Mode::Experiment)
        _runner->step();
    else if (_mode == Mode::Idle || _mode == Mode::Manual)
        stepFreeRun();
    obeyPendingStop();
}

/// What an observer's call found out about the run waits until the run can be ended.
void SimulatedChannel::obeyPendingStop()
{
    if (_pendingStop && _mode == Mode::Experiment)
        _runner->stop(0, *_pendingStop);
    else if (_pendingStop && _mode == Mode::Manual)
        endManual(_freeRun->now(), *_pendingStop);
    _pendingStop.reset();
}

void SimulatedChannel::stepFreeRun()
{
    const RunSample sample = _freeRun->step();
    onSample(sample);
    if (_mode == Mode::Manual && !_pendingStop)
        _pendingStop = _limits.brokenBy(sample.reading);
}

void SimulatedChannel::begin(Mode mode, quint64 now)
{
    _mode = mode;
    _startTick = now;
    _nextEvent = 0;
    _nodeIndex = -1;
    _pendingStop.reset();
    setRanges(index(currentRange_t::Auto), index(voltageRange_t::Auto));
    _freeRun.reset();
    if (mode == Mode::Idle || mode == Mode::Manual)
        _freeRun = std::make_unique<FreeRun>(_regulator, now, idleInterval);
    if (mode == Mode::Idle)
        return;
    if (_setup.hasTare)
        for (const FrontEnd::Packet &packet : _frontEnd->tare(_random))
            send(packet.type, packet.payload);
    if (mode != Mode::Member)
        send(NT_DATA_BEGIN, packed(_frontEnd->wireTick(now)));
}

void SimulatedChannel::stopIdleSampling()
{
    if (_mode == Mode::Idle)
        _mode = Mode::Stopped;
}

void SimulatedChannel::reset()
{
    dissolveGroup();
    _mode = Mode::Stopped;
    _leader = nullptr;
    _store = NodeStore();
    _limits = SafetyLimits();
    _temperatureLimit = std::numeric_limits<float>::infinity();
}

// ---- what a run reports ----

void SimulatedChannel::onNodeBegin(quint64 tick, int index)
{
    const ExpNode_t &node = _store.nodes().at(index);
    _chargeBefore = node.flags & NodeFlag::chargeLimit ? 0.0 : _lastCharge;
    for (const Part &part : _parts)
        part.channel->beginNode(tick, index, node);
    if (!hasRangesOf(node) || (NodeProgram::isImpedance(node.nodeType()) && !_setup.runsAc))
        _pendingStop = STOP_BAD_NODE;
}

void SimulatedChannel::beginNode(quint64 tick, int index, const ExpNode_t &node)
{
    _nodeIndex = index;
    const int currentNibble = node.ranges & 0x0F;
    const int voltageNibble = node.ranges >> 4;
    setRanges(currentNibble < _frontEnd->currentRangeCount() ? currentNibble : ::index(currentRange_t::Auto),
              voltageNibble < _frontEnd->voltageRangeCount() ? voltageNibble : ::index(voltageRange_t::Auto));
    send(NT_NODE_BEGIN, packed(_frontEnd->wireTick(tick), quint16(index)));
}

void SimulatedChannel::onSample(const RunSample &sample)
{
    if (_mode != Mode::Idle) {
        meetEvents(sample.tick);
        checkTemperature();
    }
    ++_counter;
    _lastCharge = sample.charge;
    for (const Part &part : _parts)
        part.channel->measure(sample, part, _counter);
}

void SimulatedChannel::onAcRecord(const RunSample &sample, const AcPlan &plan,
                                  const std::vector<std::complex<double>> &impedances)
{
    meetEvents(sample.tick);
    checkTemperature();
    for (const Part &part : _parts) {
        SimulatedChannel &channel = *part.channel;
        const AcMeasurement measurement{plan,       sample.tick,       sample.reading,
                                        impedances, part.currentShare, part.voltageShare};
        for (const FrontEnd::Packet &packet : channel._frontEnd->acPackets(measurement, channel._random))
            channel.send(packet.type, packet.payload);
    }
}

void SimulatedChannel::onNodeDone(quint64 tick, int index)
{
    _output.onPassDone(_number, index, tick, _lastCharge - _chargeBefore);
    sendToAll(NT_NODE_DONE, packed(_frontEnd->wireTick(tick), quint16(index), quint16(0)));
}

void SimulatedChannel::onNodeSkipped()
{
    sendToAll(NT_NODE_SKIPPED);
}

/// The leader is the last to end: a host that hears of it may use all members again at once.
void SimulatedChannel::onRunDone(quint64 tick, ExpStopType_t reason)
{
    _mode = Mode::Stopped;
    const std::vector<Part> parts = _parts;
    dissolveGroup();
    for (const Part &part : parts)
        part.channel->send(NT_EXPERIMENT_DONE, packed(_frontEnd->wireTick(tick), quint8(reason)));
}

// ---- groups ----

bool SimulatedChannel::lead(const std::vector<SimulatedChannel *> &members, bool isBipolar)
{
    if (std::any_of(members.begin(), members.end(), [](const SimulatedChannel *each) { return each->isBusy(); }))
        return false;
    std::vector<Part> parts;
    double rest = 1.0;
    for (SimulatedChannel *member : members) {
        const double uneven = 1.0 + 0.02 * (2.0 * _random.uniform() - 1.0);
        const double share = isBipolar ? (member->_number % 2 == 0 ? 1.0 : -1.0) : uneven / double(members.size());
        if (member != this)
            parts.push_back({member, share, isBipolar ? 0.5 * share : 1.0});
        rest -= member != this ? share : 0.0;
    }
    const double own = isBipolar ? (_number % 2 == 0 ? 1.0 : -1.0) : rest;
    parts.push_back({this, own, isBipolar ? 0.5 * own : 1.0});
    _parts = parts;
    return true;
}

void SimulatedChannel::dissolveGroup()
{
    for (const Part &part : _parts) {
        if (part.channel != this)
            part.channel->_mode = Mode::Stopped;
        part.channel->_leader = nullptr;
    }
    _parts = {{this, 1.0, 1.0}};
}

void SimulatedChannel::sendToAll(Notifications_t type, const QByteArray &payload)
{
    for (const Part &part : _parts)
        part.channel->send(type, payload);
}

// ---- one sample ----

double SimulatedChannel::secondsOfRun(quint64 tick) const
{
    return double(tick - _startTick) / ticksPerSecond;
}

void SimulatedChannel::meetEvents(quint64 tick)
{
    const double seconds = secondsOfRun(tick);
    for (; _nextEvent < _setup.events.size() && _setup.events[_nextEvent].seconds <= seconds; ++_nextEvent) {
        const TimedEvent &event = _setup.events[_nextEvent];
        if (event.alarm != NT_IGNORED_1)
            send(event.alarm, event.payload);
        if (event.stops)
            _pendingStop = event.stops;
    }
}

void SimulatedChannel::checkTemperature()
{
    if (!std::isfinite(_temperatureLimit))
        return;
    if (std::isnan(_setup.temperature))
        _pendingStop = STOP_NO_TEMPERATURE;
    else if (_frontEnd->isTooHot(_setup.temperature, _temperatureLimit))
        _pendingStop = STOP_TEMPERATURE_MAX;
}

bool SimulatedChannel::hasRangesOf(const ExpNode_t &node) const
{
    constexpr int automatic = 15;
    const int currentNibble = node.ranges & 0x0F;
    const int voltageNibble = node.ranges >> 4;
    return (currentNibble == automatic || currentNibble < _frontEnd->currentRangeCount()) &&
           (voltageNibble == automatic || voltageNibble < _frontEnd->voltageRangeCount());
}

/// In a fixed range no more can be set than it holds; a group sets what its members hold together.
void SimulatedChannel::setRanges(int currentRange, int voltageRange)
{
    _currentRangeSetting = currentRange;
    _voltageRangeSetting = voltageRange;
    double currentShare = 0.0;
    double voltageShare = 0.0;
    for (const Part &part : _parts) {
        currentShare = std::max(currentShare, std::abs(part.currentShare));
        voltageShare = std::max(voltageShare, std::abs(part.voltageShare));
    }
    Span currents;
    Span voltages;
    if (currentRange != index(currentRange_t::Auto))
        currents = _frontEnd->settable(currentRange_t(currentRange)).times(1.0 / currentShare);
    if (voltageRange != index(voltageRange_t::Auto))
        voltages = _frontEnd->settable(voltageRange_t(voltageRange)).times(1.0 / voltageShare);
    _regulator.setSpans(currents, voltages);
}

void SimulatedChannel::chooseRanges(const CellReading &reading)
{
    _currentRange = _currentRangeSetting == index(currentRange_t::Auto) ? _frontEnd->rangeForCurrent(reading.current)
                                                                        : currentRange_t(_currentRangeSetting);
    _voltageRange = _voltageRangeSetting == index(voltageRange_t::Auto) ? _frontEnd->rangeForVoltage(reading.voltage)
                                                                        : voltageRange_t(_voltageRangeSetting);
}

void SimulatedChannel::measure(const RunSample &run, const Part &part, quint8 counter)
{
    DcSample sample;
    sample.tick = run.tick;
    sample.voltage = run.reading.voltage * part.voltageShare;
    sample.current = run.reading.current * part.currentShare;
    sample.counterElectrode = -sample.current * _setup.counterResistance;
    sample.charge = run.charge * part.currentShare;
    sample.temperature = _setup.temperature;
    chooseRanges({sample.voltage, sample.current});
    const bool isBehind = secondsOfRun(run.tick) >= _setup.lagsFrom;
    sendDcRecord(sample, quint8(counter - (isBehind ? samplesOfALag : 0)));
}

void SimulatedChannel::sendDcRecord(const DcSample &sample, quint8 counter)
{
    DcSample measured = sample;
    if (_setup.noise > 0.0) {
        measured.voltage += _setup.noise * _frontEnd->fullScale(_voltageRange) * _random.normal();
        measured.current += _setup.noise * _frontEnd->fullScale(_currentRange) * _random.normal();
    }
    send(NT_DC_DATA, _frontEnd->dcRecord(measured, _currentRange, _voltageRange, counter));
    _output.onDcRecordSent(_number, _nodeIndex, sample);
}

void SimulatedChannel::send(Notifications_t type, const QByteArray &payload)
{
    _output.send(_number, type, payload);
}

// ---- commands ----

bool SimulatedChannel::obey(PCcommand_t command, const QByteArray &payload, quint64 now)
{
    if (takeNodeList(command, payload))
        return true;
    const auto row = std::find_if(std::begin(commandRows), std::end(commandRows),
                                  [command](const CommandRow &each) { return each.command == command; });
    if (row == std::end(commandRows))
        return false;
    const Answer answer = (this->*row->handler)(payload, now);
    send(NT_GENERAL_ACK, packed(quint8(command), quint8(answer.code)));
    if (answer.code == FW_SUCCESS && answer.action)
        answer.action();
    return true;
}

bool SimulatedChannel::takeNodeList(PCcommand_t command, const QByteArray &payload)
{
    switch (command) {
    case PC_NODE_LIST_BEGIN:
        _offeredNodes = 0;
        if (!isBusy())
            _store.begin(readAt<quint16>(payload, 0));
        return true;
    case PC_NODE_APPEND:
        send(NT_NODE_APPENDED, packed(quint8(takeNode(payload))));
        return true;
    case PC_NODE_LIST_END:
        if (!isBusy())
            _store.end();
        return true;
    default:
        return false;
    }
}

FirmwareErrorCode SimulatedChannel::takeNode(const QByteArray &record)
{
    if (++_offeredNodes == _setup.refusedNode)
        return _setup.nodeRefusal;
    return isBusy() ? FW_CHANNEL_NOT_IDLE : _store.append(record);
}

SimulatedChannel::Answer SimulatedChannel::startExperiment(const QByteArray &, quint64 now)
{
    if (_setup.startRefusal != FW_SUCCESS)
        return {_setup.startRefusal};
    if (isBusy())
        return {FW_CHANNEL_NOT_IDLE};
    if (!_store.isComplete())
        return {FW_NO_EXPERIMENT};
    return {FW_SUCCESS, [this, now] {
                for (const Part &part : _parts) {
                    part.channel->_leader = part.channel == this ? nullptr : this;
                    part.channel->begin(part.channel == this ? Mode::Experiment : Mode::Member, now);
                }
                const double leads = double(_parts.size()); // a group carries the current of all
                _runner = std::make_unique<NodeRunner>(_regulator, static_cast<RunObserver &>(*this), _store.nodes());
                _runner->setSafetyLimits(_limits);
                _runner->setInstrumentLimits(toleratedOver * _frontEnd->settableCurrent() * leads,
                                             toleratedOver * _frontEnd->bearableVoltage());
                _runner->setAcCycles(_setup.acCycles);
                _runner->start(now);
                obeyPendingStop();
            }};
}

SimulatedChannel::Answer SimulatedChannel::stopExperiment(const QByteArray &payload, quint64 now)
{
    if (_leader)
        return _leader->stopExperiment(payload, now);
    if (_mode == Mode::Experiment)
        return {FW_SUCCESS, [this, now] { _runner->stop(now, STOP_BY_USER); }};
    if (_mode == Mode::Manual)
        return {FW_SUCCESS, [this, now] { endManual(now, STOP_BY_USER); }};
    return {FW_BAD_CHANNEL_STATE};
}

SimulatedChannel::Answer SimulatedChannel::pauseExperiment(const QByteArray &payload, quint64 now)
{
    if (_leader)
        return _leader->pauseExperiment(payload, now);
    if (_mode != Mode::Experiment || _runner->isPaused())
        return {FW_BAD_CHANNEL_STATE};
    return {FW_SUCCESS, [this, now] {
                _runner->pause(now);
                if (_runner->isPaused())
                    sendToAll(NT_EXPERIMENT_PAUSED);
            }};
}

SimulatedChannel::Answer SimulatedChannel::resumeExperiment(const QByteArray &payload, quint64 now)
{
    if (_leader)
        return _leader->resumeExperiment(payload, now);
    if (_mode != Mode::Experiment || !_runner->isPaused())
        return {FW_BAD_CHANNEL_STATE};
    return {FW_SUCCESS, [this, now] {
                _runner->resume(now);
                sendToAll(NT_EXPERIMENT_RESUMED);
            }};
}

SimulatedChannel::Answer SimulatedChannel::skipStep(const QByteArray &payload, quint64 now)
{
    if (_leader)
        return _leader->skipStep(payload, now);
    if (!isRunningFreely())
        return {FW_BAD_CHANNEL_STATE};
    return {FW_SUCCESS, [this, now] { _runner->skip(now); }};
}

SimulatedChannel::Answer SimulatedChannel::startIdleSampling(const QByteArray &, quint64 now)
{
    if (isBusy())
        return {FW_CHANNEL_NOT_IDLE};
    return {FW_SUCCESS, [this, now] { begin(Mode::Idle, now); }};
}

SimulatedChannel::Answer SimulatedChannel::startManual(const QByteArray &, quint64 now)
{
    if (_setup.startRefusal != FW_SUCCESS)
        return {_setup.startRefusal};
    if (isBusy())
        return {FW_MANUAL_START_FAILED};
    return {FW_SUCCESS, [this, now] { begin(Mode::Manual, now); }};
}

void SimulatedChannel::endManual(quint64 tick, ExpStopType_t reason)
{
    onSample(_freeRun->sampleAt(tick));
    onRunDone(tick, reason);
}

SimulatedChannel::Answer SimulatedChannel::setManualControl(const Control &control, quint64 now)
{
    if (_mode != Mode::Manual)
        return {FW_BAD_CHANNEL_STATE};
    const double limit =
        control.law == Control::Law::Current ? _frontEnd->settableCurrent() : _frontEnd->settableVoltage();
    if (!(std::abs(control.value) <= toleratedOver * limit))
        return {FW_BAD_PARAMETERS};
    return {FW_SUCCESS, [this, control, now] { _freeRun->setControl(control, now); }};
}

SimulatedChannel::Answer SimulatedChannel::setManualSampling(const QByteArray &payload, quint64)
{
    const double interval = double(readAt<float>(payload, 0));
    if (_mode != Mode::Manual)
        return {FW_BAD_CHANNEL_STATE};
    if (!(interval > 0.0) || std::isinf(interval))
        return {FW_BAD_PARAMETERS};
    return {FW_SUCCESS, [this, interval] { _freeRun->setInterval(interval); }};
}

SimulatedChannel::Answer SimulatedChannel::setManualCurrent(const QByteArray &payload, quint64 now)
{
    return setManualControl({Control::Law::Current, double(readAt<float>(payload, 0))}, now);
}

SimulatedChannel::Answer SimulatedChannel::setManualVoltage(const QByteArray &payload, quint64 now)
{
    return setManualControl({Control::Law::Voltage, double(readAt<float>(payload, 0))}, now);
}

SimulatedChannel::Answer SimulatedChannel::setManualCurrentCode(const QByteArray &payload, quint64 now)
{
    const int range = readAt<quint8>(payload, 4);
    if (range >= _frontEnd->currentRangeCount())
        return {FW_BAD_CURRENT_RANGE};
    const double current = _frontEnd->currentFromCode(readAt<qint32>(payload, 0), currentRange_t(range));
    return setManualControl({Control::Law::Current, current}, now);
}

SimulatedChannel::Answer SimulatedChannel::setManualVoltageCode(const QByteArray &payload, quint64 now)
{
    const int range = readAt<quint8>(payload, 4);
    if (range >= _frontEnd->voltageRangeCount())
        return {FW_BAD_VOLTAGE_RANGE};
    const double voltage = _frontEnd->voltageFromCode(readAt<qint32>(payload, 0), voltageRange_t(range));
    return setManualControl({Control::Law::Voltage, voltage}, now);
}

SimulatedChannel::Answer SimulatedChannel::setManualOpenCircuit(const QByteArray &, quint64 now)
{
    return setManualControl(Control(), now);
}

SimulatedChannel::Answer SimulatedChannel::setManualCurrentRange(const QByteArray &payload, quint64 now)
{
    const int range = readAt<quint8>(payload, 0);
    if (_mode != Mode::Manual)
        return {FW_BAD_CHANNEL_STATE};
    if (range >= _frontEnd->currentRangeCount() && range != index(currentRange_t::Auto))
        return {FW_BAD_CURRENT_RANGE};
    return {FW_SUCCESS, [this, range, now] {
                _freeRun->liveUntil(now);
                setRanges(range, _voltageRangeSetting);
            }};
}

SimulatedChannel::Answer SimulatedChannel::setManualVoltageRange(const QByteArray &payload, quint64 now)
{
    const int range = readAt<quint8>(payload, 0);
    if (_mode != Mode::Manual)
        return {FW_BAD_CHANNEL_STATE};
    if (range >= _frontEnd->voltageRangeCount() && range != index(voltageRange_t::Auto))
        return {FW_BAD_VOLTAGE_RANGE};
    return {FW_SUCCESS, [this, range, now] {
                _freeRun->liveUntil(now);
                setRanges(_currentRangeSetting, range);
            }};
}

SimulatedChannel::Answer SimulatedChannel::setCompensation(const QByteArray &payload, quint64)
{
    if (readAt<quint8>(payload, 0) > highestCompensation)
        return {FW_BAD_BANDWIDTH_INDEX};
    if (readAt<quint8>(payload, 1) > highestCompensation)
        return {FW_BAD_STABILITY_INDEX};
    return {FW_SUCCESS}; // the loop of a model cell is stable at any setting
}

SimulatedChannel::Answer SimulatedChannel::setIrCompensation(const QByteArray &payload, quint64)
{
    const float resistance = readAt<float>(payload, 0);
    const float level = readAt<float>(payload, 4);
    const bool isSound = resistance >= 0.0f && level >= 0.0f && level <= 1.0f;
    return {isSound ? FW_SUCCESS : FW_BAD_PARAMETERS};
}

SimulatedChannel::Answer SimulatedChannel::setSafetyLimits(const QByteArray &payload, quint64)
{
    if (payload.size() != 20)
        return {FW_BAD_PARAMETERS};
    return {FW_SUCCESS, [this, payload] {
                _limits = {readAt<float>(payload, 0), readAt<float>(payload, 4), readAt<float>(payload, 8),
                           readAt<float>(payload, 12)};
                _temperatureLimit = readAt<float>(payload, 16);
                if (_mode == Mode::Experiment)
                    _runner->setSafetyLimits(_limits);
            }};
}

SimulatedChannel::Answer SimulatedChannel::setLoadImpedance(const QByteArray &payload, quint64)
{
    const float ohms = readAt<float>(payload, 0);
    if (!_setup.hasLoadImpedance)
        return {FW_NOT_SUPPORTED};
    return {ohms >= 0.0f ? FW_SUCCESS : FW_BAD_PARAMETERS};
}
