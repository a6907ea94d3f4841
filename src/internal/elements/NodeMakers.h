// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ExpNode.h"
#include "hardware_models/RangeTypes.h"

#include <QList>

/// What a modify node changes in the node that it aims at; the meanings are the firmware's.
enum class ModTarget_t : quint8 {
    FirstValue = 1,     ///< the first voltage of a constant-voltage node
    BiasPotential = 21, ///< the bias of an impedance node
};

/// How a modify node changes its target; only stepping is in use.
enum class ModType_t : quint8 { Step = 0 };

/// What every element passes as the fixed fraction of an impedance sweep; its meaning is the firmware's.
constexpr float eisFixedFraction = 0.5f;

/**
 * @name Node makers
 * Each makes a record with the defaults of ExpNode_t and the parameters of its type.
 *
 * Volts, amperes, seconds, hertz, ohms and watts in single precision; a parameter named ...VsOCP says that the voltage
 * before it is relative to the open-circuit potential. Minima of a rate of change take effect by their magnitude.
 * Pulses have a base level and a pulse level; a span is the part of the time over which the instrument samples, cut to
 * the time where it is longer.
 * Pure, hence free of any thread; values are not checked.
 * @{
 */
ExpNode_t Vek_Node_Open_Circuit(float samplingInterval, float mindVdt);
ExpNode_t Vek_Node_Sweep_Voltage(float samplingInterval, float alphaFactor, float start, bool startVsOCP, float end,
                                 bool endVsOCP, float scanRate);
ExpNode_t Vek_Node_Sweep_Current(float samplingInterval, float alphaFactor, float start, float end, float scanRate);
ExpNode_t Vek_Node_Constant_Voltage(float samplingInterval, float voltage, bool voltageVsOCP, float mindIdt);
ExpNode_t Vek_Node_Constant_Current(float samplingInterval, float current, float mindVdt);

ExpNode_t Vek_Node_Pulse_Normal_Voltage(float start, bool startVsOCP, float end, bool endVsOCP, float step,
                                        float baseSpan, float baseTime, float pulseSpan, float pulseTime);
ExpNode_t Vek_Node_Pulse_Normal_Current(float start, float end, float step, float baseSpan, float baseTime,
                                        float pulseSpan, float pulseTime);
ExpNode_t Vek_Node_Pulse_Diff_Voltage(float start, bool startVsOCP, float end, bool endVsOCP, float pulseHeight,
                                      float step, float baseSpan, float baseTime, float pulseSpan, float pulseTime);
ExpNode_t Vek_Node_Pulse_Diff_Current(float start, float end, float pulseHeight, float step, float baseSpan,
                                      float baseTime, float pulseSpan, float pulseTime);
ExpNode_t Vek_Node_Pulse_Sqr_Voltage(float start, bool startVsOCP, float end, bool endVsOCP, float amplitude,
                                     float step, float baseSpan, float baseTime, float pulseSpan, float pulseTime);
ExpNode_t Vek_Node_Pulse_Sqr_Current(float start, float end, float amplitude, float step, float baseSpan,
                                     float baseTime, float pulseSpan, float pulseTime);

ExpNode_t Vek_Node_Constant_Resistance(float samplingInterval, float resistance);
/// @p power is signed: positive charges.
ExpNode_t Vek_Node_Constant_Power(float samplingInterval, float power);
ExpNode_t Vek_Node_MPPT(float samplingInterval);

/// The sweep runs from @p startFrequency to @p endFrequency, upwards or downwards, by a constant ratio.
ExpNode_t Vek_Node_EIS_Voltage(float bias, bool biasVsOCP, float amplitude, float startFrequency, float endFrequency,
                               float stepsPerDecade, float fixedFraction, int minimumCycles);
/// As Vek_Node_EIS_Voltage(), with bias and amplitude in amperes.
ExpNode_t Vek_Node_EIS_Current(float bias, float amplitude, float startFrequency, float endFrequency,
                               float stepsPerDecade, float fixedFraction, int minimumCycles);
