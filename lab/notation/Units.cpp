// SPDX-License-Identifier: MIT
#include "lab/notation/Units.h"

#include "lab/notation/Suggestion.h"

#include <QByteArray>
#include <QRegularExpression>

#include <charconv>
#include <cmath>
#include <optional>

namespace lab {

namespace {

struct DimensionRow {
    Dimension dimension;
    const char *name;
    const char *baseUnit;
};

constexpr DimensionRow dimensionRows[] = {
    {Dimension::Number, "a number", ""},
    {Dimension::Percent, "a percentage", "%"},
    {Dimension::Time, "a time", "s"},
    {Dimension::Voltage, "a voltage", "V"},
    {Dimension::Current, "a current", "A"},
    {Dimension::Resistance, "a resistance", "Ohm"},
    {Dimension::Power, "a power", "W"},
    {Dimension::Charge, "a charge", "C"},
    {Dimension::Frequency, "a frequency", "Hz"},
    {Dimension::VoltageRate, "a rate of voltage", "V/s"},
    {Dimension::CurrentRate, "a rate of current", "A/s"},
    {Dimension::Temperature, "a temperature", "degC"},
};

// Factors come as a quotient of whole numbers: one rounding, where a factor of 0.001 would bring a second.
struct UnitRow {
    Dimension dimension;
    const char *symbol;
    double times;
    double over;
    bool takesPrefix;
};

constexpr UnitRow unitRows[] = {
    {Dimension::Percent, "%", 1, 1, false},         {Dimension::Time, "s", 1, 1, true},
    {Dimension::Time, "min", 60, 1, false},         {Dimension::Time, "h", 3600, 1, false},
    {Dimension::Time, "d", 86400, 1, false},        {Dimension::Voltage, "V", 1, 1, true},
    {Dimension::Current, "A", 1, 1, true},          {Dimension::Resistance, "Ohm", 1, 1, true},
    {Dimension::Resistance, u8"Ω", 1, 1, true},     {Dimension::Power, "W", 1, 1, true},
    {Dimension::Charge, "C", 1, 1, true},           {Dimension::Charge, "Ah", 3600, 1, true},
    {Dimension::Frequency, "Hz", 1, 1, true},       {Dimension::VoltageRate, "V/s", 1, 1, true},
    {Dimension::VoltageRate, "V/min", 1, 60, true}, {Dimension::VoltageRate, "V/h", 1, 3600, true},
    {Dimension::CurrentRate, "A/s", 1, 1, true},    {Dimension::CurrentRate, "A/min", 1, 60, true},
    {Dimension::CurrentRate, "A/h", 1, 3600, true}, {Dimension::Temperature, "degC", 1, 1, false},
    {Dimension::Temperature, u8"°C", 1, 1, false},
};

struct PrefixRow {
    const char *symbol;
    double times;
    double over;
};

constexpr PrefixRow prefixRows[] = {
    {"", 1, 1},    {"m", 1, 1e3},  {"u", 1, 1e6}, {u8"µ", 1, 1e6}, {u8"μ", 1, 1e6},
    {"n", 1, 1e9}, {"p", 1, 1e12}, {"k", 1e3, 1}, {"M", 1e6, 1},   {"G", 1e9, 1},
};

/// What people write in place of a unit. Refused all the same: one spelling of each is what others can read.
struct SpellingRow {
    const char *written; ///< in lower case
    const char *unit;
};

constexpr SpellingRow spellingRows[] = {
    {"hour", "h"},         {"hours", "h"},         {"hr", "h"},         {"hrs", "h"},        {"minute", "min"},
    {"minutes", "min"},    {"mins", "min"},        {"second", "s"},     {"seconds", "s"},    {"sec", "s"},
    {"secs", "s"},         {"day", "d"},           {"days", "d"},       {"volt", "V"},       {"volts", "V"},
    {"ampere", "A"},       {"amperes", "A"},       {"amp", "A"},        {"amps", "A"},       {"ohms", "Ohm"},
    {"ohm", "Ohm"},        {"watt", "W"},          {"watts", "W"},      {"coulomb", "C"},    {"coulombs", "C"},
    {"hertz", "Hz"},       {"percent", "%"},       {"celsius", "degC"}, {"mah", "mAh"},      {"msec", "ms"},
    {"millisecond", "ms"}, {"milliseconds", "ms"}, {"milliamp", "mA"},  {"milliamps", "mA"}, {"millivolt", "mV"},
    {"millivolts", "mV"},  {"microamp", "uA"},     {"microamps", "uA"}, {"ah", "Ah"},
};

struct Factor {
    double times;
    double over;
};

/// Calls @p visit with each writable unit of the dimension and its factor until it answers true.
template <typename Visitor>
void visitUnits(Dimension dimension, const Visitor &visit)
{
    for (const UnitRow &unit : unitRows) {
        if (unit.dimension != dimension)
            continue;
        for (const PrefixRow &prefix : prefixRows) {
            const bool isPlain = prefix.symbol[0] == '\0';
            if (!isPlain && !unit.takesPrefix)
                continue;
            const QString symbol = QString::fromUtf8(prefix.symbol) + QString::fromUtf8(unit.symbol);
            if (visit(symbol, Factor{unit.times * prefix.times, unit.over * prefix.over}))
                return;
        }
    }
}

const DimensionRow &rowOf(Dimension dimension)
{
    return dimensionRows[static_cast<int>(dimension)];
}

QStringList unitsOf(Dimension dimension)
{
    QStringList units;
    visitUnits(dimension, [&units](const QString &symbol, Factor) {
        units.append(symbol);
        return false;
    });
    return units;
}

bool findUnit(Dimension dimension, const QString &unit, Factor &found)
{
    bool isKnown = false;
    visitUnits(dimension, [&](const QString &symbol, Factor factor) {
        isKnown = symbol == unit;
        if (isKnown)
            found = factor;
        return isKnown;
    });
    return isKnown;
}

/// The unit that a spelling out stands for, if it is one of the dimension; else empty.
QString unitSpelled(Dimension dimension, const QString &written)
{
    for (const SpellingRow &row : spellingRows) {
        const QString unit = QString::fromUtf8(row.unit);
        if (written.toLower() == QLatin1String(row.written) && unitsOf(dimension).contains(unit))
            return unit;
    }
    return {};
}

/// "C/5", "1C", "0.5 C": a current by the capacity of a cell, which no experiment names. @return it in amperes for 1 Ah
std::optional<double> rateIn(const QString &text)
{
    static const QRegularExpression rate(
        QStringLiteral("^\\s*(\\d*\\.?\\d*)\\s*[cC]\\s*(?:/\\s*(\\d+\\.?\\d*))?\\s*$"));
    const QRegularExpressionMatch match = rate.match(text);
    if (!match.hasMatch())
        return {};
    const double times = match.captured(1).isEmpty() ? 1.0 : match.captured(1).toDouble();
    const double over = match.captured(2).isEmpty() ? 1.0 : match.captured(2).toDouble();
    return times > 0.0 && over > 0.0 ? std::optional(times / over) : std::nullopt;
}

/// What stands behind "vs" in "0.1 V vs OCP"; empty without it.
QString reference(const QString &text)
{
    static const QRegularExpression versus(QStringLiteral("\\bvs\\b\\.?\\s*(\\S.*)$"),
                                           QRegularExpression::CaseInsensitiveOption);
    return versus.match(text).captured(1).trimmed();
}

bool isOpenCircuit(const QString &reference)
{
    static const QStringList words{QStringLiteral("ocp"), QStringLiteral("ocv"), QStringLiteral("eoc"),
                                   QStringLiteral("oc"), QStringLiteral("open circuit")};
    return words.contains(reference.toLower());
}

/// "0,5 mA", and "1,000 mA" where it may set thousands apart; empty for others.
QString decimalComma(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^\\s*(-?\\d+),(\\d+)([^\\d.,].*)?$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return {};
    const QString whole = match.captured(1);
    const QString rest = match.captured(2) + match.captured(3);
    const QString asPoint =
        QStringLiteral("\"%1\" has a comma; the decimal sign is a point: \"%2.%3\"").arg(text, whole, rest);
    const bool mayBeThousands = match.captured(2).size() == 3 && whole.toDouble() != 0.0;
    return mayBeThousands ? asPoint + QStringLiteral(", and thousands are not set apart: \"%1\"").arg(whole + rest)
                          : asPoint;
}

/// "1,000,000", "1,000.5", "1.000,5": numbers that nothing but thousands set apart explains; empty for others.
QString groupedThousands(const QString &text)
{
    static const QRegularExpression byCommas(
        QStringLiteral("^\\s*(-?\\d{1,3}(?:,\\d{3})+)((?:\\.\\d+)?)((?:[^\\d.,].*)?)$"));
    static const QRegularExpression byPoints(
        QStringLiteral("^\\s*(-?\\d{1,3}(?:\\.\\d{3})+)(,\\d+)((?:[^\\d.,].*)?)$"));
    QRegularExpressionMatch match = byCommas.match(text);
    if (!match.hasMatch())
        match = byPoints.match(text);
    if (!match.hasMatch())
        return {};
    static const QRegularExpression separator(QStringLiteral("[.,]"));
    const QString whole = match.captured(1).remove(separator);
    const QString fraction = match.captured(2).replace(QLatin1Char(','), QLatin1Char('.'));
    return QStringLiteral("\"%1\" sets thousands apart; write \"%2\"").arg(text, whole + fraction + match.captured(3));
}

/// What people write for times beyond the units that there are.
struct SpanRow {
    const char *written;
    double seconds;
    const char *unit; ///< that a sum is written in
    double unitSeconds;
};

constexpr SpanRow spanRows[] = {
    {"s", 1, "s", 1},         {"min", 60, "min", 60},    {"m", 60, "min", 60},         {"h", 3600, "h", 3600},
    {"d", 86400, "d", 86400}, {"w", 604800, "d", 86400}, {"week", 604800, "d", 86400}, {"weeks", 604800, "d", 86400},
};

const SpanRow *spanOf(const QString &written)
{
    for (const SpanRow &row : spanRows) {
        if (written == QLatin1String(row.written))
            return &row;
    }
    return nullptr;
}

/// "5 m", "1 w", "1 h 30 min": the time in one number and its smallest unit. Empty for what is none.
QString timeMeant(const QString &text)
{
    static const QRegularExpression part(QStringLiteral("\\G\\s*(\\d+(?:\\.\\d+)?)\\s*([a-z]+)\\s*"));
    double seconds = 0.0;
    const SpanRow *smallest = nullptr;
    int end = 0;
    for (auto parts = part.globalMatch(text); parts.hasNext();) {
        const QRegularExpressionMatch match = parts.next();
        const SpanRow *span = spanOf(match.captured(2));
        if (!span)
            return {};
        seconds += match.captured(1).toDouble() * span->seconds;
        if (!smallest || span->unitSeconds < smallest->unitSeconds)
            smallest = span;
        end = match.capturedEnd();
    }
    if (!smallest || end != text.size())
        return {};
    return QStringLiteral("%1 %2").arg(QString::number(seconds / smallest->unitSeconds, 'g', 10),
                                       QLatin1String(smallest->unit));
}

/// What is wrong with a text that is no quantity for a reason that people are often caught by; empty for others.
QString commonMistake(const QString &text, Dimension dimension)
{
    for (const QString &comma : {decimalComma(text), groupedThousands(text)}) {
        if (!comma.isEmpty())
            return comma;
    }
    if (text.contains(QChar(0x2212)))
        return QStringLiteral("the minus sign of \"%1\" is a long one; write \"-\"").arg(text);
    if (text.trimmed().startsWith(QLatin1Char('+')))
        return QStringLiteral("write \"%1\" without its plus sign").arg(text);
    const std::optional<double> rate = dimension == Dimension::Current ? rateIn(text) : std::nullopt;
    if (rate)
        return QStringLiteral("\"%1\" goes by the capacity of the cell, which is not known here; write the current, "
                              "of a cell of 1 Ah \"%2\"")
            .arg(text, formatQuantity(*rate, Dimension::Current));
    const QString against = dimension == Dimension::Voltage ? reference(text) : QString();
    const QString plain = text.left(text.indexOf(QStringLiteral("vs"), 0, Qt::CaseInsensitive)).trimmed();
    if (isOpenCircuit(against))
        return QStringLiteral("write \"%1\"; that it counts from the open circuit is said elsewhere").arg(plain);
    if (!against.isEmpty()) // no advice to another zero: the cell would get another potential
        return QStringLiteral(
                   "a voltage counts from the reference electrode that is connected; if that is %1, write \"%2\"")
            .arg(against, plain);
    return {};
}

ParsedQuantity refuseUnit(Dimension dimension, const QString &text, const QString &unit)
{
    const DimensionRow &row = rowOf(dimension);
    const QString time = dimension == Dimension::Time ? timeMeant(text) : QString();
    if (!time.isEmpty())
        return {0.0, QStringLiteral("\"%1\" is written \"%2\": one number, in s, min, h or d").arg(text, time)};
    const QString meant = unitSpelled(dimension, unit);
    if (!meant.isEmpty())
        return {0.0, QStringLiteral("the unit \"%1\" is written \"%2\"").arg(unit, meant)};
    if (dimension == Dimension::Number)
        return {0.0, QStringLiteral("\"%1\" behind a number that has no unit").arg(unit)};
    return {0.0, QStringLiteral("\"%1\" is not a unit of %2, whose base unit is %3%4")
                     .arg(unit, QString::fromUtf8(row.name), QString::fromUtf8(row.baseUnit),
                          didYouMean(unit, unitsOf(dimension)))};
}

constexpr int digitsForPeople = 5;

QString inLargerTimeUnit(double seconds)
{
    struct Row {
        double from;
        double seconds;
        const char *symbol;
    };
    constexpr Row rows[] = {{86400.0 * 2, 86400.0, "d"}, {3600.0, 3600.0, "h"}, {60.0, 60.0, "min"}};
    for (const Row &row : rows) {
        if (std::abs(seconds) >= row.from)
            return QStringLiteral("%1 %2").arg(QString::number(seconds / row.seconds, 'g', digitsForPeople),
                                               QString::fromLatin1(row.symbol));
    }
    return {};
}

bool takesPrefix(Dimension dimension)
{
    return dimension != Dimension::Number && dimension != Dimension::Percent && dimension != Dimension::Temperature;
}

} // namespace

ParsedQuantity parseQuantity(const QString &text, Dimension dimension)
{
    const QString mistake = commonMistake(text, dimension);
    if (!mistake.isEmpty())
        return {0.0, mistake, dimension == Dimension::Voltage && isOpenCircuit(reference(text))};
    const QByteArray bytes = text.trimmed().toUtf8();
    double number = 0.0;
    const auto [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), number);
    if (error != std::errc() || !std::isfinite(number))
        return {0.0, QStringLiteral("\"%1\" does not begin with a number").arg(text)};
    const QString unit = QString::fromUtf8(end).trimmed();
    if (unit.isEmpty())
        return {number, {}};
    Factor factor{};
    if (!findUnit(dimension, unit, factor))
        return refuseUnit(dimension, text, unit);
    return {number * factor.times / factor.over, {}};
}

