#include "simulator/SimulatedChannel.h"

#include "simulator/Payload.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr quint64 never = std::numeric_limits<quint64>::max();
constexpr double idleInterval = 1.0;   ///< seconds, also of a manual experiment before the host says otherwise
constexpr double toleratedOver = 1.05; ///< of the model's limits, before the instrument protects itself
constexpr int highestCompensation = 10;

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
    {PC_FF_IMPEDANCE, &SimulatedChannel::refuseFeature},
    {PC_CHANNEL_LIMITS, &SimulatedChannel::setSafetyLimits},
};

SimulatedChannel::SimulatedChannel(int number, std::shared_ptr<const HardwareModel> model,
                                   std::shared_ptr<const AnalogResponse> response, std::unique_ptr<Cell> cell,
                                   const Setup &setup, ChannelOutput &output)
    : _number(number), _model(model), _output(output), _setup(setup), _random(setup.seed * 64 + quint64(number)),
      _calibration(model, quint32(setup.seed), number),
      _acFrontEnd(model, std::move(response), setup.harmonics, setup.noise), _regulator(std::move(cell))
{
    if (!_model->supportsTemperature())
        _setup.temperature = std::numeric_limits<double>::quiet_NaN();
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
        break;
    }
    return never;
}

void SimulatedChannel::step()
{
    if (_mode == Mode::Experiment)
        _runner->step();
    else if (_freeRun)
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
    _currentRangeSetting = index(currentRange_t::Auto);
    _voltageRangeSetting = index(voltageRange_t::Auto);
    _freeRun.reset();
    if (mode == Mode::Idle || mode == Mode::Manual)
        _freeRun = std::make_unique<FreeRun>(_regulator, now, idleInterval);
    if (mode == Mode::Experiment || mode == Mode::Manual)
        send(NT_DATA_BEGIN, packed(now));
}

void SimulatedChannel::stopIdleSampling()
{
    if (_mode == Mode::Idle)
        _mode = Mode::Stopped;
}

void SimulatedChannel::reset()
{
    _mode = Mode::Stopped;
    _store = NodeStore();
    _limits = SafetyLimits();
    _temperatureLimit = std::numeric_limits<float>::infinity();
}

// ---- what a run reports ----

void SimulatedChannel::onNodeBegin(quint64 tick, int index)
{
    _nodeIndex = index;
    const ExpNode_t &node = _store.nodes().at(index);
    constexpr int automatic = 15;
    const int currentNibble = node.ranges & 0x0F;
    const int voltageNibble = node.ranges >> 4;
    _currentRangeSetting = currentNibble == automatic ? ::index(currentRange_t::Auto) : currentNibble;
    _voltageRangeSetting = voltageNibble == automatic ? ::index(voltageRange_t::Auto) : voltageNibble;
    send(NT_NODE_BEGIN, packed(tick, quint16(index)));
    const bool isImpedance = node.nodeType() == NodeType_t::EisVoltage || node.nodeType() == NodeType_t::EisCurrent;
    if (isImpedance && !_model->isSupportACExperiment())
        _pendingStop = STOP_BAD_NODE;
}

void SimulatedChannel::onSample(const RunSample &sample)
{
    if (_mode != Mode::Idle) {
        meetEvents(sample.tick);
        checkTemperature();
    }
    chooseRanges(sample.reading);
    sendDcRecord(sample);
}

void SimulatedChannel::onAcRecord(const RunSample &sample, const AcPlan &plan, std::complex<double> impedance)
{
    meetEvents(sample.tick);
    checkTemperature();
    const AcMeasurement measurement{plan, sample.tick, sample.reading, impedance};
    send(NT_AC_DATA, _acFrontEnd.record(measurement, _calibration, _random));
    if (plan.isLast)
        send(NT_AC_SAMPLE_DONE);
}

void SimulatedChannel::onNodeDone(quint64 tick, int index)
{
    send(NT_NODE_DONE, packed(tick, quint16(index), quint16(0)));
}

void SimulatedChannel::onNodeSkipped()
{
    send(NT_NODE_SKIPPED);
}

