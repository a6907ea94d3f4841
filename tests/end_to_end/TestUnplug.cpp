// SPDX-License-Identifier: MIT
#include "ConnectedInstrument.h"

#include "support/ProcessFigures.h"
#include "support/TestMain.h"

#include <VekConstantCurrentElement.h>
#include <VekExperiment.h>

#include <QRandomGenerator>

class TestUnplug : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyKillIsToldOnceAndLeavesNoThread();
};

namespace {

constexpr int patienceMs = 30000;

VekExperiment longRun()
{
    VekConstantCurrentElement element(1e-3, 0.001, 3600.0);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    return experiment;
}

} // namespace

void TestUnplug::everyKillIsToldOnceAndLeavesNoThread()
{
    const int given = qEnvironmentVariableIntValue("NIMBRELLE_UNPLUGS");
    const int kills = given > 0 ? given : 20; // of the library; the client's own test adds its share
    QRandomGenerator random(20261124);
    const int threadsBefore = ProcessFigures::threads();
    for (int i = 0; i < kills; ++i) {
        QSignalSpy trackerLosses(VekDeviceTracker::Instance(), &VekDeviceTracker::deviceDisconnected);
        const QString name = QStringLiteral("Kill%1").arg(i);
        ConnectedInstrument instrument(name, {"--channels", "2", "--speed", "max", "--cell", "resistor:R=1000"});
        QVERIFY(instrument.isReady());
        QCOMPARE(instrument.handler().uploadExperimentToChannel(0, longRun()), VekErrorCode(VekErrorCode::Success));
        QCOMPARE(instrument.handler().startUploadedExperiment(0), VekErrorCode(VekErrorCode::Success));
        QTest::qWait(int(random.bounded(120)));
        instrument.simulator().kill();
        QTRY_COMPARE_WITH_TIMEOUT(instrument.losses, 1, patienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(trackerLosses.size(), 1, patienceMs);
        QCOMPARE(instrument.handler().startUploadedExperiment(0), VekErrorCode(VekErrorCode::DeviceNotFound));
        QVERIFY(VekDeviceTracker::Instance()->getConnectedDevices().empty());
        QTRY_COMPARE_WITH_TIMEOUT(ProcessFigures::threads(), threadsBefore, patienceMs);
        QCOMPARE(instrument.losses, 1);
    }
    VekDeviceTracker::Instance()->purgeStaleDevices();
}

NIMBRELLE_TEST_MAIN(TestUnplug)
#include "TestUnplug.moc"
