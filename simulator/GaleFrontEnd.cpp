// SPDX-License-Identifier: MIT
#include "simulator/GaleFrontEnd.h"

#include "calibration/DataRecords.h"
#include "simulator/Payload.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr int existingCurrentRanges = 4;
constexpr int existingVoltageRanges = 4;
constexpr double largestCurrent = 5.0;
constexpr double largestVoltage = 10.0;
constexpr double galeSpan = 7680000.0; ///< steps at the headroom, of reading and of setting
constexpr double headroom = 1.08;      ///< what a range reads beyond its full scale
constexpr qint16 voltageReference = 731;
constexpr qint16 currentReference = -417;
constexpr double referenceOfSetting = 728.0;
constexpr quint16 samplesSummed = 16;
constexpr quint16 singleSine = 0;
constexpr quint16 multiTone = 2;
constexpr int pairsPerPacket = 8;
constexpr quint32 fineBoard = 0x12010200;
constexpr quint32 coarseBoard = 0x12000000;
constexpr double fineTick = 2e-5;
constexpr double coarseTick = 1.5625e-5;

/// A polynomial with the constant term first.
double polynomial(const float (&coefficients)[5], double x)
{
    double sum = 0.0;
    for (int i = 4; i >= 0; --i)
        sum = sum * x + double(coefficients[i]);
    return sum;
}

double existingCode(int code)
{
    return std::clamp(double(code), -galeSpan, galeSpan);
}

/// So many samples of the same value, which lies between two steps and within the converter's words.
qint32 sumOfWords(double steps)
{
    return qint32(std::lround(samplesSummed * converterSteps.clamp(steps)));
}

void copyText(char (&field)[64], const QByteArray &text)
{
    std::memset(field, 0, sizeof field);
    std::memcpy(field, text.constData(), std::min(text.size(), 63));
}

/// The delta's bytes of a width, little-endian.
QByteArray deltaBytes(qint32 delta, int width)
{
    return QByteArray(reinterpret_cast<const char *>(&delta), width);
}

int widthOf(qint64 delta)
{
    const qint64 magnitude = delta < 0 ? -delta - 1 : delta;
    return magnitude < (1 << 7) ? 1 : magnitude < (1 << 15) ? 2 : magnitude < (1 << 23) ? 3 : 4;
}

QByteArray packOne(const QVector<qint32> &pairs)
{
    int width = 1;
    QVector<qint32> deltas;
    for (int i = 2; i < pairs.size(); ++i) {
        const qint64 delta = qint64(pairs[i]) - pairs[i - 2];
        width = std::max(width, widthOf(delta));
        deltas.append(qint32(quint32(quint64(delta)))); // wraps, as the receiver's sum does
    }
    QByteArray packet = packed(pairs[0], pairs[1]);
    for (const qint32 delta : deltas)
        packet += deltaBytes(delta, width);
    return packet;
}

} // namespace

QVector<QByteArray> packDeltas(const QVector<qint32> &words)
{
    QVector<QByteArray> packets;
    constexpr int wordsPerPacket = 2 * pairsPerPacket;
    for (int start = 0; start < words.size(); start += wordsPerPacket) {
        QVector<qint32> pairs = words.mid(start, wordsPerPacket);
        while (pairs.size() < wordsPerPacket)
            pairs.append(pairs.at(pairs.size() - 2));
        packets.append(packOne(pairs));
    }
    return packets;
}

double thermistorReading(double degrees)
{
    constexpr double a = 0.003354016, b = 0.000256524, c = 2.60597e-6, d = 6.32926e-8; // Steinhart and Hart
    double x = 0.0;                                                                    // ln(R / 10 kohm)
    for (int i = 0; i < 50; ++i) {
        const double miss = a + x * (b + x * (c + x * d)) - 1.0 / (degrees + 273.15);
        x -= miss / (b + x * (2.0 * c + 3.0 * d * x));
    }
    return 32500.0 / (1.0 + std::exp(-x));
}

