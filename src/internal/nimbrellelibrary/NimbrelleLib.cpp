#include "nimbrellelibrary/NimbrelleLib.h"

#include "hardware_models/HardwareModelFactory.h"
#include "nimbrellelibrary/Histogram.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>

namespace {

struct UnitRow {
    const char *unit;
    double factor;
};

// clang-format off
constexpr UnitRow unitRows[] = { // to seconds, amperes, volts, ohms, grams, watts, coulombs, hertz, square and cubic metres
    {"hr",    3600.0}, {"W",   1.0},    {"A/s",   1.0},
    {"min",   60.0},   {"mW",  0.001},  {"mA/s",  0.001},
    {"s",     1.0},    {"uW",  1e-6},   {"uA/s",  1e-6},
    {"ms",    0.001},  {"nW",  1e-9},   {"nA/s",  1e-9},
    {"A",     1.0},    {"C",   1.0},    {"V/s",   1.0},
    {"mA",    0.001},  {"mC",  0.001},  {"mV/s",  0.001},
    {"uA",    1e-6},   {"Ah",  3600.0}, {"uV/s",  1e-6},
    {"nA",    1e-9},   {"mAh", 3.6},    {"kHz/s", 1000.0},
    {"V",     1.0},    {"uAh", 0.0036}, {"Hz/s",  1.0},
    {"mV",    0.001},  {"MHz", 1e6},    {"mHz/s", 0.001},
    {"MOhms", 1e6},    {"kHz", 1000.0}, {"m²",    1.0},
    {"kOhms", 1000.0}, {"Hz",  1.0},    {"cm²",   0.0001},
    {"Ohms",  1.0},    {"mHz", 0.001},  {"m³",    1.0},
    {"kg",    1000.0}, {"g",   1.0},    {"cm³",   1e-6},
};
// clang-format on

constexpr int samplesPerBlock = 1024; // of one signal in a raw capture

struct PrefixRow {
    double factor;
    const char *prefix;
};

constexpr PrefixRow prefixRows[] = {{1e9, "G"},  {1e6, "M"},  {1e3, "k"},  {1.0, ""},
                                    {1e-3, "m"}, {1e-6, "u"}, {1e-9, "n"}, {1e-12, "p"}};

const PrefixRow &prefixFor(double magnitude)
{
    for (const PrefixRow &row : prefixRows) {
        if (magnitude >= row.factor)
            return row;
    }
    return *std::rbegin(prefixRows);
}

int decimalsFor(double magnitude, int digits)
{
    int integerDigits = 1;
    if (magnitude >= 100.0)
        integerDigits = 3;
    else if (magnitude >= 10.0)
        integerDigits = 2;
    return std::max(digits - integerDigits, 0);
}

} // namespace

double NimbrelleLib::getUnitsMultiplier(const QString &unit)
{
    for (const UnitRow &row : unitRows) {
        if (unit == QString::fromUtf8(row.unit))
            return row.factor;
    }
    return 1.0;
}

QString NimbrelleLib::getValueString(double value, int digits)
{
    const PrefixRow &row = prefixFor(std::abs(value));
    const double scaled = value / row.factor;
    return QString::number(scaled, 'f', decimalsFor(std::abs(scaled), digits)) + QLatin1Char(' ') +
           QLatin1String(row.prefix);
}

QList<double> NimbrelleLib::calculateFrequencyList(double start, double end, double pointsPerDecade)
{
    QList<double> frequencies;
    if (!(start > 0.0 && end > 0.0))
        return frequencies;
    const double count = std::ceil(1.0 + std::abs(std::log10(end / start)) * pointsPerDecade);
    if (!(count <= std::numeric_limits<int>::max()))
        return frequencies;
    const double decades = 1.0 / std::abs(pointsPerDecade);
    const double step = std::pow(10.0, end > start ? -decades : decades);
    for (int i = 0; i < count - 1; ++i)
        frequencies.append(end * std::pow(step, i));
    frequencies.append(start);
    return frequencies;
}

int NimbrelleLib::getFrequencyRange(double frequency)
{
    if (frequency > 2000.0)
        return 0;
    return frequency > 1.0 ? 1 : 2;
}

currentRange_t NimbrelleLib::getEIScurrentRangeLimit(HardwareModel_t model, double frequency)
{
    const auto hardwareModel = HardwareModelFactory::getHardwareModel(model);
    return hardwareModel ? hardwareModel->getEIScurrentRangeLimit(frequency) : currentRange_t::OFF;
}

std::tuple<QByteArray, unsigned> NimbrelleLib::getManualSamplingParamsPayload(HardwareModel_t, double interval,
                                                                              double longestPeriod)
{
    const auto [hardwareInterval, factor] =
        calcNewSamplingAndDownSampling(static_cast<float>(interval), static_cast<float>(longestPeriod));
    QByteArray payload(sizeof(float), '\0');
    qToLittleEndian(hardwareInterval, payload.data());
    return {payload, factor};
}

QStringList NimbrelleLib::getHistogramData(const QByteArray &data)
{
    std::array<Histogram, 2> histograms;
    std::array<short, samplesPerBlock> samples;
    const int blocks = data.size() / int(2 * sizeof samples);
    for (int half = 0; half < 2 * blocks; ++half) {
        qFromLittleEndian<short>(data.constData() + half * sizeof samples, samplesPerBlock, samples.data());
        histograms[half % 2].append(samples.data(), samplesPerBlock);
    }
    return {histograms[0].getTotalCount(), histograms[1].getTotalCount()};
}

unsigned floorWithMargin(double value, double margin)
{
    const double floor = std::floor(value);
    const bool hasMargin = 0.0 < margin && margin < 1.0;
    const bool isNearlyNext = hasMargin && value - floor > 1.0 - margin;
    const double whole = isNearlyNext ? floor + 1.0 : floor;
    return whole > 0.0 ? static_cast<unsigned>(std::min(whole, double(std::numeric_limits<unsigned>::max()))) : 0u;
}
