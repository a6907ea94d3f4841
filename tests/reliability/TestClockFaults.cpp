// SPDX-License-Identifier: MIT
#include "ConnectedInstrument.h"

#include "support/TestMain.h"

#include <VekConstantCurrentElement.h>

#include <atomic>
#include <cmath>
#include <ctime>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

std::atomic<qint64> shownAhead{0}; // seconds by which this process sees a wall clock that has been set

} // namespace

// These stand before the C library's for every library of this process. Clocks that only ever go on are left alone.
extern "C" Q_DECL_EXPORT int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    const int result = int(syscall(SYS_clock_gettime, clock, time));
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE))
        time->tv_sec += shownAhead;
    return result;
}

extern "C" Q_DECL_EXPORT int gettimeofday(timeval *time, void *) noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    *time = {now.tv_sec, now.tv_nsec / 1000};
    return 0;
}

extern "C" Q_DECL_EXPORT time_t time(time_t *result) noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result)
        *result = now.tv_sec;
    return now.tv_sec;
}

/// The wall clock is set while an instrument is connected and while it measures.
class TestClockFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { shownAhead = 0; }
    void setClock_data();
    void setClock();

private:
    int _count = 0;
};

void TestClockFaults::setClock_data()
{
    constexpr qint64 hour = 3600;
    constexpr qint64 year = 365 * 24 * hour;
    QTest::addColumn<qint64>("seconds");
    QTest::newRow("back by an hour") << -hour;
    QTest::newRow("back before the epoch") << -100 * year;
    QTest::newRow("ahead by ten years") << 10 * year;
}

void TestClockFaults::setClock()
{
    QFETCH(qint64, seconds);
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    QTimer setter; // to and fro, so that it is set inside every wait
    connect(&setter, &QTimer::timeout, this, [seconds] { shownAhead = shownAhead == 0 ? seconds : 0; });
    setter.start(20);
    QTRY_VERIFY(std::abs(QDateTime::currentSecsSinceEpoch() - before) > 1000); // what stands here is what Qt calls

    constexpr double interval = 0.01;
    ConnectedInstrument instrument(QStringLiteral("Clock%1").arg(++_count), {"--model", "Cedar_2_0", "--speed", "2"});
    QVERIFY(instrument.isReady());
    const VekInstrumentHandler &handler = instrument.handler();
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(handler.setChannelMaximumVoltage(0, 4.0).message(), QString("Success"));
    QCOMPARE(handler.startManualExperiment(0).message(), QString("Success"));
    QCOMPARE(handler.setManualModeSamplingInterval(0, 0.1).message(), QString("Success"));
    handler.stopExperiment(0);
    QVERIFY(instrument.waitForEnds(1, 20000));
    instrument.ends.clear();
    instrument.samples.clear();

    VekConstantCurrentElement element(1e-3, interval, 2.0);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    QVERIFY(instrument.complete(experiment));
    QCOMPARE(instrument.samples.size(), std::size_t(200));
    double last = 0.0;
    for (const ConnectedInstrument::Sample &sample : instrument.samples) { // their times are the instrument's
        QVERIFY2(std::abs(sample.data.timestamp - last - interval) < 1e-7, qPrintable(QString::number(last)));
        last = sample.data.timestamp;
    }
    QVERIFY(clock.elapsed() < 60000);
}

NIMBRELLE_TEST_MAIN(TestClockFaults)
#include "TestClockFaults.moc"
