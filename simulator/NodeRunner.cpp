// SPDX-License-Identifier: MIT
#include "simulator/NodeRunner.h"

#include "simulator/NodeFields.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr quint64 never = std::numeric_limits<quint64>::max();
constexpr int mostHops = 200000;   ///< jumps without time passing, after which a list counts as broken
constexpr double givesWay = 1e-3;  ///< of an interval or step: what comes so close before the end is the end
constexpr quint64 leastTicks = 2;  ///< between samples: closer ones bear one time by the cyclers' coarser clock
constexpr int panelsOfAverage = 8; ///< even, for Simpson's rule
constexpr int bisections = 40;

bool hasTimeLimit(const ExpNode_t &node)
{
    return node.flags & NodeFlag::timeLimit;
}

/// One step on, cut at the last value; rounding must not leave a value of its own just before it.
float steppedTowards(float last, float value, float step)
{
    const float next = value + step;
    if (std::abs(last - next) < float(givesWay) * std::abs(step))
        return last;
    return step > 0.0f ? std::min(next, last) : std::max(next, last);
}

} // namespace

std::optional<ExpStopType_t> SafetyLimits::brokenBy(const CellReading &reading) const
{
    if (reading.current < double(currentMin))
        return STOP_CURRENT_MIN;
    if (reading.current > double(currentMax))
        return STOP_CURRENT_MAX;
    if (reading.voltage < double(voltageMin))
        return STOP_VOLTAGE_MIN;
    if (reading.voltage > double(voltageMax))
        return STOP_VOLTAGE_MAX;
    return std::nullopt;
}

NodeRunner::NodeRunner(Regulator &regulator, RunObserver &observer, const QVector<ExpNode_t> &nodes)
    : _regulator(regulator), _observer(observer), _nodes(nodes), _passes(nodes.size(), 0),
      _modifiedValue(nodes.size(), std::numeric_limits<float>::quiet_NaN())
{
}

void NodeRunner::setInstrumentLimits(double current, double voltage)
{
    _currentLimit = current;
    _voltageLimit = voltage;
}

void NodeRunner::start(quint64 tick)
{
    _origin = tick;
    _time = 0.0;
    _openCircuit = _regulator.cell().openCircuitVoltage();
    enter(0);
}

quint64 NodeRunner::tickAt(double time) const
{
    return _origin + quint64(std::llround(time * ticksPerSecond));
}

quint64 NodeRunner::nextTick() const
{
    return _over || isPaused() ? never : tickAt(nextInstant());
}

// ---- the list ----

/// Follows jumps until a node that takes time, or the end.
void NodeRunner::enter(int index)
{
    const quint64 tick = tickAt(_time);
    for (int hops = 0; hops < mostHops; ++hops) {
        if (index < 0 || index > _nodes.size())
            break;
        if (index == _nodes.size())
            return finish({false, STOP_COMPLETED});
        _index = index;
        const NodeType_t type = node().nodeType();
        if (NodeProgram::isRunnable(type) && node().repeats > 0) {
            _origin = tick;
            _pass = 0;
            return beginPass();
        }
        _observer.onNodeBegin(tick, index);
        if (type == NodeType_t::End)
            return finish({false, STOP_COMPLETED});
        if (type == NodeType_t::Loop)
            index = passLoop(index);
        else if (type == NodeType_t::BranchLogic)
            index = branch(index);
        else if (type == NodeType_t::Modify)
            index = modify(index);
        else if (NodeProgram::isRunnable(type))
            ++index; // no repeats at all
        else
            break;
    }
    finish({false, STOP_BAD_NODE});
}

/// A count of n means that the body runs n times in all; the counter is fresh when an outer loop comes again.
int NodeRunner::passLoop(int index)
{
    if (++_passes[index] < int(_nodes[index].repeats))
        return index + _nodes[index].jump;
    _passes[index] = 0;
    return index + 1;
}

int NodeRunner::branch(int index) const
{
    const double voltage = _regulator.cell().openCircuitVoltage();
    const ExpNode_t &node = _nodes[index];
    const bool isInside = voltage >= double(node.vLimitMin) && voltage <= double(node.vLimitMax);
    return index + (isInside ? node.jump : fieldAt<qint16>(node, 16));
}

/**
 * Moves the value on by its step, writes it into the node that it aims at, and jumps; once the last value has been
 * reached the list goes on behind it, and the node starts over when an outer loop comes again.
 */
int NodeRunner::modify(int index)
{
    const ExpNode_t &node = _nodes[index];
    const float last = fieldAt<float>(node, 12);
    const float step = fieldAt<float>(node, 16);
    const int target = index + fieldAt<qint16>(node, 20);
    if (target < 0 || target >= _nodes.size())
        return -1;
    float &value = _modifiedValue[index];
    if (std::isnan(value))
        value = fieldAt<float>(node, 8);
    const bool wasLast = value == last;
    value = wasLast ? fieldAt<float>(node, 8) : steppedTowards(last, value, step);
    constexpr quint8 biasOfImpedance = 21;
    const int offset = node.parameters[22 - 8] == biasOfImpedance ? 8 : 12;
    std::memcpy(reinterpret_cast<char *>(&_nodes[target]) + offset, &value, sizeof value);
    return wasLast ? index + 1 : index + node.jump;
}

