// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <cstddef>
#include <limits>

/// First words of the calibration records: their ASCII tags read as little-endian numbers.
namespace CalMagic {
constexpr quint32 v4 = 0x76303034;   ///< "400v"
constexpr quint32 vc07 = 0x37306376; ///< "vc07"
} // namespace CalMagic

// Every field of these records is naturally aligned, so they need no packing; the assertions below watch over it.

/// Calibration of one channel of the mainline: 376 bytes, little-endian, single precision; payload of NT_RAW_CAL_DATA.
struct cal_v4 {
    quint32 calMagic;        ///< CalMagic::v4
    float maxACSignal;       ///< largest AC drive, in control counts
    quint32 reserved8;       ///< not read
    float eweRefCoeff;       ///< volts per count of the reference word in a voltage reading
    float iRefCoeff;         ///< reading units per count of the reference word in a current reading
    float vCtrlGain[4];      ///< DAC counts per volt, by voltageRange_t
    float vCtrlOffset[4];    ///< DAC counts at 0 V, by voltageRange_t
    float eceWeGain;         ///< counter electrode: factor of the working electrode's raw term
    float eceWeOffset;       ///< counter electrode: subtracted constant
    float eceCeGain;         ///< counter electrode: factor of its own raw term
    float eceCeOffset;       ///< counter electrode: added constant
    float eweGainBase;       ///< volts per raw unit at gain 1
    float eweOffset[10];     ///< volts, by ACgain_t
    float currentGain[10];   ///< amperes per corrected reading unit, by currentRange_t
    float currentOffset[10]; ///< amperes, by currentRange_t
    float iStageOffset[10];  ///< offset of the current amplifier, by ACgain_t
    float iCtrlGain[10];     ///< DAC counts per ampere, by currentRange_t
    float iCtrlOffset[10];   ///< DAC counts at 0 A, by currentRange_t
    float weStage1Gain[3];   ///< measured gains of the voltage path's first stage, nominally 2, 5 and 10
    float weStage2Gain;      ///< measured gain of its second stage
    float weStage3Gain;      ///< measured gain of its third stage
    float iStage1Gain[3];    ///< the same for the current path
    float iStage2Gain;
    float iStage3Gain;
    float highSideCMCoeff;  ///< common-mode coefficient of the high-side current ranges
    quint8 reserved356[20]; ///< not read
};

/// Calibration of one channel of a battery cycler: 740 bytes, little-endian; payload of NT_RAW_CAL_DATA.
struct cal_vc07 {
    quint32 calMagic;      ///< CalMagic::vc07
    float iGain[8];        ///< amperes per raw unit, by current range; exactly 0 marks an absent range
    float iRefCoeff[8];    ///< factor of the signed current reference word, by current range
    float iOffset[8];      ///< amperes, by current range; a tare replaces it
    float iQuadratic[8];   ///< second-order coefficient of the current, by current range
    float iCubic[8];       ///< third-order coefficient of the current, by current range
    float vGain[4];        ///< volts per raw unit, by voltage range
    float vRefCoeff[4];    ///< factor of the signed voltage reference word, by voltage range
    float vOffset[4];      ///< volts, by voltage range; a tare replaces it
    float acIMag[8][5];    ///< AC current magnitude: polynomials in hertz, constant term first, by current range
    float acIPhase[8][5];  ///< AC current phase, degrees, by current range
    float acVMag[4][5];    ///< AC voltage magnitude, by voltage range
    float acVPhase[4][5];  ///< AC voltage phase, degrees, by voltage range
    quint8 reserved692[8]; ///< not read
    float cmReal[5];       ///< common-mode admittance, real part: polynomial in hertz, constant term first
    float cmImag[5];       ///< common-mode admittance, imaginary part
};

/// Configuration of a battery cycler's board, 288 bytes; payload of NT_CONFIG. Starts as an unconfigured board.
struct Gale_Cfg_t {
    static constexpr float noLimit = std::numeric_limits<float>::infinity();

