// SPDX-License-Identifier: MIT
#include "support/SteppedClock.h"
#include "support/TestMain.h"
#include "waiting/BoundedWait.h"

#include <QElapsedTimer>
#include <QThread>

#include <functional>
#include <memory>

namespace {

constexpr int hangMs = 20000; // a wait that has not ended by then never will

/// Runs what is given on a thread with an event dispatcher of its own. @return whether it came to an end
bool endsOnAThread(bool usesGlib, const std::function<void()> &work)
{
    usesGlib ? qunsetenv("QT_NO_GLIB") : qputenv("QT_NO_GLIB", "1"); // looked at when the thread begins
    const std::unique_ptr<QThread> thread(QThread::create(work));
    thread->start();
    if (thread->wait(hangMs))
        return true;
    thread->quit();
    thread->wait();
    return false;
}

/// What happens while a wait of 1,000 ms is under way, told in a slot of the waiting thread.
using Course = std::function<void(BoundedWait &wait, SteppedClock &clock)>;

void runsALoopOfItsOwn(const std::function<void()> &meanwhile)
{
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [&] {
        meanwhile();
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
}

} // namespace
Q_DECLARE_METATYPE(Course)
Q_DECLARE_METATYPE(WaitEnd)

class TestBoundedWait : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstReasonDecides_data();
    void theFirstReasonDecides();
    void whatEndedItBeforeItBeganIsNotMissed();
    void timeBeginsAnew();
    void aStepEndsTheWaitsOfOtherThreads();
    void aThreadIsBlockedUntilItsTime();
    void whatStandsBehindTheWaitingEventIsDelivered_data();
    void whatStandsBehindTheWaitingEventIsDelivered();
    void everyWaitEndsByTheSystemsClock_data();
    void everyWaitEndsByTheSystemsClock();
    void aThreadThatQuitsDoesNotWait();
};

void TestBoundedWait::theFirstReasonDecides_data()
{
    QTest::addColumn<Course>("course");
    QTest::addColumn<WaitEnd>("end");
    const auto answer = [](BoundedWait &wait) { wait.endSoon(WaitEnd::Answered); };
    QTest::newRow("time") << Course([](BoundedWait &, SteppedClock &clock) { clock.step(1000); }) << WaitEnd::TimeIsUp;
    QTest::newRow("an answer in the last millisecond") << Course([answer](BoundedWait &wait, SteppedClock &clock) {
        clock.step(999);
        answer(wait);
    }) << WaitEnd::Answered;
    QTest::newRow("an answer that stands in line before the end of the time")
        << Course([answer](BoundedWait &wait, SteppedClock &clock) {
               answer(wait);
               clock.step(5000);
           })
        << WaitEnd::Answered;
    QTest::newRow("an answer behind it") << Course([answer](BoundedWait &wait, SteppedClock &clock) {
        clock.step(1000);
        answer(wait);
    }) << WaitEnd::TimeIsUp;
    QTest::newRow("time, in a loop of a slot's own")
        << Course([](BoundedWait &, SteppedClock &clock) { runsALoopOfItsOwn([&clock] { clock.step(1000); }); })
        << WaitEnd::TimeIsUp;
    QTest::newRow("an answer, then time in such a loop") << Course([](BoundedWait &wait, SteppedClock &clock) {
        wait.end(WaitEnd::Answered);
        runsALoopOfItsOwn([&clock] { clock.step(1000); });
    }) << WaitEnd::Answered;
    QTest::newRow("the end of who was to answer") << Course([](BoundedWait &wait, SteppedClock &) {
        const QObject sender;
        wait.endOn(&sender, &QObject::objectNameChanged, WaitEnd::Answered);
    }) << WaitEnd::Destroyed;
    QTest::newRow("a signal") << Course([](BoundedWait &wait, SteppedClock &) {
        QObject sender;
        wait.endOn(&sender, &QObject::objectNameChanged, WaitEnd::LinkLost);
        sender.setObjectName("lost");
    }) << WaitEnd::LinkLost;
    QTest::newRow("the thread is told to quit")
        << Course([](BoundedWait &, SteppedClock &) { QThread::currentThread()->quit(); }) << WaitEnd::Quit;
}

void TestBoundedWait::theFirstReasonDecides()
{
    QFETCH(Course, course);
    WaitEnd end = WaitEnd::TimeIsUp;
    QVERIFY(endsOnAThread(false, [&] {
        SteppedClock clock;
        BoundedWait wait(1000, clock);
        QTimer::singleShot(0, [&] { course(wait, clock); });
        end = wait.exec();
    }));
    QTEST(end, "end");
}

void TestBoundedWait::whatEndedItBeforeItBeganIsNotMissed()
{
    SteppedClock clock;
    BoundedWait wait(1000, clock);
    clock.step(1000); // between the question and the wait for its answer
    QCOMPARE(wait.exec(), WaitEnd::TimeIsUp);
    wait.end(WaitEnd::Answered);
    QCOMPARE(wait.exec(), WaitEnd::Answered);
}

