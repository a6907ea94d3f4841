// SPDX-License-Identifier: MIT
#include "waiting/Mailbox.h"

#include "support/TestMain.h"

#include <QList>
#include <QThread>

class TestMailbox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneEventBringsWhatHasCome();
    void aLoopOfTheReceiverIsServedInOrder();
    void aReceiverMayEndItself();
    void keepsTheOrderOfAnotherThread();
};

namespace {

struct Numbers : QList<int> {
    using QList<int>::append;
    void append(Numbers &&others) { QList<int>::append(others); }
};

/// A receiver, and the events that have woken it.
struct Receiver : QObject {
    Mailbox<Numbers> mailbox{[this] {
        ++wakes;
        QMetaObject::invokeMethod(
            this, [this] { mailbox.deliver([this](int number) { return take(number); }); }, Qt::QueuedConnection);
    }};
    std::function<bool(int)> take = [this](int number) {
        taken.append(number);
        return true;
    };
    QList<int> taken;
    std::atomic<int> wakes{0};
};

} // namespace

void TestMailbox::oneEventBringsWhatHasCome()
{
    Receiver receiver;
    receiver.mailbox.put(1);
    receiver.mailbox.put(2);
    QCOMPARE(int(receiver.wakes), 1);
    QVERIFY(receiver.taken.isEmpty());
    QTRY_COMPARE(receiver.taken, QList<int>({1, 2}));
    receiver.mailbox.put(3); // after a delivery it has to be woken again
    QTRY_COMPARE(receiver.taken, QList<int>({1, 2, 3}));
}

void TestMailbox::aLoopOfTheReceiverIsServedInOrder()
{
    Receiver receiver;
    bool isServed = false;
    receiver.take = [&](int number) {
        receiver.taken.append(number);
        if (number == 1) {
            receiver.mailbox.put(4); // behind those that it was woken for
            isServed = QTest::qWaitFor([&] { return receiver.taken.size() == 4; });
        }
        return true;
    };
    for (const int number : {1, 2, 3})
        receiver.mailbox.put(number);
    QTRY_VERIFY(!receiver.taken.isEmpty());
    QVERIFY(isServed);
    QCoreApplication::processEvents();
    QCOMPARE(receiver.taken, QList<int>({1, 2, 3, 4}));
}

void TestMailbox::aReceiverMayEndItself()
{
    auto *const receiver = new Receiver;
    int taken = 0;
    receiver->take = [&taken, receiver](int) {
        int &count = taken; // what has been captured goes with the receiver
        delete receiver;
        ++count;
        return false;
    };
    receiver->mailbox.put(1);
    receiver->mailbox.put(2);
    QTRY_COMPARE(taken, 1);
    QCoreApplication::processEvents();
    QCOMPARE(taken, 1);
}

void TestMailbox::keepsTheOrderOfAnotherThread()
{
    constexpr int count = 100000;
    Receiver receiver;
    const std::unique_ptr<QThread> sender(QThread::create([&] {
        for (int i = 0; i < count; ++i)
            receiver.mailbox.put(i);
    }));
    sender->start();
    QTRY_COMPARE_WITH_TIMEOUT(receiver.taken.size(), count, 20000);
    sender->wait();
    for (int i = 0; i < count; ++i)
        QCOMPARE(receiver.taken.at(i), i);
}

NIMBRELLE_TEST_MAIN(TestMailbox)
#include "TestMailbox.moc"
