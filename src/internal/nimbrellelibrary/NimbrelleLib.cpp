// SPDX-License-Identifier: MIT
#include "nimbrellelibrary/NimbrelleLib.h"

#include "elements/NodeSampling.h"
#include "hardware_models/HardwareModelFactory.h"
#include "nimbrellelibrary/Histogram.h"
#include "numerics/EngineeringUnits.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace {

constexpr int samplesPerBlock = 1024; // of one signal in a raw capture

} // namespace

double NimbrelleLib::getUnitsMultiplier(const QString &unit)
{
    return unitsMultiplier(unit);
}

QString NimbrelleLib::getValueString(double value, int digits)
{
    return valueString(value, digits);
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

std::tuple<float, unsigned> NimbrelleLib::calcNewSamplingAndDownSampling(float sampling, float maxPeriod)
{
    return splitSamplingInterval(sampling, maxPeriod);
}

std::tuple<float, float> NimbrelleLib::getOriginalSamplingAndUpdateInterval(float interval, unsigned factor)
{
    return joinSamplingInterval(interval, factor);
}

float NimbrelleLib::get_hwNode_sampling_interval(const ExpNode_t &node)
{
    return hardwareSamplingInterval(node);
}

void NimbrelleLib::set_hwNode_sampling_interval(ExpNode_t &node, float interval)
{
    setHardwareSamplingInterval(node, interval);
}

void NimbrelleLib::NUI_Node_set_downsampling(Node &node, float maxPeriod)
{
    setDownsampling(node, maxPeriod);
}

float NimbrelleLib::NUI_Node_get_original_sampling(const Node &node)
{
    return reportedSamplingInterval(node);
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
