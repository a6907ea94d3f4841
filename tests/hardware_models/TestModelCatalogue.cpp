// SPDX-License-Identifier: MIT
#include "hardware_models/HardwareModelFactory.h"
#include "hardware_models/ModelNames.h"
#include "images/HexLoader.h"
#include "support/TestMain.h"

#include <cmath>

using ModelPointer = std::shared_ptr<const HardwareModel>;
Q_DECLARE_METATYPE(ModelPointer)
Q_DECLARE_METATYPE(HardwareModel_t)

namespace {

constexpr double allFrequencies[] = {0.0,    1e-5,    1.0, 10.0,   40.0,  50.0,  100.0, 1000.0,
                                     2500.0, 2501.,   1e4, 10001., 100e3, 150e3, 200e3, 250e3,
                                     500e3,  500001., 1e6, 1.5e6,  2e6,   2.1e6, 1e7};

ModelPointer modelOf(HardwareModel_t model)
{
    return HardwareModelFactory::getHardwareModel(model);
}

} // namespace

/// What must hold between the numbers of one model, and between related models.
class TestModelCatalogue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyModel_data();
    void everyModel();
    void acModelsHaveARangeAtEveryFrequency_data() { everyModel_data(); }
    void acModelsHaveARangeAtEveryFrequency();
    void presetsComeAsAPair_data() { everyModel_data(); }
    void presetsComeAsAPair();
    void imagesBelongToTheirModels_data() { everyModel_data(); }
    void imagesBelongToTheirModels();
    void successorsDifferInTheirIdentityAlone_data();
    void successorsDifferInTheirIdentityAlone();
    void galeLeavesItsLimitsToTheChannels();
    void rangesChangeAtTheirFrequency_data();
    void rangesChangeAtTheirFrequency();
    void gainsFollowTheRanges();
    void driftIsCalibratedFromTheSmallestRange();
};

void TestModelCatalogue::everyModel_data()
{
    QTest::addColumn<ModelPointer>("model");
    const QStringList names = ModelNames::all();
    for (int number = 0; number < names.size(); ++number)
        QTest::newRow(qPrintable(names.at(number))) << modelOf(HardwareModel_t(number));
}

void TestModelCatalogue::everyModel()
{
    QFETCH(ModelPointer, model);
    const QString name = model->getVanityName();
    QVERIFY2(QString(QTest::currentDataTag()).startsWith(name) || name == "DC Tarn Proto", qPrintable(name));
    QCOMPARE(model->getIMin(), -model->getIMax());
    QVERIFY(model->getIMax() > 0.0);
    for (const bool isOpenCircuit : {false, true})
        QCOMPARE(model->getVMin(isOpenCircuit), -model->getVMax(isOpenCircuit));
    QVERIFY(model->getVMax(true) >= model->getVMax(false));
    QVERIFY(model->getVAmpMin() < model->getVAmpMax());
    QVERIFY(model->getNumDCcurrentRanges() > 0);
    QVERIFY(model->getNumDCcurrentRanges() <= model->getTotalNumCurrentRanges());
    QVERIFY(model->getNumHighSideRanges() <= model->getNumDCcurrentRanges());
    QVERIFY(model->getNumVoltageRanges() <= 4);
    QVERIFY(model->getUpperBinaryCurrentLimit() >= 28000);
    QCOMPARE(model->getDefaultCurrentGain(currentRange_t::OFF), ACgain_t::Gain1);
}

void TestModelCatalogue::acModelsHaveARangeAtEveryFrequency()
{
    QFETCH(ModelPointer, model);
    int previous = 255;
    for (const double frequency : allFrequencies) {
        const currentRange_t range = model->getEIScurrentRangeLimit(frequency);
        QCOMPARE(range != currentRange_t::OFF, model->isSupportACExperiment());
        QVERIFY2(index(range) <= previous, "a higher frequency never allows a more sensitive range");
        previous = index(range);
    }
}