    quint32 cfgVersion = 5;
    quint32 reserved4 = 0;
    quint32 boardId = 0x12000000; ///< decides the tick of the charge integrator
    quint16 reserved12 = 2;
    quint16 reserved14 = 0;
    quint16 reserved16 = 2;
    quint16 numCurrentRanges = 1; ///< valid indices of current ranges
    quint16 numVoltageRanges = 1; ///< valid indices of voltage ranges
    quint16 reserved22 = 0;
    char boardName[64] = " UNCONFIGURED";       ///< NUL-terminated; see compatibility.md, blank before the board's name
    char channel0Name[64] = "Channel_0";        ///< NUL-terminated
    char channel1Name[64] = "Channel_1";        ///< NUL-terminated
    float currentMin[2] = {-noLimit, -noLimit}; ///< amperes, by channel within the board
    float currentMax[2] = {noLimit, noLimit};   ///< amperes, by channel within the board
    float furtherLimits[13] = {
        -noLimit, -noLimit, noLimit, noLimit, // lower and upper limits of the two channels
        -noLimit, -noLimit, noLimit, noLimit, // the same of another quantity
        -noLimit, noLimit,                    // one lower and one upper limit
        -noLimit, noLimit,                    // one more pair
        noLimit,
    }; ///< no reader
    quint32 reserved284 = 0;
};

static_assert(sizeof(cal_v4) == 376, "the record as it travels");
static_assert(offsetof(cal_v4, eweRefCoeff) == 12, "");
static_assert(offsetof(cal_v4, vCtrlGain) == 20, "");
static_assert(offsetof(cal_v4, vCtrlOffset) == 36, "");
static_assert(offsetof(cal_v4, eceWeGain) == 52, "");
static_assert(offsetof(cal_v4, eweGainBase) == 68, "");
static_assert(offsetof(cal_v4, eweOffset) == 72, "");
static_assert(offsetof(cal_v4, currentGain) == 112, "");
static_assert(offsetof(cal_v4, currentOffset) == 152, "");
static_assert(offsetof(cal_v4, iStageOffset) == 192, "");
static_assert(offsetof(cal_v4, iCtrlGain) == 232, "");
static_assert(offsetof(cal_v4, iCtrlOffset) == 272, "");
static_assert(offsetof(cal_v4, weStage1Gain) == 312, "");
static_assert(offsetof(cal_v4, iStage1Gain) == 332, "");
static_assert(offsetof(cal_v4, highSideCMCoeff) == 352, "");

static_assert(sizeof(cal_vc07) == 740, "the record as it travels");
static_assert(offsetof(cal_vc07, iRefCoeff) == 36, "");
static_assert(offsetof(cal_vc07, iOffset) == 68, "");
static_assert(offsetof(cal_vc07, iCubic) == 132, "");
static_assert(offsetof(cal_vc07, vGain) == 164, "");
static_assert(offsetof(cal_vc07, vOffset) == 196, "");
static_assert(offsetof(cal_vc07, acIMag) == 212, "");
static_assert(offsetof(cal_vc07, acIPhase) == 372, "");
static_assert(offsetof(cal_vc07, acVMag) == 532, "");
static_assert(offsetof(cal_vc07, acVPhase) == 612, "");
static_assert(offsetof(cal_vc07, cmReal) == 700, "");
static_assert(offsetof(cal_vc07, cmImag) == 720, "");

static_assert(sizeof(Gale_Cfg_t) == 288, "the record as it travels");
static_assert(offsetof(Gale_Cfg_t, boardId) == 8, "");
static_assert(offsetof(Gale_Cfg_t, numCurrentRanges) == 18, "");
static_assert(offsetof(Gale_Cfg_t, boardName) == 24, "");
static_assert(offsetof(Gale_Cfg_t, channel0Name) == 88, "");
static_assert(offsetof(Gale_Cfg_t, channel1Name) == 152, "");
static_assert(offsetof(Gale_Cfg_t, currentMin) == 216, "");
static_assert(offsetof(Gale_Cfg_t, currentMax) == 224, "");
static_assert(offsetof(Gale_Cfg_t, furtherLimits) == 232, "");
static_assert(offsetof(Gale_Cfg_t, reserved284) == 284, "");
