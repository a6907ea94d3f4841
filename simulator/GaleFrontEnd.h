// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/CalRecords.h"
#include "calibration/DataRecords.h"
#include "simulator/FrontEnd.h"

#include <vector>

/**
 * The front end of a battery cycler's channel: an imperfect calibration record, the board's configuration, records with
 * counters and counts of charge, and AC batches in delta-encoded packets.
 *
 * Four of the eight current ranges exist, from 5 A down by tens, and four voltage ranges from 10 V down by halves. The
 * calibration's polynomials of the AC path and its common-mode admittance are as imperfect as its offsets.
 */
class GaleFrontEnd : public FrontEnd
{
public:
    GaleFrontEnd(quint32 seed, int channel, double noise);

    /// What a board of two channels says of itself; boards differ in the tick of their charge counters.
    static Gale_Cfg_t configuration(int board);

    QByteArray calibration() const override;
    void setCalibration(const QByteArray &record) override;
    int currentRangeCount() const override;
    int voltageRangeCount() const override;
    double fullScale(currentRange_t range) const override;
    double fullScale(voltageRange_t range) const override;
    currentRange_t rangeForCurrent(double current) const override;
    voltageRange_t rangeForVoltage(double voltage) const override;
    double settableCurrent() const override;
    double settableVoltage() const override;
    double bearableVoltage() const override { return settableVoltage(); }
    QByteArray dcRecord(const DcSample &sample, currentRange_t currentRange, voltageRange_t voltageRange,
                        quint8 counter) const override;
    QVector<Packet> acPackets(const AcMeasurement &measurement, Random &random) const override;
    double currentFromCode(int code, currentRange_t range) const override;
    double voltageFromCode(int code, voltageRange_t range) const override;
    QVector<Packet> tare(Random &random) override;
    /// 8.75e7 a second.
    quint64 wireTick(quint64 tick) const override { return tick * 7 / 8; }
    /// The limit is a reading of the thermistor's divider, which falls when it gets hot.
    bool isTooHot(double degrees, float limit) const override;

private:
    /// A sine in the current and one in the voltage, as phasors.
    struct Tone {
        double frequency; ///< hertz
        std::complex<double> current;
        std::complex<double> voltage;
    };

    static std::vector<Tone> tones(const AcMeasurement &measurement);
    std::vector<Tone> rawTones(const std::vector<Tone> &drive, const Gale_AC_Header_t &header) const;
    QVector<qint32> words(const AcPlan &plan, const CellReading &means, const std::vector<Tone> &raw,
                          Random &random) const;
    void makeRecord(quint64 seed);
    double rawCurrent(double current, int range) const;
    double rawVoltage(double voltage, int range) const;

    cal_vc07 _record = {};
    double _chargeTick; ///< seconds per count
    double _noise;      ///< rms, as a share of the converter's span
};

/// A reading of the thermistor's divider, 0 to 32500, at a temperature in degrees Celsius.
double thermistorReading(double degrees);

/// Cuts pairs of words (current, voltage) into packets of eight pairs, each in the narrowest of the four widths that holds
/// its differences; the last packet is filled up with repetitions.
QVector<QByteArray> packDeltas(const QVector<qint32> &words);
