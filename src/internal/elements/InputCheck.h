// SPDX-License-Identifier: MIT
#pragma once

#include "logging/ErrorStringList.h"

#include <QString>

#include <memory>

class HardwareModel;
struct HardwareVersion;

/**
 * Collects the complaints about an element's values, in the order of the checks.
 *
 * That the model is unknown is complained about first and alone, since an unknown model has no limits to break: all
 * further checks are then idle.
 */
class InputCheck
{
public:
    explicit InputCheck(const HardwareVersion &hardware);

    const HardwareModel &model() const { return *_model; }
    const ErrorStringList &errors() const { return _errors; }

    InputCheck &complainUnless(bool holds, const QString &complaint);

    InputCheck &samplingLimit(double interval);
    InputCheck &frequencyLimit(double frequency);
    InputCheck &currentLimit(double current);
    /// A potential relative to the open-circuit potential gets the limits of the open circuit.
    InputCheck &voltageLimit(double voltage, bool vsOCP);
    InputCheck &voltageStepLimit(double step);
    InputCheck &positiveDuration(double stepDuration);
    /// The expected maximum current counts only where it chooses the range.
    InputCheck &fixedRangeLimit(bool autoRange, double approxMaxCurrent);
    /// Infinite limits stand for none; one complaint for either.
    InputCheck &voltageLimits(double min, bool minVsOCP, double max, bool maxVsOCP);
    /// Infinite limits stand for none; one complaint for either.
    InputCheck &currentLimits(double min, double max);

    InputCheck &acSupport();
    /// What all impedance sweeps share.
    InputCheck &sweepDensity(double stepsPerDecade, quint32 minimumCycles);
    InputCheck &voltageAmplitude(double amplitude);
    InputCheck &currentAmplitude(double amplitude);

private:
    std::shared_ptr<const HardwareModel> _model;
    bool _isKnown;
    ErrorStringList _errors;
};
