// SPDX-License-Identifier: MIT
#include "hardware_models/HardwareModelFactory.h"
#include "hardware_models/Kestrel.h"
#include "support/TestMain.h"

namespace {

/// Shows what the rule has made of a number.
struct OpenKestrel : Kestrel {
    explicit OpenKestrel(int number) : Kestrel(HardwareModel_t(number)) {}
    using Kestrel::_defaultCurrentGains;
    using Kestrel::_eisFrequencyLimits;
    using Kestrel::_generation;
    using Kestrel::_modelClass;
    using Kestrel::_stabilityNames;
    using Kestrel::isHeron;
    using Kestrel::isIbis;
    using Kestrel::isJay;
};

} // namespace

/// The rule that the newer Kestrel models follow.
class TestKestrel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void foreignNumbersAreRefused_data();
    void foreignNumbersAreRefused();
    void generationAndKindFollowFromTheNumber_data();
    void generationAndKindFollowFromTheNumber();
    void frequencyTableIsCutByKindAndGeneration_data();
    void frequencyTableIsCutByKindAndGeneration();
    void firstGenerationHasHighSideGains();
    void writtenAndComputedHalvesDiffer();
};

void TestKestrel::foreignNumbersAreRefused_data()
{
    QTest::addColumn<int>("number");
    for (const int number : {0, 14, 18, 19, 35, 36, 255})
        QTest::addRow("%d", number) << number;
}

void TestKestrel::foreignNumbersAreRefused()
{
    QFETCH(int, number);
    const OpenKestrel model(number);
    QCOMPARE(model.getVanityName(), QString("Invalid"));
    QCOMPARE(model._modelClass, 0);
    QVERIFY(!model.isIbis() && !model.isJay() && !model.isHeron());
    QVERIFY(!model.isSupportACExperiment());
    QCOMPARE(model.getEIScurrentRangeLimit(2500.0), currentRange_t::OFF);
    QCOMPARE(model.hexFileName(), QString());
}

void TestKestrel::generationAndKindFollowFromTheNumber_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("generation");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<double>("current");
    QTest::addColumn<double>("openCircuit");
    QTest::addColumn<int>("totalRanges");
    QTest::newRow("Ibis 1.0") << 15 << 0 << "Ibis" << 20.0 << 12.0 << 9;
    QTest::newRow("Heron 1.0") << 17 << 0 << "Heron" << 5.0 << 15.0 << 8;
    QTest::newRow("Jay 2.0") << 21 << 1 << "Jay" << 10.0 << 15.0 << 9;
    QTest::newRow("Heron 2.1") << 25 << 2 << "Heron" << 5.0 << 15.0 << 8;
    QTest::newRow("Ibis 2.2") << 26 << 3 << "Ibis" << 20.0 << 12.0 << 10;
    QTest::newRow("Jay 2.3") << 30 << 4 << "Jay" << 10.0 << 15.0 << 10;
    QTest::newRow("Heron 2.4") << 34 << 5 << "Heron" << 5.0 << 15.0 << 10;
}

void TestKestrel::generationAndKindFollowFromTheNumber()
{
    QFETCH(int, number);
    QFETCH(QString, kind);
    const OpenKestrel model(number);
    QTEST(model._generation, "generation");
    QCOMPARE(model.getVanityName(), kind);
    QCOMPARE(model.isIbis(), kind == "Ibis");
    QCOMPARE(model.isJay(), kind == "Jay");
    QCOMPARE(model.isHeron(), kind == "Heron");
    QTEST(model.getIMax(), "current");
    QTEST(model.getVMax(true), "openCircuit");
    QTEST(int(model.getTotalNumCurrentRanges()), "totalRanges");
    QCOMPARE(model._defaultCurrentGains.size(), int(model.getTotalNumCurrentRanges()));
    QCOMPARE(model._stabilityNames.last(), QString(kind == "Heron" ? "7" : "8"));
    QVERIFY(model.isSupportACExperiment());
}

void TestKestrel::frequencyTableIsCutByKindAndGeneration_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QList<double>>("limits");
    QTest::newRow("Ibis 2.0") << 20 << QList<double>{1e5, 1e5, 1e5, 1e5, 2e6, 2e6, 5e5, 2e5, 1e4};
    QTest::newRow("Heron 2.0") << 22 << QList<double>{1e5, 1e5, 1e5, 2e6, 2e6, 5e5, 2e5, 1e4};
    QTest::newRow("Ibis 2.3") << 29 << QList<double>{1e5, 1e5, 1e5, 1e5, 2e6, 2e6, 5e5, 2e5, 1e4, 2500.0};
    QTest::newRow("Heron 2.3") << 31 << QList<double>{1e5, 1e5, 1e5, 2e6, 2e6, 5e5, 2e5, 1e4, 2500.0, 100.0};
    QTest::newRow("Ibis 2.4") << 32 << QList<double>{1e6, 1e6, 1e6, 1e6, 2e6, 2e6, 5e5, 2e5, 1e4, 2500.0};
}

void TestKestrel::frequencyTableIsCutByKindAndGeneration()
{
    QFETCH(int, number);
    const OpenKestrel model(number);
    QTEST(model._eisFrequencyLimits, "limits");
    QCOMPARE(index(model.getEIScurrentRangeLimit(1e7)), 0);
    QCOMPARE(index(model.getEIScurrentRangeLimit(0.0)), model._eisFrequencyLimits.size() - 1);
}

void TestKestrel::firstGenerationHasHighSideGains()
{
    const OpenKestrel heron(17); // three ranges on the high side
    QCOMPARE(heron.getDefaultCurrentGain(currentRange_t(2)), ACgain_t::Gain100);
    QCOMPARE(heron.getDefaultCurrentGain(currentRange_t(3)), ACgain_t::Gain10);
    QCOMPARE(heron.hexFileName(), QString("Nimbrelle_Heron_Firmware.hex"));
    QCOMPARE(OpenKestrel(22).getDefaultCurrentGain(currentRange_t(0)), ACgain_t::Gain10);
}

void TestKestrel::writtenAndComputedHalvesDiffer()
{
    const auto written = HardwareModelFactory::getHardwareModel(HardwareModel_t::Heron_2_0);
    const auto computed = HardwareModelFactory::getHardwareModel(HardwareModel_t::Heron_2_2);
    QCOMPARE(written->getVMax(true), 20.0);
    QCOMPARE(computed->getVMax(true), 15.0);
    QCOMPARE(written->getSquareWaveFrequencyLimit(), 2000.0);
    QCOMPARE(computed->getSquareWaveFrequencyLimit(), 500.0);
    QCOMPARE(computed->hexFileName(), written->hexFileName());
}

NIMBRELLE_TEST_MAIN(TestKestrel)
#include "TestKestrel.moc"
