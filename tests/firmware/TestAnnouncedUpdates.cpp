// SPDX-License-Identifier: MIT
#include "firmware/AnnouncedUpdates.h"
#include "firmware/UsbPlace.h"
#include "support/TestMain.h"

namespace {

using Waiting = QList<Announcement>;
using Device = AppearedDevice;

constexpr int alder = 35;
constexpr int heron = 22;
constexpr int ibis = 32; // shares its image with the next one
constexpr int jay = 33;
constexpr int unknown = AnnouncedUpdates::unknownModel;

const QString path = "/dev/hidraw0";

Announcement announced(const QString &name, int model, const QString &place = QString())
{
    return {name, model, "ttyACM0", place, {}, {}};
}

} // namespace
Q_DECLARE_METATYPE(Waiting)
Q_DECLARE_METATYPE(Device)

/// Which announcement a HID bootloader takes.
class TestAnnouncedUpdates : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deviceTakesWhatIsMeantForIt_data();
    void deviceTakesWhatIsMeantForIt();
    void olderDeviceTakesNoneUntilItHasGone();
    void placeIsTheUsbDevice();
};

void TestAnnouncedUpdates::deviceTakesWhatIsMeantForIt_data()
{
    QTest::addColumn<Waiting>("waiting");
    QTest::addColumn<Device>("device");
    QTest::addColumn<QString>("taken"); // empty: it takes none
    const Announcement a = announced("A", alder);
    const Announcement b = announced("B", heron);
    const Announcement a1 = announced("A", alder, "/usb1");
    const Announcement b2 = announced("B", heron, "/usb2");

    QTest::newRow("another model's number") << Waiting{a} << Device{path, heron, ""} << "";
    QTest::newRow("no model's number") << Waiting{a} << Device{path, 200, ""} << "";
    QTest::newRow("another model with the same image") << Waiting{announced("A", ibis)} << Device{path, jay, ""} << "";
    QTest::newRow("its model behind another") << Waiting{a, b} << Device{path, heron, ""} << "B";
    QTest::newRow("oldest of its model") << Waiting{a, announced("B", alder)} << Device{path, alder, ""} << "A";
    QTest::newRow("that of its socket") << Waiting{a1, announced("B", alder, "/usb2")} << Device{path, alder, "/usb2"}
                                        << "B";
    QTest::newRow("its model in another socket") << Waiting{a1} << Device{path, alder, "/usb3"} << "A";
    QTest::newRow("another model in its socket") << Waiting{a1} << Device{path, heron, "/usb1"} << "";

    QTest::newRow("unknown model, one waits") << Waiting{a} << Device{path, unknown, ""} << "A";
    QTest::newRow("unknown model, one image")
        << Waiting{announced("A", ibis), announced("B", jay)} << Device{path, unknown, ""} << "A";
    QTest::newRow("unknown model, two images") << Waiting{a, b} << Device{path, unknown, ""} << "";
    QTest::newRow("unknown model, two images, its socket") << Waiting{a1, b2} << Device{path, unknown, "/usb2"} << "B";
    QTest::newRow("unknown model, another socket") << Waiting{a1} << Device{path, unknown, "/usb2"} << "";
}

void TestAnnouncedUpdates::deviceTakesWhatIsMeantForIt()
{
    QFETCH(Waiting, waiting);
    QFETCH(Device, device);
    AnnouncedUpdates updates;
    for (const Announcement &each : qAsConst(waiting))
        updates.add(each);
    const auto taken = updates.takeFor(device);
    QTEST(taken ? taken->deviceName : QString(), "taken");
    QCOMPARE(updates.takeExpired().size(), waiting.size() - (taken ? 1 : 0));
}

void TestAnnouncedUpdates::olderDeviceTakesNoneUntilItHasGone()
{
    AnnouncedUpdates updates;
    Announcement announcement = announced("A", alder);
    announcement.olderOnes = QStringList{path};
    updates.add(announcement);
    QVERIFY(!updates.takeFor({path, alder, ""}));
    updates.forgetPath(path); // and another device comes there
    QVERIFY(updates.takeFor({path, alder, ""}));
}

void TestAnnouncedUpdates::placeIsTheUsbDevice()
{
    QTemporaryDir folder;
    QDir sys(folder.path());
    const QString usb = "devices/pci0/usb1/1-2";
    sys.mkpath(usb + "/1-2:1.0/tty/ttyACM7");
    sys.mkpath(usb + "/1-2:1.0/0003:04D8:003C.0001/hidraw/hidraw7");
    sys.mkpath("devices/platform/serial8250/tty/ttyS7");
    sys.mkpath("class/tty");
    sys.mkpath("class/hidraw");
    QFile vendor(sys.filePath(usb + "/idVendor"));
    QVERIFY(vendor.open(QIODevice::WriteOnly));
    const auto link = [&sys](const QString &node, const QString &device) {
        sys.mkpath("class/" + node);
        return QFile::link(sys.filePath(device), sys.filePath("class/" + node + "/device"));
    };
    QVERIFY(link("tty/ttyACM7", usb + "/1-2:1.0"));
    QVERIFY(link("hidraw/hidraw7", usb + "/1-2:1.0/0003:04D8:003C.0001"));
    QVERIFY(link("tty/ttyS7", "devices/platform/serial8250"));

    const QString place = QFileInfo(sys.filePath(usb)).canonicalFilePath();
    QCOMPARE(usbPlaceOf("ttyACM7", folder.path()), place);
    QCOMPARE(usbPlaceOf("/dev/hidraw7", folder.path()), place);
    QCOMPARE(usbPlaceOf("/dev/ttyS7", folder.path()), QString());
    QCOMPARE(usbPlaceOf("/dev/pts/7", folder.path()), QString());
}

NIMBRELLE_TEST_MAIN(TestAnnouncedUpdates)
#include "TestAnnouncedUpdates.moc"
