#include "ConnectedInstrument.h"

#include "support/TestMain.h"

#include <VekConstantCurrentElement.h>
#include <VekExperiment.h>

#include <QRegularExpression>

#include <numeric>
#include <vector>

/**
 * All channels of an instrument at full speed: every record that it sent is delivered, in order, none lost, none doubled.
 * Each test takes three seconds of streaming; NIMBRELLE_STREAM_SECONDS in the environment makes it longer.
 */
class TestThroughput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void losesNothingAtFullSpeed_data();
    void losesNothingAtFullSpeed();
};

namespace {

constexpr double interval = 0.001;
constexpr qint64 leastSamples = 10000;
constexpr double clockResolution = 1e-7; ///< seconds, of the coarser line

struct Stream {
    qint64 count = 0;
    qint64 gaps = 0;       ///< samples that come more than one interval after the one before
    qint64 repeats = 0;    ///< samples that do not come after the one before
    double lastTime = 0.0; ///< the first sample comes one interval after the start
    int cycles = 0;

    void take(double time)
    {
        ++count;
        gaps += time - lastTime > interval + clockResolution;
        repeats += time - lastTime < clockResolution;
        lastTime = time;
    }
};

/// One long element.
VekExperiment steadyCurrent()
{
    VekConstantCurrentElement element(1e-3, interval, 1e6);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    return experiment;
}

/// Up and down between two voltages, over and over.
VekExperiment cycling()
{
    VekConstantCurrentElement charge(1.0, interval, 1e6);
    charge.setMaxVoltage(4.1);
    VekConstantCurrentElement discharge(-1.0, interval, 1e6);
    discharge.setMinVoltage(3.3);
    VekExperiment cycle;
    cycle.appendElement(charge, 1);
    cycle.appendElement(discharge, 1);
    VekExperiment experiment;
    experiment.appendSubExperiment(cycle, 65535);
    return experiment;
}

int streamSeconds()
{
    bool given = false;
    const int seconds = qEnvironmentVariableIntValue("NIMBRELLE_STREAM_SECONDS", &given);
    return given ? seconds : 3;
}

qint64 totalOf(const std::vector<Stream> &streams)
{
    return std::accumulate(streams.begin(), streams.end(), qint64(0),
                           [](qint64 sum, const Stream &stream) { return sum + stream.count; });
}

/// Resident memory of this process in megabytes.
double residentMegabytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0.0;
    return statm.readAll().split(' ').value(1).toDouble() * 4096.0 / 1e6;
}

} // namespace

void TestThroughput::losesNothingAtFullSpeed_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("channels");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<bool>("cycles");
    QTest::newRow("sixteen channels") << "Alder_2_5" << 16 << "resistor:R=1000" << false;
    QTest::newRow("64 channels, cycling") << "Gale" << 64 << "battery:Q=0.02,Rs=0.1,R=0.05,C=0.01" << true;
}

void TestThroughput::losesNothingAtFullSpeed()
{
    QFETCH(QString, model);
    QFETCH(int, channels);
    QFETCH(QString, cell);
    QFETCH(bool, cycles);
    ConnectedInstrument instrument(model, {"--model", model, "--channels", QString::number(channels), "--speed", "max",
                                           "--cell", cell, "--stats"});
    QVERIFY(instrument.isReady());
    const auto streamCount = std::size_t(channels);
    std::vector<Stream> streams(streamCount);
    const VekInstrumentHandler &handler = instrument.handler();
    disconnect(&handler, &VekInstrumentHandler::activeDCDataReady, &instrument, nullptr);
    disconnect(&handler, &VekInstrumentHandler::experimentNewElementStarting, &instrument, nullptr);
    connect(&handler, &VekInstrumentHandler::activeDCDataReady, this,
            [&streams](unsigned char channel, const VekDCData &data) { streams.at(channel).take(data.timestamp); });
    connect(&handler, &VekInstrumentHandler::experimentNewElementStarting, this,
            [&streams](unsigned char channel, const VekExperimentNode &node) {
                streams.at(channel).cycles = node.cycleNumber;
            });

    const VekExperiment experiment = cycles ? cycling() : steadyCurrent();
    for (int channel = 0; channel < channels; ++channel)
        QCOMPARE(handler.uploadExperimentToChannel(quint8(channel), experiment).message(), QString("Success"));
    for (int channel = 0; channel < channels; ++channel)
        QCOMPARE(handler.startUploadedExperiment(quint8(channel)).message(), QString("Success"));

    QTest::qWait(1000 * streamSeconds() / 2);
    const double halfWay = residentMegabytes();
    QTest::qWait(1000 * streamSeconds() / 2);
    const double atTheEnd = residentMegabytes();
    QVERIFY(QTest::qWaitFor([&] { return totalOf(streams) > leastSamples; }, 60000)); // on a crowded machine
    for (int channel = 0; channel < channels; ++channel)
        QCOMPARE(handler.stopExperiment(quint8(channel)).message(), QString("Success"));
    QVERIFY(instrument.waitForEnds(channels, 60000));

    const QString statistics = instrument.simulator().finish();
    for (int channel = 0; channel < channels; ++channel) {
        const QRegularExpression row(QStringLiteral("channel %1: (\\d+)").arg(channel));
        const QRegularExpressionMatch match = row.match(statistics);
        QVERIFY2(match.hasMatch(), qPrintable(statistics));
        const Stream &stream = streams.at(std::size_t(channel));
        QCOMPARE(stream.count, match.captured(1).toLongLong());
        QCOMPARE(stream.gaps, 0);
        QCOMPARE(stream.repeats, 0);
        QVERIFY2(stream.cycles >= (cycles ? 2 : 1), qPrintable(QString::number(stream.cycles)));
    }
    qInfo("%lld samples of %d channels in %d s; resident memory %.0f MB half-way, %.0f MB at the end", totalOf(streams),
          channels, streamSeconds(), halfWay, atTheEnd);
    QVERIFY(atTheEnd - halfWay < 50.0);
}

NIMBRELLE_TEST_MAIN(TestThroughput)
#include "TestThroughput.moc"
