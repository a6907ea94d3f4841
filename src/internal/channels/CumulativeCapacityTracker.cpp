// SPDX-License-Identifier: MIT
#include "channels/CumulativeCapacityTracker.h"

#include <cmath>
#include <cstddef>

namespace {

using Guard = std::lock_guard<std::mutex>;

template <typename Vector>
void growTo(Vector &vector, int size)
{
    if (size > 0 && vector.size() < std::size_t(size))
        vector.resize(std::size_t(size));
}

} // namespace

void CumulativeCapacityTracker::Accum::add(double delta, double epsilon)
{
    if (std::abs(delta) >= epsilon)
        add({std::abs(delta), delta});
}

void CumulativeCapacityTracker::Accum::add(const Accum &other)
{
    absC += other.absC;
    netC += other.netC;
}

void CumulativeCapacityTracker::beginExperiment()
{
    const Guard guard(_mutex);
    const double epsilon = _deltaEpsilon;
    *this = CumulativeCapacityTracker();
    _deltaEpsilon = epsilon;
}

void CumulativeCapacityTracker::onNodeBeginning(int stepNumber, bool chargeLimitActive)
{
    const Guard guard(_mutex);
    beginStep(stepNumber);
    beginSubstep();
    beginNode(chargeLimitActive);
}

void CumulativeCapacityTracker::onDcDataReceived(double chargeCoulombs)
{
    if (!std::isfinite(chargeCoulombs))
        return;
    const Guard guard(_mutex);
    _lastSample = chargeCoulombs;
    if (_state == FirstSampleAwaited)
        countUpTo(chargeCoulombs, _baseline);
    else if (_state == NodeOpen)
        countUpTo(chargeCoulombs, _previous);
}

void CumulativeCapacityTracker::onNodeCompleted()
{
    const Guard guard(_mutex);
    endNode();
    endSubstep();
}

void CumulativeCapacityTracker::endExperiment()
{
    const Guard guard(_mutex);
    endStep();
    _state = NoOpenNode;
    _baseline.reset();
    _previous.reset();
}

void CumulativeCapacityTracker::setDeltaEpsilon(double coulombs)
{
    const Guard guard(_mutex);
    if (coulombs >= 0.0)
        _deltaEpsilon = coulombs;
}

double CumulativeCapacityTracker::getLiveExperimentAbs_C() const
{
    return getSnapshot_C().experimentAbs;
}

double CumulativeCapacityTracker::getLiveExperimentNet_C() const
{
    return getSnapshot_C().experimentNet;
}

double CumulativeCapacityTracker::getCurrentStepAbs_C() const
{
    return getSnapshot_C().stepAbs;
}

double CumulativeCapacityTracker::getCurrentStepNet_C() const
{
    return getSnapshot_C().stepNet;
}

double CumulativeCapacityTracker::getCurrentSubstepAbs_C() const
{
    return getSnapshot_C().substepAbs;
}

double CumulativeCapacityTracker::getCurrentSubstepNet_C() const
{
    return getSnapshot_C().substepNet;
}

double CumulativeCapacityTracker::getExperimentAbs_C() const
{
    const Guard guard(_mutex);
    return _experiment.absC;
}

double CumulativeCapacityTracker::getExperimentNet_C() const
{
    const Guard guard(_mutex);
    return _experiment.netC;
}

std::vector<double> CumulativeCapacityTracker::getPerStepAbs_C() const
{
    const Guard guard(_mutex);
    return _perStepAbs;
}

std::vector<double> CumulativeCapacityTracker::getPerStepNet_C() const
{
    const Guard guard(_mutex);
    return _perStepNet;
}

std::vector<std::vector<double>> CumulativeCapacityTracker::getPerSubstepAbs_C() const
{
    const Guard guard(_mutex);
    return _perSubstepAbs;
}

std::vector<std::vector<double>> CumulativeCapacityTracker::getPerSubstepNet_C() const
{
    const Guard guard(_mutex);
    return _perSubstepNet;
}

