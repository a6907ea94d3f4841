// SPDX-License-Identifier: MIT
#include "link/SerialCommunicator.h"

#include "link/SerialThread.h"
#include "support/FakeInstrument.h"
#include "support/ProcessFigures.h"
#include "support/TestMain.h"

#include <ctime>
#include <thread>

class TestLink : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void carriesCommandsAndPackets();
    void deliversAPacketThatArrivesInPieces();
    void dropsWhatIsSentWhileClosed();
    void throwsStaleInputAway();
    void reopensAfterStop();
    void aPortThatDoesNotExistIsReportedAsLost();
    void pulledCableIsReportedOnceAndBurnsNoTime();
    void aRepeatedPortErrorIsOneLoss();
    void aLostLinkStaysDead();
    void aLinkThatIsHungUpFreesThePort();
    void whatWasSentBeforeHangingUpGoesOut();
    void waitForBytesSentReturnsWhenAllHasLeft();
    void whatWasReadBeforeTheLossHasLeft();
    void waitForBytesSentIsBoundedWhenNobodyReads();
    void waitForBytesSentFromAnotherThreadWhileDataStreamIn();
    void aSlowReceiverHoldsTheLinkBackAndLosesNothing();
    void canBeDestroyedInAnySlot();
};

namespace {

struct Link {
    explicit Link(const QString &port) : communicator(port) {}
    SerialCommunicator communicator;
    QSignalSpy packets{&communicator, &SerialCommunicator::ResponseReceived};
    QSignalSpy losses{&communicator, &SerialCommunicator::deviceDisconnected};
};

double processorSeconds()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}

} // namespace

void TestLink::carriesCommandsAndPackets()
{
    FakeInstrument instrument;
    Link link(instrument.portName());
    QVERIFY(link.communicator.Start(true));
    instrument.reply(PC_PING, NT_PING_REPLY, "hello");
    link.communicator.SendCommand(PC_PING, 3, "abc");
    QTRY_COMPARE(link.packets.size(), 1);
    QCOMPARE(instrument.commands().at(0).channel, quint8(3));
    QCOMPARE(instrument.commands().at(0).payload, QByteArray("abc"));
    QCOMPARE(link.packets.at(0).at(0).value<Notifications_t>(), NT_PING_REPLY);
    QCOMPARE(link.packets.at(0).at(1).toUInt(), 3u);
    QCOMPARE(link.packets.at(0).at(2).toByteArray(), QByteArray("hello"));
    QCOMPARE(link.losses.size(), 0); // a pseudo-terminal has no DTR line: that is no loss
}

