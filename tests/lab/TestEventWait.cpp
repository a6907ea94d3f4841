// SPDX-License-Identifier: MIT
#include "VekInstrumentHandler.h"
#include "lab/runs/EventWait.h"
#include "lab/runs/StopChannel.h"

#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QThread>
#include <QTimer>

#include <memory>

using namespace lab;

namespace {

constexpr int hangMs = 20000; // a wait that has not ended by then never will

} // namespace

class TestEventWait : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsWhoeverEndsIt_data();
    void endsWhoeverEndsIt();
    void anEndBeforeTheWaitCounts();
    void anEndOfAnotherChannelConfirmsNothing();
};

void TestEventWait::endsWhoeverEndsIt_data()
{
    QTest::addColumn<bool>("usesGlib");
    QTest::addColumn<bool>("isEnded");
    QTest::newRow("GLib, ended") << true << true;
    QTest::newRow("GLib, time is up") << true << false;
    QTest::newRow("Qt, ended") << false << true;
    QTest::newRow("Qt, time is up") << false << false;
}

/// A slot goes on into a loop of its own, be it that it has ended the wait before; no other event comes.
void TestEventWait::endsWhoeverEndsIt()
{
    QFETCH(bool, usesGlib);
    QFETCH(bool, isEnded);
    usesGlib ? qunsetenv("QT_NO_GLIB") : qputenv("QT_NO_GLIB", "1"); // looked at when the thread begins
    bool hasEnded = !isEnded;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        EventWait wait;
        QTimer::singleShot(0, &wait, [&] {
            if (isEnded)
                wait.end();
            QTest::qWait(50);
        });
        hasEnded = wait.exec(isEnded ? EventWait::untilTheEnd : 10);
    }));
    thread->start();
    const bool isOver = thread->wait(hangMs);
    thread->quit();
    thread->wait();
    QVERIFY(isOver);
    QCOMPARE(hasEnded, isEnded);
}

void TestEventWait::anEndBeforeTheWaitCounts()
{
    EventWait wait;
    wait.end();
    QElapsedTimer clock;
    clock.start();
    QVERIFY(wait.exec(hangMs));
    QVERIFY(clock.elapsed() < hangMs);
}

/// Two channels drive; that one of them ends says nothing of the cell on the other.
void TestEventWait::anEndOfAnotherChannelConfirmsNothing()
{
    VekInstrumentHandler handler(nullptr);
    const StopResults results = collectEnds(handler, {1, 2}, [&handler] {
        QTimer::singleShot(0, &handler, [&] { Q_EMIT handler.experimentStopped(0, "its own"); });
        QTimer::singleShot(50, &handler, [&] { Q_EMIT handler.experimentStopped(2, "by user"); });
        QTimer::singleShot(100, &handler, [&] { Q_EMIT handler.experimentStopped(1, "by user"); });
        return true;
    });
    QVERIFY(results.isConfirmed(1) && results.isConfirmed(2));
    const StopResults others = collectEnds(handler, {1}, [&handler] {
        QTimer::singleShot(0, &handler, [&] { Q_EMIT handler.experimentStopped(0, "its own"); });
        QTimer::singleShot(50, &handler, [&] { Q_EMIT handler.deviceDisconnected(); });
        return true;
    });
    QVERIFY(!others.isConfirmed(1) && others.isLinkLost);
    QVERIFY(collectEnds(handler, {1}, [] { return false; }).isLinkLost); // at once
    QVERIFY(!stopChannel(handler, 1));                                   // without a device
}

NIMBRELLE_TEST_MAIN(TestEventWait)
#include "TestEventWait.moc"
