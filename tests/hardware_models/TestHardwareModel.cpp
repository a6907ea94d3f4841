// SPDX-License-Identifier: MIT
#include "hardware_models/HardwareModelFactory.h"
#include "support/TestMain.h"

#include <QSet>

#include <thread>
#include <vector>

using LimitCheck = bool (HardwareModel::*)(double) const;
using VoltageDependentCheck = bool (HardwareModel::*)(double, bool) const;
using Message = QString (HardwareModel::*)() const;
Q_DECLARE_METATYPE(LimitCheck)
Q_DECLARE_METATYPE(VoltageDependentCheck)
Q_DECLARE_METATYPE(Message)

/// The base class and the factory, on the defaults that an unknown instrument has.
class TestHardwareModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbersBeyondTheLastModelAreInvalid_data();
    void numbersBeyondTheLastModelAreInvalid();
    void threadsThatAskAtOnceGetTheSameObjects();
    void limitsAreInclusive_data();
    void limitsAreInclusive();
    void someLimitsAreOneSided();
    void openCircuitWidensTheVoltage_data();
    void openCircuitWidensTheVoltage();
    void missingPresetsHaveStandIns();
    void messagesNameTheLimits_data();
    void messagesNameTheLimits();
    void messagesThatDependOnTheCircuit();

private:
    const std::shared_ptr<const HardwareModel> _defaults =
        HardwareModelFactory::getHardwareModel(HardwareModel_t::Invalid);
};

void TestHardwareModel::numbersBeyondTheLastModelAreInvalid_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("first") << 36;
    QTest::newRow("last") << 255;
}

void TestHardwareModel::numbersBeyondTheLastModelAreInvalid()
{
    QFETCH(int, number);
    const auto model = HardwareModelFactory::getHardwareModel(HardwareModel_t(number));
    QCOMPARE(model->getVanityName(), QString("Invalid"));
    QCOMPARE(model->getHexFileSignatureText(), QString("INVALID_MODEL"));
    QCOMPARE(model->hexFileName(), QString());
    QCOMPARE(model->hexFileCheckSum(), QString());
    QCOMPARE(model->getEIScurrentRangeLimit(1.0), currentRange_t::OFF);
    QVERIFY(!model->isSupportACExperiment());
}

void TestHardwareModel::threadsThatAskAtOnceGetTheSameObjects()
{
    constexpr int threads = 8;
    std::vector<QSet<const HardwareModel *>> seen(threads);
    std::vector<std::thread> workers;
    for (auto &objects : seen)
        workers.emplace_back([&objects] {
            for (int number = 0; number < 256; ++number)
                objects.insert(HardwareModelFactory::getHardwareModel(HardwareModel_t(number)).get());
        });
    for (std::thread &worker : workers)
        worker.join();
    for (const auto &objects : seen) {
        QCOMPARE(objects.size(), 256);
        QCOMPARE(objects, seen.front());
    }
}

void TestHardwareModel::limitsAreInclusive_data()
{
    QTest::addColumn<LimitCheck>("check");
    QTest::addColumn<double>("inside");
    QTest::addColumn<double>("outside");
    using H = HardwareModel;
    QTest::newRow("volt interval") << &H::isWithinVoltSamplingLimit << 0.0 << -1e-9;
    QTest::newRow("sampling period") << &H::isWithinSamplingLimit << 0.0002 << 0.00019;
    QTest::newRow("lowest frequency") << &H::isWithinFrequencyLimit << 1e-5 << 0.99e-5;
    QTest::newRow("highest frequency") << &H::isWithinFrequencyLimit << 1e6 << 1000001.0;
    QTest::newRow("scan rate") << &H::isWithinVoltageScanRateLimit << 150.0 << 150.01;
    QTest::newRow("negative scan rate") << &H::isWithinVoltageScanRateLimit << 0.0 << -1.0;
    QTest::newRow("lowest current") << &H::isWithinCurrentLimit << -1.0 << -1.001;
    QTest::newRow("highest current") << &H::isWithinCurrentLimit << 1.0 << 1.001;
    QTest::newRow("voltage step") << &H::isWithinVoltageStepLimit << 0.0003 << 0.00029;
    QTest::newRow("downward step") << &H::isWithinVoltageStepLimit << -0.0003 << -0.00029;
    QTest::newRow("smallest V amplitude") << &H::isWithinVAmplitudeLimits << 0.00024 << 0.0002;
    QTest::newRow("negative V amplitude") << &H::isWithinVAmplitudeLimits << -1.0 << -1.01;
    QTest::newRow("smallest I amplitude") << &H::isWithinIAmplitudeLimits << 2.4e-13 << 0.0;
    QTest::newRow("negative I amplitude") << &H::isWithinIAmplitudeLimits << -1.0 << -1.01;
    QTest::newRow("fewest steps") << &H::isStepsPerDecadeLimit << 1.0 << 0.0;
    QTest::newRow("half a step") << &H::isStepsPerDecadeLimit << 10.0 << 10.5;
    QTest::newRow("most cycles") << &H::isMinCycleLimit << 1000.0 << 1001.0;
    QTest::newRow("half a cycle") << &H::isMinCycleLimit << 2.0 << 1.5;
}

