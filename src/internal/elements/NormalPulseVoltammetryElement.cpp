// SPDX-License-Identifier: MIT
#include "elements/NormalPulseVoltammetryElement.h"

#include "elements/InputCheck.h"
#include "elements/PulseNodes.h"

NodeList NormalPulseVoltammetryElement::GetNodesData(const CalibrationData &calibration, const HardwareVersion &) const
{
    const float width = pulseWidth;
    const PulseTiming timing(static_cast<float>(pulsePeriod) - width, width, alphaFactor);
    return pulseNodes(*this, calibration,
                      Vek_Node_Pulse_Normal_Voltage(startVoltage, startVoltageVsOCP, endVoltage, endVoltageVsOCP, vStep,
                                                    timing.baseSpan, timing.baseTime, timing.pulseSpan,
                                                    timing.pulseTime),
                      QStringLiteral("NP Potential Voltammetry"));
}

ErrorStringList NormalPulseVoltammetryElement::validateInput(const HardwareVersion &hardware) const
{
    return InputCheck(hardware)
        .voltageLimit(startVoltage, startVoltageVsOCP)
        .voltageStepLimit(vStep)
        .voltageLimit(endVoltage, endVoltageVsOCP)
        .complainUnless(pulseWidth > 0.0, QStringLiteral("Lengths of time must be positive."))
        .complainUnless(!(pulseWidth < 0.001), QStringLiteral("Pulse width must be at least 1 ms."))
        .complainUnless(pulsePeriod > 0.0, QStringLiteral("Lengths(pulsePeriod) of time must be positive."))
        .complainUnless(!(pulseWidth >= pulsePeriod), QStringLiteral("Pulse period must be greater than pulse width."))
        .fixedRangeLimit(autoRange, approxMaxCurrent)
        .errors();
}
