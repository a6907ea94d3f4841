// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <complex>
#include <tuple>
#include <utility>
#include <vector>

enum class ADC_src_t : quint8;
enum class HardwareModel_t : quint8;
enum class currentRange_t : quint8;
class CalibrationData;
struct ComplexDataPoint_t;
struct ExpNode_t;
struct Gale_AC_Header_t;
struct Node;

/// Options of the instrument's sampling, kept as they come; no analysis reads them.
struct DataSampleOption {
    quint8 bytes[16] = {};
};

/**
 * Static helpers under the names that clients of the numerics know, and the analysis of AC records, see calibration/ComplexDataPoint.h for its result.
 *
 * @thread Pure functions, hence free of any thread; but setDataSampleOptions() is for one thread at a time.
 */
class NimbrelleLib
{
public:
    // See numerics/EngineeringUnits.h.
    static double getUnitsMultiplier(const QString &unit);
    static QString getValueString(double value, int digits);

    /**
     * Frequencies of a logarithmic sweep, in hertz, from `end` to `start`, whichever is larger.
     *
     * The last step ends on `start` and may be shorter than the others. Empty if a bound is not positive.
     */
    static QList<double> calculateFrequencyList(double start, double end, double pointsPerDecade);
    /// 0 above 2000 Hz, 1 above 1 Hz, else 2.
    static int getFrequencyRange(double frequency);
    /// What the model answers for this frequency in hertz; OFF without a model.
    static currentRange_t getEIScurrentRangeLimit(HardwareModel_t model, double frequency);

    /// Payload with the new hardware interval (float, little-endian) and how many samples make one reported sample.
    static std::tuple<QByteArray, unsigned> getManualSamplingParamsPayload(HardwareModel_t model, double interval,
                                                                           double longestPeriod);

    // See elements/NodeSampling.h.
    static std::tuple<float, unsigned> calcNewSamplingAndDownSampling(float sampling, float maxPeriod);
    static std::tuple<float, float> getOriginalSamplingAndUpdateInterval(float interval, unsigned factor);
    static float get_hwNode_sampling_interval(const ExpNode_t &node);
    static void set_hwNode_sampling_interval(ExpNode_t &node, float interval);
    static void NUI_Node_set_downsampling(Node &node, float maxPeriod);
    static float NUI_Node_get_original_sampling(const Node &node);

    /**
     * The code spread of a raw capture: the text of Histogram::getTotalCount() for its first and its second signal.
     *
     * @param data blocks of 1024 signed 16-bit samples of the first signal, then as many of the second; a partial block
     *             at the end is ignored
     */
    static QStringList getHistogramData(const QByteArray &data);

    /**
     * One impedance point from a mainline AC record, payload of NT_AC_DATA. Model and path take no part.
     *
     * @failure A record without samples, or of another length than its head says, gives a point of zeros and a debug
     *          line. A current that stands at one code gives an infinite impedance, also behind a cable.
     */
    static ComplexDataPoint_t AnalyzeFRA(const QByteArray &packet, const CalibrationData *cal, HardwareModel_t model,
                                         QString path);
    /**
     * Impedance points from the batches of a battery cycler, one for each tone of the drive.
     *
     * The vectors run in parallel, one entry for each channel that takes part.
     *
     * @param data       each batch's words, current and voltage in turn, and how many words there are
     * @param bipolar    the channels are a pair in series, not parallel ones
     * @param channels   0-based numbers for the debug file
     * @param debugPath  folder, with its closing separator, for a file of the samples; empty: none is written
     * @param startTime  seconds of the instrument's clock at which that file's time begins
     * @failure Without samples: no point, and a debug line. Where every channel's current stands at one code, the
     *          impedance is infinite, whatever the common mode.
     */
    static std::vector<ComplexDataPoint_t> AnalyzeFRA(std::vector<Gale_AC_Header_t> headers,
                                                      std::vector<std::pair<int *, int>> &data,
                                                      std::vector<const CalibrationData *> &cals, bool bipolar,
                                                      std::vector<unsigned char> channels, QString debugPath,
                                                      double startTime);
    /// One impedance point from a record of stored data, whose transform the instrument has run; otherwise as above.
    static ComplexDataPoint_t AnalyzeFourierOnRecover(const QByteArray &packet, const CalibrationData *cal,
                                                      HardwareModel_t model, QString path);

    /**
     * Integrates over as many whole periods as the data hold; frequencies in hertz.
     *
     * @return harmonics + 2 entries: twice the mean, then the conjugate phasors of the fundamental and its harmonics;
     *         empty for fewer than two samples
     */
    static std::vector<std::complex<double>> MultiFrequencyFourier(const std::vector<float> &data,
                                                                   double sampleFrequency, double signalFrequency,
                                                                   int harmonics);
    /// Samples per period of the alias under which a frequency is sampled; negative when the alias runs backwards.
    static double getRelativePeriod(double sampleFrequency, double frequency);
    static double getRelativePeriod_pos(double sampleFrequency, double frequency); ///< its magnitude

    // The transforms; clients have them as VekFourier.

    /// Amplitude and phase at (harmonic + 1) periods per `period` samples, over the first `length` samples.
    static ComplexDataPoint_t SingleFrequencyFourier(const std::vector<double> &data, double length, double period,
                                                     int harmonic);
    /// The same over as many whole periods as the data hold.
    static ComplexDataPoint_t SingleFrequencyFourier(const std::vector<double> &data, double period, int harmonic);
    /// Where samples begin to stay at the end of the converter's span; their count if they never do.
    static int catchClipping(const std::vector<double> &data, double unused, ADC_src_t source);
    /// The mean impedance; NaN without points, and zero in all other fields.
    static ComplexDataPoint_t getAvgComplexDataPoint(const std::vector<ComplexDataPoint_t> &points);
    static void setDataSampleOptions(const DataSampleOption &options);

private:
    static DataSampleOption _dataSamplingOptions;
};

/**
 * Floor of a quotient that ought to be whole: a fraction above 1 - margin counts as the next integer.
 *
 * @param margin between 0 and 1, both excluded; any other value gives the plain floor
 * @return at least 0 and at most what an unsigned holds; 0 for NaN
 */
unsigned floorWithMargin(double value, double margin);