GaleFrontEnd::GaleFrontEnd(quint32 seed, int channel, double noise)
    : _chargeTick(configuration(channel / 2).boardId == fineBoard ? fineTick : coarseTick), _noise(noise)
{
    makeRecord(quint64(seed) * 64 + quint64(channel));
}

Gale_Cfg_t GaleFrontEnd::configuration(int board)
{
    Gale_Cfg_t configuration;
    configuration.boardId = board % 2 == 0 ? coarseBoard : fineBoard;
    configuration.numCurrentRanges = existingCurrentRanges;
    configuration.numVoltageRanges = existingVoltageRanges;
    copyText(configuration.boardName, "Board_" + QByteArray::number(board));
    copyText(configuration.channel0Name, "Channel_" + QByteArray::number(2 * board));
    copyText(configuration.channel1Name, "Channel_" + QByteArray::number(2 * board + 1));
    for (int i = 0; i < 2; ++i) {
        configuration.currentMin[i] = float(-largestCurrent);
        configuration.currentMax[i] = float(largestCurrent);
    }
    return configuration;
}

void GaleFrontEnd::makeRecord(quint64 seed)
{
    Random random(seed);
    const auto off = [&random](double nominal) {
        return float(nominal * (1.0 + random.sign() * (0.005 + 0.025 * random.uniform())));
    };
    const auto some = [&random](double span) { return float(span * random.sign() * (0.5 + 0.5 * random.uniform())); };
    _record.calMagic = CalMagic::vc07;
    for (int i = 0; i < existingCurrentRanges; ++i) {
        const double scale = fullScale(currentRange_t(i));
        _record.iGain[i] = off(scale * headroom / galeSpan);
        _record.iRefCoeff[i] = off(scale * 1e-5);
        _record.iOffset[i] = some(scale * 2e-3);
        _record.iQuadratic[i] = some(2e-3 / scale);
        _record.iCubic[i] = some(2e-3 / (scale * scale));
        _record.acIMag[i][0] = off(1.0);
        _record.acIMag[i][1] = some(3e-6);
        _record.acIPhase[i][0] = some(0.2);
        _record.acIPhase[i][1] = some(5e-4);
        _record.acIPhase[i][2] = some(5e-9);
    }
    for (int i = 0; i < existingVoltageRanges; ++i) {
        const double scale = fullScale(voltageRange_t(i));
        _record.vGain[i] = off(scale * headroom / galeSpan);
        _record.vRefCoeff[i] = off(scale * 1e-5);
        _record.vOffset[i] = some(scale * 2e-3);
        _record.acVMag[i][0] = off(1.0);
        _record.acVMag[i][1] = some(2e-6);
        _record.acVPhase[i][0] = some(0.2);
        _record.acVPhase[i][1] = some(3e-4);
    }
    _record.cmReal[0] = some(2e4);
    _record.cmImag[1] = some(10.0);
}

QByteArray GaleFrontEnd::calibration() const
{
    return packed(_record);
}

void GaleFrontEnd::setCalibration(const QByteArray &record)
{
    _record = readAt<cal_vc07>(record, 0);
}

int GaleFrontEnd::currentRangeCount() const
{
    return existingCurrentRanges;
}

int GaleFrontEnd::voltageRangeCount() const
{
    return existingVoltageRanges;
}

double GaleFrontEnd::fullScale(currentRange_t range) const
{
    return largestCurrent * std::pow(10.0, -index(range));
}

double GaleFrontEnd::fullScale(voltageRange_t range) const
{
    return std::ldexp(largestVoltage, -index(range));
}

double GaleFrontEnd::settableCurrent() const
{
    return largestCurrent;
}

double GaleFrontEnd::settableVoltage() const
{
    return largestVoltage;
}

currentRange_t GaleFrontEnd::rangeForCurrent(double current) const
{
    int i = existingCurrentRanges - 1;
    while (i > 0 && std::abs(current) > fullScale(currentRange_t(i)))
        --i;
    return currentRange_t(i);
}

voltageRange_t GaleFrontEnd::rangeForVoltage(double voltage) const
{
    int i = existingVoltageRanges - 1;
    while (i > 0 && std::abs(voltage) > fullScale(voltageRange_t(i)))
        --i;
    return voltageRange_t(i);
}

