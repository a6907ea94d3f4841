// SPDX-License-Identifier: MIT
#include "VekDeviceTracker.h"

#include "session/AdmittedInstrument.h"
#include "support/TestMain.h"

#include <QSerialPortInfo>

#include <sys/ioctl.h>
#include <umockdev.h>

#include <atomic>
#include <thread>

namespace {

/// Outlives the application object, and the tracker's threads with it.
SteppedClock hostClock(SteppedClock::Use::AsHost);

std::atomic<int> timesRaised{0};  ///< how often DTR was asked to go up
std::atomic<int> timesDropped{0}; ///< or down

bool isAboutDtr(UMockdevIoctlClient *client)
{
    UMockdevIoctlData *const lines =
        umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0, sizeof(int), nullptr);
    guint8 *bytes = nullptr;
    gint length = 0;
    umockdev_ioctl_data_retrieve(lines, &bytes, &length);
    const bool isIt = length == sizeof(int) && *reinterpret_cast<const int *>(bytes) == TIOCM_DTR;
    g_free(bytes);
    umockdev_ioctl_data_unref(lines);
    return isIt;
}

/// Says yes to what an opener asks of a serial port and umockdev knows nothing of.
gboolean onIoctl(UMockdevIoctlBase *, UMockdevIoctlClient *client, gpointer)
{
    switch (umockdev_ioctl_client_get_request(client)) {
    case TIOCMBIS:
        timesRaised += isAboutDtr(client);
        umockdev_ioctl_client_complete(client, 0, 0);
        return TRUE;
    case TIOCMBIC:
        timesDropped += isAboutDtr(client);
        umockdev_ioctl_client_complete(client, 0, 0);
        return TRUE;
    case TIOCEXCL:
    case TIOCNXCL:
    case TIOCMGET:
    case TIOCMSET:
        umockdev_ioctl_client_complete(client, 0, 0);
        return TRUE;
    default:
        return FALSE; // for the pseudo-terminal itself
    }
}

/// Serves one port on a thread of its own: the test's thread blocks while ports are opened and closed.
class IoctlServer
{
public:
    IoctlServer(UMockdevTestbed *testbed, const QByteArray &port)
    {
        g_signal_connect(_handler, "handle-ioctl", G_CALLBACK(onIoctl), nullptr);
        g_main_context_push_thread_default(_context);
        umockdev_testbed_attach_ioctl(testbed, ("/dev/" + port).constData(), _handler, nullptr);
        g_main_context_pop_thread_default(_context);
        _thread = std::thread([this] { g_main_loop_run(_loop); });
    }
    ~IoctlServer()
    {
        g_main_loop_quit(_loop);
        _thread.join();
        g_object_unref(_handler);
        g_main_loop_unref(_loop);
        g_main_context_unref(_context);
    }
    Q_DISABLE_COPY_MOVE(IoctlServer)

private:
    UMockdevIoctlBase *_handler = umockdev_ioctl_base_new();
    GMainContext *_context = g_main_context_new();
    GMainLoop *_loop = g_main_loop_new(_context, FALSE);
    std::thread _thread;
};

/// Describes one USB serial port to the fake /sys: device, interface, terminal.
QByteArray descriptionOf(const QByteArray &port, int number)
{
    const QByteArray plug = "1-" + QByteArray::number(number);
    const QByteArray device = "/devices/pci0000:00/0000:00:14.0/usb1/" + plug;
    const QByteArray interface = device + "/" + plug + ":1.0";
    return "P: " + device + "\nE: DEVTYPE=usb_device\nE: DRIVER=usb\nE: SUBSYSTEM=usb\n\n" + "P: " + interface +
           "\nE: DEVTYPE=usb_interface\nE: DRIVER=cdc_acm\nE: SUBSYSTEM=usb\n\n" + "P: " + interface + "/tty/" + port +
           "\nN: " + port + "\nE: DEVNAME=/dev/" + port +
           "\nE: SUBSYSTEM=tty\nE: MAJOR=166\nE: MINOR=" + QByteArray::number(number) + "\n\n";
}

} // namespace

/**
 * The searches that go through all serial ports of the machine, on ports that umockdev invents. No other port is in
 * sight, so none is opened.
 */
