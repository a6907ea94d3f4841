#include "ConnectedInstrument.h"

#include "support/TestMain.h"

#include <VekConstantCurrentElement.h>
#include <VekExperiment.h>

#include <QRegularExpression>

#include <array>
#include <cmath>

/**
 * Sixteen channels at full speed: every record that the instrument sent is delivered, in order, none lost, none doubled.
 * The test takes three seconds of streaming; NIMBRELLE_STREAM_SECONDS in the environment makes it longer.
 */
class TestThroughput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sixteenChannelsAtFullSpeedLoseNothing();
};

namespace {

constexpr int channelCount = 16;
constexpr double interval = 0.001;

struct Stream {
    qint64 count = 0;
    qint64 gaps = 0;       ///< samples that do not follow the one before by one interval
    double lastTime = 0.0; ///< the first sample comes one interval after the start
};

int streamSeconds()
{
    bool given = false;
    const int seconds = qEnvironmentVariableIntValue("NIMBRELLE_STREAM_SECONDS", &given);
    return given ? seconds : 3;
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

void TestThroughput::sixteenChannelsAtFullSpeedLoseNothing()
{
    ConnectedInstrument instrument(QStringLiteral("Stream"),
                                   {"--channels", "16", "--speed", "max", "--cell", "resistor:R=1000", "--stats"});
    QVERIFY(instrument.isReady());
    std::array<Stream, channelCount> streams;
    disconnect(&instrument.handler(), &VekInstrumentHandler::activeDCDataReady, &instrument, nullptr);
    connect(&instrument.handler(), &VekInstrumentHandler::activeDCDataReady, this,
            [&streams](unsigned char channel, const VekDCData &data) {
                Stream &stream = streams.at(channel);
                ++stream.count;
                if (std::abs(data.timestamp - stream.lastTime - interval) > 1e-7)
                    ++stream.gaps;
                stream.lastTime = data.timestamp;
            });

    VekConstantCurrentElement element(1e-3, interval, 1e6);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    for (unsigned char channel = 0; channel < channelCount; ++channel)
        QCOMPARE(instrument.handler().uploadExperimentToChannel(channel, experiment).message(), QString("Success"));
    for (unsigned char channel = 0; channel < channelCount; ++channel)
        QCOMPARE(instrument.handler().startUploadedExperiment(channel).message(), QString("Success"));

    QTest::qWait(1000 * streamSeconds() / 2);
    const double halfWay = residentMegabytes();
    QTest::qWait(1000 * streamSeconds() / 2);
    const double atTheEnd = residentMegabytes();
    for (unsigned char channel = 0; channel < channelCount; ++channel)
        QCOMPARE(instrument.handler().stopExperiment(channel).message(), QString("Success"));
    QVERIFY(instrument.waitForEnds(channelCount, 60000));

    const QString statistics = instrument.simulator().finish();
    qint64 total = 0;
    for (int channel = 0; channel < channelCount; ++channel) {
        const QRegularExpression row(QStringLiteral("channel %1: (\\d+)").arg(channel));
        const QRegularExpressionMatch match = row.match(statistics);
        QVERIFY2(match.hasMatch(), qPrintable(statistics));
        QCOMPARE(streams.at(channel).count, match.captured(1).toLongLong());
        QCOMPARE(streams.at(channel).gaps, 0);
        total += streams.at(channel).count;
    }
    qInfo("%lld samples in %d s; resident memory %.0f MB half-way, %.0f MB at the end", total, streamSeconds(), halfWay,
          atTheEnd);
    QVERIFY(total > 10000);
    QVERIFY(atTheEnd - halfWay < 50.0);
}

NIMBRELLE_TEST_MAIN(TestThroughput)
#include "TestThroughput.moc"
