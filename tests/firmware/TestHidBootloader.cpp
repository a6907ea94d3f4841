// SPDX-License-Identifier: MIT
#include "FakeHidApi.h"

#include "VekErrorCode.h"
#include "firmware/BootLoaderCommunicator.h"
#include "firmware/BootloaderThread.h"
#include "firmware/HidCommunicator.h"
#include "hardware_models/HardwareModelNumber.h"
#include "images/HexLoader.h"
#include "support/SteppedClock.h"
#include "support/TestMain.h"

#include <atomic>
#include <thread>

namespace {

const QString path = "/dev/hidraw-test";
const QString otherPath = "/dev/hidraw-test2";
constexpr int model = int(HardwareModel_t::Alder_2_5);

/// Outlives the application object, and the bootloaders with it.
SteppedClock hostClock(SteppedClock::Use::AsHost);
constexpr int pollMs = 20;
constexpr int rightsPauseMs = 50;
constexpr int searchPauseMs = 1000;
constexpr int replyTimeoutMs = 5000;

constexpr int otherModel = int(HardwareModel_t::Heron_2_0);
const QByteArray permission = "NIMBRELLE_ALLOW_STAND_IN";

QList<QByteArray> imageRecords(int number = model)
{
    return HexLoader::ReadFile(BootLoaderCommunicator::findHexFilePath(number));
}

FakeHidDevice deviceOf(int number)
{
    FakeHidDevice device;
    device.release = static_cast<unsigned short>(number);
    return device;
}

using Device = FakeHidDevice;
using Fault = void (*)(Device &);

} // namespace
Q_DECLARE_METATYPE(Device)
Q_DECLARE_METATYPE(Fault)

/// The whole road from the search on the bus to the jump into the firmware.
class TestHidBootloader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void bootloadersAreToldByFourIdentities_data();
    void bootloadersAreToldByFourIdentities();
    void imageIsErasedProgrammedCheckedAndStarted();
    void failureEndsTheRunAndTheNextSucceeds_data();
    void failureEndsTheRunAndTheNextSucceeds();
    void rightsMayComeLate();
    void onlyRefusedRightsAreWaitedFor_data();
    void onlyRefusedRightsAreWaitedFor();
    void deafDeviceIsWrittenToOnce();
    void announcedUpdatesAreTakenInOrder();
    void announcedDeviceMayComeAfterABatch();
    void twoModelsAtOnceGetTheirOwnImages();
    void whatNobodyAskedForIsLeftAlone_data();
    void whatNobodyAskedForIsLeftAlone();
    void announcementExpires();
    void patienceCountsFromTheEndOfARun();
    void instrumentThatIsAnnouncedAgainNeverLeft();
    void pathThatGoesToAnotherModelIsNotFlashed();
    void standInIsNotWritten();
    void unknownModelWaitsForAnAnswer();
    void answerDuringAnUpdateWaitsForItsEnd();
    void deviceWithoutImageIsNotTouched_data();
    void deviceWithoutImageIsNotTouched();
    void connectedDeviceIsNotFoundTwice();
    void hidapiIsNeverEnteredByTwoThreads();
    void applicationMayEndInTheMiddleOfARun();

private:
    bool finishes(int runs = 1);
    bool endsSearch();
    bool searchesOn();

    FakeHidBus &_bus = FakeHidBus::bus();
    BootLoaderCommunicator *_hid = nullptr;
    QScopedPointer<QSignalSpy> _started;
    QScopedPointer<QSignalSpy> _progress;
    QScopedPointer<QSignalSpy> _finished;
};

void TestHidBootloader::init()
{
    qputenv(permission, "1");
    _hid = BootLoaderCommunicator::Instance();
    _hid->setPatience(30000);
    _started.reset(new QSignalSpy(_hid, &BootLoaderCommunicator::Started));
    _progress.reset(new QSignalSpy(_hid, &BootLoaderCommunicator::ProgressChanged));
    _finished.reset(new QSignalSpy(_hid, &BootLoaderCommunicator::Finished));
}

void TestHidBootloader::cleanup()
{
    QTRY_COMPARE(_bus.openDevices(), 0);
    _bus.clear();
    QVERIFY(_finished->isEmpty() || endsSearch());
}

bool TestHidBootloader::finishes(int runs)
{
    return hostClock.stepUntil([&] { return _finished->size() >= runs; },
                               {pollMs, rightsPauseMs, searchPauseMs, replyTimeoutMs});
}

/// The search that has found something goes on for a moment.
bool TestHidBootloader::endsSearch()
{
    return hostClock.stepUntil([this] { return !_hid->isSearching(); }, {searchPauseMs});
}

