// SPDX-License-Identifier: MIT
#include "nimbrellelibrary/NimbrelleLib.h"

#include "calibration/CalibrationData.h"
#include "nimbrellelibrary/FourierAnalysis.h"
#include "nimbrellelibrary/TimeSeriesFile.h"
#include "numerics/Constants.h"

#include <QtDebug>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr quint16 multiTone = 2;
constexpr float toneMultiples[] = {2.0f, 3.0f, 4.0f,
                                   5.0f, 6.0f, 8.0f}; ///< of the base frequency, in a multi-tone drive
constexpr std::size_t mostMissing = 4096;             // samples of a batch; a damaged head may claim billions

/// One channel's batch, its samples scaled back to single readings.
struct Batch {
    Gale_AC_Header_t head;
    const CalibrationData *calibration;
    std::vector<float> current;
    std::vector<float> voltage;
};

/// What the channels of a group give together at one tone.
struct Sums {
    std::complex<double> current;
    std::complex<double> voltage;
    bool hasCurrent = false; ///< some channel's current does not stand at one code
};

std::vector<float> tonesOf(const Gale_AC_Header_t &head)
{
    if (head.driveMode != multiTone)
        return {head.frequency};
    std::vector<float> tones;
    for (const float multiple : toneMultiples)
        tones.push_back(multiple * head.frequency);
    return tones;
}

/// Samples that the words do not reach stay zero; a batch that lacks too many of them counts as empty.
Batch unpacked(const Gale_AC_Header_t &head, const std::pair<int *, int> &words, const CalibrationData *calibration)
{
    const std::size_t pairsHeld = std::size_t(std::max(words.second, 0)) / 2;
    const std::size_t count = head.samplesPerSignal > pairsHeld + mostMissing ? 0 : head.samplesPerSignal;
    Batch batch = {head, calibration, std::vector<float>(count), std::vector<float>(count)};
    const float scale = 1.0f / float(head.nSum);
    const std::size_t pairs = std::min(count, pairsHeld);
    for (std::size_t j = 0; j < pairs; ++j) {
        batch.current[j] = float(words.first[2 * j]) * scale;
        batch.voltage[j] = float(words.first[2 * j + 1]) * scale;
    }
    return batch;
}

/// Adds one channel at one tone to its group; false when the batch holds no samples.
bool addChannel(const Batch &batch, float tone, bool isReversed, ComplexDataPoint_t &point, Sums &sums)
{
    const Gale_AC_Header_t &head = batch.head;
    const CalibrationData &calibration = *batch.calibration;
    const RecordSpectra spectra =
        analyseRecord(batch.current, batch.voltage, head.sampleFrequency, tone, analysedHarmonics);
    if (spectra.isEmpty())
        return false;

    const int currentRange = index(head.currentRange);
    const auto measuredCurrent = calibration.getACCurrent_gale(spectra.current[1], currentRange, tone);
    const auto measuredVoltage = calibration.getACVoltage_gale(spectra.voltage[1], index(head.voltageRange), tone);
    const double voltage = std::abs(measuredVoltage); // turned to phase 0, and the current with it
    const auto current = std::polar(std::abs(measuredCurrent), std::arg(measuredCurrent) - std::arg(measuredVoltage));
    sums.current += calibration.removeCMCurrent(current, currentRange, tone, voltage);
    sums.voltage += voltage;
    sums.hasCurrent = sums.hasCurrent || std::abs(measuredCurrent) != 0.0;

    const double direction = isReversed ? -1.0 : 1.0;
    point.numPeriods = wholePeriods(head.samplesPerSignal, head.sampleFrequency, tone);
    point.dcVoltage = direction * calibration.getEWE_DCbias(spectra.voltage[0].real() * 0.5, &head);
    point.dcCurrent = direction * calibration.getCurrent_DCbias(spectra.current[0].real() * 0.5, &head);
    point.thdPercent += spectra.thdPercent();
    return true;
}

