// SPDX-License-Identifier: MIT
#include "VekDataManipulator.h"

#include "VekDiffPulseVoltammetryElement.h"
#include "VekNormalPulseVoltammetryElement.h"
#include "VekSquareWaveVoltammetryElement.h"
#include "experiments/VekDataManipulatorPrivate.h"

VekDataManipulator::VekDataManipulator() : _private(std::make_shared<VekDataManipulatorPrivate>())
{
}

VekDataManipulator::VekDataManipulator(const VekDiffPulseVoltammetryElement &element) : VekDataManipulator()
{
    setPulseType(DifferentialPulse, element.getPulseWidth(), element.getPulsePeriod());
}

VekDataManipulator::VekDataManipulator(const VekNormalPulseVoltammetryElement &element) : VekDataManipulator()
{
    setPulseType(NormalPulse, element.getPulseWidth(), element.getPulsePeriod());
}

VekDataManipulator::VekDataManipulator(const VekSquareWaveVoltammetryElement &element) : VekDataManipulator()
{
    setPulseType(SquarewavePulse, element.getPulseFreq());
}

VekDataManipulator::~VekDataManipulator() = default;

VekErrorCode VekDataManipulator::setPulseType(VekPulseType type, double pulseWidth, double pulsePeriod)
{
    return _private->setPulseType(type, pulseWidth, pulsePeriod);
}

VekErrorCode VekDataManipulator::setPulseType(VekPulseType type, double frequency)
{
    return _private->setPulseType(type, frequency);
}

double VekDataManipulator::getPulseWidth() const
{
    return _private->pulseWidth;
}

double VekDataManipulator::getPulsePeriod() const
{
    return _private->pulsePeriod;
}

double VekDataManipulator::getFrequency() const
{
    return _private->frequency;
}

void VekDataManipulator::loadPrimaryData(const VekDCData &data)
{
    _private->loadPrimaryData(data);
}

bool VekDataManipulator::isPulseCompleted() const
{
    return _private->pulseCompleted;
}

double VekDataManipulator::getBaseCurrent() const
{
    return _private->baseCurrent;
}

double VekDataManipulator::getPulseCurrent() const
{
    return _private->pulseCurrent;
}

double VekDataManipulator::getBaseVoltage() const
{
    return _private->baseVoltage;
}

double VekDataManipulator::getPulseVoltage() const
{
    return _private->pulseVoltage;
}
