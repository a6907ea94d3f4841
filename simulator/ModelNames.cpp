// SPDX-License-Identifier: MIT
#include "simulator/ModelNames.h"

namespace {

struct ModelName {
    const char *name;
    HardwareModel_t model;
};

constexpr ModelName modelNames[] = {
    {"Alder_2_2", HardwareModel_t::Alder_2_2},
    {"Birch_2_2", HardwareModel_t::Birch_2_2},
    {"Cedar_2_0", HardwareModel_t::Cedar_2_0},
    {"Dune_2_0", HardwareModel_t::Dune_2_0},
    {"Alder_2_3", HardwareModel_t::Alder_2_3},
    {"Alder_2_3b", HardwareModel_t::Alder_2_3b},
    {"Birch_2_3b", HardwareModel_t::Birch_2_3b},
    {"Ibis_1_0", HardwareModel_t::Ibis_1_0},
    {"Jay_1_0", HardwareModel_t::Jay_1_0},
    {"Heron_1_0", HardwareModel_t::Heron_1_0},
    {"Gale", HardwareModel_t::Gale},
    {"Alder_2_4", HardwareModel_t::Alder_2_4},
    {"Ibis_2_0", HardwareModel_t::Ibis_2_0},
    {"Jay_2_0", HardwareModel_t::Jay_2_0},
    {"Heron_2_0", HardwareModel_t::Heron_2_0},
    {"Ibis_2_1", HardwareModel_t::Ibis_2_1},
    {"Jay_2_1", HardwareModel_t::Jay_2_1},
    {"Heron_2_1", HardwareModel_t::Heron_2_1},
    {"Ibis_2_2", HardwareModel_t::Ibis_2_2},
    {"Jay_2_2", HardwareModel_t::Jay_2_2},
    {"Heron_2_2", HardwareModel_t::Heron_2_2},
    {"Ibis_2_3", HardwareModel_t::Ibis_2_3},
    {"Jay_2_3", HardwareModel_t::Jay_2_3},
    {"Heron_2_3", HardwareModel_t::Heron_2_3},
    {"Ibis_2_4", HardwareModel_t::Ibis_2_4},
    {"Jay_2_4", HardwareModel_t::Jay_2_4},
    {"Heron_2_4", HardwareModel_t::Heron_2_4},
    {"Alder_2_5", HardwareModel_t::Alder_2_5},
};

} // namespace

std::optional<HardwareModel_t> modelNamed(const QString &nameOrNumber)
{
    for (const ModelName &row : modelNames) {
        const bool isName = nameOrNumber.compare(QLatin1String(row.name), Qt::CaseInsensitive) == 0;
        if (isName || nameOrNumber == QString::number(int(row.model)))
            return row.model;
    }
    return std::nullopt;
}

QStringList modelList()
{
    QStringList lines;
    for (const ModelName &row : modelNames)
        lines += QStringLiteral("%1  %2").arg(int(row.model), 2).arg(QLatin1String(row.name));
    return lines;
}