/// Lets the bus be looked at some more times.
bool TestHidBootloader::searchesOn()
{
    const int searches = _bus.searches() + 4;
    return hostClock.stepUntil([&] { return _bus.searches() >= searches; }, {searchPauseMs});
}

void TestHidBootloader::bootloadersAreToldByFourIdentities_data()
{
    QTest::addColumn<Fault>("change");
    QTest::addColumn<bool>("isFound");
    QTest::newRow("right") << Fault([](Device &) {}) << true;
    QTest::newRow("vendor") << Fault([](Device &device) { device.vendor = 0x04D9; }) << false;
    QTest::newRow("product") << Fault([](Device &device) { device.product = 0x003D; }) << false;
    QTest::newRow("manufacturer") << Fault([](Device &device) { device.manufacturer += L"."; }) << false;
    QTest::newRow("name") << Fault([](Device &device) { device.name = L"nimbrelle HID bootloader"; }) << false;
    QTest::newRow("no manufacturer") << Fault([](Device &device) { device.hasManufacturer = false; }) << false;
    QTest::newRow("no name") << Fault([](Device &device) { device.hasName = false; }) << false;
}

void TestHidBootloader::bootloadersAreToldByFourIdentities()
{
    QFETCH(Fault, change);
    QFETCH(bool, isFound);
    Device device;
    device.release = 256;
    change(device);
    _bus.plug(path, device);
    const QMap<QString, int> expected = isFound ? QMap<QString, int>{{path, 256}} : QMap<QString, int>();
    QCOMPARE(HidCommunicator::SearchForBootloaderHidPath(), expected);
    _bus.clear();
}

void TestHidBootloader::imageIsErasedProgrammedCheckedAndStarted()
{
    _bus.plug(path);
    QSignalSpy found(_hid, &BootLoaderCommunicator::BootloaderFound);
    _hid->setReleaseNumber("left bench", model);
    _hid->checkForHidConnections();
    QVERIFY(finishes());
    QCOMPARE(_finished->first(), QVariantList({"left bench", true}));
    QCOMPARE(_started->first(), QVariantList({"left bench"}));
    QCOMPARE(found.size(), 1);
    QCOMPARE(_progress->first(), QVariantList({"left bench", 0}));
    QCOMPARE(_progress->last(), QVariantList({"left bench", 100}));
    for (int i = 1; i < _progress->size(); ++i)
        QVERIFY(_progress->at(i).at(1).toInt() > _progress->at(i - 1).at(1).toInt());

    const Device device = _bus.device(path);
    const QList<QByteArray> records = imageRecords();
    QCOMPARE(device.flash, QByteArrayList(records).join());
    QCOMPARE(device.batches.size(), (records.size() + 9) / 10);
    QCOMPARE(device.batches.first(), QByteArrayList(records.mid(0, 10)).join());
    QCOMPARE(device.commands.left(2), QByteArray("\x02\x03"));
    QCOMPARE(device.commands.right(2), QByteArray("\x04\x05"));
    QVERIFY(device.hasJumped);
    // Address, size and CRC, little-endian, two bytes of padding.
    const HexCrc crc = HexLoader::CalculateCrc(records);
    QCOMPARE(device.crcRequest.size(), 12);
    QCOMPARE(device.crcRequest.left(4), QByteArray::fromHex("0000009d"));
    QCOMPARE(device.crcRequest.mid(4, 4), QByteArray::fromHex("08100000")); // 4,104 bytes
    QCOMPARE(quint8(device.crcRequest.at(8)) + 256 * quint8(device.crcRequest.at(9)), int(crc.crc));
}

void TestHidBootloader::failureEndsTheRunAndTheNextSucceeds_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::newRow("no reply to erase") << Fault([](Device &device) { device.silentAt = 2; });
    QTest::newRow("other CRC") << Fault([](Device &device) { device.repliesWrongCrc = true; });
    QTest::newRow("cannot be opened") << Fault([](Device &device) { device.isBroken = true; });
    QTest::newRow("takes no reports") << Fault([](Device &device) { device.takesNoReports = true; });
}

void TestHidBootloader::failureEndsTheRunAndTheNextSucceeds()
{
    QFETCH(Fault, fault);
    _bus.onBlockedWrite = [] { hostClock.step(5000); };
    Device device;
    fault(device);
    _bus.plug(path, device);
    _hid->checkForHidConnections();
    QVERIFY(finishes());
    QCOMPARE(_finished->first(), QVariantList({"", false}));
    QVERIFY(!_bus.device(path).hasJumped);

    QVERIFY(endsSearch());
    _bus.mend(path);
    _hid->checkForHidConnections();
    QVERIFY(finishes(2));
    QCOMPARE(_finished->last(), QVariantList({"", true}));
    QCOMPARE(_bus.device(path).flash, QByteArrayList(imageRecords()).join());
}