/// As Vek_Node_EIS_Voltage(), without ranging: the gains and ranges stand. @p rangeOff sets the current range to OFF.
ExpNode_t Vek_Node_EIS_Voltage_FixedSettings(float bias, bool biasVsOCP, float amplitude, float startFrequency,
                                             float endFrequency, float stepsPerDecade, float fixedFraction,
                                             currentRange_t currentRange, voltageRange_t voltageRange,
                                             ACgain_t firstGain, ACgain_t secondGain, int setting, int minimumCycles,
                                             bool rangeOff);

/// Runs the nodes from @p jump (negative, counted from the loop node) again, @p count passes in all.
ExpNode_t Vek_Node_Loop(qint16 jump, quint16 count);
/// Goes on at @p firstTarget or @p secondTarget, whichever the voltage limits of the node choose.
ExpNode_t Vek_Node_BranchLogic(qint16 firstTarget, qint16 secondTarget);
/**
 * Steps a value of another node.
 *
 * @param next   the value after this step
 * @param last   the value at which stepping ends
 * @param step   signed increment
 * @param target distance in nodes from this node to the one that is changed
 * @param jump   distance in nodes to the one that runs next
 */
ExpNode_t Vek_Node_Modify(float next, float last, float step, int target, ModTarget_t what, ModType_t how, int jump);

// What the arguments mean is known to the firmware alone. See compatibility.md, places of the arguments.
ExpNode_t Vek_Node_PITT(float first, float second, float third, float fourth, float fifth, float sixth);
ExpNode_t Vek_Node_GITT(float first, float second, float third, float fourth, float fifth, float sixth);
ExpNode_t Vek_Node_NonlinearADCcal(quint16 first, quint16 second, quint16 third, quint16 fourth);

/// @p lastFlag is bit 0 of the byte at offset 28: set on a leg that goes on from the one before.
ExpNode_t Vek_Node_Step_Voltage(float samplingInterval, float start, bool startVsOCP, float end, bool endVsOCP,
                                float step, float stepDuration, bool lastFlag);
/// As Vek_Node_Step_Voltage(), in amperes.
ExpNode_t Vek_Node_Step_Current(float samplingInterval, float start, float end, float step, float stepDuration,
                                bool lastFlag);
ExpNode_t Vek_Node_MultiSine_Voltage(float first, bool firstVsOCP, float second, int count, float last);
ExpNode_t Vek_Node_MultiSine_Current(float first, float second, int count, float last);
/// Holds a voltage by regulating the current around @p pseudoValue; @p isPositive is its sign.
ExpNode_t Vek_Node_Pseudo_Constant_Voltage(float samplingInterval, float voltage, bool voltageVsOCP, float pseudoValue,
                                           bool isPositive, float mindIdt);
/** @} */

/// A ready-made stepping half of a Mott-Schottky run: hold, impedance sweep, and the two modify nodes that step them.
QList<ExpNode_t> AI_Nodes_MottSchottky(float potential, bool potentialVsOCP, float lastPotential, float step,
                                       float holdTime, float holdSamplingInterval, float amplitude,
                                       float startFrequency, float endFrequency, float stepsPerDecade,
                                       int minimumCycles);

/// @name Limits and ranges of an existing node
/// A node ends when a value passes one of its limits; infinity stands for no limit.
/// @{

/// Amperes, signed.
void Vek_Node_SetILimits(ExpNode_t &node, float min, float max);
/// Amperes; both act as magnitudes.
void Vek_Node_SetILimits_Abs(ExpNode_t &node, float min, float max);
/// Volts.
void Vek_Node_SetVLimits(ExpNode_t &node, float min, bool minVsOCP, float max, bool maxVsOCP);
/// Seconds, stored as a magnitude even when not @p active.
void Vek_Node_SetTimeLimit(ExpNode_t &node, float seconds, bool active);
/// Coulombs, stored as a magnitude even when not @p active.
void Vek_Node_SetChargeLimit(ExpNode_t &node, float coulombs, bool active);
/// currentRange_t::Auto leaves the choice to the instrument.
void Vek_Node_SetCurrentRange(ExpNode_t &node, currentRange_t range);
/// voltageRange_t::Auto leaves the choice to the instrument.
void Vek_Node_SetVoltageRange(ExpNode_t &node, voltageRange_t range);
void Vek_Node_SetRepeats(ExpNode_t &node, quint16 count);
/// @}
