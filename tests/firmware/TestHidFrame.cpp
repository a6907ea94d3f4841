// SPDX-License-Identifier: MIT
#include "firmware/HidFrame.h"
#include "support/TestMain.h"

class TestHidFrame : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bodyIsWrapped_data();
    void bodyIsWrapped();
    void framesComeBackTheSame_data();
    void framesComeBackTheSame();
    void longFrameIsCutIntoReports();
    void damagedFrameIsDropped();
    void bytesBehindAFrameWaitForTheNext();
};

void TestHidFrame::bodyIsWrapped_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("frame");
    // CRC-16/XMODEM of a single byte n below 16 is n times 0x1021.
    QTest::newRow("plain") << QByteArray::fromHex("02") << QByteArray::fromHex("01 02 42 20 04");
    QTest::newRow("escaped body") << QByteArray::fromHex("04") << QByteArray::fromHex("01 1004 84 40 04");
    QTest::newRow("escaped CRC") << QByteArray::fromHex("01") << QByteArray::fromHex("01 1001 21 1010 04");
}

void TestHidFrame::bodyIsWrapped()
{
    QFETCH(QByteArray, body);
    QTEST(HidFrame::make(body), "frame");
}

void TestHidFrame::framesComeBackTheSame_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("every special byte") << QByteArray::fromHex("0301041010040101");
    QTest::newRow("zeros") << QByteArray(300, '\0');
    QByteArray allBytes;
    for (int byte = 0; byte < 256; ++byte)
        allBytes.append(char(byte));
    QTest::newRow("every byte") << allBytes;
}

void TestHidFrame::framesComeBackTheSame()
{
    QFETCH(QByteArray, body);
    QByteArray received = "what came before";
    QCOMPARE(HidFrame::takeBodies(HidFrame::make(body), received), QList<QByteArray>{body});
}

void TestHidFrame::longFrameIsCutIntoReports()
{
    const QByteArray frame(130, 'x');
    const QList<QByteArray> reports = HidFrame::reportsOf(frame);
    QCOMPARE(reports.size(), 3);
    for (const QByteArray &report : reports) {
        QCOMPARE(report.size(), 65);
        QCOMPARE(report.at(0), '\0');
    }
    QCOMPARE(reports.at(2).mid(1), QByteArray("xx") + QByteArray(62, '\xFF'));
    QCOMPARE(HidFrame::reportsOf(QByteArray(64, 'x')).size(), 1);
}

void TestHidFrame::damagedFrameIsDropped()
{
    QByteArray received;
    QByteArray damaged = HidFrame::make("\x02");
    damaged[2] = damaged[2] ^ 0x08;
    QVERIFY(HidFrame::takeBodies(damaged, received).isEmpty());
    QVERIFY(HidFrame::takeBodies(QByteArray::fromHex("010204"), received).isEmpty());   // too short for a CRC
    QVERIFY(HidFrame::takeBodies(QByteArray::fromHex("01000004"), received).isEmpty()); // a CRC without a body
    QCOMPARE(HidFrame::takeBodies(damaged + HidFrame::make("\x03"), received), QList<QByteArray>{"\x03"});
}

void TestHidFrame::bytesBehindAFrameWaitForTheNext()
{
    QByteArray received;
    const QByteArray report = HidFrame::make("\x02") + QByteArray(50, '\xFF');
    for (int poll = 0; poll < 3; ++poll)
        QCOMPARE(HidFrame::takeBodies(report, received), QList<QByteArray>{"\x02"});
    // An escape does not reach over to the next poll.
    HidFrame::takeBodies(QByteArray::fromHex("10"), received);
    QCOMPARE(HidFrame::takeBodies(HidFrame::make("\x02"), received), QList<QByteArray>{"\x02"});
}

NIMBRELLE_TEST_MAIN(TestHidFrame)
#include "TestHidFrame.moc"
