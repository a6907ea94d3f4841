// SPDX-License-Identifier: MIT
#include "elements/ConstantPowerElement.h"

#include "elements/LoadLimits.h"
#include "elements/StepNodes.h"
#include "hardware_models/HardwareModel.h"

#include <cmath>

NodeList ConstantPowerElement::GetNodesData(const CalibrationData &, const HardwareVersion &) const
{
    const bool charges = isChargeSet ? isCharge : power >= 0.0;
    ExpNode_t node = Vek_Node_Constant_Power(samplingInterval, signedPower());
    setLoadLimits(node, *this);
    return listOf(
        openStep(node, charges ? QStringLiteral("Constant Power Charge") : QStringLiteral("Constant Power Discharge")));
}

double ConstantPowerElement::signedPower() const
{
    if (!isChargeSet)
        return power;
    return isCharge ? std::fabs(power) : -std::fabs(power);
}

ErrorStringList ConstantPowerElement::validateInput(const HardwareVersion &hardware) const
{
    InputCheck check(hardware);
    check.complainUnless(check.model().isWithinPowerLoadLimits(power, false),
                         check.model().getPowerLimitErrorMsg(false));
    return checkLoadLimits(check, *this).errors();
}
