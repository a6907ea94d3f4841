// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/CSVdataImporter.h"
#include "calibration/CalRecords.h"
#include "calibration/CorrectionTables.h"
#include "calibration/DataRecords.h"
#include "calibration/FrequencySweep.h"
#include "calibration/GainMatrix.h"
#include "calibration/GaleCalibration.h"
#include "calibration/MainCalibration.h"
#include "calibration/NoCalibration.h"
#include "hardware_models/HardwareModelNumber.h"
#include "hardware_models/RangeTypes.h"

#include <QList>
#include <QMap>
#include <QString>

#include <complex>
#include <memory>
#include <utility>
#include <variant>
#include <vector>

class HardwareModel;
struct ComplexDataPoint_t;

/**
 * Translates between one channel's raw numbers and physical units: volts, amperes, coulombs, seconds, degrees Celsius.
 *
 * The channel's calibration record decides the line, and with it who converts: MainCalibration, GaleCalibration, or
 * NoCalibration without a usable record. What is asked here is asked of that one. Tables of the analogue chain's frequency
 * response, which the SD card carries, join later and act on AC readings alone.
 *
 * @thread  A value without lock: handed from thread to thread as a copy, const operations run on any thread.
 * @failure Nothing fails. Without a record the answers are 0.0, except 255 for a current range or a gain; a missing
 *          table means that its stage is not corrected.
 */
class CalibrationData
{
public:
    CalibrationData();

    /// Takes the model and the configuration of a board that has none yet. Call it before the record is imported.
    void setModelType(HardwareModel_t model);
    /// Takes the channel's record; a short one is filled up with zeros, an unknown one leaves no usable record.
    void importCalData(const char *data, int size);
    /**
     * Reads the tables of an instrument from `baseDir`/Calibration files/`deviceName`, instead of the earlier ones.
     *
     * Makes the first two folders if they are missing. All channels of an instrument share its tables.
     *
     * @return false if the name makes no folder; the channel is left without tables
     */
    bool importCalData(const QString &baseDir, const QString &deviceName);
    void setGaleCfgData(const Gale_Cfg_t &cfg);
    Gale_Cfg_t getGaleCfg() const { return galeCfg; }
    /// Generation of the record: 4 mainline, 5 battery cycler, 0 none.
    qint32 getCalVersion() const;

    // Results of a tare, in amperes and volts; for battery cyclers and existing ranges only.
    void UpdateCurrentOffset(int range, float value);
    void UpdateVoltageOffset(int range, float value);

    /// One DC sample. Takes the payload of NT_DC_DATA; what it lacks reads as zero.
    ProcessedDCData ProcessDCDataPoint(const QByteArray &payload) const;
    ProcessedDCData ProcessDCDataPoint(const ExperimentalDcData &data) const;
    // The same sample's values one by one.
    double getTime(const ExperimentalDcData *data) const;    ///< seconds of the instrument's clock
    double getEWE(const ExperimentalDcData *data) const;     ///< volts
    double getECE(const ExperimentalDcData *data) const;     ///< volts; NaN on battery cyclers, which do not measure it
    double getCurrent(const ExperimentalDcData *data) const; ///< amperes
    double getCumulativeCharge(const ExperimentalDcData *data) const; ///< coulombs
    double getTemperature(const ExperimentalDcData *data) const; ///< degrees Celsius; NaN on models without a sensor
    double getCounter(const ExperimentalDcData *data) const;     ///< 0 to 255; battery cyclers only
    currentRange_t getCurrentRange(const ExperimentalDcData *data) const;
    voltageRange_t getVoltageRange(const ExperimentalDcData *data) const;
    ACgain_t getWEGain(const ExperimentalDcData *data) const;
    ACgain_t getIGain(const ExperimentalDcData *data) const;

    // Setpoints. The automatic range is replaced by the smallest one that holds the value.
    int GetBINVoltageForDAC(double volts, voltageRange_t range) const;
    int GetBINCurrentForDAC(currentRange_t range, double amps) const;
    double GetVCtrlFromDAC_BINcode(int code, voltageRange_t range) const; ///< volts
    double GetICtrlFromDAC_BINcode(int code, currentRange_t range) const; ///< amperes; mainline only
    /// What the instrument takes as a temperature limit: degrees on the mainline, the divider's reading on cyclers.
    double getTemperatureToRatio(float degrees) const;

    // The smallest range that holds a value.
    currentRange_t getMinCurrentRange_dc(float amps) const;
    currentRange_t getMinCurrentRange_galv(float amps) const;
    /// For a sine of amplitude `ac` around `dc`.
    currentRange_t getMinCurrentRange_GalvEIS(float dc, float ac) const;
    voltageRange_t getMinVoltageRange(float volts) const;

