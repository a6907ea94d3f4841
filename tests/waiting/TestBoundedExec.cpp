#include "support/TestMain.h"
#include "waiting/BoundedExec.h"

#include <QElapsedTimer>
#include <QEventLoop>
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

} // namespace

class TestBoundedExec : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyWaitEnds_data();
    void everyWaitEnds();
    void whatCameInTimeDecides();
    void aThreadThatQuitsDoesNotWait();
};

void TestBoundedExec::everyWaitEnds_data()
{
    QTest::addColumn<bool>("usesGlib");
    QTest::addColumn<bool>("isLeft");
    QTest::addColumn<int>("code");
    QTest::newRow("GLib, time is up") << true << false << timeIsUp;
    QTest::newRow("GLib, left") << true << true << 7;
    QTest::newRow("Qt, time is up") << false << false << timeIsUp;
    QTest::newRow("Qt, left") << false << true << 7;
}

/// A slot runs a loop of its own until the time has passed, and beyond; be it that it has left the wait before.
void TestBoundedExec::everyWaitEnds()
{
    QFETCH(bool, usesGlib);
    QFETCH(bool, isLeft);
    constexpr int milliseconds = 50;
    int code = -2;
    QVERIFY(endsOnAThread(usesGlib, [&] {
        QEventLoop loop;
        QTimer::singleShot(0, &loop, [&] {
            if (isLeft)
                loop.exit(7);
            QTest::qWait(5 * milliseconds);
        });
        code = execBounded(loop, milliseconds);
    }));
    QTEST(code, "code");
}

void TestBoundedExec::whatCameInTimeDecides()
{
    QEventLoop loop;
    QTimer::singleShot(0, &loop, [&loop] {
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
        QThread::msleep(50); // the time ends before the thread looks at the word
    });
    QCOMPARE(execBounded(loop, 1), 0);
}

void TestBoundedExec::aThreadThatQuitsDoesNotWait()
{
    QElapsedTimer clock;
    clock.start();
    QVERIFY(endsOnAThread(true, [] {
        QThread::currentThread()->quit();
        QEventLoop loop;
        QCOMPARE(execBounded(loop, 10 * hangMs), -1);
    }));
    QVERIFY(clock.elapsed() < hangMs);
}

NIMBRELLE_TEST_MAIN(TestBoundedExec)
#include "TestBoundedExec.moc"
