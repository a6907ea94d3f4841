// SPDX-License-Identifier: MIT
#include "elements/CyclicVoltammetryElement.h"

#include "calibration/CalibrationData.h"
#include "elements/CyclicPath.h"
#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"

namespace {

bool isValid(voltageRange_t range)
{
    return index(range) <= 3 || range == voltageRange_t::Auto;
}

/// The range with the largest full scale among those that the four potentials need.
voltageRange_t widestRange(const CyclicPath &path, const CalibrationData &calibration)
{
    voltageRange_t widest = calibration.getMinVoltageRange(path.start.volts);
    for (const Potential &potential : {path.end, path.firstVertex, path.secondVertex}) {
        const voltageRange_t range = calibration.getMinVoltageRange(potential.volts);
        if (isValid(range) && (!isValid(widest) || range < widest))
            widest = range;
    }
    return widest;
}

} // namespace

NodeList CyclicVoltammetryElement::GetNodesData(const CalibrationData &calibration, const HardwareVersion &) const
{
    const CyclicPath path = pathOf(*this);
    const voltageRange_t voltageRange = widestRange(path, calibration);
    const currentRange_t currentRange = chooseCurrentRange(calibration, autoRange, approxMaxCurrent);

    NodeList list;
    ExpNode_t hold = Vek_Node_Constant_Voltage(quietTimeSamplingInterval, startVoltage, startVoltageVsOCP, 0);
    Vek_Node_SetVoltageRange(hold, voltageRange);
    addQuietTime(list, hold, quietTime, currentRange);
    addCyclicLegs(list, path, QStringLiteral("Cyclic Voltammetry"), [&](Potential from, Potential to, bool) {
        ExpNode_t leg =
            Vek_Node_Sweep_Voltage(samplingInterval, alphaFactor, from.volts, from.vsOCP, to.volts, to.vsOCP, dEdt);
        Vek_Node_SetCurrentRange(leg, currentRange);
        Vek_Node_SetVoltageRange(leg, voltageRange);
        return leg;
    });
    return list;
}

ErrorStringList CyclicVoltammetryElement::validateInput(const HardwareVersion &hardware) const
{
    InputCheck check(hardware);
    check.samplingLimit(samplingInterval);
    checkCyclicPath(check, pathOf(*this));
    const double alphaPercent = alphaFactor * 100.0;
    return check.complainUnless(numberOfCycles > 0, QStringLiteral("Cycle number should be positive for %1."))
        .complainUnless(alphaPercent >= 0.0 && alphaPercent <= 100.0,
                        QStringLiteral("alphaFactor should be in range of 0 to 100 for %1."))
        .errors();
}
