// SPDX-License-Identifier: MIT
#include "StreamCount.h"

#include "support/ProcessFigures.h"
#include "support/TestMain.h"

#include <VekConstantCurrentElement.h>

#include <cmath>

namespace {

/// Blocks the client for ten seconds, and on until each link is full: its instrument waits and writes nothing more.
bool standStill(const std::vector<const SimulatorProcess *> &instruments)
{
    constexpr int leastSeconds = 10;
    constexpr int mostSeconds = 60;
    qint64 writtenBefore = 0;
    int quietSeconds = 0;
    for (int second = 1; second <= mostSeconds && (second <= leastSeconds || quietSeconds < 2); ++second) {
        QThread::sleep(1);
        qint64 written = 0;
        for (const SimulatorProcess *instrument : instruments)
            written += instrument->writtenBytes();
        quietSeconds = written == writtenBefore && written > 0 ? quietSeconds + 1 : 0;
        writtenBefore = written;
    }
    return quietSeconds >= 2;
}

} // namespace

/// Streams of samples over a bad line, and to a client that does not listen: each sample arrives, once, in order.
class TestStreamFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void damagedLine_data();
    void damagedLine();
    void clientThatStandsStill();
};

void TestStreamFaults::damagedLine_data()
{
    QTest::addColumn<QStringList>("faults");
    QTest::newRow("garbage before every frame") << QStringList{"garbage:1"};
    QTest::newRow("garbage before each third frame") << QStringList{"garbage:3"};
    QTest::newRow("pieces smaller than a header") << QStringList{"split:5"};
    QTest::newRow("pieces across frames") << QStringList{"split:61"};
    QTest::newRow("garbage and pieces") << QStringList{"garbage:2", "split:7"};
}

void TestStreamFaults::damagedLine()
{
    QFETCH(QStringList, faults);
    QStringList arguments{"--model", "Cedar_2_0", "--speed", "max", "--cell", "resistor:R=1000", "--stats"};
    for (const QString &fault : faults)
        arguments << "--fault" << fault;
    ConnectedInstrument instrument(QStringLiteral("Line"), arguments);
    QVERIFY(instrument.isReady());
    constexpr double interval = 0.01;
    VekConstantCurrentElement element(1e-3, interval, 2.0);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    QVERIFY(instrument.complete(experiment));
    const auto samples = instrument.samples;
    QCOMPARE(samples.size(), std::size_t(200));
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const double step = samples[i].data.timestamp - samples[i - 1].data.timestamp;
        QVERIFY2(std::abs(step - interval) < 1e-7, qPrintable(QString::number(step)));
        QVERIFY(std::abs(samples[i].data.workingElectrodeVoltage - 1.0) < 1e-4);
    }
    QVERIFY(instrument.simulator().finish().contains("channel 0: 200 DC records"));
}

void TestStreamFaults::clientThatStandsStill()
{
    constexpr double interval = 0.001;
    constexpr double mostMegabytes = 200.0; // the link stops reading when some 40 MB are on their way from each
    // In real time that is 80,000 samples a second, enough to fill the links and few enough to start all channels.
    ConnectedInstrument main(QStringLiteral("Main"), {"--channels", "16", "--speed", "1", "--stats"});
    ConnectedInstrument cycler(QStringLiteral("Cycler"),
                               {"--model", "Gale", "--channels", "64", "--speed", "1", "--stats"});
    QVERIFY(main.isReady() && cycler.isReady());
    StreamCount mainStreams(main, 16, interval);
    StreamCount cyclerStreams(cycler, 64, interval);
    const double before = ProcessFigures::residentMegabytes();
    const VekExperiment experiment = StreamCount::steadyCurrent(interval);
    QVERIFY(mainStreams.start(experiment) && cyclerStreams.start(experiment));

    QVERIFY(standStill({&main.simulator(), &cycler.simulator()}));
    const double after = ProcessFigures::residentMegabytes();

    QVERIFY(mainStreams.finish(120000));
    QVERIFY(cyclerStreams.finish(120000));
    QVERIFY2(mainStreams.faults() == 0, qPrintable(mainStreams.text()));
    QVERIFY2(cyclerStreams.faults() == 0, qPrintable(cyclerStreams.text()));
    QVERIFY(mainStreams.delivered() > 0 && cyclerStreams.delivered() > 0);
    QVERIFY2(after - before < mostMegabytes, qPrintable(QString::number(after - before)));
    qInfo("%lld samples, %.0f MB more memory while the client stood still",
          mainStreams.delivered() + cyclerStreams.delivered(), after - before);
}

NIMBRELLE_TEST_MAIN(TestStreamFaults)
#include "TestStreamFaults.moc"
