// SPDX-License-Identifier: MIT
#include "elements/ConstantPotAdvElement.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"
#include "hardware_models/HardwareVersion.h"

NodeList ConstantPotAdvElement::GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const
{
    const bool isPseudo = pseudoControl && hardware.hwModel != HardwareModel_t::Gale;
    ExpNode_t node = isPseudo ? Vek_Node_Pseudo_Constant_Voltage(samplingInterval, potential, voltageVsOCP, pseudoValue,
                                                                 pseudoValue > 0.0, mindIdt)
                              : Vek_Node_Constant_Voltage(samplingInterval, potential, voltageVsOCP, mindIdt);
    Vek_Node_SetCurrentRange(node, chooseCurrentRange(calibration, autoRange, approxMaxCurrent));
    Vek_Node_SetVoltageRange(node, voltageRange_t(voltageRange));
    Vek_Node_SetTimeLimit(node, maxDuration, true);
    Vek_Node_SetILimits_Abs(node, minAbsoluteCurrent, maxAbsoluteCurrent);
    Vek_Node_SetChargeLimit(node, maxCapacity, true);
    return listOf(openStep(node, QStringLiteral("Constant Potential")));
}

ErrorStringList ConstantPotAdvElement::validateInput(const HardwareVersion &hardware) const
{
    return InputCheck(hardware).samplingLimit(samplingInterval).voltageLimit(potential, voltageVsOCP).errors();
}