QString quantityPattern(Dimension dimension)
{
    QStringList prefixes;
    for (const PrefixRow &prefix : prefixRows)
        prefixes.append(QString::fromUtf8(prefix.symbol));
    prefixes.removeAll(QString());
    QStringList units;
    for (const UnitRow &unit : unitRows) {
        if (unit.dimension == dimension)
            units.append((unit.takesPrefix ? QStringLiteral("(%1)?").arg(prefixes.join(QLatin1Char('|'))) : QString()) +
                         QString::fromUtf8(unit.symbol));
    }
    const QString unit = units.isEmpty() ? QString() : QStringLiteral("(%1)?\\s*").arg(units.join(QLatin1Char('|')));
    return QStringLiteral("^\\s*-?(\\d+\\.?\\d*|\\.\\d+)([eE][-+]?\\d+)?\\s*%1$").arg(unit);
}

QString baseUnit(Dimension dimension)
{
    return QString::fromUtf8(rowOf(dimension).baseUnit);
}

QString dimensionName(Dimension dimension)
{
    return QString::fromUtf8(rowOf(dimension).name);
}

QString withPrefix(double value, const QString &unit, int digits)
{
    struct Row {
        double factor;
        const char *symbol;
    };
    constexpr Row rows[] = {{1e9, "G"},  {1e6, "M"},  {1e3, "k"},  {1.0, ""},
                            {1e-3, "m"}, {1e-6, "u"}, {1e-9, "n"}, {1e-12, "p"}};
    const double magnitude = std::abs(value);
    for (const Row &row : rows) {
        if (magnitude >= row.factor * 0.999995)
            return QStringLiteral("%1 %2%3").arg(QString::number(value / row.factor, 'g', digits),
                                                 QString::fromLatin1(row.symbol), unit);
    }
    return QStringLiteral("%1 %2").arg(QString::number(value, 'g', digits), unit);
}

QString formatQuantity(double value, Dimension dimension)
{
    if (std::isnan(value))
        return QStringLiteral("-");
    if (std::isinf(value))
        return QStringLiteral("unlimited");
    if (dimension == Dimension::Time && std::abs(value) >= 60.0)
        return inLargerTimeUnit(value);
    if (takesPrefix(dimension))
        return withPrefix(value, baseUnit(dimension), digitsForPeople);
    return QStringLiteral("%1 %2").arg(QString::number(value, 'g', digitsForPeople), baseUnit(dimension)).trimmed();
}

} // namespace lab