void TestHidBootloader::rightsMayComeLate()
{
    Device device;
    device.refusedOpens = 3;
    _bus.plug(path, device);
    _hid->checkForHidConnections();
    QVERIFY(finishes());
    QCOMPARE(_finished->first(), QVariantList({"", true}));
}

void TestHidBootloader::onlyRefusedRightsAreWaitedFor_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<bool>("isWaitedFor");
    QTest::newRow("no rights") << Fault([](Device &device) { device.refusedOpens = 1000; }) << true;
    QTest::newRow("broken") << Fault([](Device &device) { device.isBroken = true; }) << false;
}

void TestHidBootloader::onlyRefusedRightsAreWaitedFor()
{
    QFETCH(Fault, fault);
    QFETCH(bool, isWaitedFor);
    Device device;
    fault(device);
    _bus.plug(path, device);
    hostClock.hurry(rightsPauseMs);
    const qint64 before = hostClock.now();
    const HidCommunicator communicator(path);
    hostClock.hurry(rightsPauseMs, 0);
    QCOMPARE(hostClock.now() - before, isWaitedFor ? 2000 : 0);
    QVERIFY(!isWaitedFor || _bus.device(path).refusedOpens < 990); // tried again and again
    QCOMPARE(_bus.openDevices(), 0);
}

/// Each write blocks for seconds, which would add up over the reports of an image.
void TestHidBootloader::deafDeviceIsWrittenToOnce()
{
    _bus.onBlockedWrite = [] { hostClock.step(5000); };
    Device device;
    device.takesNoReports = true;
    _bus.plug(path, device);
    {
        HidCommunicator communicator(path);
        communicator.SendData(QByteArray(1000, 'x'));
    }
    QCOMPARE(_bus.device(path).writes, 1);
}

void TestHidBootloader::announcedUpdatesAreTakenInOrder()
{
    _bus.plug(path);
    _bus.plug(otherPath);
    _hid->setReleaseNumber("first", model);
    _hid->setReleaseNumber("second", model);
    _hid->checkForHidConnections();
    QVERIFY(finishes(2));
    QCOMPARE(_finished->at(0), QVariantList({"first", true}));
    QCOMPARE(_finished->at(1), QVariantList({"second", true}));
    QVERIFY(_bus.device(path).hasJumped && _bus.device(otherPath).hasJumped);
}

void TestHidBootloader::announcedDeviceMayComeAfterABatch()
{
    _bus.plug(path);
    _hid->setReleaseNumber("first", model);
    _hid->setReleaseNumber("second", model);
    _hid->checkForHidConnections();
    QVERIFY(finishes());
    _bus.plug(otherPath);
    QVERIFY(finishes(2));
    QCOMPARE(_finished->last(), QVariantList({"second", true}));
}

void TestHidBootloader::twoModelsAtOnceGetTheirOwnImages()
{
    _bus.plug(path, deviceOf(otherModel)); // found first, announced last
    _bus.plug(otherPath, deviceOf(model));
    _hid->setReleaseNumber("first", model);
    _hid->setReleaseNumber("second", otherModel);
    _hid->checkForHidConnections();
    QVERIFY(finishes(2));
    QCOMPARE(_finished->at(0), QVariantList({"second", true}));
    QCOMPARE(_finished->at(1), QVariantList({"first", true}));
    QCOMPARE(_bus.device(path).flash, QByteArrayList(imageRecords(otherModel)).join());
    QCOMPARE(_bus.device(otherPath).flash, QByteArrayList(imageRecords(model)).join());
}

void TestHidBootloader::whatNobodyAskedForIsLeftAlone_data()
{
    QTest::addColumn<int>("release");
    QTest::addColumn<int>("announced"); // besides the model whose device comes
    QTest::newRow("another model") << otherModel << 0;
    QTest::newRow("no model") << 200 << 0;
    QTest::newRow("unknown model, two images wait") << 256 << int(HardwareModel_t::Ibis_1_0);
}

