// SPDX-License-Identifier: MIT
#include "plots/AxisScale.h"

#include <cmath>

namespace plots {

namespace {

struct Row {
    double from; ///< the largest number that takes this row
    double divisor;
    const char *symbol;
};

constexpr double almost = 1.001; ///< 0.9999 V is drawn in volts

constexpr Row prefixRows[] = {
    {1e9, 1e9, "G"},   {1e6, 1e6, "M"},   {1e3, 1e3, "k"},   {1.0, 1.0, ""},
    {1e-3, 1e-3, "m"}, {1e-6, 1e-6, "µ"}, {1e-9, 1e-9, "n"}, {0.0, 1e-12, "p"},
};

constexpr Row timeRows[] = {
    {2 * 86400.0, 86400.0, "d"},
    {2 * 3600.0, 3600.0, "h"},
    {2 * 60.0, 60.0, "min"},
    {0.0, 1.0, "s"},
};

template <std::size_t count>
const Row &choose(const Row (&rows)[count], double largest)
{
    for (const Row &row : rows) {
        if (std::abs(largest) * almost >= row.from)
            return row;
    }
    return rows[count - 1];
}

QString titleOf(const QString &quantity, const QString &unit)
{
    return QStringLiteral("%1 / %2").arg(quantity, unit);
}

} // namespace

AxisScale prefixedScale(const QString &quantity, const QString &unit, double largest)
{
    if (largest == 0.0 || !std::isfinite(largest))
        return {1.0, titleOf(quantity, unit)};
    const Row &row = choose(prefixRows, largest);
    return {row.divisor, titleOf(quantity, QString::fromUtf8(row.symbol) + unit)};
}

AxisScale timeScale(double largestSeconds)
{
    const Row &row = choose(timeRows, largestSeconds);
    return {row.divisor, titleOf(QStringLiteral("Time"), QString::fromLatin1(row.symbol))};
}

} // namespace plots
