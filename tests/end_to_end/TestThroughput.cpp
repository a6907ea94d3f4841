// SPDX-License-Identifier: MIT
#include "StreamCount.h"

#include "support/ProcessFigures.h"
#include "support/TestMain.h"

#include <VekConstantCurrentElement.h>

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
constexpr double mostMegabytesWaiting = 40.0; ///< the 12 MB that may be on their way, and what comes of them
constexpr qint64 mostBytesKept = 32000000;    ///< once they have come; the lists of events stay as long as they were
constexpr qint64 leastSamples = 10000;

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
    StreamCount streams(instrument, channels, interval);
    const qint64 heapBefore = ProcessFigures::heapBytes();
    QVERIFY(streams.start(cycles ? cycling() : StreamCount::steadyCurrent(interval)));

    QTest::qWait(1000 * streamSeconds() / 2);
    const double halfWay = ProcessFigures::residentMegabytes();
    QTest::qWait(1000 * streamSeconds() / 2);
    const double atTheEnd = ProcessFigures::residentMegabytes();
    QVERIFY(QTest::qWaitFor([&] { return streams.delivered() > leastSamples; }, 60000)); // on a crowded machine

    QVERIFY(streams.finish(60000));
    const qint64 bytesKept = ProcessFigures::heapBytes() - heapBefore;
    QVERIFY2(streams.faults() == 0, qPrintable(streams.text()));
    for (const StreamCount::Channel &channel : streams.channels())
        QVERIFY2(channel.cycles >= (cycles ? 2 : 1), qPrintable(QString::number(channel.cycles)));
    qInfo("%lld samples of %d channels in %d s; resident memory %.0f MB half-way, %.0f MB at the end, %lld kB kept",
          streams.delivered(), channels, streamSeconds(), halfWay, atTheEnd, bytesKept / 1000);
    QVERIFY(atTheEnd - halfWay < mostMegabytesWaiting);
    QVERIFY(bytesKept < mostBytesKept);
}

NIMBRELLE_TEST_MAIN(TestThroughput)
#include "TestThroughput.moc"