void TestHidBootloader::whatNobodyAskedForIsLeftAlone()
{
    QFETCH(int, release);
    QFETCH(int, announced);
    QSignalSpy questions(_hid, &BootLoaderCommunicator::FindReleaseNumber);
    _hid->setPatience(4000);
    if (announced)
        _hid->setReleaseNumber("lost", announced);
    _hid->setReleaseNumber("awaited", model);
    _bus.plug(path, deviceOf(release));
    _hid->checkForAnnounced();
    QVERIFY(searchesOn()); // it is found, and the next search goes on
    _bus.plug(otherPath, deviceOf(model));
    QVERIFY(finishes());
    QCOMPARE(_finished->first(), QVariantList({"awaited", true}));
    QCOMPARE(_bus.device(otherPath).flash, QByteArrayList(imageRecords()).join());
    if (announced)
        QVERIFY(finishes(2));
    QCOMPARE(_bus.device(path).writes, 0);
    QVERIFY(questions.isEmpty());
}

void TestHidBootloader::announcementExpires()
{
    _hid->setPatience(500);
    _hid->setReleaseNumber("lost", model);
    _hid->checkForAnnounced();
    QVERIFY(finishes());
    QCOMPARE(_finished->first(), QVariantList({"lost", false}));
    QVERIFY(_started->isEmpty());
    _bus.plug(path); // it comes all the same, and the next update of all devices finds it
    QVERIFY(endsSearch());
    QCOMPARE(_bus.device(path).writes, 0);
    _hid->checkForHidConnections();
    QVERIFY(finishes(2));
    QCOMPARE(_finished->last(), QVariantList({"", true}));
}

void TestHidBootloader::patienceCountsFromTheEndOfARun()
{
    Device silent;
    silent.silentAt = 2;
    _bus.plug(path, silent); // holds the road for five seconds
    _hid->setPatience(3000);
    _hid->setReleaseNumber("first", model);
    _hid->setReleaseNumber("second", model);
    _hid->checkForAnnounced();
    QVERIFY(finishes());
    QCOMPARE(_finished->first(), QVariantList({"first", false}));
    _bus.plug(otherPath);
    QVERIFY(finishes(2));
    QCOMPARE(_finished->last(), QVariantList({"second", true}));
}

void TestHidBootloader::instrumentThatIsAnnouncedAgainNeverLeft()
{
    const Announcement announcement{"bench", model, "ttyACM0", QString(), {}, {}};
    const Announcement namesake{"bench", model, "ttyACM1", QString(), {}, {}};
    _hid->announce(announcement);
    _hid->announce(namesake);
    QVERIFY(_finished->isEmpty());
    _hid->announce(announcement);
    QCOMPARE(_finished->size(), 1);
    QCOMPARE(_finished->first(), QVariantList({"bench", false}));
    _bus.plug(path);
    _bus.plug(otherPath);
    _hid->checkForAnnounced();
    QVERIFY(finishes(3)); // two are left
    QVERIFY(_finished->at(1).at(1).toBool() && _finished->at(2).at(1).toBool());
}

void TestHidBootloader::pathThatGoesToAnotherModelIsNotFlashed()
{
    QSignalSpy refusals(_hid, &BootLoaderCommunicator::Refused);
    _bus.plug(path);
    _bus.plug(otherPath);
    _hid->setReleaseNumber("first", model);
    _hid->setReleaseNumber("second", model);
    connect(
        _hid, &BootLoaderCommunicator::Started, _started.data(), [this] { _bus.plug(otherPath, deviceOf(otherModel)); },
        Qt::DirectConnection);
    _hid->checkForAnnounced();
    QVERIFY(finishes(2));
    QCOMPARE(_finished->at(0), QVariantList({"first", true}));
    QCOMPARE(_finished->at(1), QVariantList({"second", false}));
    QCOMPARE(refusals.size(), 1);
    QCOMPARE(refusals.first().at(1).value<VekFirmwareUpdateStage>(), VekFirmwareUpdateStage::BootloaderGone);
    QCOMPARE(_bus.device(otherPath).writes, 0);
}

void TestHidBootloader::standInIsNotWritten()
{
    qunsetenv(permission);
    QSignalSpy refusals(_hid, &BootLoaderCommunicator::Refused);
    _bus.plug(path);
    _hid->checkForHidConnections();
    QVERIFY(finishes());
    QCOMPARE(_finished->first(), QVariantList({"", false}));
    QCOMPARE(refusals.size(), 1);
    QCOMPARE(refusals.first().at(1).value<VekFirmwareUpdateStage>(), VekFirmwareUpdateStage::StandInFirmware);
    QCOMPARE(refusals.first().at(2).toString(), VekErrorCode(VekErrorCode::StandInFirmware).message());
    QCOMPARE(_bus.device(path).writes, 0);
    // Whoever goes past the check of the model does not come by an image either.
    QSignalSpy runs(BootloaderThread::Instance(), &BootloaderThread::Finished);
    BootloaderThread::Instance()->SetHexFile(BootLoaderCommunicator::findHexFilePath(model));
    BootloaderThread::Instance()->SetHIDPath(path);
    BootloaderThread::Instance()->upLoading();
    QTRY_COMPARE(runs.size(), 1);
    QCOMPARE(runs.first().at(1).toBool(), false);
    QCOMPARE(_bus.device(path).writes, 0);
}