void SimulatedChannel::onRunDone(quint64 tick, ExpStopType_t reason)
{
    _mode = Mode::Stopped;
    send(NT_EXPERIMENT_DONE, packed(tick, quint8(reason)));
}

void SimulatedChannel::meetEvents(quint64 tick)
{
    const double seconds = double(tick - _startTick) / ticksPerSecond;
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
    if (std::isinf(_temperatureLimit))
        return;
    if (std::isnan(_setup.temperature))
        _pendingStop = STOP_NO_TEMPERATURE;
    else if (_setup.temperature > double(_temperatureLimit))
        _pendingStop = STOP_TEMPERATURE_MAX;
}

void SimulatedChannel::chooseRanges(const CellReading &reading)
{
    if (_currentRangeSetting == index(currentRange_t::Auto))
        _currentRange = _calibration.rangeForCurrent(reading.current);
    else
        widenFor(reading.current);
    _voltageRange = _voltageRangeSetting == index(voltageRange_t::Auto) ? _calibration.rangeForVoltage(reading.voltage)
                                                                        : voltageRange_t(_voltageRangeSetting);
}

/// A fixed range that does not hold the current gives way to one that does, and the host is told.
void SimulatedChannel::widenFor(double current)
{
    const double held = toleratedOver * _calibration.fullScale(currentRange_t(_currentRangeSetting));
    if (_currentRangeSetting > 0 && std::abs(current) > held) {
        _currentRangeSetting = index(_calibration.rangeForCurrent(current));
        send(NT_CURRENT_RANGE_UP, packed(quint8(_currentRangeSetting)));
    }
    _currentRange = currentRange_t(_currentRangeSetting);
}

void SimulatedChannel::sendDcRecord(const RunSample &run)
{
    DcSample sample;
    sample.tick = run.tick;
    sample.voltage = run.reading.voltage;
    sample.current = run.reading.current;
    sample.counterElectrode = -run.reading.current * _setup.counterResistance;
    sample.charge = run.charge;
    sample.temperature = _setup.temperature;
    DcSample measured = sample;
    if (_setup.noise > 0.0) {
        measured.voltage += _setup.noise * _calibration.fullScale(_voltageRange) * _random.normal();
        measured.current += _setup.noise * _calibration.fullScale(_currentRange) * _random.normal();
    }
    const MainDcRecord_t record = _calibration.toRecord(measured, _currentRange, _voltageRange);
    send(NT_DC_DATA, packed(record));
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
    const bool isBusy = _mode == Mode::Experiment || _mode == Mode::Manual;
    switch (command) {
    case PC_NODE_LIST_BEGIN:
        if (!isBusy)
            _store.begin(readAt<quint16>(payload, 0));
        return true;
    case PC_NODE_APPEND:
        send(NT_NODE_APPENDED, packed(quint8(isBusy ? FW_CHANNEL_NOT_IDLE : _store.append(payload))));
        return true;
    case PC_NODE_LIST_END:
        if (!isBusy)
            _store.end();
        return true;
    default:
        return false;
    }
}

SimulatedChannel::Answer SimulatedChannel::startExperiment(const QByteArray &, quint64 now)
{
    if (_mode == Mode::Experiment || _mode == Mode::Manual)
        return {FW_CHANNEL_NOT_IDLE};
    if (!_store.isComplete())
        return {FW_NO_EXPERIMENT};
    return {FW_SUCCESS, [this, now] {
                begin(Mode::Experiment, now);
                _runner = std::make_unique<NodeRunner>(_regulator, static_cast<RunObserver &>(*this), _store.nodes());
                _runner->setSafetyLimits(_limits);
                _runner->setInstrumentLimits(toleratedOver * _model->getIMax(), toleratedOver * _model->getVMax(true));
                _runner->start(now);
                obeyPendingStop();
            }};
}

SimulatedChannel::Answer SimulatedChannel::stopExperiment(const QByteArray &, quint64 now)
{
    if (_mode == Mode::Experiment)
        return {FW_SUCCESS, [this, now] { _runner->stop(now, STOP_BY_USER); }};
    if (_mode == Mode::Manual)
        return {FW_SUCCESS, [this, now] { endManual(now, STOP_BY_USER); }};
    return {FW_BAD_CHANNEL_STATE};
}

