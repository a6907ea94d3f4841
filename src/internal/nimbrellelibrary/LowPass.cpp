#include "nimbrellelibrary/LowPass.h"

#include "numerics/Constants.h"

#include <cmath>

namespace {

constexpr int inputsKept = 3;
constexpr int outputsKept = 2;

/// Drops the oldest value for a new one; a queue that is too short is filled up with zeros first.
void push(QQueue<double> &queue, int kept, double value)
{
    if (queue.size() < kept) {
        for (int i = 0; i < kept; ++i)
            queue.enqueue(0.0);
    }
    queue.dequeue();
    queue.enqueue(value);
}

} // namespace

void LowPass::setup(unsigned order, double sampleFrequency, double cutoff)
{
    const unsigned evenOrder = order - order % 2;
    kLimits = getLimitOfK(evenOrder);
    const double Fc = Calculate_Fc(sampleFrequency, cutoff);
    for (unsigned k = kLimits.first; k <= kLimits.second; ++k) {
        const double theta = Calculate_Theta(k, evenOrder);
        const auto pole = Calculate_P(sampleFrequency, calculate_a(Fc, theta), calculate_b(Fc, theta));
        coefficients.insert(QString::number(k), getFilter_Coefficients(pole));
        createQueues(k);
    }
}

double LowPass::Filter(double sample)
{
    for (unsigned k = kLimits.second; k >= kLimits.first; --k)
        sample = secondOrderFillter(k, sample);
    return sample;
}

std::pair<quint32, quint32> LowPass::getLimitOfK(unsigned order)
{
    return {1, order / 2};
}

double LowPass::Calculate_Fc(double fs, double fc)
{
    return std::tan(pi * fc / fs) * (fs / pi);
}

double LowPass::Calculate_Theta(unsigned k, unsigned n)
{
    return pi * (2.0 * k - 1.0) / (2.0 * n);
}

double LowPass::calculate_a(double Fc, double theta)
{
    return -2.0 * pi * Fc * std::sin(theta);
}

double LowPass::calculate_b(double Fc, double theta)
{
    return 2.0 * pi * Fc * std::cos(theta);
}

std::pair<double, double> LowPass::Calculate_P(double fs, double a, double b)
{
    const double denominator = (2.0 * fs - a) * (2.0 * fs - a) + b * b;
    return {(4.0 * fs * fs - a * a - b * b) / denominator, 4.0 * fs * b / denominator};
}

LowPass::Coefficients LowPass::getFilter_Coefficients(const std::pair<double, double> &pole)
{
    const double a1 = -2.0 * pole.first;
    const double a2 = pole.first * pole.first + pole.second * pole.second;
    const double gain = (1.0 + a1 + a2) / 4.0;
    return {a1, a2, gain, 2.0 * gain, gain};
}

void LowPass::createQueues(unsigned k)
{
    QQueuelist list;
    for (int i = 0; i < inputsKept; ++i)
        list.input.enqueue(0.0);
    for (int i = 0; i < outputsKept; ++i)
        list.output.enqueue(0.0);
    queues.insert(QString::number(k), list);
}

double LowPass::secondOrderFillter(unsigned k, double sample)
{
    storeInput(k, sample);
    const Coefficients section = coefficients.value(QString::number(k));
    const QQueuelist list = queues.value(QString::number(k));
    if (list.input.size() != inputsKept && list.output.size() != outputsKept)
        return 0.0;
    const double filtered = section.b0 * list.input[2] + section.b1 * list.input[1] + section.b2 * list.input[0] -
                            section.a1 * list.output[1] - section.a2 * list.output[0];
    storeOutput(k, filtered);
    return filtered;
}

void LowPass::storeInput(unsigned k, double sample)
{
    push(queues[QString::number(k)].input, inputsKept, sample);
}

void LowPass::storeOutput(unsigned k, double sample)
{
    push(queues[QString::number(k)].output, outputsKept, sample);
}