void TestModelCatalogue::presetsComeAsAPair()
{
    QFETCH(ModelPointer, model);
    const QStringList names = model->getCompRangeNameList();
    if (model->getDefaultStabilityRangeIndex() < 0) {
        QVERIFY(names.isEmpty());
        QVERIFY(!model->isSupportACExperiment());
        return;
    }
    QCOMPARE(names, QStringList({"Default Stability Range", "Custom Stability Range"}));
    QVERIFY(model->getCompRangeParams(0).getBandwidthIndex() <= 10);
    QVERIFY(model->getCompRangeParams(0).getStabilityFactor() <= 10);
    QCOMPARE(int(model->getCompRangeParams(1).getBandwidthIndex()), 0);
    QCOMPARE(int(model->getCompRangeParams(1).getStabilityFactor()), 0);
}

void TestModelCatalogue::imagesBelongToTheirModels()
{
    QFETCH(ModelPointer, model);
    const QString path = HexLoader::getDefaultHexPath(model->hexFileName());
    if (model->hexFileName() == "NoLongerSupported") {
        QVERIFY(model->hexFileCheckSum().isEmpty());
        return;
    }
    QCOMPARE(HexLoader::ReadHexSignature(path).text, model->getHexFileSignatureText());
    QVERIFY(!model->hexFileCheckSum().isEmpty());
    const QList<QByteArray> records = HexLoader::ReadFile(path);
    QVERIFY(records.size() > 100);
    QCOMPARE(HexLoader::CalculateCrc(records).address, 0x9D000000u);
}

void TestModelCatalogue::successorsDifferInTheirIdentityAlone_data()
{
    QTest::addColumn<ModelPointer>("earlier");
    QTest::addColumn<ModelPointer>("later");
    QTest::newRow("Alder") << modelOf(HardwareModel_t::Alder_2_4) << modelOf(HardwareModel_t::Alder_2_5);
    QTest::newRow("Ibis") << modelOf(HardwareModel_t::Ibis_2_0) << modelOf(HardwareModel_t::Ibis_2_1);
    QTest::newRow("Jay") << modelOf(HardwareModel_t::Jay_2_0) << modelOf(HardwareModel_t::Jay_2_1);
    QTest::newRow("Heron") << modelOf(HardwareModel_t::Heron_2_0) << modelOf(HardwareModel_t::Heron_2_1);
}

void TestModelCatalogue::successorsDifferInTheirIdentityAlone()
{
    QFETCH(ModelPointer, earlier);
    QFETCH(ModelPointer, later);
    QVERIFY(earlier->suitableFirmware() != later->suitableFirmware());
    QCOMPARE(later->getCurrentLimitErrorMsg(), earlier->getCurrentLimitErrorMsg());
    QCOMPARE(later->getVoltageLimitErrorMsg(true), earlier->getVoltageLimitErrorMsg(true));
    QCOMPARE(later->getFrequencyLimitErrorMsg(), earlier->getFrequencyLimitErrorMsg());
    QCOMPARE(later->getVAmplitudeLimitErrorMsg(), earlier->getVAmplitudeLimitErrorMsg());
    QCOMPARE(later->getSquareWaveFrequencyLimit(), earlier->getSquareWaveFrequencyLimit());
    QCOMPARE(later->getWEgainMap(), earlier->getWEgainMap());
    QCOMPARE(later->sdCardHasCalData(), earlier->sdCardHasCalData());
    for (const double frequency : allFrequencies)
        QCOMPARE(later->getEIScurrentRangeLimit(frequency), earlier->getEIScurrentRangeLimit(frequency));
}

