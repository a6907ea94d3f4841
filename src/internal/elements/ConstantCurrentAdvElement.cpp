// SPDX-License-Identifier: MIT
#include "elements/ConstantCurrentAdvElement.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"
#include "hardware_models/HardwareModelFactory.h"
#include "hardware_models/HardwareVersion.h"

#include <algorithm>
#include <cmath>

NodeList ConstantCurrentAdvElement::GetNodesData(const CalibrationData &calibration,
                                                 const HardwareVersion &hardware) const
{
    const bool isFiltered = minSamplingVoltageDifference != -std::numeric_limits<double>::infinity();
    const auto model = HardwareModelFactory::getHardwareModel(hardware.hwModel);
    const double largestCurrent = std::max(std::fabs(approxMaxCurrent), std::fabs(current));

    ExpNode_t node =
        Vek_Node_Constant_Current(isFiltered ? model->getMinSamplingPeriod() : samplingInterval, current, 0);
    Vek_Node_SetTimeLimit(node, maxDuration, true);
    Vek_Node_SetCurrentRange(node, chooseCurrentRange(calibration, autoRange, largestCurrent));
    Vek_Node_SetVLimits(node, minVoltage, false, maxVoltage, false);
    Vek_Node_SetChargeLimit(node, std::fabs(maxCapacity), true);
    Vek_Node_SetVoltageRange(node, chooseVoltageRange(calibration, autoVoltageRange, approxMaxVoltage));

    Node step = openStep(node, QStringLiteral("Constant Current"), longestCurrentPeriod);
    step.setVoltageDifferent(minSamplingVoltageDifference);
    return listOf(step);
}

ErrorStringList ConstantCurrentAdvElement::validateInput(const HardwareVersion &hardware) const
{
    return InputCheck(hardware).samplingLimit(samplingInterval).currentLimit(current).errors();
}