void TestHidBootloader::unknownModelWaitsForAnAnswer()
{
    Device device;
    device.release = 256;
    _bus.plug(path, device);
    QSignalSpy questions(_hid, &BootLoaderCommunicator::FindReleaseNumber);
    _hid->checkForHidConnections();
    QTRY_COMPARE(questions.size(), 1);
    QCOMPARE(questions.first(), QVariantList({path}));
    QVERIFY(_started->isEmpty());
    QTimer::singleShot(0, _hid, [this] { _hid->UpdateUnknowReleaseNumber(path, HardwareModel_t(model)); });
    QVERIFY(finishes());
    QCOMPARE(_finished->first(), QVariantList({"", true}));
    QVERIFY(_bus.device(path).hasJumped);
}

void TestHidBootloader::answerDuringAnUpdateWaitsForItsEnd()
{
    _bus.plug(path, deviceOf(256));
    _bus.plug(otherPath, deviceOf(otherModel));
    int endedBefore = -1; // when the second one begins
    connect(_hid, &BootLoaderCommunicator::Started, _started.data(), [&] {
        if (_started->size() == 1)
            _hid->UpdateUnknowReleaseNumber(path, HardwareModel_t(model));
        else
            endedBefore = _finished->size();
    });
    _hid->checkForHidConnections();
    QVERIFY(finishes(2));
    QCOMPARE(endedBefore, 1);
    QCOMPARE(_bus.device(path).flash, QByteArrayList(imageRecords(model)).join());
    QCOMPARE(_bus.device(otherPath).flash, QByteArrayList(imageRecords(otherModel)).join());
}

void TestHidBootloader::deviceWithoutImageIsNotTouched_data()
{
    QTest::addColumn<int>("release");
    QTest::newRow("no longer supported") << int(HardwareModel_t::Cedar);
    QTest::newRow("no model") << 200;
    QTest::newRow("updated over its port") << int(HardwareModel_t::Gale);
    QTest::newRow("no byte") << 256 + model; // its low byte would be a model
}

void TestHidBootloader::deviceWithoutImageIsNotTouched()
{
    QFETCH(int, release);
    Device device;
    device.release = static_cast<unsigned short>(release);
    _bus.plug(path, device);
    _hid->checkForHidConnections();
    QVERIFY(finishes());
    QCOMPARE(_finished->first(), QVariantList({"", false}));
    QCOMPARE(_bus.device(path).writes, 0);
}

void TestHidBootloader::connectedDeviceIsNotFoundTwice()
{
    Device device;
    device.release = 200;
    _bus.plug(path, device);
    _hid->checkForHidConnections();
    QVERIFY(finishes());
    QVERIFY(endsSearch());
    _hid->setReleaseNumber("announced", model); // the device that stayed must not take this update
    _hid->checkForHidConnections();
    QVERIFY(searchesOn());
    QCOMPARE(_finished->size(), 1);
    _bus.plug(otherPath);
    QVERIFY(finishes(2));
    QCOMPARE(_finished->last(), QVariantList({"announced", true}));
    QVERIFY(_bus.device(otherPath).hasJumped);
}

void TestHidBootloader::hidapiIsNeverEnteredByTwoThreads()
{
    std::atomic<bool> isOver{false};
    std::thread searcher([&] {
        while (!isOver)
            HidCommunicator::SearchForBootloaderHidPath();
    });
    for (int i = 0; i < 50; ++i)
        HidCommunicator device("/dev/none");
    isOver = true;
    searcher.join();
    QCOMPARE(_bus.overlaps(), 0);
}

void TestHidBootloader::applicationMayEndInTheMiddleOfARun()
{
    // Whether it may shows behind the end of this test: a thread that stayed would hold the process.
    Device device;
    device.silentAt = 2;
    _bus.plug(path, device);
    _hid->checkForHidConnections();
    connect(_hid, &BootLoaderCommunicator::Started, QCoreApplication::instance(), &QCoreApplication::quit,
            Qt::QueuedConnection);
    QCoreApplication::exec();
    QCOMPARE(_started->size(), 1);
    QVERIFY(_finished->isEmpty());
}

NIMBRELLE_TEST_MAIN(TestHidBootloader)
#include "TestHidBootloader.moc"