/// Undoes I = x + quadratic x^2 + cubic x^3 by Newton's method, then the straight part.
double GaleFrontEnd::rawCurrent(double current, int range) const
{
    const double quadratic = double(_record.iQuadratic[range]);
    const double cubic = double(_record.iCubic[range]);
    double x = current;
    for (int i = 0; i < 8; ++i)
        x -= (x * (1.0 + x * (quadratic + cubic * x)) - current) / (1.0 + x * (2.0 * quadratic + 3.0 * cubic * x));
    const double offset = double(_record.iOffset[range]) + currentReference * double(_record.iRefCoeff[range]);
    return (x - offset) / double(_record.iGain[range]);
}

double GaleFrontEnd::rawVoltage(double voltage, int range) const
{
    const double offset = double(_record.vOffset[range]) + voltageReference * double(_record.vRefCoeff[range]);
    return (voltage - offset) / double(_record.vGain[range]);
}

QByteArray GaleFrontEnd::dcRecord(const DcSample &sample, currentRange_t currentRange, voltageRange_t voltageRange,
                                  quint8 counter) const
{
    GaleDcRecord_t raw = {};
    raw.tick = wireTick(sample.tick);
    const double mostAmperes = headroom * fullScale(currentRange);
    const double mostVolts = headroom * fullScale(voltageRange);
    const double current = std::clamp(sample.current, -mostAmperes, mostAmperes);
    const double voltage = std::clamp(sample.voltage, -mostVolts, mostVolts);
    raw.rawCurrent = float(converterWord(rawCurrent(current, index(currentRange))));
    raw.rawVoltage = float(converterWord(rawVoltage(voltage, index(voltageRange))));
    raw.temperature = std::isnan(sample.temperature) ? 0.0f : float(thermistorReading(sample.temperature));
    raw.counter = counter;
    raw.currentRange = currentRange;
    raw.voltageRange = voltageRange;
    raw.currentRef = currentReference;
    raw.voltageRef = voltageReference;
    raw.charge = std::llround(sample.charge / (_chargeTick * double(_record.iGain[index(currentRange)])));
    return packed(raw);
}

double GaleFrontEnd::currentFromCode(int code, currentRange_t range) const
{
    const int i = index(range) % 8;
    const double x = existingCode(code) * double(_record.iGain[i]) + double(_record.iOffset[i]);
    return x * (1.0 + x * (double(_record.iQuadratic[i]) + x * double(_record.iCubic[i])));
}

double GaleFrontEnd::voltageFromCode(int code, voltageRange_t range) const
{
    const int i = index(range) % 4;
    return existingCode(code) * double(_record.vGain[i]) + referenceOfSetting * double(_record.vRefCoeff[i]) +
           double(_record.vOffset[i]);
}

QVector<FrontEnd::Packet> GaleFrontEnd::tare(Random &random)
{
    QVector<Packet> packets;
    for (int i = 0; i < existingCurrentRanges; ++i) {
        _record.iOffset[i] += float(fullScale(currentRange_t(i)) * 1e-3 * random.normal());
        packets.append({NT_TARE_CURRENT, packed(_record.iOffset[i], quint8(i))});
    }
    for (int i = 0; i < existingVoltageRanges; ++i) {
        _record.vOffset[i] += float(fullScale(voltageRange_t(i)) * 1e-3 * random.normal());
        packets.append({NT_TARE_VOLTAGE, packed(_record.vOffset[i], quint8(i))});
    }
    return packets;
}

bool GaleFrontEnd::isTooHot(double degrees, float limit) const
{
    return limit > 0.0f && thermistorReading(degrees) < double(limit);
}

