#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <tuple>

enum class HardwareModel_t : quint8;
enum class currentRange_t : quint8;
struct Node;
struct ExpNode_t;

/**
 * Static helpers that several rooms share: values in messages, frequency lists, sampling intervals.
 *
 * @thread Pure functions, hence free of any thread.
 */
class NimbrelleLib
{
public:
    /// Factor from a unit such as "mAh" to its base unit (coulombs, square metres, grams, ...); 1.0 if it is unknown.
    static double getUnitsMultiplier(const QString &unit);
    /// Engineering notation with that many digits, a blank and a metric prefix, ready for a unit behind it.
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

    /**
     * Splits a wanted interval into what the hardware runs at and how many of its samples make one reported sample.
     *
     * @param sampling  seconds between two reported samples; at least 1e-5 is taken
     * @param maxPeriod longest interval in seconds that the hardware may run at; at least 1e-5 is taken
     * @return hardware interval in seconds, and the factor
     */
    static std::tuple<float, unsigned> calcNewSamplingAndDownSampling(float sampling, float maxPeriod);
    /// The way back: the reported interval and the hardware's own, in seconds, each at least 1e-5.
    static std::tuple<float, float> getOriginalSamplingAndUpdateInterval(float interval, unsigned factor);

    // Nodes; see elements/ExpNode.h. Node types without a sampling interval read as 0.0 and are not written to.
    static float get_hwNode_sampling_interval(const ExpNode_t &node);
    static void set_hwNode_sampling_interval(ExpNode_t &node, float interval);
    /// Makes the hardware sample at least every maxPeriod seconds and notes the factor in the node.
    static void NUI_Node_set_downsampling(Node &node, float maxPeriod);
    /// The interval between two reported samples in seconds; 0.0 if the node has none.
    static float NUI_Node_get_original_sampling(const Node &node);
};

/**
 * Floor of a quotient that ought to be whole: a fraction above 1 - margin counts as the next integer.
 *
 * @param margin between 0 and 1, both excluded; any other value gives the plain floor
 */
unsigned floorWithMargin(double value, double margin);
