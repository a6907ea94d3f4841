// SPDX-License-Identifier: MIT
#include "elements/ConstantResistanceElement.h"

#include "elements/LoadLimits.h"
#include "elements/StepNodes.h"
#include "hardware_models/HardwareModel.h"

NodeList ConstantResistanceElement::GetNodesData(const CalibrationData &, const HardwareVersion &) const
{
    ExpNode_t node = Vek_Node_Constant_Resistance(samplingInterval, resistance);
    setLoadLimits(node, *this);
    return listOf(openStep(node, QStringLiteral("Constant Resistance Discharge")));
}

ErrorStringList ConstantResistanceElement::validateInput(const HardwareVersion &hardware) const
{
    InputCheck check(hardware);
    const HardwareModel &model = check.model();
    if (resistance > 0.0)
        check.complainUnless(model.isWithinResistanceLoadLimits(resistance, false),
                             model.getResistanceLoadLimitErrorMsg(false));
    else
        check.complainUnless(false, model.getPositiveResistanceErrorMsg());
    return checkLoadLimits(check, *this).errors();
}