class TestPortSearch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void noPortNoDevice();
    void allInstrumentsAreConnected();
    void theNamedInstrumentIsConnected();
    void theSearchEndsAtTheFirstAnswer();
    void aDeviceInStartUpIsPassedOver();
    void aSearchWithinAnotherIsRefused();
    void dtrIsRaisedAtEachOpening();
    void whatDoesNotAnswerIsPassedOver();
    void theVerdictOnTheFirstAnswerIsReturned();

private:
    QString rootOfTestbed() const { return QString::fromLocal8Bit(umockdev_testbed_get_root_dir(_testbed)); }
    AdmittedInstrument &plugIn(const QByteArray &port, const QByteArray &name);
    UMockdevTestbed *_testbed = nullptr;
    VekDeviceTracker *_tracker = nullptr;
    std::vector<std::unique_ptr<AdmittedInstrument>> _instruments;
    std::vector<std::unique_ptr<IoctlServer>> _ioctlServers; // kept to the end, for ports that close late
};

void TestPortSearch::initTestCase()
{
    if (!qgetenv("LD_PRELOAD").contains("umockdev"))
        QSKIP("Run it under umockdev-wrapper, which cannot be loaded together with a sanitizer's runtime.");
    _tracker = VekDeviceTracker::Instance();
}

void TestPortSearch::init()
{
    _testbed = umockdev_testbed_new();
    // Without this folder Qt would list the real /dev instead.
    QVERIFY(QDir().mkpath(rootOfTestbed() + "/sys/class/tty"));
    QVERIFY(QSerialPortInfo::availablePorts().isEmpty());
}

void TestPortSearch::cleanup()
{
    _instruments.clear();
    QTRY_VERIFY(_tracker->getConnectedDevices().empty());
    g_clear_object(&_testbed);
}

AdmittedInstrument &TestPortSearch::plugIn(const QByteArray &port, const QByteArray &name)
{
    umockdev_testbed_disable(_testbed); // the instrument's pseudo-terminal is a real one
    _instruments.push_back(std::make_unique<AdmittedInstrument>(HardwareModel_t::Cedar_2_0, name, 2));
    _instruments.back()->setClock(hostClock);
    umockdev_testbed_enable(_testbed);
    const QString node = rootOfTestbed() + "/dev/" + port;
    umockdev_testbed_add_from_string(_testbed, descriptionOf(port, int(_instruments.size())).constData(), nullptr);
    QFile::remove(node);
    QFile::link(_instruments.back()->portName(), node);
    _ioctlServers.push_back(std::make_unique<IoctlServer>(_testbed, port));
    return *_instruments.back();
}

void TestPortSearch::noPortNoDevice()
{
    QCOMPARE(int(_tracker->connectToDevice("Cedar-1")), int(VekErrorCode::DeviceNotFound));
    QCOMPARE(_tracker->connectAllPluggedInDevices(), 0);
    QCOMPARE(_tracker->updateFirmwareOnAllAvailableDevices(), 0);
}

void TestPortSearch::allInstrumentsAreConnected()
{
    plugIn("ttyACM0", "Cedar-1");
    plugIn("ttyACM1", "Cedar-2");
    QCOMPARE(_tracker->connectAllPluggedInDevices(), 2);
    const std::list<QString> both = {"Cedar-1", "Cedar-2"};
    QTRY_COMPARE(_tracker->getConnectedDevices(), both);
    QCOMPARE(_tracker->updateFirmwareOnAllAvailableDevices(), 0);
    QCOMPARE(_tracker->connectAllPluggedInDevices(), 0); // ports with connected devices do not count
    QCOMPARE(_tracker->getConnectedDevices(), both);
}

void TestPortSearch::theNamedInstrumentIsConnected()
{
    plugIn("ttyACM0", "Cedar-1");
    QSignalSpy arrivals(_tracker, &VekDeviceTracker::newDeviceConnected);
    QCOMPARE(int(_tracker->connectToDevice("Cedar-1")), int(VekErrorCode::Success));
    QVERIFY(arrivals.wait());
    QCOMPARE(int(_tracker->connectToDevice("Cedar-1")), int(VekErrorCode::Success));
    QVERIFY(!arrivals.wait(300));
    QCOMPARE(_instruments[0]->count(PC_ECHO_TEST), 1); // it was not asked again
}