// ---- one pass of a node ----

void NodeRunner::beginPass()
{
    _program = NodeProgram(node(), _openCircuit, _acCycles);
    _time = 0.0;
    _sampleCount = 0;
    _lastSample.reset();
    if (node().flags & NodeFlag::chargeLimit)
        _charge = 0.0;
    _passIsOpen = true;
    _observer.onNodeBegin(_origin, _index);
    if (!_program.isValid())
        return finish({false, STOP_BAD_NODE});
    const double limit = hasTimeLimit(node()) ? double(node().timeLimit) : std::numeric_limits<double>::infinity();
    _nodeEnd = std::min(limit, _program.duration());
    _segmentStart = 0.0;
    beginSegment(0);
}

void NodeRunner::beginSegment(int index)
{
    _segmentIndex = index;
    _segment = _program.segment(index);
    if (_segment.control.law == Control::Law::MaximumPower)
        _segment.control.cap = _currentLimit;
    _segmentStart = _time;
    if (_program.samplesEachSegment())
        _sampleCount = 0;
}

void NodeRunner::endPass()
{
    if (node().nodeType() == NodeType_t::OpenCircuit)
        _openCircuit = _regulator.cell().openCircuitVoltage();
    closePass();
    if (++_pass >= int(node().repeats))
        return enter(_index + 1);
    _origin = tickAt(_time);
    beginPass();
}

void NodeRunner::closePass()
{
    if (_passIsOpen)
        _observer.onNodeDone(tickAt(_time), _index);
    _passIsOpen = false;
}

double NodeRunner::nextSampleTime() const
{
    if (_program.interval() <= 0.0)
        return std::numeric_limits<double>::infinity();
    const bool countsAgain = _program.samplesEachSegment();
    const double time = (countsAgain ? _segmentStart : 0.0) + double(_sampleCount + 1) * _program.interval();
    const double end = countsAgain ? std::min(_nodeEnd, _segmentStart + _segment.duration) : _nodeEnd;
    return time > end - givesWay * _program.interval() ? std::numeric_limits<double>::infinity() : time;
}

double NodeRunner::nextInstant() const
{
    return std::min({_nodeEnd, nextSampleTime(), _segmentStart + _segment.duration});
}

void NodeRunner::step()
{
    if (_over || isPaused())
        return;
    if (!advanceTo(nextInstant()))
        return arrive();
    const Verdict verdict = judge();
    reportSample(_reading);
    finish(verdict);
}

void NodeRunner::arrive()
{
    const bool isSegmentEnd = _time >= _segmentStart + _segment.duration;
    const bool isLastSegment = _segmentIndex + 1 >= _program.segmentCount();
    const bool isEnd = _time >= _nodeEnd || (isSegmentEnd && isLastSegment);
    const bool isDue = _time >= nextSampleTime();
    if (isDue)
        ++_sampleCount;
    const std::optional<RunSample> before = _lastSample;
    if (isSegmentEnd && _program.interval() <= 0.0)
        report(_reading);
    else if (isEnd || isDue || (isSegmentEnd && _program.samplesEachSegment()))
        reportSample(_reading);
    if (_over)
        return;
    if (isEnd || (isDue && before && hasSettled(*before)))
        return endPass();
    if (isSegmentEnd)
        beginSegment(_segmentIndex + 1);
}

/// The node ends by itself or by a limit of its own; or the whole run ends.
void NodeRunner::finish(const Verdict &verdict)
{
    if (!verdict.stops)
        return endPass();
    _over = true;
    closePass();
    _observer.onRunDone(tickAt(_time), *verdict.stops);
}

void NodeRunner::report(const CellReading &reading)
{
    _lastSample = RunSample{tickAt(_time), reading, _charge};
    if (_segment.acPlan)
        reportAcRecord();
    else
        _observer.onSample(*_lastSample);
}

void NodeRunner::reportAcRecord()
{
    const AcPlan &plan = *_segment.acPlan;
    std::vector<std::complex<double>> impedances;
    for (const int tone : plan.tones)
        impedances.push_back(_regulator.cell().impedance(double(plan.frequency) * tone));
    _observer.onAcRecord(*_lastSample, plan, impedances);
}

/// An impedance node that is broken off has nothing to report: it has no DC samples, and half a record is none.
void NodeRunner::reportSample(const CellReading &reading)
{
    const bool isReported = _lastSample && tickAt(_time) < _lastSample->tick + leastTicks;
    if (!_segment.acPlan && !isReported)
        report(reading);
}

bool NodeRunner::hasSettled(const RunSample &before) const
{
    const double seconds = double(_lastSample->tick - before.tick) / ticksPerSecond;
    const auto isSlow = [seconds](double change, double least) {
        return least > 0.0 && std::abs(change) < least * seconds;
    };
    return isSlow(_lastSample->reading.voltage - before.reading.voltage, _program.leastVoltageRate()) ||
           isSlow(_lastSample->reading.current - before.reading.current, _program.leastCurrentRate());
}