void TestModelCatalogue::galeLeavesItsLimitsToTheChannels()
{
    const ModelPointer gale = modelOf(HardwareModel_t::Gale);
    QVERIFY(gale->isWithinVoltageLimit(-1e300, false));
    QVERIFY(gale->isWithinCurrentLimit(1e300));
    QVERIFY(gale->isWithinPowerLoadLimits(1e300, true));
    QVERIFY(gale->isWithinVoltageStepLimit(0.0));
    QVERIFY(gale->isWithinIAmplitudeLimits(0.0));
    QVERIFY(gale->isWithinFrequencyLimit(1e-6));
    QVERIFY(!gale->isWithinFrequencyLimit(10001.0));
    QVERIFY(!gale->isWithinVAmplitudeLimits(1.01));
    QCOMPARE(gale->getCurrentLimitErrorMsg(),
             QString("The %1 has a minimum current of -infA and a maximum current of infA."));
}

void TestModelCatalogue::rangesChangeAtTheirFrequency_data()
{
    QTest::addColumn<HardwareModel_t>("model");
    QTest::addColumn<double>("frequency");
    QTest::addColumn<int>("range");
    // A chain takes its threshold into the larger range, a table leaves it to the more sensitive one.
    QTest::newRow("chain, at a threshold") << HardwareModel_t::Alder_2_3 << 2500.0 << 6;
    QTest::newRow("chain, below it") << HardwareModel_t::Alder_2_3 << 2499.9 << 7;
    QTest::newRow("chain, above all") << HardwareModel_t::Alder_2_3 << 1e9 << 4;
    QTest::newRow("table, at a limit") << HardwareModel_t::Alder_2_4 << 2500.0 << 7;
    QTest::newRow("table, above it") << HardwareModel_t::Alder_2_4 << 2500.1 << 6;
    QTest::newRow("table, above all") << HardwareModel_t::Alder_2_4 << 1e9 << 0;
    QTest::newRow("table, not a number") << HardwareModel_t::Alder_2_4 << qQNaN() << 9;
    QTest::newRow("constant") << HardwareModel_t::Gale << 1e9 << 3;
}

void TestModelCatalogue::rangesChangeAtTheirFrequency()
{
    QFETCH(HardwareModel_t, model);
    QFETCH(double, frequency);
    QTEST(index(modelOf(model)->getEIScurrentRangeLimit(frequency)), "range");
}

void TestModelCatalogue::gainsFollowTheRanges()
{
    const ModelPointer ibis = modelOf(HardwareModel_t::Ibis_1_0); // gain 50 four times, then 5
    QCOMPARE(ibis->getDefaultCurrentGain(currentRange_t(3)), ACgain_t::Gain50);
    QCOMPARE(ibis->getDefaultCurrentGain(currentRange_t(4)), ACgain_t::Gain5);
    QCOMPARE(ibis->getDefaultCurrentGain(currentRange_t(254)), ACgain_t::Gain5);
    QCOMPARE(modelOf(HardwareModel_t::Alder_2_4)->getDefaultCurrentGain(currentRange_t(9)), ACgain_t::Gain10);
    QCOMPARE(modelOf(HardwareModel_t::Gale)->getDefaultCurrentGain(currentRange_t(0)), ACgain_t::Gain1);

    QCOMPARE(ibis->getNumVoltageRanges(), 3);
    QCOMPARE(modelOf(HardwareModel_t::Jay_1_0)->getNumVoltageRanges(), 4);
    QCOMPARE(modelOf(HardwareModel_t::Gale)->getNumVoltageRanges(), 1);
}

void TestModelCatalogue::driftIsCalibratedFromTheSmallestRange()
{
    const auto ranges = modelOf(HardwareModel_t::Cedar_2_0)->getCurrentRangeListForOffsetDriftCalibration();
    QCOMPARE(ranges.size(), 8);
    QCOMPARE(ranges.first(), currentRange_t(7));
    QCOMPARE(ranges.last(), currentRange_t(0));
    QVERIFY(modelOf(HardwareModel_t::Alder_2_4)->getCurrentRangeListForOffsetDriftCalibration().isEmpty());
}

NIMBRELLE_TEST_MAIN(TestModelCatalogue)
#include "TestModelCatalogue.moc"