void TestBoundedWait::timeBeginsAnew()
{
    SteppedClock clock;
    BoundedWait wait(1000, clock);
    clock.step(1000); // a ring that is on its way is taken back
    wait.restart(50);
    QTimer::singleShot(0, [&] {
        clock.step(49);
        wait.endSoon(WaitEnd::Answered);
    });
    QCOMPARE(wait.exec(), WaitEnd::Answered);
    clock.hurry(50);
    for (int pass = 0; pass < 3; ++pass) {
        wait.restart(50);
        QCOMPARE(wait.exec(), WaitEnd::TimeIsUp);
    }
    QCOMPARE(clock.now(), 1000 + 49 + 150);
}

/// Time goes on only when what a step has ended has been dealt with: no wait is over before the shorter ones in it.
void TestBoundedWait::aStepEndsTheWaitsOfOtherThreads()
{
    SteppedClock clock;
    std::atomic<int> looks{0};
    std::atomic<bool> isOver{false};
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        const std::unique_ptr<Alarm> look = clock.makeAlarm([&] {
            ++looks;
            look->start(20);
        });
        look->start(20);
        BoundedWait(5000, clock).exec();
        isOver = true;
    }));
    thread->start();
    QVERIFY(clock.stepUntil([&] { return isOver.load(); }, {20}));
    QVERIFY(looks >= 249);
    QVERIFY(thread->wait(hangMs));
}

void TestBoundedWait::aThreadIsBlockedUntilItsTime()
{
    SteppedClock clock;
    std::atomic<int> woken{0};
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        clock.sleep(100);
        ++woken;
        std::mutex mutex;
        std::condition_variable change;
        std::unique_lock<std::mutex> lock(mutex);
        woken += clock.block(lock, change, 1000, [&] { return clock.now() >= 600; }) ? 10 : 20;
    }));
    thread->start();
    QVERIFY(clock.stepUntil([&] { return woken == 1; }, {100}));
    QCOMPARE(clock.now(), 100);
    QVERIFY(clock.stepUntil([&] { return woken > 1; }, {1000}));
    QCOMPARE(woken.load(), 11); // asked once more at the end
    QVERIFY(thread->wait(hangMs));
}

void TestBoundedWait::whatStandsBehindTheWaitingEventIsDelivered_data()
{
    QTest::addColumn<bool>("usesGlib");
    QTest::newRow("GLib") << true;
    QTest::newRow("Qt") << false;
}

/// The answer was queued when the event that waits for it was about to be delivered; nothing comes after it.
void TestBoundedWait::whatStandsBehindTheWaitingEventIsDelivered()
{
    QFETCH(bool, usesGlib);
    std::optional<WaitEnd> end;
    QVERIFY(endsOnAThread(usesGlib, [&end] {
        SteppedClock clock; // no time ends it
        BoundedWait wait(1000, clock);
        QEventLoop loop;
        QMetaObject::invokeMethod(
            &loop,
            [&] {
                end = wait.exec();
                loop.quit();
            },
            Qt::QueuedConnection);
        wait.endSoon(WaitEnd::Answered);
        loop.exec();
    }));
    QVERIFY(end == WaitEnd::Answered);
}

void TestBoundedWait::everyWaitEndsByTheSystemsClock_data()
{
    QTest::addColumn<bool>("usesGlib");
    QTest::addColumn<bool>("isLeft");
    QTest::addColumn<WaitEnd>("end");
    QTest::newRow("GLib, time is up") << true << false << WaitEnd::TimeIsUp;
    QTest::newRow("GLib, left") << true << true << WaitEnd::Answered;
    QTest::newRow("Qt, time is up") << false << false << WaitEnd::TimeIsUp;
    QTest::newRow("Qt, left") << false << true << WaitEnd::Answered;
}

/// A slot runs a loop of its own until the time has passed, and beyond; be it that it has ended the wait before.
void TestBoundedWait::everyWaitEndsByTheSystemsClock()
{
    QFETCH(bool, usesGlib);
    QFETCH(bool, isLeft);
    constexpr int milliseconds = 20;
    std::optional<WaitEnd> end;
    QElapsedTimer time;
    time.start();
    QVERIFY(endsOnAThread(usesGlib, [&] {
        BoundedWait wait(milliseconds);
        QTimer::singleShot(0, [&] {
            if (isLeft)
                wait.end(WaitEnd::Answered);
            QTest::qWait(3 * milliseconds);
        });
        end = wait.exec();
    }));
    QVERIFY(end);
    QTEST(*end, "end");
    QVERIFY(time.elapsed() >= milliseconds);
}

void TestBoundedWait::aThreadThatQuitsDoesNotWait()
{
    std::optional<WaitEnd> end;
    QVERIFY(endsOnAThread(true, [&end] {
        QThread::currentThread()->quit();
        end = BoundedWait(10 * hangMs).exec();
    }));
    QVERIFY(end == WaitEnd::Quit);
}

NIMBRELLE_TEST_MAIN(TestBoundedWait)
#include "TestBoundedWait.moc"
