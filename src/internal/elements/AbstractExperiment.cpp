#include "elements/AbstractExperiment.h"

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
