// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ChargeDischargeElement.h"
#include "elements/ConstantCurrentAdvElement.h"
#include "elements/ConstantCurrentElement.h"
#include "elements/ConstantPotAdvElement.h"
#include "elements/ConstantPotElement.h"
#include "elements/ConstantPowerElement.h"
#include "elements/ConstantResistanceElement.h"
#include "elements/CyclicVoltammetryElement.h"
#include "elements/DCCurrentSweepElement.h"
#include "elements/DCPotentialSweepElement.h"
#include "elements/DiffPulseVoltammetryElement.h"
#include "elements/EISGalvanostaticElement.h"
#include "elements/EISPotentiostaticElement.h"
#include "elements/MottSchottkyElement.h"
#include "elements/NormalPulseVoltammetryElement.h"
#include "elements/OpenCircuitElement.h"
#include "elements/SquareWaveVoltammetryElement.h"
#include "elements/StaircasePotentialVoltammetryElement.h"
#include "elements/SteppedCurrent.h"
#include "elements/SteppedVoltage.h"
#include "hardware_models/HardwareVersion.h"

#include <QMetaType>

using Element = std::shared_ptr<AbstractBuilderElement>;
Q_DECLARE_METATYPE(Element)
Q_DECLARE_METATYPE(HardwareModel_t)

// Short names, for rows.
using Current = ConstantCurrentAdvElement;
using Hold = ConstantPotAdvElement;
using Rest = OpenCircuitElement;
using Power = ConstantPowerElement;
using Resistance = ConstantResistanceElement;
using Sweep = DCPotentialSweepElement;
using CurrentSweep = DCCurrentSweepElement;
using Cyclic = CyclicVoltammetryElement;
using Staircase = StaircasePotentialVoltammetryElement;
using NormalPulses = NormalPulseVoltammetryElement;
using DiffPulses = DiffPulseVoltammetryElement;
using SquareWave = SquareWaveVoltammetryElement;
using VoltageEis = EISPotentiostaticElement;
using CurrentEis = EISGalvanostaticElement;
using MottSchottky = MottSchottkyElement;
using Battery = ChargeDischargeElement;
using Half = ChargeDischargeHalf;

template <class Given>
Given with(Given given)
{
    return given;
}

/// An element with some of its members set: with(Sweep(), &Sweep::endingPot, 1, &Sweep::scanRate, 0.1).
template <class Given, class Member, class Value, class... More>
Given with(Given given, Member member, Value value, More... more)
{
    given.*member = value;
    return with(given, more...);
}

inline HardwareVersion hardwareOf(HardwareModel_t model)
{
    HardwareVersion hardware;
    hardware.hwModel = model;
    return hardware;
}
