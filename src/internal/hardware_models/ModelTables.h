// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/HardwareModel.h"

#include <iterator>
#include <limits>

/// The numbers of the models that are written out; see Kestrel for those that are computed.
namespace ModelTables {

constexpr double keep = std::numeric_limits<double>::quiet_NaN(); ///< the base class's default stays
constexpr double infinite = std::numeric_limits<double>::infinity();

struct IdentityRow {
    HardwareModel_t model;
    const char *vanityName;
    const char *signatureText; ///< null: the base class's default stays
    const char *hexFile;
    const char *firmwareLabel;
    const QString *category;
};

struct LimitRow { // the minima mirror the maxima
    HardwareModel_t model;
    double controlled;
    double openCircuit;
    double current;
    double frequency;
    double squareWave;
    double vAmpMin;
    double vAmpMax;
    double iAmpMax;
    double iAndIAmpMax;
    double vAndVAmpMax;
};

struct RareLimitRow {
    HardwareModel_t model;
    double minSamplingPeriod;
    double vStepMin;
    double iAmpMin;
    double frequencyMin;
};

struct GainRun { ///< the first gain so many times, then the second so many times
    quint8 first = 0;
    int firstCount = 0;
    quint8 second = 0;
    int secondCount = 0;
};

enum class GainMap { none, M3, M4 };

struct Preset {
    int bandwidthIndex;
    int stabilityFactor;
};
constexpr Preset noPreset{-1, -1};

struct NameCounts {
    int bandwidths;
    int stabilities;
};

struct RangeRow {
    HardwareModel_t model;
    quint8 numDC; ///< the base ranges too
    quint8 numTotal;
    int numHighSide;
    int upperBinaryCurrent;
    GainRun gains;
    GainMap gainMap;
    bool isEisCapable;
    bool hasTemperature;
    bool hasFan;
    bool sdCardHasCalData;
    Preset preset;
    NameCounts names;
};

struct DriftRow {
    HardwareModel_t model;
    int numRanges; ///< calibrated from the most sensitive of these ranges to the largest
};

struct ConstantRow {
    HardwareModel_t model;
    int rateConstantA;
    int blockConstant;
    int rateConstantB;
    bool flagA;
    bool flagB;
    bool modeFlag;
    quint8 boardCode;
    int rateConstantC;
    bool checkFlag;
    int revisionCode;
};

/// Whether row n belongs to model n, from 0 on.
template <typename Row, std::size_t size>
constexpr bool isIndexedByModel(const Row (&rows)[size])
{
    for (std::size_t i = 0; i < size; ++i) {
        if (static_cast<std::size_t>(rows[i].model) != i)
            return false;
    }
    return true;
}

template <typename Row, std::size_t size>
constexpr bool isStrictlyAscending(const Row (&rows)[size])
{
    for (std::size_t i = 1; i < size; ++i) {
        if (rows[i - 1].model >= rows[i].model)
            return false;
    }
    return true;
}

/// The row of the model, or null.
template <typename Row, std::size_t size>
constexpr const Row *find(const Row (&rows)[size], HardwareModel_t model)
{
    for (const Row &row : rows) {
        if (row.model == model)
            return &row;
    }
    return nullptr;
}

using M = HardwareModel_t;
using H = HardwareModel;

// clang-format off

// The case of Alder_2_5 and the four labels of Cedar are right: see compatibility.md, shared labels.
constexpr IdentityRow identityRows[] = {
    // model             vanity name      signature text  hexFileName                                     suitableFirmware                   category
    {M::Cedar,            "Cedar",         "CEDAR",        "NoLongerSupported",                            "2020 Nov 03 Cedar firmware",      &H::OBSOLETE_CATEGORY},
    {M::Fjord,            "Fjord",         nullptr,        "NoLongerSupported",                            "2020 Nov 03 Cedar firmware",      &H::NOTRELEASED_CATEGORY},
    {M::Ember,            "Ember",         nullptr,        "NoLongerSupported",                            "2020 Nov 03 Cedar firmware",      &H::NOTRELEASED_CATEGORY},
    {M::Dune,             "Dune",          "DUNE",         "NoLongerSupported",                            "2020 Nov 03 Dune firmware",       &H::OBSOLETE_CATEGORY},
    {M::Alder,            "Alder",         nullptr,        "NoLongerSupported",                            "2020 Nov 03 Cedar firmware",      &H::OBSOLETE_CATEGORY},
    {M::Alder_2_0,        "Alder",         "ALDER_2_1",    "NoLongerSupported",                            "2020 Nov 03 Alder 2.1 firmware",  &H::OBSOLETE_CATEGORY},
    {M::Alder_2_1,        "Alder",         "ALDER_2_1",    "NoLongerSupported",                            "2020 Nov 03 Alder 2.1 firmware",  &H::OBSOLETE_CATEGORY},
    {M::Alder_2_2,        "Alder",         "ALDER_2_2",    "Nimbrelle_Alder-Birch_2_2_Firmware.hex",       "2020 Nov 03 Alder 2.2 firmware",  &H::LOWLAND_CATEGORY},
    {M::Birch_2_2,        "Birch",         "ALDER_2_2",    "Nimbrelle_Alder-Birch_2_2_Firmware.hex",       "2020 Nov 03 Alder 2.2 firmware",  &H::LOWLAND_CATEGORY},
    {M::Cedar_2_0,        "Cedar",         "CEDAR_2_0",    "Nimbrelle_Cedar_2_0_Firmware.hex",             "2020 Oct 28 Cedar 2.0 firmware",  &H::LOWLAND_CATEGORY},
    {M::Dune_2_0,         "Dune",          "DUNE_2_0",     "Nimbrelle_Dune_2_0_Firmware.hex",              "2020 Nov 03 Dune 2.0 firmware",   &H::LOWLAND_CATEGORY},
    {M::Alder_2_3,        "Alder",         "ALDER_2_3",    "Nimbrelle_Alder-Birch_2_3_Firmware.hex",       "2020 Nov 03 Alder 2.3 firmware",  &H::LOWLAND_CATEGORY},
    {M::Alder_2_3b,       "Alder",         "ALDER_2_3B",   "Nimbrelle_Alder-Birch_2_3_ModB_Firmware.hex",  "2020 Nov 03 Alder 2.3b firmware", &H::LOWLAND_CATEGORY},
    {M::Birch_2_3b,       "Birch",         "ALDER_2_3B",   "Nimbrelle_Alder-Birch_2_3_ModB_Firmware.hex",  "2020 Nov 03 Alder 2.3b firmware", &H::LOWLAND_CATEGORY},
    {M::Marsh_protoboard, "DC Tarn Proto", nullptr,        "NoLongerSupported",                            "2020 June 5 Tarnonly firmware",   &H::NOTRELEASED_CATEGORY},
    {M::Ibis_1_0,         "Ibis",          "IBIS_1_0",     "Nimbrelle_Ibis_Firmware.hex",                  "2023 Dec 08 Ibis 1.0 firmware",   &H::KESTREL_CATEGORY},
    {M::Jay_1_0,          "Jay",           "JAY_1_0",      "Nimbrelle_Jay_Firmware.hex",                   "2023 Dec 08 Jay 1.0 firmware",    &H::KESTREL_CATEGORY},
    {M::Heron_1_0,        "Heron",         "HERON_1_0",    "Nimbrelle_Heron_Firmware.hex",                 "2023 Dec 08 Heron 1.0 firmware",  &H::KESTREL_CATEGORY},
    {M::Gale,             "Gale",          "GALE",         "Nimbrelle_Gale_Firmware.hex",                  "",                                &H::GALE_CATEGORY},
    {M::Alder_2_4,        "Alder",         "ALDER_2_4",    "Nimbrelle_Alder_2_4_Firmware.hex",             "2020 Nov 03 Alder 2.4 firmware",  &H::LOWLAND_CATEGORY},
    {M::Ibis_2_0,         "Ibis",          "KESTREL_2_x",  "Nimbrelle_Kestrel_2_x_Firmware.hex",           "2023 Dec 08 Ibis 2.0 firmware",   &H::KESTREL_CATEGORY},
    {M::Jay_2_0,          "Jay",           "KESTREL_2_x",  "Nimbrelle_Kestrel_2_x_Firmware.hex",           "2023 Dec 08 Jay 2.0 firmware",    &H::KESTREL_CATEGORY},
    {M::Heron_2_0,        "Heron",         "KESTREL_2_x",  "Nimbrelle_Kestrel_2_x_Firmware.hex",           "2023 Dec 08 Heron 2.0 firmware",  &H::KESTREL_CATEGORY},
    {M::Ibis_2_1,         "Ibis",          "KESTREL_2_x",  "Nimbrelle_Kestrel_2_x_Firmware.hex",           "2023 Dec 08 Ibis 2.1 firmware",   &H::KESTREL_CATEGORY},
    {M::Jay_2_1,          "Jay",           "KESTREL_2_x",  "Nimbrelle_Kestrel_2_x_Firmware.hex",           "2023 Dec 08 Jay 2.1 firmware",    &H::KESTREL_CATEGORY},
    {M::Heron_2_1,        "Heron",         "KESTREL_2_x",  "Nimbrelle_Kestrel_2_x_Firmware.hex",           "2023 Dec 08 Heron 2.1 firmware",  &H::KESTREL_CATEGORY},
    {M::Alder_2_5,        "Alder",         "Alder_2_5",    "Nimbrelle_Alder_2_5_Firmware.hex",             "2020 Nov 03 Alder 2.5 firmware",  &H::LOWLAND_CATEGORY},
};
static_assert(isStrictlyAscending(identityRows), "one row per model, in numeric order");

constexpr LimitRow limitRows[] = { // volts, amperes, hertz
    // model             controlled  open circ. current   frequency sq. wave vAmpMin  vAmpMax iAmpMax   iAndIAmpMax vAndVAmpMax
    {M::Cedar,            keep,       keep,      0.1,      keep,     keep,    keep,    keep,   keep,     keep,       keep},
    {M::Fjord,            keep,       keep,      5,        keep,     keep,    keep,    keep,   keep,     keep,       keep},
    {M::Ember,            keep,       keep,      0.001,    keep,     keep,    keep,    keep,   keep,     keep,       keep},
    {M::Dune,             keep,       keep,      0.1,      keep,     keep,    keep,    keep,   keep,     keep,       keep},
    {M::Alder,            keep,       keep,      1,        keep,     keep,    keep,    keep,   keep,     keep,       keep},
    {M::Alder_2_0,        keep,       keep,      1,        keep,     keep,    keep,    keep,   keep,     keep,       keep},
    {M::Alder_2_1,        keep,       keep,      1,        keep,     keep,    keep,    keep,   keep,     keep,       keep},
    {M::Alder_2_2,        keep,       keep,      1,        keep,     keep,    keep,    keep,   keep,     keep,       keep},
    {M::Birch_2_2,        keep,       keep,      1,        keep,     keep,    keep,    keep,   keep,     keep,       keep},
    {M::Cedar_2_0,        keep,       keep,      0.25,     keep,     800,     keep,    keep,   keep,     keep,       keep},
    {M::Dune_2_0,         keep,       keep,      0.1,      keep,     1000,    keep,    keep,   keep,     keep,       keep},
    {M::Alder_2_3,        keep,       keep,      1,        keep,     3500,    keep,    keep,   keep,     keep,       keep},
    {M::Alder_2_3b,       keep,       keep,      1,        keep,     3500,    keep,    keep,   keep,     keep,       keep},
    {M::Birch_2_3b,       keep,       keep,      1,        keep,     3500,    keep,    keep,   keep,     keep,       keep},
    {M::Marsh_protoboard, 5,          10,        20,       keep,     keep,    keep,    keep,   keep,     keep,       keep},
    {M::Ibis_1_0,         6,          12,        20,       2e6,      2000,    3.5e-6,  6,      20,       20,         6},
    {M::Jay_1_0,          keep,       keep,      10,       2e6,      2000,    1.5e-5,  10,     10,       10,         10},
    {M::Heron_1_0,        keep,       keep,      5,        2e6,      2000,    1.5e-5,  10,     5,        5,          10},
    {M::Gale,             infinite,   infinite,  infinite, 10000,    6.0,     0,       keep,   infinite, keep,       infinite},
    {M::Alder_2_4,        keep,       keep,      1,        2e6,      3500,    1.5e-5,  10,     keep,     1,          10},
    {M::Ibis_2_0,         6,          12,        20,       keep,     2000,    3.5e-6,  6,      20,       20,         6},
    {M::Jay_2_0,          10,         15,        10,       keep,     2000,    1.5e-5,  10,     10,       10,         10},
    {M::Heron_2_0,        keep,       keep,      5,        keep,     2000,    1.5e-5,  10,     5,        5,          10},
};
static_assert(isIndexedByModel(limitRows), "one row per model, in numeric order");

constexpr RareLimitRow rareLimitRows[] = { // seconds, volts, amperes, hertz
    // model             minSamplingPeriod vStepMin iAmpMin frequencyMin
    {M::Cedar_2_0,        0.001,            keep,    keep,   keep},
    {M::Marsh_protoboard, keep,             0.15,    keep,   keep},
    {M::Gale,             keep,             0,       0,      1e-6},
};
static_assert(isStrictlyAscending(rareLimitRows), "one row per model, in numeric order");

constexpr bool yes = true;
constexpr bool no = false;
constexpr GainMap none = GainMap::none;
constexpr GainMap M3 = GainMap::M3;
constexpr GainMap M4 = GainMap::M4;

constexpr RangeRow rangeRows[] = {
    // model            DC total high binary   gains         map   EIS  temp fan  SD   preset    names
    {M::Cedar,            4, 4,  4, 28000,   {0, 1},       none, no,  no,  no,  no,  noPreset, {11, 11}},
    {M::Fjord,            4, 4,  4, 28000,   {0, 1},       none, no,  no,  no,  no,  noPreset, {11, 11}},
    {M::Ember,            4, 4,  4, 28000,   {0, 1},       none, no,  no,  no,  no,  noPreset, {11, 11}},
    {M::Dune,             4, 4,  4, 28000,   {0, 1},       none, no,  no,  no,  no,  noPreset, {11, 11}},
    {M::Alder,            4, 4,  4, 28000,   {0, 1},       none, no,  no,  no,  no,  noPreset, {11, 11}},
    {M::Alder_2_0,        8, 8,  8, 32000,   {3, 1},       none, yes, no,  no,  no,  {0, 0},   {11, 11}},
    {M::Alder_2_1,        8, 8,  8, 32000,   {3, 1},       none, yes, no,  no,  no,  {0, 0},   {3, 8}},
    {M::Alder_2_2,        8, 10, 2, 32000,   {3, 1},       none, yes, no,  no,  yes, {3, 3},   {5, 8}},
    {M::Birch_2_2,        8, 8,  2, 32000,   {3, 1},       none, no,  no,  no,  no,  {3, 3},   {11, 11}},
    {M::Cedar_2_0,        8, 8,  2, 32000,   {0, 1},       none, no,  no,  no,  no,  {2, 0},   {4, 8}},
    {M::Dune_2_0,         8, 8,  1, 32000,   {0, 1},       none, no,  no,  no,  no,  {3, 2},   {4, 8}},
    {M::Alder_2_3,        8, 10, 2, 32000,   {2, 1, 3, 11}, none, yes, no,  no,  yes, {3, 3},   {6, 8}},
    {M::Alder_2_3b,       8, 10, 2, 32000,   {2, 1, 3, 11}, none, yes, no,  no,  yes, {3, 3},   {6, 8}},
    {M::Birch_2_3b,       8, 8,  2, 32000,   {3, 1},       none, no,  no,  no,  no,  {3, 3},   {11, 11}},
    {M::Marsh_protoboard, 4, 4,  4, 32000,   {0, 1},       none, no,  no,  no,  yes, {4, 0},   {11, 11}},
    {M::Ibis_1_0,         9, 9,  4, 32000,   {5, 4, 2, 6}, M3,   yes, yes, yes, yes, {3, 4},   {6, 9}},
    {M::Jay_1_0,          9, 9,  4, 32000,   {6, 4, 3, 6}, M4,   yes, yes, yes, yes, {3, 4},   {6, 9}},
    {M::Heron_1_0,        8, 8,  4, 32000,   {6, 3, 3, 6}, M4,   yes, yes, yes, yes, {3, 4},   {6, 8}},
    {M::Gale,             8, 8,  0, 7680000, {},           none, yes, yes, no,  no,  {0, 0},   {11, 11}},
    {M::Alder_2_4,        8, 10, 2, 32000,   {3, 1},       M4,   yes, no,  yes, yes, {3, 0},   {5, 8}},
    {M::Ibis_2_0,         9, 9,  4, 32000,   {3, 9},       M4,   yes, yes, yes, yes, {3, 3},   {4, 9}},
    {M::Jay_2_0,          9, 9,  4, 32000,   {3, 10},      M4,   yes, yes, yes, yes, {3, 3},   {4, 9}},
    {M::Heron_2_0,        8, 8,  3, 32000,   {3, 9},       M4,   yes, yes, yes, yes, {3, 2},   {4, 8}},
};
static_assert(isIndexedByModel(rangeRows), "one row per model, in numeric order");

constexpr DriftRow driftRows[] = {
    {M::Cedar_2_0,  8},
    {M::Alder_2_3,  2},
    {M::Alder_2_3b, 2},
    {M::Birch_2_3b, 2},
};
static_assert(isStrictlyAscending(driftRows), "one row per model, in numeric order");

constexpr ConstantRow constantRows[] = {
    // model             rateA  block rateB  flagA flagB mode board rateC check revision
    {M::Cedar,            25000, 128,  25000, no,  yes,  no,  4,    30000, no,  1000},
    {M::Fjord,            25000, 128,  25000, no,  yes,  no,  1,    0,     yes, -1},
    {M::Ember,            25000, 128,  25000, no,  yes,  no,  1,    0,     yes, -1},
    {M::Dune,             10000, 128,  10000, no,  yes,  no,  1,    0,     no,  1000},
    {M::Alder,            10000, 128,  10000, no,  yes,  no,  1,    0,     yes, 1000},
    {M::Alder_2_0,        750,   1024, 37500, yes, no,   no,  1,    0,     yes, -1},
    {M::Alder_2_1,        750,   1024, 37500, yes, no,   no,  1,    0,     yes, -1},
    {M::Alder_2_2,        750,   1024, 37500, yes, no,   no,  1,    0,     yes, 1100},
    {M::Birch_2_2,        750,   1024, 37500, yes, no,   no,  1,    0,     yes, 1100},
    {M::Cedar_2_0,        10000, 256,  40000, yes, no,   yes, 4,    0,     yes, 1100},
    {M::Dune_2_0,         750,   1024, 37500, yes, no,   no,  1,    0,     yes, 1100},
    {M::Alder_2_3,        750,   1024, 37500, yes, no,   no,  1,    0,     yes, -1},
    {M::Alder_2_3b,       750,   1024, 37500, yes, no,   no,  1,    0,     yes, -1},
    {M::Birch_2_3b,       750,   1024, 37500, yes, no,   no,  1,    0,     yes, -1},
    {M::Marsh_protoboard, 750,   1024, 37500, yes, no,   no,  1,    0,     yes, -1},
    {M::Ibis_1_0,         750,   1024, 37500, yes, no,   no,  1,    0,     yes, 1000},
    {M::Jay_1_0,          750,   1024, 37500, yes, no,   no,  1,    0,     yes, 1000},
    {M::Heron_1_0,        750,   1024, 37500, yes, no,   no,  1,    0,     yes, 1000},
    {M::Gale,             750,   512,  37500, no,  no,   no,  4,    0,     no,  1000},
    {M::Alder_2_4,        750,   1024, 37500, yes, no,   no,  1,    0,     yes, 1700},
    {M::Ibis_2_0,         750,   1024, 37500, yes, no,   no,  1,    0,     yes, -1},
    {M::Jay_2_0,          750,   1024, 37500, yes, no,   no,  1,    0,     yes, -1},
    {M::Heron_2_0,        750,   1024, 37500, yes, no,   no,  1,    0,     yes, -1},
};
static_assert(isIndexedByModel(constantRows), "one row per model, in numeric order");

// clang-format on

} // namespace ModelTables
