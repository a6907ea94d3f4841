// SPDX-License-Identifier: MIT
#pragma once

#include <QHashFunctions>
#include <QtGlobal>

/// The model number that an instrument reports; the values travel on the wire and are stored with calibration data.
enum class HardwareModel_t : quint8 {
    Cedar = 0,
    Fjord = 1,
    Ember = 2,
    Dune = 3,
    Alder = 4,
    Alder_2_0 = 5,
    Alder_2_1 = 6,
    Alder_2_2 = 7,
    Birch_2_2 = 8,
    Cedar_2_0 = 9,
    Dune_2_0 = 10,
    Alder_2_3 = 11,
    Alder_2_3b = 12,
    Birch_2_3b = 13,
    Marsh_protoboard = 14,
    Ibis_1_0 = 15,
    Jay_1_0 = 16,
    Heron_1_0 = 17,
    Gale = 18,
    Alder_2_4 = 19,
    Ibis_2_0 = 20,
    Jay_2_0 = 21,
    Heron_2_0 = 22,
    Ibis_2_1 = 23,
    Jay_2_1 = 24,
    Heron_2_1 = 25,
    Ibis_2_2 = 26,
    Jay_2_2 = 27,
    Heron_2_2 = 28,
    Ibis_2_3 = 29,
    Jay_2_3 = 30,
    Heron_2_3 = 31,
    Ibis_2_4 = 32,
    Jay_2_4 = 33,
    Heron_2_4 = 34,
    Alder_2_5 = 35,
    Invalid = 255, ///< any number above 35 stands for no model; this one is the host's own choice
};

inline uint qHash(HardwareModel_t model, uint seed = 0)
{
    return ::qHash(static_cast<quint8>(model), seed);
}

/// The family of instruments that a model belongs to: it decides the layout of data and who handles them.
enum class InstrumentLine {
    None = 0, ///< obsolete, never released or unknown
    Main = 2,
    Gale = 3, ///< the battery cycler
};

/// The line of a model number, known or not.
constexpr InstrumentLine instrumentLineOf(HardwareModel_t model)
{
    if (model <= HardwareModel_t::Alder_2_0 || model == HardwareModel_t::Marsh_protoboard ||
        model > HardwareModel_t::Alder_2_5)
        return InstrumentLine::None;
    return model == HardwareModel_t::Gale ? InstrumentLine::Gale : InstrumentLine::Main;
}