void TestPortSearch::theSearchEndsAtTheFirstAnswer()
{
    AdmittedInstrument &first = plugIn("ttyACM0", "Cedar-1");
    AdmittedInstrument &second = plugIn("ttyACM1", "Cedar-2");
    QSignalSpy arrivals(_tracker, &VekDeviceTracker::newDeviceConnected);
    QCOMPARE(int(_tracker->connectToDevice("Cedar-2")), int(VekErrorCode::Success));
    QVERIFY(!arrivals.wait(300));
    QVERIFY(first.count(PC_PING) > 0);
    QCOMPARE(second.commands().size(), 0);
}

void TestPortSearch::aDeviceInStartUpIsPassedOver()
{
    plugIn("ttyACM0", "Cedar-1");
    plugIn("ttyACM1", "Cedar-2");
    QCOMPARE(int(_tracker->connectToDevice("Cedar-1")), int(VekErrorCode::Success));
    QCOMPARE(int(_tracker->connectToDevice("Cedar-1")), int(VekErrorCode::ConnectionInProgress)); // nothing to wait for
    QCOMPARE(int(_tracker->connectToDevice("Cedar-2")), int(VekErrorCode::Success));
    const std::list<QString> both = {"Cedar-1", "Cedar-2"};
    QTRY_COMPARE(_tracker->getConnectedDevices(), both);
}

void TestPortSearch::aSearchWithinAnotherIsRefused()
{
    AdmittedInstrument &first = plugIn("ttyACM0", "Cedar-1");
    AdmittedInstrument &second = plugIn("ttyACM1", "Cedar-2");
    const FakeInstrument::Answer answer = first.answerTo(PC_READ_FLASH_CAL);
    QVector<int> results;
    first.on(PC_READ_FLASH_CAL, [&](const FakeInstrument::Command &command) {
        if (results.isEmpty())
            results << int(_tracker->connectToDevice("Cedar-2")) << _tracker->connectAllPluggedInDevices()
                    << _tracker->updateFirmwareOnAllAvailableDevices() << second.commands().size();
        answer(command);
    });
    QCOMPARE(_tracker->connectAllPluggedInDevices(), 2);
    QCOMPARE(results, (QVector<int>{int(VekErrorCode::ConnectionInProgress), 0, 0, 0}));
    const std::list<QString> both = {"Cedar-1", "Cedar-2"};
    QTRY_COMPARE(_tracker->getConnectedDevices(), both);
}

/// A pseudo-terminal has no such line, but here shows what is asked of the driver.
void TestPortSearch::dtrIsRaisedAtEachOpening()
{
    constexpr int openings = 3; // ping, handshake, handler
    plugIn("ttyACM0", "Cedar-1");
    timesRaised = timesDropped = 0;
    QCOMPARE(_tracker->connectAllPluggedInDevices(), 1);
    QTRY_COMPARE(int(_tracker->getConnectedDevices().size()), 1);
    QCOMPARE(timesRaised.load(), openings);
    QCOMPARE(timesDropped.load(), 0);
}

void TestPortSearch::whatDoesNotAnswerIsPassedOver()
{
    plugIn("ttyACM0", "Cedar-1").fallSilentOn(PC_PING);
    plugIn("ttyACM1", "Cedar-2");
    QCOMPARE(int(_tracker->connectToDevice("Cedar-2")), int(VekErrorCode::Success));
    QTRY_COMPARE(_tracker->getConnectedDevices(), std::list<QString>{"Cedar-2"});
}

void TestPortSearch::theVerdictOnTheFirstAnswerIsReturned()
{
    plugIn("ttyACM0", "Cedar-1").reply(PC_READ_FIRMWARE_CHECKSUM, NT_FIRMWARE_CHECKSUM, "\x01\x02");
    plugIn("ttyACM1", "Cedar-2");
    QCOMPARE(int(_tracker->connectToDevice("Cedar-2")), int(VekErrorCode::FirmwareNotSupported));
    QCOMPARE(_tracker->connectAllPluggedInDevices(), 1);
    QTRY_COMPARE(_tracker->getConnectedDevices(), std::list<QString>{"Cedar-2"});
}

NIMBRELLE_TEST_MAIN(TestPortSearch)
#include "TestPortSearch.moc"
