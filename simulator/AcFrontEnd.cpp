// SPDX-License-Identifier: MIT
#include "simulator/AcFrontEnd.h"

#include "simulator/Payload.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float wordsFrom = 100.0f;   ///< hertz; below it the records carry floats
constexpr double strongEnough = 2000; ///< raw counts of amplitude that the rounding to words does not hurt
constexpr double usableSpan = 28000;
constexpr double acConverterSpan = 32767;
constexpr int gainCount = 10;
constexpr quint8 floatFlag = 1;
constexpr quint8 externalConverterFlag = 2;

QByteArray asFloats(const std::vector<double> &samples)
{
    QByteArray bytes;
    for (const double sample : samples)
        bytes += packed(float(sample));
    return bytes;
}

QByteArray asWords(const std::vector<double> &samples)
{
    QByteArray bytes;
    for (const double sample : samples)
        bytes += packed(qint16(std::lround(sample)));
    return bytes;
}

} // namespace

AcFrontEnd::AcFrontEnd(std::shared_ptr<const HardwareModel> model, std::shared_ptr<const AnalogResponse> response,
                       const Harmonics &harmonics, double noise)
    : _model(std::move(model)), _response(std::move(response)), _harmonics(harmonics), _noise(noise)
{
}

/// The range that holds the signal, but none that is too slow for its frequency.
currentRange_t AcFrontEnd::rangeFor(const AcMeasurement &measurement, const SimulatedCalibration &calibration,
                                    double amplitude) const
{
    const currentRange_t needed = calibration.rangeForCurrent(std::abs(measurement.mean.current) + amplitude);
    const currentRange_t fastest = _model->getEIScurrentRangeLimit(double(measurement.plan.frequency));
    return currentRange_t(std::min(index(needed), index(fastest)));
}

AcFrontEnd::Signal AcFrontEnd::voltageSignal(const AcMeasurement &measurement, const SimulatedCalibration &calibration,
                                             std::complex<double> phasor) const
{
    Signal signal = {};
    for (int gain = gainCount - 1; gain >= 0; --gain) {
        signal.gain = ACgain_t(gain);
        signal.mean = calibration.rawVoltage(measurement.mean.voltage, signal.gain);
        signal.phasor = phasor / calibration.voltsPerRaw(signal.gain) *
                        _response->voltagePath(double(measurement.plan.frequency), signal.gain);
        if (std::abs(signal.mean) + std::abs(signal.phasor) < usableSpan)
            break;
    }
    return signal;
}

AcFrontEnd::Signal AcFrontEnd::currentSignal(const AcMeasurement &measurement, const SimulatedCalibration &calibration,
                                             currentRange_t range, std::complex<double> phasor) const
{
    Signal signal = {};
    for (int gain = gainCount - 1; gain >= 0; --gain) {
        signal.gain = ACgain_t(gain);
        signal.mean = calibration.rawCurrentWithoutCommonMode(measurement.mean.current, range, signal.gain);
        signal.phasor = phasor / calibration.amperesPerRaw(range, signal.gain) *
                        _response->currentPath(double(measurement.plan.frequency), range, signal.gain);
        if (std::abs(signal.mean) + std::abs(signal.phasor) < usableSpan)
            break;
    }
    return signal;
}

std::vector<double> AcFrontEnd::samples(const AcPlan &plan, const Signal &signal, const Harmonics &harmonics,
                                        Random &random) const
{
    std::vector<double> values(std::size_t(plan.samples), signal.mean);
    const double step = 2.0 * M_PI * double(plan.frequency) * double(plan.samplePeriod);
    const double amplitude = std::abs(signal.phasor);
    const double phase = std::arg(signal.phasor);
    for (std::size_t n = 0; n < values.size(); ++n) {
        const double angle = step * double(n) + phase;
        values[n] += amplitude * std::cos(angle);
        for (auto harmonic = harmonics.begin(); harmonic != harmonics.end(); ++harmonic)
            values[n] += harmonic.value() * amplitude * std::cos(harmonic.key() * angle);
        if (_noise > 0.0)
            values[n] += _noise * acConverterSpan * random.normal();
        values[n] = std::clamp(values[n], -acConverterSpan - 1.0, acConverterSpan);
    }
    return values;
}

QByteArray AcFrontEnd::record(const AcMeasurement &measurement, const SimulatedCalibration &calibration,
                              Random &random) const
{
    const AcPlan &plan = measurement.plan;
    const std::complex<double> admittance = 1.0 / measurement.impedances.front();
    const double current = plan.drivesCurrent ? plan.amplitude : plan.amplitude * std::abs(admittance);
    const currentRange_t range = rangeFor(measurement, calibration, current);
    const std::complex<double> withCable = admittance + _response->cableAdmittance(double(plan.frequency), range);
    const std::complex<double> voltagePhasor = plan.drivesCurrent ? plan.amplitude / withCable : plan.amplitude;
    const Signal voltage = voltageSignal(measurement, calibration, voltagePhasor);
    const Signal amperes = currentSignal(measurement, calibration, range, voltagePhasor * withCable);
    const std::vector<double> currents = samples(plan, amperes, _harmonics, random);
    const std::vector<double> voltages = samples(plan, voltage, Harmonics(), random);

    P24ExperimentalAcData header = {};
    header.tick = measurement.tick;
    header.frequency = plan.frequency;
    header.samplePeriod = plan.samplePeriod;
    header.samplesPerSignal = plan.samples;
    header.currentRange = range;
    header.voltageRange = calibration.rangeForVoltage(measurement.mean.voltage);
    header.weGain = voltage.gain;
    header.iGain = amperes.gain;
    header.currentRef = SimulatedCalibration::currentReference;
    header.voltageRef = SimulatedCalibration::voltageReference;
    const double weakest = std::min(std::abs(voltage.phasor), std::abs(amperes.phasor));
    const bool hasFloats = plan.frequency < wordsFrom || weakest < strongEnough;
    header.flags = quint8(externalConverterFlag | (hasFloats ? floatFlag : 0));
    return packed(header) +
           (hasFloats ? asFloats(currents) + asFloats(voltages) : asWords(currents) + asWords(voltages));
}
