// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <cstddef>
#include <limits>

/// What a node does; the numbers are the firmware's.
enum class NodeType_t : quint8 {
    End = 0,
    OpenCircuit = 1,
    SweepVoltage = 2,
    SweepCurrent = 3,
    ConstantVoltage = 4,
    ConstantCurrent = 5,
    PulseNormalVoltage = 6,
    PulseNormalCurrent = 7,
    PulseDiffVoltage = 8,
    PulseDiffCurrent = 9,
    PulseSqrVoltage = 10,
    PulseSqrCurrent = 11,
    SineVoltage = 12,
    ConstantResistance = 13,
    ConstantPower = 14,
    MaximumPowerPoint = 15,
    EisVoltage = 16,
    EisCurrent = 17,
    EisPseudoGalvanostatic = 18,
    EisCurrentFixedGains = 19,
    Loop = 20,
    BranchLogic = 21,
    EisVoltageFixedSettings = 23,
    EisPotentiostatic26 = 26,
    EisFixedDcBias = 28,
    Pitt = 29,
    Gitt = 30,
    Modify = 31,
    NonlinearAdcCal = 32,
    StepVoltage = 34,
    StepCurrent = 35,
    MultiSineVoltage = 38,
    MultiSineCurrent = 39,
    PseudoConstantVoltage = 40,
};

/// Bits of ExpNode_t::flags.
namespace NodeFlag {
constexpr quint8 vMinVsOcp = 1u << 0;          ///< vLimitMin is relative to the open-circuit potential
constexpr quint8 vMaxVsOcp = 1u << 1;          ///< vLimitMax is relative to it
constexpr quint8 firstVoltageVsOcp = 1u << 2;  ///< the first voltage parameter is relative to it
constexpr quint8 secondVoltageVsOcp = 1u << 3; ///< the second voltage parameter is relative to it
constexpr quint8 timeLimit = 1u << 4;          ///< the time limit is active
constexpr quint8 chargeLimit = 1u << 5;        ///< the charge limit is active
constexpr quint8 signedILimits = 1u << 6;      ///< the current limits are signed; clear: magnitudes
} // namespace NodeFlag

/// Bits of ExpNode_t::flags2.
namespace NodeFlag2 {
constexpr quint8 defaults = 0x03;     ///< set on every node that a maker makes; their meaning is the firmware's
constexpr quint8 quietTime = 1u << 2; ///< this node is a quiet time
} // namespace NodeFlag2

#pragma pack(push, 1)
/**
 * One step of an experiment as the instrument stores it: 64 bytes, little-endian, single-precision floats.
 * The parameters at offset 8 mean what the node's type says; the makers in NodeMakers.h write them.
 */
struct ExpNode_t {
    quint8 type = 0;      ///< NodeType_t
    quint8 ranges = 0xFF; ///< low nibble current range, high nibble voltage range; 15: the instrument ranges by itself
    qint16 jump = 0;      ///< loop: offset of the first node to run again; modify: node offset; branch: target
    quint16 repeats = 1;  ///< how many times the node runs; of a loop: how many passes
    quint8 flags = NodeFlag::timeLimit | NodeFlag::chargeLimit; ///< NodeFlag
    quint8 flags2 = NodeFlag2::defaults;                        ///< NodeFlag2
    quint8 parameters[32] = {};                                 ///< union by type
    float iLimitMin = 0.0f; ///< amperes; the node ends when the current passes this limit
    float iLimitMax = std::numeric_limits<float>::infinity();
    float vLimitMin = -std::numeric_limits<float>::infinity(); ///< volts; the node ends when the voltage passes it
    float vLimitMax = std::numeric_limits<float>::infinity();
    float timeLimit = std::numeric_limits<float>::infinity();   ///< seconds; 0 on loop and modify nodes
    float chargeLimit = std::numeric_limits<float>::infinity(); ///< coulombs

    NodeType_t nodeType() const { return NodeType_t(type); }
};
#pragma pack(pop)
static_assert(sizeof(ExpNode_t) == 64, "the record as it travels");
static_assert(offsetof(ExpNode_t, parameters) == 8, "");
static_assert(offsetof(ExpNode_t, iLimitMin) == 40, "");
static_assert(offsetof(ExpNode_t, chargeLimit) == 60, "");