SimulatedChannel::Answer SimulatedChannel::pauseExperiment(const QByteArray &, quint64 now)
{
    if (_mode != Mode::Experiment || _runner->isPaused())
        return {FW_BAD_CHANNEL_STATE};
    return {FW_SUCCESS, [this, now] {
                _runner->pause(now);
                if (_runner->isPaused())
                    send(NT_EXPERIMENT_PAUSED);
            }};
}

SimulatedChannel::Answer SimulatedChannel::resumeExperiment(const QByteArray &, quint64 now)
{
    if (_mode != Mode::Experiment || !_runner->isPaused())
        return {FW_BAD_CHANNEL_STATE};
    return {FW_SUCCESS, [this, now] {
                _runner->resume(now);
                send(NT_EXPERIMENT_RESUMED);
            }};
}

SimulatedChannel::Answer SimulatedChannel::skipStep(const QByteArray &, quint64 now)
{
    if (!isRunningFreely())
        return {FW_BAD_CHANNEL_STATE};
    return {FW_SUCCESS, [this, now] { _runner->skip(now); }};
}

SimulatedChannel::Answer SimulatedChannel::startIdleSampling(const QByteArray &, quint64 now)
{
    if (_mode == Mode::Experiment || _mode == Mode::Manual)
        return {FW_CHANNEL_NOT_IDLE};
    return {FW_SUCCESS, [this, now] { begin(Mode::Idle, now); }};
}

SimulatedChannel::Answer SimulatedChannel::startManual(const QByteArray &, quint64 now)
{
    if (_mode == Mode::Experiment || _mode == Mode::Manual)
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
    const double limit = control.law == Control::Law::Current ? _model->getIMax() : _model->getVMax(false);
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
    if (range >= _model->getTotalNumCurrentRanges())
        return {FW_BAD_CURRENT_RANGE};
    const double current = _calibration.currentFromCode(readAt<qint32>(payload, 0), currentRange_t(range));
    return setManualControl({Control::Law::Current, current}, now);
}

SimulatedChannel::Answer SimulatedChannel::setManualVoltageCode(const QByteArray &payload, quint64 now)
{
    const int range = readAt<quint8>(payload, 4);
    if (range >= _model->getNumVoltageRanges())
        return {FW_BAD_VOLTAGE_RANGE};
    const double voltage = _calibration.voltageFromCode(readAt<qint32>(payload, 0), voltageRange_t(range));
    return setManualControl({Control::Law::Voltage, voltage}, now);
}

SimulatedChannel::Answer SimulatedChannel::setManualOpenCircuit(const QByteArray &, quint64 now)
{
    return setManualControl(Control(), now);
}

SimulatedChannel::Answer SimulatedChannel::setManualCurrentRange(const QByteArray &payload, quint64)
{
    const int range = readAt<quint8>(payload, 0);
    if (_mode != Mode::Manual)
        return {FW_BAD_CHANNEL_STATE};
    if (range >= _model->getTotalNumCurrentRanges() && range != index(currentRange_t::Auto))
        return {FW_BAD_CURRENT_RANGE};
    return {FW_SUCCESS, [this, range] { _currentRangeSetting = range; }};
}

SimulatedChannel::Answer SimulatedChannel::setManualVoltageRange(const QByteArray &payload, quint64)
{
    const int range = readAt<quint8>(payload, 0);
    if (_mode != Mode::Manual)
        return {FW_BAD_CHANNEL_STATE};
    if (range >= _model->getNumVoltageRanges() && range != index(voltageRange_t::Auto))
        return {FW_BAD_VOLTAGE_RANGE};
    return {FW_SUCCESS, [this, range] { _voltageRangeSetting = range; }};
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

SimulatedChannel::Answer SimulatedChannel::refuseFeature(const QByteArray &, quint64)
{
    return {FW_NOT_SUPPORTED};
}