void TestHardwareModel::limitsAreInclusive()
{
    QFETCH(LimitCheck, check);
    QFETCH(double, inside);
    QFETCH(double, outside);
    QVERIFY((_defaults.get()->*check)(inside));
    QVERIFY(!(_defaults.get()->*check)(outside));
}

void TestHardwareModel::someLimitsAreOneSided()
{
    QVERIFY(_defaults->isWithinSamplingLimit(1e9));
    QVERIFY(_defaults->isWithinVoltSamplingLimit(1e9));
    QVERIFY(_defaults->isWithinVoltageStepLimit(-1e9));
    QVERIFY(_defaults->isWithinCurrentStepLimit(0.0));
}

void TestHardwareModel::openCircuitWidensTheVoltage_data()
{
    QTest::addColumn<VoltageDependentCheck>("check");
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("isAllowed");
    QTest::addColumn<bool>("isAllowedInOpenCircuit");
    using H = HardwareModel;
    QTest::newRow("-10 V") << &H::isWithinVoltageLimit << -10.0 << true << true;
    QTest::newRow("-15 V") << &H::isWithinVoltageLimit << -15.0 << false << true;
    QTest::newRow("20.1 V") << &H::isWithinVoltageLimit << 20.1 << false << false;
    QTest::newRow("10 W") << &H::isWithinPowerLoadLimits << 10.0 << true << true; // 1 A times 10 V, or 20 V
    QTest::newRow("15 W") << &H::isWithinPowerLoadLimits << 15.0 << false << true;
    QTest::newRow("-1 GW") << &H::isWithinPowerLoadLimits << -1e9 << true << true; // one-sided
    QTest::newRow("no load at all") << &H::isWithinResistanceLoadLimits << 1e300 << true << true;
    QTest::newRow("negative load") << &H::isWithinResistanceLoadLimits << -1.0 << true << true;
}

void TestHardwareModel::openCircuitWidensTheVoltage()
{
    QFETCH(VoltageDependentCheck, check);
    QFETCH(double, value);
    QTEST((_defaults.get()->*check)(value, false), "isAllowed");
    QTEST((_defaults.get()->*check)(value, true), "isAllowedInOpenCircuit");
}

void TestHardwareModel::missingPresetsHaveStandIns()
{
    const auto alder = HardwareModelFactory::getHardwareModel(HardwareModel_t::Alder_2_4);
    QCOMPARE(alder->getCompRangeName(1), QString("Custom Stability Range"));
    for (const int index : {-128, -1, 2, 100}) {
        QCOMPARE(alder->getCompRangeName(static_cast<signed char>(index)), QString());
        const VekCompRange standIn = alder->getCompRangeParams(static_cast<signed char>(index));
        QCOMPARE(standIn.getCompRangeName(), QString("N/A"));
        QCOMPARE(int(standIn.getBandwidthIndex()), 0);
        QCOMPARE(int(standIn.getStabilityFactor()), 0);
    }

    VekCompRange changed = alder->getCompRangeParams(0);
    changed.setBandwidthIndex(9); // a copy of its own: the shared model stays as it is
    QCOMPARE(int(alder->getCompRangeParams(0).getBandwidthIndex()), 3);
    VekCompRange assigned(QString(), 0, 0);
    assigned = changed;
    assigned.setCompRangeName("mine");
    QCOMPARE(changed.getCompRangeName(), QString("Default Stability Range"));
}

// Those that an element complains with are tested with the elements.
void TestHardwareModel::messagesNameTheLimits_data()
{
    QTest::addColumn<Message>("message");
    QTest::addColumn<QString>("text");
    using H = HardwareModel;
    QTest::newRow("prefixes") << &H::getFrequencyLimitErrorMsg
                              << "The %1 has a minimum frequency of 10.0 uHz and a maximum frequency of 1.00 MHz";
    QTest::newRow("nothing has a prefix")
        << &H::getVoltSamplingLimitErrorMsg << "The %1 has a minimum voltage interval period of 0.00 pV.";
    QTest::newRow("volts told as amperes")
        << &H::getVandVAmplitudeLimitErrorMsg
        << "%1 has a (voltage amplitude + biase potential)  should be less then 10.0 A";
}

void TestHardwareModel::messagesNameTheLimits()
{
    QFETCH(Message, message);
    QTEST((_defaults.get()->*message)(), "text");
}

void TestHardwareModel::messagesThatDependOnTheCircuit()
{
    QCOMPARE(_defaults->getPowerLimitErrorMsg(true), QString("%1 has a maximum power delivery of 20 mW"));
    QCOMPARE(_defaults->getResistanceLoadLimitErrorMsg(false), QString("%1 has a maximum resistance load of 1e+11 W"));
}

NIMBRELLE_TEST_MAIN(TestHardwareModel)
#include "TestHardwareModel.moc"