// ---- time ----

/// The part before a sample over which it is averaged; a sample never looks back into another segment.
double NodeRunner::windowBefore(double time) const
{
    const bool isPulseSample = _program.interval() <= 0.0;
    const double wanted = isPulseSample ? _segment.span : _program.averagedShare() * _program.interval();
    return std::min(wanted, time - std::max(_time, _segmentStart));
}

/// @return true if a limit was passed on the way; the time is then that of the passage
bool NodeRunner::advanceTo(double time)
{
    const double window = windowBefore(time);
    if (advance(time - window - _time))
        return true;
    if (window > 0.0 && advanceAveraging(window))
        return true;
    _time = time;
    return false;
}

bool NodeRunner::advanceAveraging(double window)
{
    const double chargeBefore = _charge;
    double voltageSum = _reading.voltage;
    for (int panel = 1; panel <= panelsOfAverage; ++panel) {
        if (advance(window / panelsOfAverage))
            return true;
        const double weight = panel == panelsOfAverage ? 1.0 : panel % 2 == 1 ? 4.0 : 2.0;
        voltageSum += weight * _reading.voltage;
    }
    _reading = {voltageSum / (3.0 * panelsOfAverage), (_charge - chargeBefore) / window};
    return false;
}

bool NodeRunner::advance(double seconds)
{
    _reading = _regulator.read(controlAt(_time));
    if (judge())
        return true;
    if (seconds <= 0.0)
        return false;
    const Regulator before(_regulator);
    const auto goOn = [this, &before](double duration) {
        _regulator = before;
        return _regulator.hold(controlAt(_time), duration);
    };
    double passed = seconds;
    double charge = _regulator.hold(controlAt(_time), seconds);
    const bool isLimited = bool(judge(_regulator, _time + seconds, _charge + charge));
    for (double low = 0.0, step = 0.5 * seconds; isLimited && step > std::ldexp(seconds, -bisections); step *= 0.5) {
        charge = goOn(low + step);
        if (judge(_regulator, _time + low + step, _charge + charge))
            passed = low + step;
        else
            low += step;
    }
    if (isLimited)
        charge = goOn(passed);
    _time += passed;
    _charge += charge;
    _reading = _regulator.read(controlAt(_time));
    return isLimited;
}

// ---- limits ----

NodeRunner::Verdict NodeRunner::judge(const Regulator &regulator, double time, double charge) const
{
    const CellReading reading = regulator.read(controlAt(time));
    if (std::abs(reading.current) > _currentLimit)
        return {false, STOP_CURRENT_INSTRUMENT};
    if (std::abs(reading.voltage) > _voltageLimit)
        return {false, STOP_VOLTAGE_INSTRUMENT};
    if (const auto broken = _safety.brokenBy(reading))
        return {false, broken};
    return {isNodeLimitPassed(reading, charge), std::nullopt};
}

bool NodeRunner::isNodeLimitPassed(const CellReading &reading, double charge) const
{
    const ExpNode_t &limits = node();
    const double current = limits.flags & NodeFlag::signedILimits ? reading.current : std::abs(reading.current);
    const double vMin = double(limits.vLimitMin) + (limits.flags & NodeFlag::vMinVsOcp ? _openCircuit : 0.0);
    const double vMax = double(limits.vLimitMax) + (limits.flags & NodeFlag::vMaxVsOcp ? _openCircuit : 0.0);
    const bool isCharged = limits.flags & NodeFlag::chargeLimit && std::abs(charge) >= double(limits.chargeLimit);
    return current < double(limits.iLimitMin) || current > double(limits.iLimitMax) || reading.voltage < vMin ||
           reading.voltage > vMax || isCharged;
}

// ---- commands ----

void NodeRunner::pause(quint64 tick)
{
    catchUp(tick);
    if (!_over)
        _pausedAt = std::max(tick, tickAt(_time));
}

void NodeRunner::resume(quint64 tick)
{
    const quint64 rest = tick > *_pausedAt ? tick - *_pausedAt : 0;
    _regulator.hold({Control::Law::OpenCircuit}, double(rest) / ticksPerSecond);
    _origin += rest;
    _pausedAt.reset();
}

/// Ends the present node, with all its passes still to come.
void NodeRunner::skip(quint64 tick)
{
    catchUp(tick);
    if (_over)
        return;
    reportSample(_regulator.read(controlAt(_time)));
    closePass();
    _observer.onNodeSkipped();
    enter(_index + 1);
}

void NodeRunner::stop(quint64 tick, ExpStopType_t reason)
{
    const bool wasPaused = isPaused();
    if (wasPaused)
        resume(tick);
    else
        catchUp(tick);
    if (_over)
        return;
    reportSample(_regulator.read(wasPaused ? Control() : controlAt(_time)));
    finish({false, reason});
}

/// Lets the cell live up to a tick between two instants.
void NodeRunner::catchUp(quint64 tick)
{
    while (!_over && nextTick() <= tick)
        step();
    const double now = (double(tick) - double(_origin)) / ticksPerSecond;
    if (!_over && now > _time)
        advance(now - _time);
}
