// SPDX-License-Identifier: MIT
#include "public/SignalRelay.h"

#include "VekInstrumentHandler.h"
#include "support/TestMain.h"

#include <QThread>

class TestSignalRelay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsTheOrderOfDifferentSignals();
    void servesALoopInASlot();
    void tellsAtOnceOnItsOwnThread();
    void theHandlerMayGoInASlot();
    void leadsNowhereOnceTheHandlerHasGone();
};

/// Tells as a private half does, from whatever thread tell() is called on.
class Teller : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void sample(unsigned char channel, const VekDCData &data);
    void paused(unsigned char channel);

public:
    /// Samples at 0 and 1 s, a pause, and one at 2 s; from another thread.
    void tellFromElsewhere()
    {
        const std::unique_ptr<QThread> thread(QThread::create([this] { tell(); }));
        thread->start();
        thread->wait();
    }
    void tell()
    {
        Q_EMIT sample(3, {0.0});
        Q_EMIT sample(3, {1.0});
        Q_EMIT paused(3);
        Q_EMIT sample(3, {2.0});
    }
};

namespace {

const QStringList allInOrder{"0", "1", "pause", "2"};

struct Told {
    Told()
    {
        auto *const relay = new SignalRelay(*handler);
        relay->connectTo(&teller, &Teller::sample, &VekInstrumentHandler::activeDCDataReady);
        relay->connectTo(&teller, &Teller::paused, &VekInstrumentHandler::experimentPaused);
        QObject::connect(
            handler.get(), &VekInstrumentHandler::activeDCDataReady,
            [this](unsigned char channel, const VekDCData &data) { note(channel, QString::number(data.timestamp)); });
        QObject::connect(handler.get(), &VekInstrumentHandler::experimentPaused,
                         [this](unsigned char channel) { note(channel, QStringLiteral("pause")); });
    }
    void note(unsigned char channel, const QString &what)
    {
        QCOMPARE(channel, 3);
        heard.append(what);
        if (heard.size() == 1)
            atTheFirst();
    }

    Teller teller;
    std::unique_ptr<VekInstrumentHandler> handler = std::make_unique<VekInstrumentHandler>(nullptr);
    QStringList heard;
    std::function<void()> atTheFirst = [] {};
};

} // namespace

void TestSignalRelay::keepsTheOrderOfDifferentSignals()
{
    Told told;
    told.teller.tellFromElsewhere();
    QVERIFY(told.heard.isEmpty()); // it comes by an event
    QTRY_COMPARE(told.heard, allInOrder);
    told.teller.tellFromElsewhere();
    QTRY_COMPARE(told.heard, allInOrder + allInOrder);
}

void TestSignalRelay::servesALoopInASlot()
{
    Told told;
    bool isServed = false;
    told.atTheFirst = [&] { isServed = QTest::qWaitFor([&] { return told.heard == allInOrder; }); };
    told.teller.tellFromElsewhere();
    QTRY_VERIFY(isServed);
    QCoreApplication::processEvents();
    QCOMPARE(told.heard, allInOrder);
}

void TestSignalRelay::tellsAtOnceOnItsOwnThread()
{
    Told told;
    told.teller.tell();
    QCOMPARE(told.heard, allInOrder);
}

void TestSignalRelay::theHandlerMayGoInASlot()
{
    Told told;
    told.atTheFirst = [&] { told.handler.reset(); };
    told.teller.tellFromElsewhere();
    QTRY_COMPARE(told.heard.size(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(told.heard.size(), 1);
}

void TestSignalRelay::leadsNowhereOnceTheHandlerHasGone()
{
    Told told;
    told.teller.tellFromElsewhere();
    told.handler.reset(); // with four things under way
    told.teller.tellFromElsewhere();
    told.teller.tell();
    QCoreApplication::processEvents();
    QVERIFY(told.heard.isEmpty());
}

NIMBRELLE_TEST_MAIN(TestSignalRelay)
#include "TestSignalRelay.moc"
