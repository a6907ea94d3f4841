// SPDX-License-Identifier: MIT
#include "nimbrellelibrary/Histogram.h"
#include "nimbrellelibrary/NimbrelleLib.h"
#include "support/TestMain.h"

class TestHistogram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void codesAreCountedInAscendingOrder();
    void samplesAreCountedApart();
    void captureHoldsTwoSignals_data();
    void captureHoldsTwoSignals();
};

void TestHistogram::codesAreCountedInAscendingOrder()
{
    Histogram histogram;
    QCOMPARE(histogram.getTotalCount(), QString());
    QCOMPARE(histogram.getNumEntries(), 0u);
    const short samples[] = {32767, -1, 5, -1, -32768};
    histogram.append(samples, 3);
    histogram.append(samples + 3, 2);
    QCOMPARE(histogram.getTotalCount(), QString("-32768,1,-1,2,5,1,32767,1,"));
    QCOMPARE(histogram.getNumEntries(), 4u);
    QCOMPARE(histogram.getRange(), 65535u);
}

void TestHistogram::samplesAreCountedApart()
{
    Histogram histogram;
    const short sample = 7;
    histogram.append(&sample, 1);
    QCOMPARE(histogram.CountNumbers({3, 3}), QString("3,2,"));
    QCOMPARE(histogram.getTotalCount(), QString("7,1,"));
}

void TestHistogram::captureHoldsTwoSignals_data()
{
    QTest::addColumn<QByteArray>("capture");
    QTest::addColumn<QStringList>("counts");
    const QByteArray first = QByteArray::fromHex("ff00").repeated(1024);  // 255
    const QByteArray second = QByteArray::fromHex("00ff").repeated(1024); // -256
    const QByteArray block = first + second;
    QTest::newRow("nothing") << QByteArray() << QStringList({"", ""});
    QTest::newRow("partial block") << block.left(4095) << QStringList({"", ""});
    QTest::newRow("one block") << block << QStringList({"255,1024,", "-256,1024,"});
    QTest::newRow("two and a part") << block + second + first + first
                                    << QStringList({"-256,1024,255,1024,", "-256,1024,255,1024,"});
}

void TestHistogram::captureHoldsTwoSignals()
{
    QFETCH(QByteArray, capture);
    QTEST(NimbrelleLib::getHistogramData(capture), "counts");
}

NIMBRELLE_TEST_MAIN(TestHistogram)
#include "TestHistogram.moc"
