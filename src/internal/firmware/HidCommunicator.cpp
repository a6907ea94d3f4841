// SPDX-License-Identifier: MIT
#include "firmware/HidCommunicator.h"

#include "firmware/HidFrame.h"

#include <QMutex>
#include <QMutexLocker>

#include <hidapi.h>

#include <cerrno>
#include <cwchar>

namespace {

constexpr unsigned short bootloaderVendor = 0x04D8;
constexpr unsigned short bootloaderProduct = 0x003C;
constexpr wchar_t bootloaderManufacturer[] = L"Brenmoor Apparatus";
constexpr wchar_t bootloaderName[] = L"Nimbrelle HID bootloader";

constexpr int pollMs = 20;
constexpr int rightsTimeoutMs = 2000;
constexpr int rightsRetryMs = 50;
constexpr int deafAfterMs = 1000;

/// Guards hidapi's init, exit, enumerate, open and close: they share state of the library's own.
QMutex &hidapiMutex()
{
    static QMutex mutex;
    return mutex;
}

bool isEqual(const wchar_t *text, const wchar_t *expected)
{
    return text && std::wcscmp(text, expected) == 0; // a device may do without the text
}

bool isBootloader(const hid_device_info &device)
{
    return device.path && device.vendor_id == bootloaderVendor && device.product_id == bootloaderProduct &&
           isEqual(device.manufacturer_string, bootloaderManufacturer) &&
           isEqual(device.product_string, bootloaderName);
}

hid_device *openOnce(const QByteArray &path)
{
    const QMutexLocker locker(&hidapiMutex());
    errno = 0; // hidapi gives no other reason for a failure
    return hid_open_path(path.constData());
}

hid_device *openPatiently(const QByteArray &path, const Clock &clock)
{
    const Deadline deadline(rightsTimeoutMs, clock);
    hid_device *device = openOnce(path);
    while (!device && errno == EACCES && !deadline.hasCome()) {
        clock.sleep(rightsRetryMs);
        device = openOnce(path);
    }
    return device;
}

/// The last report; one for all devices, since one of them is updated at a time.
QByteArray &sharedBuffer()
{
    static QByteArray buffer(4096, '\0');
    return buffer;
}

} // namespace

HidCommunicator::HidCommunicator(QString const &path, QObject *parent, const Clock &clock)
    : QObject(parent), _clock(clock), _pollAlarm(clock.makeAlarm([this] { poll(); }))
{
    {
        const QMutexLocker locker(&hidapiMutex());
        if (hid_init() != 0)
            return;
    }
    _device = openPatiently(path.toLocal8Bit(), clock);
    if (!_device) {
        const QMutexLocker locker(&hidapiMutex());
        hid_exit();
        return;
    }
    hid_set_nonblocking(_device, 1);
    _pollAlarm->start(pollMs);
}

HidCommunicator::~HidCommunicator()
{
    if (!_device)
        return;
    const QMutexLocker locker(&hidapiMutex());
    hid_close(_device);
    hid_exit();
}

QMap<QString, int> HidCommunicator::SearchForBootloaderHidPath()
{
    const QMutexLocker locker(&hidapiMutex());
    QMap<QString, int> found;
    if (hid_init() != 0)
        return found;
    hid_device_info *const devices = hid_enumerate(0, 0);
    for (const hid_device_info *device = devices; device; device = device->next) {
        if (isBootloader(*device))
            found.insert(QString::fromLocal8Bit(device->path), device->release_number);
    }
    hid_free_enumeration(devices);
    hid_exit();
    return found;
}

void HidCommunicator::SendData(QByteArray const &body)
{
    const QList<QByteArray> reports = HidFrame::reportsOf(HidFrame::make(body));
    for (const QByteArray &report : reports) {
        if (_device && !_isDeaf)
            write(report);
    }
}

void HidCommunicator::write(const QByteArray &report)
{
    const Deadline patience(deafAfterMs, _clock);
    const int written =
        hid_write(_device, reinterpret_cast<const unsigned char *>(report.constData()), size_t(report.size()));
    // Any other failure shows by the device's silence; this one would add up over the reports of an image.
    _isDeaf = written < 0 && patience.hasCome();
}

void HidCommunicator::poll()
{
    _pollAlarm->start(pollMs);
    TryToReceive();
}

void HidCommunicator::TryToReceive()
{
    if (!_device)
        return;
    QByteArray &buffer = sharedBuffer();
    const int size = hid_read(_device, reinterpret_cast<unsigned char *>(buffer.data()), size_t(buffer.size()));
    if (size < 0)
        return;
    _received.append(buffer.left(size)); // dropped again by the start of the frame
    const QList<QByteArray> bodies = HidFrame::takeBodies(buffer, _received);
    for (const QByteArray &body : bodies)
        Q_EMIT DataReceived(body);
}
