// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/HardwareModelNumber.h"

#include <QString>
#include <QStringList>

#include <iterator>

/// The names by which people choose a model on a command line: those of the model classes, by number.
namespace ModelNames {

// clang-format off
constexpr const char *names[] = {
    "Cedar",            "Fjord",     "Ember",      "Dune",       "Alder",
    "Alder_2_0",        "Alder_2_1", "Alder_2_2",  "Birch_2_2",  "Cedar_2_0",
    "Dune_2_0",         "Alder_2_3", "Alder_2_3b", "Birch_2_3b", "Marsh_protoboard",
    "Ibis_1_0",         "Jay_1_0",   "Heron_1_0",  "Gale",       "Alder_2_4",
    "Ibis_2_0",         "Jay_2_0",   "Heron_2_0",
    "Ibis_2_1",         "Jay_2_1",   "Heron_2_1",
    "Ibis_2_2",         "Jay_2_2",   "Heron_2_2",
    "Ibis_2_3",         "Jay_2_3",   "Heron_2_3",
    "Ibis_2_4",         "Jay_2_4",   "Heron_2_4",
    "Alder_2_5",
};
// clang-format on
static_assert(std::size(names) == static_cast<std::size_t>(HardwareModel_t::Alder_2_5) + 1, "one name per model");

/// All names, by model number.
inline QStringList all()
{
    QStringList list;
    for (const char *name : names)
        list.append(QString::fromLatin1(name));
    return list;
}

/// The model of this name, whatever its case; HardwareModel_t::Invalid without one.
inline HardwareModel_t find(const QString &name)
{
    for (std::size_t number = 0; number < std::size(names); ++number) {
        if (name.compare(QLatin1String(names[number]), Qt::CaseInsensitive) == 0)
            return static_cast<HardwareModel_t>(number);
    }
    return HardwareModel_t::Invalid;
}

} // namespace ModelNames
