// SPDX-License-Identifier: MIT
#include "elements/InputCheck.h"

#include "hardware_models/HardwareModelFactory.h"
#include "hardware_models/HardwareVersion.h"
#include "numerics/Constants.h"

#include <limits>

InputCheck::InputCheck(const HardwareVersion &hardware)
    : _model(HardwareModelFactory::getHardwareModel(hardware.hwModel)),
      _isKnown(_model->getVanityName() != QLatin1String("Invalid"))
{
    if (!_isKnown)
        _errors.addError(_model->getHwModelErrorMsg());
}

InputCheck &InputCheck::complainUnless(bool holds, const QString &complaint)
{
    if (_isKnown && !holds)
        _errors.addError(complaint);
    return *this;
}

InputCheck &InputCheck::samplingLimit(double interval)
{
    return complainUnless(_model->isWithinSamplingLimit(interval), _model->getSamplingLimitErrorMsg());
}

InputCheck &InputCheck::frequencyLimit(double frequency)
{
    return complainUnless(_model->isWithinFrequencyLimit(frequency), _model->getFrequencyLimitErrorMsg());
}

InputCheck &InputCheck::currentLimit(double current)
{
    return complainUnless(_model->isWithinCurrentLimit(current), _model->getCurrentLimitErrorMsg());
}

InputCheck &InputCheck::voltageLimit(double voltage, bool vsOCP)
{
    return complainUnless(_model->isWithinVoltageLimit(voltage, vsOCP), _model->getVoltageLimitErrorMsg(vsOCP));
}

InputCheck &InputCheck::voltageStepLimit(double step)
{
    return complainUnless(_model->isWithinVoltageStepLimit(step), _model->getVoltageStepLimitErrorMsg());
}

InputCheck &InputCheck::positiveDuration(double stepDuration)
{
    return complainUnless(stepDuration > 0.0, QStringLiteral("Duration must be greater than 0."));
}

InputCheck &InputCheck::fixedRangeLimit(bool autoRange, double approxMaxCurrent)
{
    return autoRange ? *this : currentLimit(approxMaxCurrent);
}

InputCheck &InputCheck::voltageLimits(double min, bool minVsOCP, double max, bool maxVsOCP)
{
    const bool minHolds = min == -infinity || _model->isWithinVoltageLimit(min, minVsOCP);
    const bool maxHolds = max == infinity || _model->isWithinVoltageLimit(max, maxVsOCP);
    return complainUnless(minHolds && maxHolds, _model->getVoltageLimitErrorMsg(false));
}

InputCheck &InputCheck::currentLimits(double min, double max)
{
    const bool minHolds = min == -infinity || _model->isWithinCurrentLimit(min);
    const bool maxHolds = max == infinity || _model->isWithinCurrentLimit(max);
    return complainUnless(minHolds && maxHolds, _model->getCurrentLimitErrorMsg());
}

InputCheck &InputCheck::acSupport()
{
    return complainUnless(_model->isSupportACExperiment(), _model->getACErrorMsg());
}

InputCheck &InputCheck::sweepDensity(double stepsPerDecade, quint32 minimumCycles)
{
    complainUnless(_model->isStepsPerDecadeLimit(stepsPerDecade), _model->getStepsPerDecadeLimitErrorMsg());
    return complainUnless(_model->isMinCycleLimit(minimumCycles), _model->getMinCyclesLimitErrorMsg());
}

InputCheck &InputCheck::voltageAmplitude(double amplitude)
{
    if (!(amplitude > 0.0))
        return complainUnless(false, QStringLiteral("AC voltage amplitude must be positive."));
    return complainUnless(_model->isWithinVAmplitudeLimits(amplitude), _model->getVAmplitudeLimitErrorMsg());
}

InputCheck &InputCheck::currentAmplitude(double amplitude)
{
    if (!(amplitude > 0.0))
        return complainUnless(false, QStringLiteral("AC current amplitude must be positive."));
    return complainUnless(_model->isWithinIAmplitudeLimits(amplitude), _model->getIAmplitudeLimitErrorMsg());
}