double wrappedDegrees(double degrees)
{
    while (degrees > 180.0)
        degrees -= 360.0;
    while (degrees < -180.0)
        degrees += 360.0;
    return degrees;
}

void setGroupImpedance(ComplexDataPoint_t &point, const Sums &sums)
{
    point.currentAmplitude = std::abs(sums.current);
    point.voltageAmplitude = std::abs(sums.voltage);
    if (point.currentAmplitude == 0.0) {
        point.absZ = point.realZ = std::numeric_limits<double>::infinity();
        return;
    }
    point.absZ = point.voltageAmplitude / point.currentAmplitude;
    point.phaseDeg = wrappedDegrees(180.0 * (std::arg(sums.current) - std::arg(sums.voltage)) / pi);
    point.realZ = point.absZ * std::cos(pi * point.phaseDeg / 180.0);
    point.imagZ = point.absZ * std::sin(pi * point.phaseDeg / 180.0);
}

/// The group's point at one tone; false when a batch holds no samples.
bool analyseTone(const std::vector<Batch> &batches, float tone, bool bipolar, ComplexDataPoint_t &point)
{
    Sums sums;
    for (std::size_t i = 0; i < batches.size(); ++i)
        if (!addChannel(batches[i], tone, bipolar && i % 2 == 1, point, sums))
            return false;
    if (!sums.hasCurrent)
        sums.current = 0.0; // the common mode alone would be left, and look like a cell
    if (bipolar) {
        point.dcCurrent *= 0.5;
        point.dcVoltage *= 2.0;
        sums.current *= 0.5;
        sums.voltage *= 2.0;
    }
    // Parallel channels add their currents and share their voltage, hence only this is a mean.
    const auto count = double(batches.size());
    sums.voltage /= count;
    point.dcVoltage /= count;
    point.thdPercent /= count;

    const Batch &first = batches.front();
    point.frequency = tone;
    point.timestamp = first.calibration->getTime(&first.head);
    point.currentRange = first.head.currentRange;
    point.voltageRange = first.head.voltageRange;
    setGroupImpedance(point, sums);
    return true;
}

TimeSeries timeSeriesOf(const std::vector<Batch> &batches, const std::vector<unsigned char> &channels)
{
    TimeSeries series;
    series.head = batches.front().head;
    for (std::size_t i = 0; i < batches.size(); ++i) {
        const Batch &batch = batches[i];
        TimeSeries::Channel channel;
        channel.number = i < channels.size() ? channels[i] : int(i);
        channel.current.resize(batch.current.size());
        channel.voltage.resize(batch.voltage.size());
        batch.calibration->getGaleBatchDCCurrent(batch.head, batch.current, channel.current);
        batch.calibration->getGaleBatchDCVoltage(batch.head, batch.voltage, channel.voltage);
        series.channels.push_back(channel);
    }
    return series;
}

} // namespace

std::vector<ComplexDataPoint_t> NimbrelleLib::AnalyzeFRA(std::vector<Gale_AC_Header_t> headers,
                                                         std::vector<std::pair<int *, int>> &data,
                                                         std::vector<const CalibrationData *> &cals, bool bipolar,
                                                         std::vector<unsigned char> channels, QString debugPath,
                                                         double startTime)
{
    std::vector<Batch> batches;
    for (std::size_t i = 0; i < std::min({headers.size(), data.size(), cals.size()}); ++i)
        batches.push_back(unpacked(headers[i], data[i], cals[i]));
    if (batches.empty())
        return {};

    std::vector<ComplexDataPoint_t> points;
    for (const float tone : tonesOf(batches.front().head)) {
        ComplexDataPoint_t point;
        if (!analyseTone(batches, tone, bipolar, point)) {
            qDebug("ERROR: Raw AC data was empty.");
            return {};
        }
        points.push_back(point);
    }
    if (!debugPath.isEmpty())
        writeTimeSeries(debugPath, timeSeriesOf(batches, channels), points.front(), startTime);
    return points;
}
