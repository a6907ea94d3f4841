// SPDX-License-Identifier: MIT
#include "link/Frame.h"

#include "benchmarks/reference/PlainFrames.h"
#include "support/TestMain.h"

#include <random>

class TestFrame : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsFrames_data();
    void cutsFrames();
    void givesTheSamePacketsForEveryChunking();
    void cutsAsThePlainParserDoes_data();
    void cutsAsThePlainParserDoes();
    void widensTypeSignedAndChannelUnsigned();
    void makesFrames_data();
    void makesFrames();
};

static QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

void TestFrame::cutsFrames_data()
{
    QTest::addColumn<QByteArray>("wire");
    QTest::addColumn<QList<QByteArray>>("payloads");
    QTest::addColumn<quint32>("skipped");
    QTest::addColumn<QByteArray>("tail");

    const QByteArray ack = hex("eeff 41 03 0000");
    const QByteArray data = hex("eeff 42 00 0300 010203");
    const QList<QByteArray> one{QByteArray()};
    QTest::newRow("nothing") << QByteArray() << QList<QByteArray>() << 0u << QByteArray();
    QTest::newRow("empty payload") << ack << one << 0u << QByteArray();
    QTest::newRow("two in one arrival") << ack + data << QList<QByteArray>{QByteArray(), hex("010203")} << 0u
                                        << QByteArray();
    QTest::newRow("header cut short") << ack.left(5) << QList<QByteArray>() << 0u << ack.left(5);
    QTest::newRow("payload cut short") << data.left(8) << QList<QByteArray>() << 0u << data.left(8);
    QTest::newRow("garbage ahead") << hex("0102030405") + ack << one << 5u << QByteArray();
    QTest::newRow("stray EE ahead") << hex("ee") + ack << one << 1u << QByteArray();
    QTest::newRow("garbage that ends in EE") << hex("00112233ee") + ack << one << 5u << QByteArray();
    QTest::newRow("magic with swapped bytes")
        << hex("ffee410000") + hex("00") << QList<QByteArray>() << 1u << hex("ee41000000");
    QTest::newRow("false magic waits for what it promises")
        << hex("eeff 01 00 ffff") + ack << QList<QByteArray>() << 0u << hex("eeff 01 00 ffff") + ack;
}

void TestFrame::cutsFrames()
{
    QFETCH(QByteArray, wire);
    QFETCH(QList<QByteArray>, payloads);
    QFETCH(quint32, skipped);
    QFETCH(QByteArray, tail);

    quint32 count = 0;
    const QVector<Frame> frames = takeFrames(wire, count);
    QCOMPARE(frames.size(), payloads.size());
    for (int i = 0; i < frames.size(); ++i)
        QCOMPARE(frames.at(i).payload, payloads.at(i));
    QCOMPARE(count, skipped);
    QCOMPARE(wire, tail);
}

void TestFrame::givesTheSamePacketsForEveryChunking()
{
    const QByteArray payload(300, '\xEE'); // a payload full of half magics
    const QByteArray wire =
        hex("00ee") + makeFrame(66, 1, payload) + makeFrame(65, 0) + hex("ff") + makeFrame(74, 7, "x");
    for (int chunk = 1; chunk <= wire.size(); ++chunk) {
        QByteArray buffer;
        quint32 skipped = 0;
        QVector<Frame> frames;
        for (int at = 0; at < wire.size(); at += chunk) {
            buffer += wire.mid(at, chunk);
            frames += takeFrames(buffer, skipped);
        }
        QCOMPARE(frames.size(), 3);
        QCOMPARE(frames.at(0).payload, payload);
        QCOMPARE(frames.at(2).channel, 7u);
        QCOMPARE(skipped, 3u);
        QVERIFY(buffer.isEmpty());
    }
}

/// Halves and wholes of a magic, lengths from nothing to more than comes, and anything else, at every alignment.
static QByteArray damagedStream(unsigned seed)
{
    std::mt19937 random(seed);
    QByteArray bytes;
    while (bytes.size() < 20000) {
        const QByteArray any(int(random() % 200), char(random()));
        switch (random() % 6) {
        case 0:
            bytes += any;
            break;
        case 1:
            bytes += QByteArray(int(random() % 80), '\xEE');
            break;
        case 2:
            bytes += QByteArray(int(random() % 80), '\xFF');
            break;
        case 3:
            bytes += hex("eeff") + any.left(2) + char(random() % 100) + '\0';
            break;
        default:
            bytes += makeFrame(quint8(random()), quint8(random()), any);
            break;
        }
    }
    return bytes;
}

/// The frames as they would be sent.
static QList<QByteArray> wireOf(const QVector<Frame> &frames)
{
    QList<QByteArray> wire;
    for (const Frame &frame : frames)
        wire += makeFrame(quint8(frame.type), quint8(frame.channel), frame.payload);
    return wire;
}

static QList<QByteArray> wireOf(const std::vector<PlainFrame> &frames)
{
    QList<QByteArray> wire;
    for (const PlainFrame &frame : frames) {
        const auto *payload = reinterpret_cast<const char *>(frame.payload.data());
        wire += makeFrame(quint8(frame.type), frame.channel, QByteArray(payload, int(frame.payload.size())));
    }
    return wire;
}

void TestFrame::cutsAsThePlainParserDoes_data()
{
    QTest::addColumn<int>("longestPiece");
    QTest::newRow("byte by byte") << 1;
    QTest::newRow("a few bytes") << 12;
    QTest::newRow("as a port delivers") << 512;
    QTest::newRow("all at once") << 20000;
}

void TestFrame::cutsAsThePlainParserDoes()
{
    QFETCH(const int, longestPiece);
    std::mt19937 random(1);
    for (unsigned seed = 0; seed < 20; ++seed) {
        QByteArray buffer, plainBuffer;
        quint32 skipped = 0, plainSkipped = 0;
        for (QByteArray stream = damagedStream(seed); !stream.isEmpty();) {
            const QByteArray piece = stream.left(1 + int(random() % unsigned(longestPiece)));
            stream.remove(0, piece.size());
            buffer += piece;
            plainBuffer += piece;
            QCOMPARE(wireOf(takeFrames(buffer, skipped)), wireOf(plainFrames(plainBuffer, plainSkipped)));
            QCOMPARE(skipped, plainSkipped);
            QCOMPARE(buffer, plainBuffer);
        }
    }
}

void TestFrame::widensTypeSignedAndChannelUnsigned()
{
    QByteArray wire = hex("eeff ff ff 0000");
    quint32 skipped = 0;
    const QVector<Frame> frames = takeFrames(wire, skipped);
    QCOMPARE(int(frames.at(0).type), -1);
    QCOMPARE(frames.at(0).channel, 255u);
}

void TestFrame::makesFrames_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QByteArray>("wire");
    QTest::newRow("no payload") << QByteArray() << hex("eeff 58 ff 0000");
    QTest::newRow("payload") << hex("aabb") << hex("eeff 58 ff 0200 aabb");
    QTest::newRow("length needs both bytes")
        << QByteArray(0x0201, 'x') << hex("eeff 58 ff 0102") + QByteArray(0x0201, 'x');
}

void TestFrame::makesFrames()
{
    QFETCH(QByteArray, payload);
    QTEST(makeFrame(PC_SOFT_RESET, allChannels, payload), "wire");
}

NIMBRELLE_TEST_MAIN(TestFrame)
#include "TestFrame.moc"
