// SPDX-License-Identifier: MIT
#include "simulator/cells/CellFactory.h"

#include "simulator/cells/BatteryCell.h"
#include "simulator/cells/CoatingCell.h"
#include "simulator/cells/RandlesWarburgCell.h"
#include "simulator/cells/RcCell.h"
#include "simulator/cells/RedoxCell.h"
#include "simulator/cells/ResistorCell.h"
#include "simulator/cells/SemiconductorCell.h"

#include <QMap>
#include <QStringList>
#include <QVector>

#include <cmath>
#include <limits>

namespace {

enum class Bound {
    Positive,      ///< above 0 and finite
    MayBeInfinite, ///< above 0
    NotNegative,   ///< 0 and above, finite
    Share,         ///< 0 to 1
    Any,           ///< finite
};

struct Parameter {
    const char *name;
    double preset;
    Bound bound;
};

using Values = QMap<QString, double>;

struct CellKind {
    const char *name;
    QVector<Parameter> parameters;
    std::unique_ptr<Cell> (*make)(const Values &values);
};

std::unique_ptr<Cell> makeResistor(const Values &values)
{
    return std::make_unique<ResistorCell>(values[QStringLiteral("R")]);
}

std::unique_ptr<Cell> makeRc(const Values &values)
{
    return std::make_unique<RcCell>(values[QStringLiteral("Rs")],
                                    RcElement{values[QStringLiteral("R")], values[QStringLiteral("C")]});
}

/// Randles' circuit without diffusion is the RC cell under the names that an electrochemist gives its parts.
std::unique_ptr<Cell> makeRandles(const Values &values)
{
    const RcElement interface {
        values[QStringLiteral("Rct")], values[QStringLiteral("C")]
    };
    return std::make_unique<RcCell>(values[QStringLiteral("Rs")], interface);
}

std::unique_ptr<Cell> makeBattery(const Values &values)
{
    BatteryCell::Parameters parameters;
    parameters.capacity = values[QStringLiteral("Q")];
    parameters.stateOfCharge = values[QStringLiteral("soc")];
    parameters.series = values[QStringLiteral("Rs")];
    parameters.polarisation = values[QStringLiteral("R")];
    parameters.capacitance = values[QStringLiteral("C")];
    parameters.efficiency = values[QStringLiteral("efficiency")];
    return std::make_unique<BatteryCell>(parameters);
}

std::unique_ptr<Cell> makeRedox(const Values &values)
{
    RedoxCell::Parameters parameters;
    parameters.formalPotential = values[QStringLiteral("E0")];
    parameters.electrons = values[QStringLiteral("n")];
    parameters.reduced = values[QStringLiteral("cR")];
    parameters.oxidised = values[QStringLiteral("cO")];
    parameters.diffusivity = values[QStringLiteral("D")];
    parameters.area = values[QStringLiteral("A")];
    parameters.rate = values[QStringLiteral("k0")];
    parameters.transfer = values[QStringLiteral("alpha")];
    parameters.series = values[QStringLiteral("Rs")];
    parameters.capacitance = values[QStringLiteral("C")];
    parameters.temperature = values[QStringLiteral("T")];
    return std::make_unique<RedoxCell>(parameters);
}

std::unique_ptr<Cell> makeWarburg(const Values &values)
{
    RandlesWarburgCell::Parameters parameters;
    parameters.series = values[QStringLiteral("Rs")];
    parameters.transfer = values[QStringLiteral("Rct")];
    parameters.capacitance = values[QStringLiteral("C")];
    parameters.warburg = values[QStringLiteral("W")];
    return std::make_unique<RandlesWarburgCell>(parameters);
}

std::unique_ptr<Cell> makeCoating(const Values &values)
{
    CoatingCell::Parameters parameters;
    parameters.series = values[QStringLiteral("Rs")];
    parameters.coatingCapacitance = values[QStringLiteral("Cc")];
    parameters.pores = values[QStringLiteral("Rpo")];
    parameters.layerCapacitance = values[QStringLiteral("Cdl")];
    parameters.transfer = values[QStringLiteral("Rct")];
    return std::make_unique<CoatingCell>(parameters);
}

std::unique_ptr<Cell> makeSemiconductor(const Values &values)
{
    SemiconductorCell::Parameters parameters;
    parameters.series = values[QStringLiteral("Rs")];
    parameters.leak = values[QStringLiteral("R")];
    parameters.flatBand = values[QStringLiteral("Efb")];
    parameters.donors = values[QStringLiteral("N")];
    parameters.permittivity = values[QStringLiteral("eps")];
    parameters.area = values[QStringLiteral("A")];
    parameters.temperature = values[QStringLiteral("T")];
    return std::make_unique<SemiconductorCell>(parameters);
}

const QVector<CellKind> &cellKinds()
{
    // clang-format off
    static const QVector<CellKind> kinds = {
        {"resistor", {{"R", 1000.0, Bound::Positive}}, makeResistor},
        {"rc", {{"Rs", 10.0, Bound::Positive}, {"R", 1000.0, Bound::MayBeInfinite}, {"C", 1e-3, Bound::Positive}}, makeRc},
        {"battery", {{"Q", 36.0, Bound::Positive}, {"soc", 0.5, Bound::Share}, {"Rs", 0.5, Bound::Positive},
                     {"R", 0.25, Bound::Positive}, {"C", 80.0, Bound::Positive}, {"efficiency", 1.0, Bound::Share}},
         makeBattery},
        {"redox", {{"E0", 0.2, Bound::Any}, {"n", 1.0, Bound::Positive}, {"cR", 1.0, Bound::Positive},
                   {"cO", 1e-4, Bound::Positive}, {"D", 1e-9, Bound::Positive}, {"A", 1e-5, Bound::Positive},
                   {"k0", 1e-2, Bound::Positive}, {"alpha", 0.5, Bound::Share}, {"Rs", 5.0, Bound::Positive},
                   {"C", 0.0, Bound::NotNegative}, {"T", 298.15, Bound::Positive}}, makeRedox},
        {"randles", {{"Rs", 20.0, Bound::Positive}, {"Rct", 200.0, Bound::MayBeInfinite}, {"C", 2e-5, Bound::Positive}},
         makeRandles},
        {"warburg", {{"Rs", 20.0, Bound::Positive}, {"Rct", 200.0, Bound::Positive}, {"C", 2e-5, Bound::Positive},
                     {"W", 50.0, Bound::Positive}}, makeWarburg},
        {"coating", {{"Rs", 50.0, Bound::Positive}, {"Cc", 1e-9, Bound::Positive}, {"Rpo", 1e5, Bound::Positive},
                     {"Cdl", 1e-7, Bound::Positive}, {"Rct", 1e6, Bound::Positive}}, makeCoating},
        {"semiconductor", {{"Rs", 20.0, Bound::Positive}, {"R", 1e7, Bound::Positive}, {"Efb", -0.5, Bound::Any},
                           {"N", 1e24, Bound::Positive}, {"eps", 10.0, Bound::Positive}, {"A", 1e-5, Bound::Positive},
                           {"T", 298.15, Bound::Positive}}, makeSemiconductor},
    };
    // clang-format on
    return kinds;
}

bool isWithin(double value, Bound bound)
{
    switch (bound) {
    case Bound::Positive:
        return value > 0.0 && std::isfinite(value);
    case Bound::MayBeInfinite:
        return value > 0.0;
    case Bound::NotNegative:
        return value >= 0.0 && std::isfinite(value);
    case Bound::Share:
        return value >= 0.0 && value <= 1.0;
    case Bound::Any:
        return std::isfinite(value);
    }
    return false;
}

const CellKind *kindNamed(const QString &name)
{
    for (const CellKind &kind : cellKinds())
        if (name == QLatin1String(kind.name))
            return &kind;
    return nullptr;
}

/// Overwrites one preset. @return an empty text, or what is wrong
QString assign(const CellKind &kind, const QString &assignment, Values &values)
{
    const QString name = assignment.section(QLatin1Char('='), 0, 0).trimmed();
    bool isNumber = false;
    const double value = assignment.section(QLatin1Char('='), 1).toDouble(&isNumber);
    for (const Parameter &parameter : kind.parameters) {
        if (name != QLatin1String(parameter.name))
            continue;
        if (!isNumber || !isWithin(value, parameter.bound))
            return QStringLiteral("'%1' is no value for a %2").arg(assignment, QLatin1String(kind.name));
        values[name] = value;
        return QString();
    }
    return QStringLiteral("a %1 has no '%2'").arg(QLatin1String(kind.name), name);
}

} // namespace

CellOrError makeCell(const QString &description)
{
    const CellKind *kind = kindNamed(description.section(QLatin1Char(':'), 0, 0));
    if (!kind)
        return {nullptr, QStringLiteral("there is no cell '%1'").arg(description)};
    Values values;
    for (const Parameter &parameter : kind->parameters)
        values[QLatin1String(parameter.name)] = parameter.preset;
    const QStringList assignments =
        description.section(QLatin1Char(':'), 1).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &assignment : assignments) {
        const QString error = assign(*kind, assignment, values);
        if (!error.isEmpty())
            return {nullptr, error};
    }
    return {kind->make(values), QString()};
}

QString cellHelp()
{
    QString text = QStringLiteral("Cells, with their parameters' defaults in SI units:\n");
    for (const CellKind &kind : cellKinds()) {
        QStringList parameters;
        for (const Parameter &parameter : kind.parameters)
            parameters += QStringLiteral("%1=%2").arg(QLatin1String(parameter.name)).arg(parameter.preset);
        text += QStringLiteral("  %1:%2\n").arg(QLatin1String(kind.name), parameters.join(QLatin1Char(',')));
    }
    return text;
}
