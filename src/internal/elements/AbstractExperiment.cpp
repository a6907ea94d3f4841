// SPDX-License-Identifier: MIT
#include "elements/AbstractExperiment.h"

#include "hardware_models/HardwareModelFactory.h"
#include "hardware_models/HardwareVersion.h"
#include "logging/ErrorStringList.h"

int AbstractExperiment::getExperimentNodeType(NodeType_t type)
{
    switch (type) {
    case NodeType_t::EisVoltage:
    case NodeType_t::EisCurrent:
    case NodeType_t::EisPseudoGalvanostatic:
    case NodeType_t::EisCurrentFixedGains:
    case NodeType_t::EisVoltageFixedSettings:
    case NodeType_t::EisPotentiostatic26:
    case NodeType_t::EisFixedDcBias:
        return 0;
    default:
        return 1;
    }
}

ExperimentComplaints AbstractExperiment::findComplaints(const HardwareVersion &hardware)
{
    const QString vanityName = HardwareModelFactory::getHardwareModel(hardware.hwModel)->getVanityName();
    const QString text = validateInput(hardware).getErrorListSingleString(vanityName);
    if (text.isEmpty())
        return {};
    return {{VekErrorCode::InvalidParameters, 0, QString(), text}};
}
