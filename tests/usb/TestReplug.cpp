// SPDX-License-Identifier: MIT
#include "support/SimulatorProcess.h"
#include "support/TestMain.h"

#include <VekDeviceTracker.h>
#include <VekInstrumentHandler.h>

#include <fcntl.h>
#include <unistd.h>

/// For the guest of the USB lane, where a simulated instrument is at the end of a cable.
class TestReplug : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theInstrumentIsFoundUnderItsNewNumber();
};

namespace {

const QString name = QStringLiteral("Traveller");
constexpr int patienceMs = 20000;

/// The port on which the tracker finds the instrument by its name; empty when it does not.
QString portFoundByName()
{
    VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    QSignalSpy connections(tracker, &VekDeviceTracker::newDeviceConnected);
    const VekErrorCode result = tracker->connectToDevice(name);
    if (result != VekErrorCode::Success || !QTest::qWaitFor([&] { return !connections.isEmpty(); }, patienceMs)) {
        qWarning("%s", qPrintable(result.message()));
        return {};
    }
    return QStringLiteral("/dev/") + tracker->getInstrumentHandler(name).getDescription().portName;
}

} // namespace

void TestReplug::theInstrumentIsFoundUnderItsNewNumber()
{
    QSignalSpy losses(VekDeviceTracker::Instance(), &VekDeviceTracker::deviceDisconnected);
    auto instrument = std::make_unique<SimulatorProcess>(QStringList{"--name", name});
    const QString firstPort = instrument->portName();
    const int holder = open(qPrintable(firstPort), O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    QVERIFY2(holder >= 0, "the kernel gives a number anew unless somebody holds the old node");
    QCOMPARE(portFoundByName(), firstPort);

    instrument->kill();
    QTRY_COMPARE_WITH_TIMEOUT(losses.size(), 1, patienceMs);
    instrument = std::make_unique<SimulatorProcess>(QStringList{"--name", name});
    QVERIFY(instrument->portName().startsWith(QLatin1String("/dev/ttyACM")));
    QVERIFY(instrument->portName() != firstPort);
    QCOMPARE(portFoundByName(), instrument->portName());
    close(holder);
}

NIMBRELLE_TEST_MAIN(TestReplug)
#include "TestReplug.moc"