QVector<FrontEnd::Packet> GaleFrontEnd::acPackets(const AcMeasurement &measurement, Random &random) const
{
    const AcPlan &plan = measurement.plan;
    const std::vector<Tone> drive = tones(measurement);
    const double mean = measurement.mean.current * measurement.currentShare;
    const double meanVoltage = measurement.mean.voltage * measurement.voltageShare;
    double current = std::abs(mean);
    double voltage = std::abs(meanVoltage);
    for (const Tone &tone : drive) {
        current += std::abs(tone.current);
        voltage += std::abs(tone.voltage);
    }
    Gale_AC_Header_t header = {};
    header.tick = wireTick(measurement.tick);
    header.samplesPerSignal = quint32(plan.samples);
    header.frequency = plan.frequency;
    header.sampleFrequency = 1.0f / plan.samplePeriod;
    header.driveMode = plan.tones.size() > 1 ? multiTone : singleSine;
    header.nSum = samplesSummed;
    header.currentRange = rangeForCurrent(current);
    header.voltageRange = rangeForVoltage(voltage);
    header.currentRef = currentReference;
    header.voltageRef = voltageReference;
    QVector<Packet> packets{{NT_AC_DATA_INVALID, packed(header)}};
    const CellReading means{rawVoltage(meanVoltage, index(header.voltageRange)),
                            rawCurrent(mean, index(header.currentRange))};
    for (const QByteArray &packet : packDeltas(words(plan, means, rawTones(drive, header), random)))
        packets.append({NT_AC_DATA, packet});
    return packets;
}

/// The sines at the channel's leads.
std::vector<GaleFrontEnd::Tone> GaleFrontEnd::tones(const AcMeasurement &measurement)
{
    const AcPlan &plan = measurement.plan;
    std::vector<Tone> drive;
    for (std::size_t i = 0; i < plan.tones.size(); ++i) {
        const std::complex<double> impedance = measurement.impedances.at(i);
        const std::complex<double> voltage = plan.drivesCurrent ? plan.amplitude * impedance : plan.amplitude;
        drive.push_back({double(plan.frequency) * plan.tones[i], voltage / impedance * measurement.currentShare,
                         voltage * measurement.voltageShare});
    }
    return drive;
}

/**
 * The same sines as the converters see them: with the common mode's current, and magnitude and phase off by the record's
 * polynomials. Hosts work with the conjugates of phasors, whence the signs.
 */
std::vector<GaleFrontEnd::Tone> GaleFrontEnd::rawTones(const std::vector<Tone> &drive,
                                                       const Gale_AC_Header_t &header) const
{
    const int i = index(header.currentRange);
    const int v = index(header.voltageRange);
    std::vector<Tone> raw;
    for (const Tone &tone : drive) {
        const double f = tone.frequency;
        const std::complex<double> commonMode(polynomial(_record.cmReal, f), -polynomial(_record.cmImag, f));
        const std::complex<double> current = tone.current + tone.voltage * commonMode * double(_record.iGain[i]);
        const auto through = [f](std::complex<double> phasor, double gain, const float(&mag)[5],
                                 const float(&phase)[5]) {
            return phasor / (gain * polynomial(mag, f)) * std::polar(1.0, polynomial(phase, f) * M_PI / 180.0);
        };
        raw.push_back({f, through(current, double(_record.iGain[i]), _record.acIMag[i], _record.acIPhase[i]),
                       through(tone.voltage, double(_record.vGain[v]), _record.acVMag[v], _record.acVPhase[v])});
    }
    return raw;
}

/// Pairs of current and voltage, each the sum of so many samples as the header says.
QVector<qint32> GaleFrontEnd::words(const AcPlan &plan, const CellReading &means, const std::vector<Tone> &raw,
                                    Random &random) const
{
    QVector<qint32> pairs;
    pairs.reserve(2 * plan.samples);
    for (int n = 0; n < plan.samples; ++n) {
        double current = means.current;
        double voltage = means.voltage;
        for (const Tone &tone : raw) {
            const double angle = 2.0 * M_PI * tone.frequency * double(plan.samplePeriod) * n;
            current += std::abs(tone.current) * std::cos(angle + std::arg(tone.current));
            voltage += std::abs(tone.voltage) * std::cos(angle + std::arg(tone.voltage));
        }
        if (_noise > 0.0) {
            current += _noise * galeSpan * random.normal();
            voltage += _noise * galeSpan * random.normal();
        }
        pairs.append(sumOfWords(current));
        pairs.append(sumOfWords(voltage));
    }
    return pairs;
}
