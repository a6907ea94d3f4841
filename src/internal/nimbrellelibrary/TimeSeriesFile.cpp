// SPDX-License-Identifier: MIT
#include "nimbrellelibrary/TimeSeriesFile.h"

#include "nimbrellelibrary/NimbrelleLib.h"

#include <QDir>
#include <QFile>

namespace {

QString digits(double value, int count)
{
    return QString::number(value, 'g', count);
}

QString sampleAt(const std::vector<float> &samples, std::size_t j)
{
    return QLatin1Char(',') + digits(j < samples.size() ? double(samples[j]) : 0.0, 6);
}

QString resultLines(const Gale_AC_Header_t &head, const ComplexDataPoint_t &point, double elapsed)
{
    const double period = NimbrelleLib::getRelativePeriod(head.sampleFrequency, point.frequency);
    const QStringList values = {
        digits(elapsed, 15),          digits(head.frequency, 15),         digits(head.sampleFrequency, 6),
        digits(period, 15),           QString::number(head.nSum),         digits(point.frequency, 15),
        digits(point.absZ, 15),       digits(point.phaseDeg, 15),         digits(point.realZ, 15),
        digits(-point.imagZ, 15), // as its heading says
        digits(point.thdPercent, 15), digits(point.currentAmplitude, 15), digits(point.voltageAmplitude, 15)};
    return QStringLiteral("Elapsed Experiment Time(s),Signal Frequency,Sample Frequency,Period,nSum,Frequency (Hz),"
                          "|Z| (Ohms),Phase (deg),Z' (Ohms),-Z\" (Ohms), THD(%), Amplitude(A), Amplitude(V)\n") +
           values.join(QLatin1Char(',')) + QStringLiteral(",\n\n");
}

QString sampleLines(const TimeSeries &series)
{
    QString text = QStringLiteral("Elapsed Time (s)");
    for (const TimeSeries::Channel &channel : series.channels)
        text += QStringLiteral(", Channel %1 Current(A), Channel %1 Voltage(V)").arg(channel.number + 1);
    text += QLatin1Char('\n');
    const float step = 1.0f / series.head.sampleFrequency;
    double time = 0.0;
    for (std::size_t j = 0; j < series.head.samplesPerSignal; ++j, time += double(step)) {
        text += QString::number(time, 'f', 9);
        for (const TimeSeries::Channel &channel : series.channels)
            text += sampleAt(channel.current, j) + sampleAt(channel.voltage, j);
        text += QLatin1Char('\n');
    }
    return text;
}

} // namespace

void writeTimeSeries(const QString &directory, const TimeSeries &series, const ComplexDataPoint_t &point,
                     double startTime)
{
    const double elapsed = point.timestamp - startTime;
    QDir().mkpath(directory);
    QFile file(directory + QStringLiteral("TimeSeriesData_") + digits(elapsed, 6) + QStringLiteral("s_") +
               digits(point.frequency, 6) + QStringLiteral("Hz.csv"));
    if (file.open(QIODevice::WriteOnly))
        file.write((resultLines(series.head, point, elapsed) + sampleLines(series)).toUtf8());
}