CumulativeCapacityTracker::Snapshot CumulativeCapacityTracker::getSnapshot_C() const
{
    const Guard guard(_mutex);
    return {_tail.absC + _experiment.absC, _tail.netC + _experiment.netC, _tail.absC + _step.absC,
            _tail.netC + _step.netC,       _tail.absC + _substep.absC,    _tail.netC + _substep.netC};
}

void CumulativeCapacityTracker::beginStep(int stepNumber)
{
    if (stepNumber == _stepNumber && _stepNumber > 0)
        return;
    if (_stepNumber > 0)
        endStep();
    _stepNumber = stepNumber;
    growToStep();
    _step = Accum();
    _substepIndex = 0;
    _substep = Accum();
}

void CumulativeCapacityTracker::beginSubstep()
{
    ++_substepIndex;
    growToSubstep();
    _substep = Accum();
}

void CumulativeCapacityTracker::beginNode(bool chargeLimitActive)
{
    _previous.reset();
    _lastSample = 0.0;
    if (chargeLimitActive || !_baseline)
        _baseline = 0.0;
    _state = FirstSampleAwaited;
}

void CumulativeCapacityTracker::endNode()
{
    if (_state == NoOpenNode && !_previous && _tail.isZero())
        return;
    foldTailUp_();
    if (_previous)
        _baseline = _previous;
    finalizeOpenSubstep_(false);
    _state = NoOpenNode;
    _previous.reset();
}

void CumulativeCapacityTracker::endSubstep()
{
    foldTailUp_();
    finalizeOpenSubstep_(false);
}

void CumulativeCapacityTracker::endStep()
{
    foldTailUp_();
    finalizeOpenStep_();
}

void CumulativeCapacityTracker::countUpTo(double reading, const std::optional<double> &from)
{
    if (from)
        _tail.add(reading - *from, _deltaEpsilon);
    _previous = reading;
    _state = NodeOpen;
}

void CumulativeCapacityTracker::foldTailUp_()
{
    if (_tail.isZero())
        return;
    _substep.add(_tail);
    _step.add(_tail);
    _experiment.add(_tail);
    _tail = Accum();
}

void CumulativeCapacityTracker::finalizeOpenSubstep_(bool force)
{
    if (_substepIndex < 1 || _stepNumber < 1)
        return;
    growToSubstep();
    double &abs = _perSubstepAbs[std::size_t(_stepNumber - 1)][std::size_t(_substepIndex - 1)];
    double &net = _perSubstepNet[std::size_t(_stepNumber - 1)][std::size_t(_substepIndex - 1)];
    const bool isUnwritten = abs == 0.0 && net == 0.0;
    if (!_substep.isZero() || (force && isUnwritten)) {
        abs = _substep.absC;
        net = _substep.netC;
    }
    _substep = Accum();
}

void CumulativeCapacityTracker::finalizeOpenStep_()
{
    if (_stepNumber < 1)
        return;
    finalizeOpenSubstep_(true);
    growToStep();
    _perStepAbs[std::size_t(_stepNumber - 1)] = _step.absC;
    _perStepNet[std::size_t(_stepNumber - 1)] = _step.netC;
    _step = Accum();
    _stepNumber = 0;
    _substep = Accum();
    _substepIndex = 0;
}

void CumulativeCapacityTracker::growToStep()
{
    growTo(_perStepAbs, _stepNumber);
    growTo(_perStepNet, _stepNumber);
    growTo(_perSubstepAbs, _stepNumber);
    growTo(_perSubstepNet, _stepNumber);
}

void CumulativeCapacityTracker::growToSubstep()
{
    growToStep();
    if (_stepNumber < 1)
        return;
    growTo(_perSubstepAbs[std::size_t(_stepNumber - 1)], _substepIndex);
    growTo(_perSubstepNet[std::size_t(_stepNumber - 1)], _substepIndex);
}