void TestLink::deliversAPacketThatArrivesInPieces()
{
    FakeInstrument instrument;
    Link link(instrument.portName());
    QVERIFY(link.communicator.Start(true));
    const QByteArray frame = makeFrame(66, 1, "0123456789");
    for (const char byte : frame) {
        instrument.sendRaw(QByteArray(1, byte));
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(link.packets.size(), 1);
    QCOMPARE(link.packets.at(0).at(2).toByteArray(), QByteArray("0123456789"));
}

void TestLink::dropsWhatIsSentWhileClosed()
{
    FakeInstrument instrument;
    Link link(instrument.portName());
    link.communicator.SendCommand(PC_PING);
    QVERIFY(!link.communicator.WaitForBytesSent());
    QVERIFY(link.communicator.Start(true));
    link.communicator.SendCommand(PC_READ_CHANNEL_COUNT);
    QTRY_COMPARE(instrument.commands().size(), 1);
    QCOMPARE(instrument.commands().at(0).command, PC_READ_CHANNEL_COUNT);
}

void TestLink::throwsStaleInputAway()
{
    FakeInstrument instrument;
    instrument.send(NT_DC_DATA, 0, "stale");
    Link link(instrument.portName());
    QVERIFY(link.communicator.Start(true));
    instrument.send(NT_DC_DATA, 0, "fresh");
    QTRY_COMPARE(link.packets.size(), 1);
    QCOMPARE(link.packets.at(0).at(2).toByteArray(), QByteArray("fresh"));
}

void TestLink::reopensAfterStop()
{
    FakeInstrument instrument;
    Link link(instrument.portName());
    for (int round = 1; round <= 2; ++round) {
        QVERIFY(link.communicator.Start(true));
        link.communicator.SendCommand(PC_PING);
        QTRY_COMPARE(instrument.count(PC_PING), round);
        link.communicator.Stop();
    }
}

void TestLink::aPortThatDoesNotExistIsReportedAsLost()
{
    Link link(QStringLiteral("/dev/no-such-port"));
    QVERIFY(link.communicator.Start(true));
    QTRY_COMPARE(link.losses.size(), 1);
}

void TestLink::pulledCableIsReportedOnceAndBurnsNoTime()
{
    FakeInstrument instrument;
    Link link(instrument.portName());
    QVERIFY(link.communicator.Start(true));
    instrument.unplug();
    QTRY_COMPARE(link.losses.size(), 1);
    const double before = processorSeconds();
    QVERIFY(!link.losses.wait(300));
    QVERIFY(processorSeconds() - before < 0.1);
}

/// Qt repeats the read error of a device that has vanished, and some of the repetitions may be queued already.
void TestLink::aRepeatedPortErrorIsOneLoss()
{
    PseudoTerminal terminal;
    SerialThread thread(terminal.portName());
    QSignalSpy losses(&thread, &SerialThread::deviceDisconnected);
    const auto report = [&thread](QSerialPort::SerialPortError error) {
        thread.post([&] {
            QMetaObject::invokeMethod(
                &thread, [&thread, error] { thread.ErrorOnSerial(error); }, Qt::QueuedConnection);
        });
    };
    QMetaObject::invokeMethod(&thread, &SerialThread::OpenPort, Qt::QueuedConnection);
    report(QSerialPort::NoError);
    for (int i = 0; i < 10; ++i)
        report(QSerialPort::ResourceError);
    thread.start();
    QVERIFY(thread.wait(5000));
    QCOMPARE(losses.size(), 1);
}

void TestLink::aLostLinkStaysDead()
{
    FakeInstrument instrument;
    Link link(instrument.portName());
    QVERIFY(link.communicator.Start(true));
    instrument.unplug();
    QTRY_COMPARE(link.losses.size(), 1);
    link.communicator.SendCommand(PC_PING);
    QVERIFY(!link.communicator.WaitForBytesSent());
    QTRY_VERIFY(!link.communicator.Start(true));
    QCOMPARE(link.losses.size(), 1);
}

void TestLink::aLinkThatIsHungUpFreesThePort()
{
    FakeInstrument instrument;
    Link link(instrument.portName());
    QVERIFY(link.communicator.Start(true));
    const int openings = ProcessFigures::openings(instrument.portName()); // the terminal's own too
    link.communicator.hangUp();
    QCOMPARE(ProcessFigures::openings(instrument.portName()), openings - 1);
    QCOMPARE(link.losses.size(), 0); // by the event loop alone
    QTRY_COMPARE(link.losses.size(), 1);
    QVERIFY(link.communicator.isLost());
    link.communicator.hangUp();
    QVERIFY(!link.losses.wait(100));

    Link next(instrument.portName());
    QVERIFY(next.communicator.Start(true));
    next.communicator.SendCommand(PC_PING);
    QTRY_COMPARE(instrument.count(PC_PING), 1);
}

/// More than the driver takes at once.
void TestLink::whatWasSentBeforeHangingUpGoesOut()
{
    constexpr int frames = 150;
    FakeInstrument instrument;
    Link link(instrument.portName());
    QVERIFY(link.communicator.Start(true));
    std::thread caller([&link] {
        for (int i = 0; i < frames; ++i)
            link.communicator.SendCommand(PC_NODE_APPEND, 0, QByteArray(1000, char(i)));
        link.communicator.hangUp();
    });
    const bool haveAllCome = QTest::qWaitFor([&] { return instrument.count(PC_NODE_APPEND) == frames; });
    caller.join();
    QVERIFY2(haveAllCome, qPrintable(QString::number(instrument.count(PC_NODE_APPEND))));
}

void TestLink::waitForBytesSentReturnsWhenAllHasLeft()
{
    FakeInstrument instrument;
    Link link(instrument.portName());
    QVERIFY(link.communicator.Start(true));
    for (int i = 0; i < 50; ++i)
        link.communicator.SendCommand(PC_NODE_APPEND, 0, QByteArray(64, char(i)));
    QElapsedTimer time;
    time.start();
    QVERIFY(link.communicator.WaitForBytesSent());
    QVERIFY(time.elapsed() < 900);
    QTRY_COMPARE(instrument.count(PC_NODE_APPEND), 50);
}

// As an instrument does that restarts: it reads the command, and is gone before the link can tell.
void TestLink::whatWasReadBeforeTheLossHasLeft()
{
    FakeInstrument instrument;
    Link link(instrument.portName());
    QVERIFY(link.communicator.Start(true));
    instrument.on(PC_SOFT_RESET, [&](const FakeInstrument::Command &) { instrument.unplug(); });
    link.communicator.SendCommand(PC_SOFT_RESET);
    QTRY_COMPARE(link.losses.size(), 1);
    QVERIFY(link.communicator.WaitForBytesSent());
    link.communicator.SendCommand(PC_PING); // too late
    QVERIFY(!link.communicator.WaitForBytesSent());
}

void TestLink::waitForBytesSentIsBoundedWhenNobodyReads()
{
    PseudoTerminal terminal; // this test runs no event loop during the wait, so nobody reads
    SteppedClock clock;
    SerialCommunicator communicator(terminal.portName(), nullptr, clock);
    QVERIFY(communicator.Start(true));
    communicator.SendCommand(PC_NODE_APPEND, 0, QByteArray(60000, 'x'));
    const std::unique_ptr<QThread> stepper(QThread::create([&clock] {
        while (!clock.wakeNext())
            QThread::usleep(100);
    }));
    stepper->start();
    QVERIFY(!communicator.WaitForBytesSent());
    QVERIFY(stepper->wait());
    QCOMPARE(clock.now(), 1000);
    terminal.unplug(); // or the kernel holds the close for the bytes that nobody takes
}

void TestLink::waitForBytesSentFromAnotherThreadWhileDataStreamIn()
{
    FakeInstrument instrument;
    Link link(instrument.portName());
    QVERIFY(link.communicator.Start(true));
    instrument.on(PC_PING, [&](const FakeInstrument::Command &) {
        for (int i = 0; i < 20; ++i)
            instrument.send(NT_DC_DATA, 0, QByteArray(44, 'd'));
    });
    std::thread caller([&] {
        for (int i = 0; i < 100; ++i) {
            link.communicator.SendCommand(PC_PING);
            link.communicator.WaitForBytesSent();
        }
    });
    QTRY_COMPARE_WITH_TIMEOUT(link.packets.size(), 2000, 20000);
    caller.join();
    QCOMPARE(link.losses.size(), 0);
}

void TestLink::aSlowReceiverHoldsTheLinkBackAndLosesNothing()
{
    constexpr int sent = 1400000;
    constexpr qint64 bound = 12000000;
    constexpr qint64 oneRead = 65536 + 10; // what a read may bring beyond the bound, and the rest of a frame before it
    FakeInstrument instrument;
    SerialCommunicator communicator(instrument.portName());
    communicator.letReceiverTakePackets();
    int received = 0;
    int outOfOrder = 0;
    const auto take = [&](const Frame &packet) {
        if (packet.payload != QByteArray(reinterpret_cast<const char *>(&received), sizeof received))
            ++outOfOrder;
        ++received;
        return true;
    };
    connect(
        &communicator, &SerialCommunicator::packetsWaiting, this, [&] { communicator.packets().deliver(take); },
        Qt::QueuedConnection);
    const auto bytesReceived = [&] { return 10 * qint64(received); };
    QVERIFY(communicator.Start(true));
    QByteArray stream;
    for (int i = 0; i < sent; ++i)
        stream += makeFrame(NT_DC_DATA, 0, QByteArray(reinterpret_cast<const char *>(&i), sizeof i));
    instrument.sendRaw(stream);
    QTRY_VERIFY_WITH_TIMEOUT(bytesReceived() >= bound, 20000);
    QVERIFY(!QTest::qWaitFor([&] { return bytesReceived() > bound + oneRead; }, 200));
    communicator.packetsHandled(bytesReceived());
    QTRY_COMPARE_WITH_TIMEOUT(received, sent, 20000);
    QCOMPARE(outOfOrder, 0);
}

void TestLink::canBeDestroyedInAnySlot()
{
    FakeInstrument instrument;
    auto *onPacket = new SerialCommunicator(instrument.portName());
    QPointer<SerialCommunicator> alive(onPacket);
    connect(onPacket, &SerialCommunicator::ResponseReceived, onPacket, [onPacket] { onPacket->deleteLater(); });
    QVERIFY(onPacket->Start(true));
    instrument.send(NT_PING_REPLY, 0);
    QTRY_VERIFY(alive.isNull());

    auto *onLoss = new SerialCommunicator(instrument.portName());
    alive = onLoss;
    connect(onLoss, &SerialCommunicator::deviceDisconnected, onLoss, [onLoss] { delete onLoss; });
    QVERIFY(onLoss->Start(true));
    instrument.unplug();
    QTRY_VERIFY(alive.isNull());
}

NIMBRELLE_TEST_MAIN(TestLink)
#include "TestLink.moc"