    /// Amperes that each current range spans, in the order of the ranges; one that ends at exactly 0 is left out.
    std::vector<std::pair<double, double>> getCurrentMinMaxList() const;
    /// Volts that each voltage range spans, in the order of the ranges.
    std::vector<std::pair<double, double>> getVoltageMinMaxList() const;
    // One range of the line that is named; 0 to 0 if the record is of the other.
    std::pair<double, double> getCurrentMinMax_gale(currentRange_t range) const;
    std::pair<double, double> getCurrentMinMax_mainline(currentRange_t range) const;

    // Tables of the SD card.
    CSVdataImporter *getDataImporter() { return &dataImporter; }
    void refreshLUTandInputCapacitanceTables();
    /// Drops the rows of all frequency responses, so that nothing is corrected.
    void clearSweepTableEntries();
    /// Makes the converter's tables the identity.
    void clearLUTEntries();
    void setCurrentRangeForNullOffsetMeas(currentRange_t range) { nullOffsetRange = range; }

    double getTime(const Gale_AC_Header_t *header) const; ///< seconds; of a battery cycler only
    // A batch of a battery cycler; both vectors hold at least the header's number of samples.
    void getGaleBatchDCVoltage(const Gale_AC_Header_t &header, const std::vector<float> &in,
                               std::vector<float> &out) const;
    void getGaleBatchDCCurrent(const Gale_AC_Header_t &header, const std::vector<float> &in,
                               std::vector<float> &out) const;

    // The mean of an AC record's raw readings in volts or amperes; NaN when the record is of the other line.
    double getEWE_DCbias(double raw, const P24ExperimentalAcData *header) const;
    double getCurrent_DCbias(double raw, const P24ExperimentalAcData *header) const;
    double getEWE_DCbias(double raw, const Gale_AC_Header_t *header) const;
    double getCurrent_DCbias(double raw, const Gale_AC_Header_t *header) const;

    // Complex amplitudes of a mainline record in amperes and volts; `level` is the record's mean converter code.
    std::complex<double> getACCurrent_main(std::complex<double> z, ACgain_t gain, currentRange_t range,
                                           double frequency, double level, ADC_src_t source) const;
    std::complex<double> getACVoltage_main(std::complex<double> z, ACgain_t weGain, ACgain_t iGain, double frequency,
                                           double level, ADC_src_t source) const;
    // Complex amplitudes of a battery cycler's batch.
    std::complex<double> getACCurrent_gale(std::complex<double> z, int range, double frequency) const;
    std::complex<double> getACVoltage_gale(std::complex<double> z, int range, double frequency) const;
    /// Takes off the current that the common-mode voltage drives; `voltage` is a magnitude, its phase being 0.
    std::complex<double> removeCMCurrent(std::complex<double> current, int range, double frequency,
                                         double voltage) const;
    /// Takes the cable's parallel impedance off; infinite when nothing else is left.
    std::complex<double> adjustZforCableCapacitance(double frequency, std::complex<double> z,
                                                    currentRange_t range) const;
    /// Magnitude 1, phase 0, real part 1. See compatibility.md, neutral offset.
    ComplexDataPoint_t getZOffset(double frequency, currentRange_t range, ACgain_t weGain, ACgain_t iGain) const;
    double getCurrentGain(ACgain_t gain) const; ///< factor of the mainline's current path
    // Straighten samples of the controller's own converter, in codes.
    void correctPIC_ADC_Data__current(std::vector<float> &samples) const;
    void correctPIC_ADC_Data__voltage(std::vector<float> &samples) const;

private:
    /// Asks a question of whichever line the record is of.
    template <class Question>
    auto asked(const Question &question) const
    {
        return std::visit(question, line);
    }
    // What the record gives for AC records of a line; if it is of the other one, what an empty record would.
    const DeviceDCcalFormulas &mainFormulas() const;
    const cal_vc07 &galeRecord() const;

    void forgetTables();
    void loadSweepTables();
    std::complex<double> stageResponse(const QString &stage, int setting, double frequency) const;
    std::complex<double> dividedByCurrentPath(std::complex<double> z, currentRange_t range, double frequency) const;

    std::shared_ptr<const HardwareModel> hardwareModel; ///< never null
    Gale_Cfg_t galeCfg;
    std::variant<NoCalibration, MainCalibration, GaleCalibration> line;
    currentRange_t nullOffsetRange = currentRange_t::Largest; ///< for the null-offset measurement, which has no reader
    QString tablePath;                                        ///< folder of the tables; empty until they were imported
    CSVdataImporter dataImporter;
    QMap<QString, QList<frequencySweep>> sweepTables; ///< response of each stage, by its name
    GainMatrix gainMatrix;
    PIC_ADC_lut adcLutCurrent;
    PIC_ADC_lut adcLutVoltage;
    PICInternalADCCapacitance capacitanceVoltage;
    PICInternalADCCapacitance capacitanceCurrent;
    CableCapacitanceLUT cableLut;
};
