// SPDX-License-Identifier: MIT
#include "simulator/AnalogResponse.h"

#include "simulator/Random.h"

#include <cmath>

namespace {

constexpr int rangeCount = 10;
constexpr double cornerAboveUse = 4.0;
constexpr double lowestRow = 10.0; ///< hertz; below it no stage does anything
constexpr double highestRow = 4e6;
constexpr double rowsPerDecade = 24.0;
constexpr char fileSeparator = 0x1C;
constexpr std::size_t firstLaggingRange = 4; ///< from here on hosts read a table as a low-pass and its lag as negative

/// The settings of the three blocks that each gain switches in, as indices of blockNames.
constexpr int blocksOfGain[10][3] = {
    {0, 4, 6}, {1, 4, 6}, {2, 4, 6}, {3, 4, 6}, {1, 5, 6}, {2, 5, 6}, {3, 5, 6}, {1, 5, 7}, {2, 5, 7}, {3, 5, 7},
};

constexpr const char *blockNames[] = {
    "gainBlock1_gain1", "gainBlock1_gain2",       "gainBlock1_gain5", "gainBlock1_gain10",
    "gainBlock2_gain1", "gainBlock2_gain10_alt1", "gainBlock3_gain1", "gainBlock3_gain10_alt2",
};

/// The higher a block's gain, the lower its corner.
constexpr double nominalBlockCorners[] = {20e6, 15e6, 10e6, 7e6, 25e6, 8e6, 25e6, 8e6};

/// The highest frequency at which a range may be used.
double highestUse(const HardwareModel &model, int range)
{
    double highest = 1.0;
    for (double frequency = 1.0; frequency <= 2.1e6; frequency *= 1.1) {
        const currentRange_t limit = model.getEIScurrentRangeLimit(frequency);
        if (limit != currentRange_t::OFF && index(limit) >= range)
            highest = frequency;
    }
    return highest;
}

QByteArray number(double value)
{
    return QByteArray::number(value, 'g', 17);
}

} // namespace

AnalogResponse::AnalogResponse(const HardwareModel &model, quint32 seed)
{
    Random random(quint64(seed) * 64 + 63);
    const auto about = [&random](double nominal) { return nominal * (0.85 + 0.3 * random.uniform()); };
    _bufferCorner = about(5e6);
    for (std::size_t i = 0; i < _blockCorners.size(); ++i)
        _blockCorners[i] = about(nominalBlockCorners[i]);
    for (int range = 0; range < rangeCount; ++range) {
        _converterCorners.push_back(about(cornerAboveUse * highestUse(model, range)));
        _cableCapacitance.push_back(about(20e-12));
    }
}

std::complex<double> AnalogResponse::lowPass(double frequency, double corner)
{
    return 1.0 / std::complex<double>(1.0, frequency / corner);
}

std::complex<double> AnalogResponse::amplifier(double frequency, ACgain_t gain) const
{
    std::complex<double> product = 1.0;
    for (const int block : blocksOfGain[index(gain) % 10])
        product *= lowPass(frequency, _blockCorners[std::size_t(block)]);
    return product;
}

std::complex<double> AnalogResponse::voltagePath(double frequency, ACgain_t gain) const
{
    return lowPass(frequency, _bufferCorner) * amplifier(frequency, gain);
}

std::complex<double> AnalogResponse::currentPath(double frequency, currentRange_t range, ACgain_t gain) const
{
    return lowPass(frequency, _converterCorners[std::size_t(index(range) % rangeCount)]) * amplifier(frequency, gain);
}

std::complex<double> AnalogResponse::cableAdmittance(double frequency, currentRange_t range) const
{
    return {0.0, 2.0 * M_PI * frequency * _cableCapacitance[std::size_t(index(range) % rangeCount)]};
}

/// @param phaseSign 1: the lag stands as a positive number; -1: as a negative one
void AnalogResponse::addTable(QByteArray &stream, const QByteArray &name, double corner, double phaseSign) const
{
    stream += name + ".csv,Frequency (Hz),Magnitude,Phase (deg)";
    const int rows = int(std::ceil(std::log10(highestRow / lowestRow) * rowsPerDecade));
    for (int row = 0; row <= rows; ++row) {
        const double frequency = lowestRow * std::pow(10.0, row / rowsPerDecade);
        const std::complex<double> response = lowPass(frequency, corner);
        const double lag = -std::arg(response) * 180.0 / M_PI;
        stream += '\n' + number(frequency) + ',' + number(std::abs(response)) + ',' + number(phaseSign * lag);
    }
    stream += fileSeparator;
}

QByteArray AnalogResponse::tables() const
{
    QByteArray stream;
    addTable(stream, "V_inputBuffer", _bufferCorner, 1.0);
    for (std::size_t i = 0; i < _blockCorners.size(); ++i)
        addTable(stream, QByteArray("WE") + blockNames[i], _blockCorners[i], 1.0);
    for (std::size_t range = 0; range < _converterCorners.size(); ++range)
        addTable(stream, "Range" + QByteArray::number(int(range)), _converterCorners[range],
                 range < firstLaggingRange ? 1.0 : -1.0);
    for (std::size_t range = 0; range < _cableCapacitance.size(); ++range) {
        stream += "CableParallelImpedance_range" + QByteArray::number(int(range)) +
                  ".csv,Frequency (Hz),Magnitude (Ohms),Phase (deg)";
        for (const double frequency : {1e-3, highestRow})
            stream += '\n' + number(frequency) + ',' +
                      number(1.0 / (2.0 * M_PI * frequency * _cableCapacitance[range])) + ",-90";
        stream += fileSeparator;
    }
    return stream;
}
