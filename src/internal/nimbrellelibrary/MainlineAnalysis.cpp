// SPDX-License-Identifier: MIT
#include "nimbrellelibrary/NimbrelleLib.h"

#include "calibration/CalibrationData.h"
#include "nimbrellelibrary/FourierAnalysis.h"
#include "numerics/Constants.h"

#include <QtDebug>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr int headSize = int(sizeof(P24ExperimentalAcData));

/// What the transform gives of a record: the means and the fundamentals, all raw.
struct RawFundamentals {
    double currentMean;
    double voltageMean;
    std::complex<double> current;
    std::complex<double> voltage;
};

/// What an instrument sends when it has run the transform itself.
struct StoredTransform {
    float voltageReal;
    float voltageImag;
    float currentReal;
    float currentImag;
    float twiceVoltageMean;
    float twiceCurrentMean;
};
static_assert(sizeof(StoredTransform) == 24, "the record as it travels");

bool hasClaimedLength(const QByteArray &packet, const P24ExperimentalAcData &head)
{
    const qint64 sampleSize = head.hasFloatSamples() ? sizeof(float) : sizeof(qint16);
    const qint64 body = packet.size() - qint64(headSize);
    return body >= 0 && body == 2 * qint64(head.samplesPerSignal) * sampleSize;
}

template <typename Sample>
std::vector<float> samplesAt(const char *bytes, int count)
{
    std::vector<float> samples(static_cast<std::size_t>(count));
    for (float &sample : samples) {
        Sample word;
        std::memcpy(&word, bytes, sizeof word);
        bytes += sizeof word;
        sample = float(word);
    }
    return samples;
}

/// One of the record's two blocks: 0 holds the current, 1 the voltage.
std::vector<float> samplesOfBlock(const QByteArray &packet, const P24ExperimentalAcData &head, int block)
{
    const int count = head.samplesPerSignal;
    const char *bytes = packet.constData() + headSize;
    return head.hasFloatSamples() ? samplesAt<float>(bytes + sizeof(float) * std::size_t(count * block), count)
                                  : samplesAt<qint16>(bytes + sizeof(qint16) * std::size_t(count * block), count);
}

ComplexDataPoint_t pointOfHead(const P24ExperimentalAcData &head)
{
    ComplexDataPoint_t point;
    point.timestamp = double(head.tick) / mainFacts.ticksPerSecond;
    point.frequency = double(head.frequency);
    point.currentRange = head.currentRange;
    point.voltageRange = head.voltageRange;
    point.weGain = head.weGain;
    point.iGain = head.iGain;
    return point;
}

/// Fills everything that follows from the fundamentals and the calibration.
void setMeasurement(ComplexDataPoint_t &point, const RawFundamentals &raw, const P24ExperimentalAcData &head,
                    const CalibrationData &calibration)
{
    const double frequency = point.frequency;
    point.rawDCvoltage = raw.voltageMean;
    point.rawDCcurrent = raw.currentMean;
    point.dcVoltage = calibration.getEWE_DCbias(raw.voltageMean, &head);
    point.dcCurrent = calibration.getCurrent_DCbias(raw.currentMean, &head);

    const std::complex<double> current = calibration.getACCurrent_main(raw.current, head.iGain, head.currentRange,
                                                                       frequency, raw.currentMean, head.adcSource());
    const std::complex<double> voltage = calibration.getACVoltage_main(raw.voltage, head.weGain, head.iGain, frequency,
                                                                       raw.voltageMean, head.adcSource());
    // Without a current the cable has none to take off: its own impedance would be left, with the sign turned.
    std::complex<double> z(infinity, 0.0);
    if (std::abs(current) != 0.0) // the transform's entries are conjugate phasors
        z = calibration.adjustZforCableCapacitance(frequency, std::conj(voltage / current), head.currentRange);
    setImpedance(point, z);
    point.voltageAmplitude = std::abs(voltage);
    point.currentAmplitude = point.voltageAmplitude / point.absZ;
}

void complainAboutImpedance(const ComplexDataPoint_t &point)
{
    if (std::isnan(point.realZ))
        qDebug(" z imapadance is nan from NimbrelleLib::AnalyzeFourier");
    if (std::isinf(point.realZ))
        qDebug(" z imapadance is inf from NimbrelleLib::AnalyzeFourier");
}

} // namespace

ComplexDataPoint_t NimbrelleLib::AnalyzeFRA(const QByteArray &packet, const CalibrationData *cal, HardwareModel_t,
                                            QString)
{
    const auto head = recordFromBytes<P24ExperimentalAcData>(packet);
    if (!hasClaimedLength(packet, head)) {
        qDebug("ERROR: AC data of %d bytes do not hold what their head claims.", packet.size());
        return {};
    }
    std::vector<float> current = samplesOfBlock(packet, head, 0);
    std::vector<float> voltage = samplesOfBlock(packet, head, 1);
    if (head.adcSource() == ADC_src_t::Internal12Bit) {
        cal->correctPIC_ADC_Data__current(current);
        cal->correctPIC_ADC_Data__voltage(voltage);
    }

    const double sampleFrequency = double(1.0f / head.samplePeriod);
    ComplexDataPoint_t point = pointOfHead(head);
    const RecordSpectra spectra = analyseRecord(current, voltage, sampleFrequency, point.frequency, analysedHarmonics);
    if (spectra.isEmpty()) {
        qDebug("ERROR: Raw AC data was empty.");
        return {};
    }
    point.numPeriods = std::max(1.0, wholePeriods(head.samplesPerSignal, sampleFrequency, point.frequency));
    const RawFundamentals raw = {spectra.current[0].real() / 2.0, spectra.voltage[0].real() / 2.0, spectra.current[1],
                                 spectra.voltage[1]};
    setMeasurement(point, raw, head, *cal);
    point.thdPercent = spectra.thdPercent();
    return point;
}

ComplexDataPoint_t NimbrelleLib::AnalyzeFourierOnRecover(const QByteArray &packet, const CalibrationData *cal,
                                                         HardwareModel_t, QString)
{
    if (packet.size() != headSize + int(sizeof(StoredTransform))) {
        qDebug("ERROR: Stored AC data of %d bytes are none.", packet.size());
        return {};
    }
    const auto head = recordFromBytes<P24ExperimentalAcData>(packet);
    const auto stored = recordFromBytes<StoredTransform>(packet.mid(headSize));
    ComplexDataPoint_t point = pointOfHead(head);
    point.numPeriods = 1.0;
    const RawFundamentals raw = {stored.twiceCurrentMean / 2.0,
                                 stored.twiceVoltageMean / 2.0,
                                 {stored.currentReal, stored.currentImag},
                                 {stored.voltageReal, stored.voltageImag}};
    setMeasurement(point, raw, head, *cal);
    complainAboutImpedance(point);
    return point;
}
