#pragma once

#include <QMap>
#include <QQueue>
#include <QString>

#include <utility>

/**
 * A Butterworth low-pass of even order: a cascade of second-order sections whose coefficients come from a bilinear
 * transform with pre-warping. Each section has a gain of exactly 1 at DC.
 *
 * Without setup(), and with an order below 2, it hands on what it is given. A corner at half the sample frequency or
 * above is not refused; the coefficients follow the tangent.
 *
 * @thread One object belongs to one thread.
 */
class LowPass
{
public:
    /// What a section remembers, oldest first.
    struct QQueuelist {
        QQueue<double> input;  ///< the last three
        QQueue<double> output; ///< the last two
    };
    /// a1 and a2 of the denominator, whose a0 is 1; b0, b1 and b2 of the numerator.
    struct Coefficients {
        double a1, a2, b0, b1, b2;
    };

    /// Designs the filter and forgets all samples; frequencies in hertz. An odd order is reduced by 1.
    void setup(unsigned order, double sampleFrequency, double cutoff);
    /// Takes the next sample, gives the next filtered one.
    double Filter(double sample);

private:
    static std::pair<quint32, quint32> getLimitOfK(unsigned order);
    static double Calculate_Fc(double fs, double fc);
    static double Calculate_Theta(unsigned k, unsigned n);
    static double calculate_a(double Fc, double theta);
    static double calculate_b(double Fc, double theta);
    static std::pair<double, double> Calculate_P(double fs, double a, double b);
    static Coefficients getFilter_Coefficients(const std::pair<double, double> &pole);
    void createQueues(unsigned k);
    double secondOrderFillter(unsigned k, double sample);
    void storeInput(unsigned k, double sample);
    void storeOutput(unsigned k, double sample);

    std::pair<quint32, quint32> kLimits{1, 0}; ///< first and last section
    QMap<QString, Coefficients> coefficients;  ///< by section number, in decimal
    QMap<QString, QQueuelist> queues;          ///< keyed the same way
};
