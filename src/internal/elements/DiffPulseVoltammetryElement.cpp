// SPDX-License-Identifier: MIT
#include "elements/DiffPulseVoltammetryElement.h"

#include "elements/InputCheck.h"
#include "elements/PulseNodes.h"
#include "hardware_models/HardwareModel.h"

NodeList DiffPulseVoltammetryElement::GetNodesData(const CalibrationData &calibration, const HardwareVersion &) const
{
    const float width = pulseWidth;
    const PulseTiming timing(static_cast<float>(pulsePeriod) - width, width, alphaFactor);
    return pulseNodes(*this, calibration,
                      Vek_Node_Pulse_Diff_Voltage(startVoltage, startVoltageVsOCP, endVoltage, endVoltageVsOCP,
                                                  pulseHeight, vStep, timing.baseSpan, timing.baseTime,
                                                  timing.pulseSpan, timing.pulseTime),
                      QStringLiteral("DP Potential Voltammetry"));
}

ErrorStringList DiffPulseVoltammetryElement::validateInput(const HardwareVersion &hardware) const
{
    InputCheck check(hardware);
    const HardwareModel &model = check.model();
    return check
        .voltageLimit(startVoltage, startVoltageVsOCP)
        // See compatibility.md, end potential by the start's flag.
        .complainUnless(model.isWithinVoltageLimit(endVoltage, endVoltageVsOCP),
                        model.getVoltageLimitErrorMsg(startVoltageVsOCP))
        .voltageStepLimit(vStep)
        .complainUnless(!(pulseWidth < 0.001), QStringLiteral("For the %1, width of pulse must be at least 1 ms."))
        .complainUnless(!(pulseWidth >= pulsePeriod),
                        QStringLiteral("For the %1, pulse period must be greater than pulse width."))
        .fixedRangeLimit(autoRange, approxMaxCurrent)
        .errors();
}
