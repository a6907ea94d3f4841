// SPDX-License-Identifier: MIT
#include "elements/SquareWaveVoltammetryElement.h"

#include "elements/InputCheck.h"
#include "elements/PulseNodes.h"
#include "hardware_models/HardwareModel.h"

NodeList SquareWaveVoltammetryElement::GetNodesData(const CalibrationData &calibration, const HardwareVersion &) const
{
    const float frequency = pulseFreq;
    const float width = 0.5f / frequency;
    const PulseTiming timing(1.0f / frequency - width, width, alphaFactor);
    return pulseNodes(*this, calibration,
                      Vek_Node_Pulse_Sqr_Voltage(startVoltage, startVoltageVsOCP, endVoltage, endVoltageVsOCP, pulseAmp,
                                                 vStep, timing.baseSpan, timing.baseTime, timing.pulseSpan,
                                                 timing.pulseTime),
                      QStringLiteral("SW Potential Voltammetry"));
}

ErrorStringList SquareWaveVoltammetryElement::validateInput(const HardwareVersion &hardware) const
{
    InputCheck check(hardware);
    const double highest = check.model().getSquareWaveFrequencyLimit();
    return check.voltageLimit(startVoltage, startVoltageVsOCP)
        .voltageStepLimit(vStep)
        .voltageLimit(endVoltage, endVoltageVsOCP)
        .complainUnless(pulseFreq > 0.0, QStringLiteral("Frequency must be positive"))
        .complainUnless(!(pulseFreq > highest), QStringLiteral("Frequency must not exceed %1 Hz").arg(highest))
        .fixedRangeLimit(autoRange, approxMaxCurrent)
        .errors();
}
