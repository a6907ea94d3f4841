// SPDX-License-Identifier: MIT
#include "FakeHidApi.h"

#include "images/CrcCalculator.h"
#include "images/HexLoader.h"

#include <hidapi.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

struct hid_device_ {
    std::string path;
};

namespace {

using namespace std::chrono_literals;
using Lock = std::lock_guard<std::mutex>;

std::atomic<int> threadsInside{0};

/// Stays inside for a moment, so that a second thread would meet the first.
struct UnsafeCall {
    UnsafeCall()
    {
        if (++threadsInside > 1) {
            const Lock lock(FakeHidBus::bus().mutex);
            ++FakeHidBus::bus().overlapCount;
        }
        std::this_thread::sleep_for(1ms);
    }
    ~UnsafeCall() { --threadsInside; }
};

void reply(FakeHidDevice &device, QByteArray body)
{
    if (body.at(0) == device.silentAt)
        return;
    const uint16_t crc = CrcCalculator::Get16(body.constData(), unsigned(body.size()));
    body.append(char(crc)).append(char(crc >> 8));
    QByteArray frame(1, '\x01');
    for (const char byte : body) {
        if (byte == 0x01 || byte == 0x04 || byte == 0x10)
            frame.append('\x10');
        frame.append(byte);
    }
    device.outgoing.append(frame.append('\x04').leftJustified(64, '\0'));
}

/// Cuts the stored bytes into records again and takes their CRC.
uint16_t crcOfFlash(const QByteArray &flash)
{
    QList<QByteArray> records;
    for (int position = 0; position < flash.size();) {
        const int size = quint8(flash.at(position)) + 5;
        records.append(flash.mid(position, size));
        position += size;
    }
    return HexLoader::CalculateCrc(records).crc;
}

/// @return false when the device leaves the bus
bool execute(FakeHidDevice &device, const QByteArray &body)
{
    const char command = body.at(0);
    device.commands.append(command);
    if (command == 2)
        device.flash.clear();
    if (command == 3) {
        device.batches.append(body.mid(1));
        device.flash.append(body.mid(1));
    }
    if (command == 2 || command == 3)
        reply(device, body.left(1));
    if (command == 4) {
        device.crcRequest = body.mid(1);
        const int crc = crcOfFlash(device.flash) + (device.repliesWrongCrc ? 1 : 0);
        reply(device, body.left(1).append(char(crc)).append(char(crc >> 8)));
    }
    device.hasJumped = command == 5;
    return !device.hasJumped;
}

/// Takes the next frame out of what has come. @return false without a whole one
bool takeFrame(QByteArray &incoming, QByteArray &body)
{
    bool isEscaped = false;
    QByteArray decoded;
    for (int i = 0; i < incoming.size(); ++i) {
        const char byte = incoming.at(i);
        if (isEscaped || (byte != 0x01 && byte != 0x04 && byte != 0x10)) {
            decoded.append(byte);
            isEscaped = false;
        } else if (byte == 0x10) {
            isEscaped = true;
        } else if (byte == 0x01) {
            decoded.clear();
        } else {
            incoming.remove(0, i + 1);
            body = decoded.left(decoded.size() - 2);
            const uint16_t crc = CrcCalculator::Get16(body.constData(), unsigned(body.size()));
            return decoded.right(2) == QByteArray().append(char(crc)).append(char(crc >> 8));
        }
    }
    return false;
}

wchar_t *copyOf(const std::wstring &text, bool isThere)
{
    return isThere ? wcsdup(text.c_str()) : nullptr;
}

hid_device_info *describe(const std::string &path, const FakeHidDevice &device, hid_device_info *next)
{
    auto *const info = new hid_device_info();
    info->path = strdup(path.c_str());
    info->vendor_id = device.vendor;
    info->product_id = device.product;
    info->release_number = device.release;
    info->manufacturer_string = copyOf(device.manufacturer, device.hasManufacturer);
    info->product_string = copyOf(device.name, device.hasName);
    info->next = next;
    return info;
}

} // namespace

FakeHidBus &FakeHidBus::bus()
{
    static FakeHidBus bus;
    return bus;
}

void FakeHidBus::clear()
{
    const Lock lock(mutex);
    devices.clear();
}

void FakeHidBus::plug(const QString &path, const FakeHidDevice &device)
{
    const Lock lock(mutex);
    devices.insert(path.toStdString(), device);
}

FakeHidDevice FakeHidBus::device(const QString &path)
{
    const Lock lock(mutex);
    return devices.value(path.toStdString(), devices.value(" " + path.toStdString()));
}

void FakeHidBus::mend(const QString &path)
{
    const Lock lock(mutex);
    FakeHidDevice mended;
    mended.release = devices.value(path.toStdString()).release;
    devices.insert(path.toStdString(), mended);
}

int FakeHidBus::overlaps()
{
    const Lock lock(mutex);
    return overlapCount;
}

int FakeHidBus::openDevices()
{
    const Lock lock(mutex);
    return open;
}

int FakeHidBus::searches()
{
    const Lock lock(mutex);
    return searchCount;
}

extern "C" {

int hid_init(void)
{
    const UnsafeCall call;
    return 0;
}

int hid_exit(void)
{
    const UnsafeCall call;
    return 0;
}

hid_device_info *hid_enumerate(unsigned short, unsigned short)
{
    const UnsafeCall call;
    const Lock lock(FakeHidBus::bus().mutex);
    ++FakeHidBus::bus().searchCount;
    hid_device_info *list = nullptr;
    const auto &devices = FakeHidBus::bus().devices;
    for (auto device = devices.begin(); device != devices.end(); ++device) {
        if (device.key().front() != ' ')
            list = describe(device.key(), device.value(), list);
    }
    return list;
}

void hid_free_enumeration(hid_device_info *list)
{
    while (list) {
        hid_device_info *const next = list->next;
        std::free(list->path);
        std::free(list->manufacturer_string);
        std::free(list->product_string);
        delete list;
        list = next;
    }
}

hid_device *hid_open_path(const char *path)
{
    const UnsafeCall call;
    FakeHidBus &bus = FakeHidBus::bus();
    const Lock lock(bus.mutex);
    if (!bus.devices.contains(path) || bus.devices[path].isBroken) {
        errno = ENOENT;
        return nullptr;
    }
    if (bus.devices[path].refusedOpens > 0) {
        --bus.devices[path].refusedOpens;
        errno = EACCES;
        return nullptr;
    }
    ++bus.open;
    return new hid_device_{path};
}

void hid_close(hid_device *device)
{
    const Lock lock(FakeHidBus::bus().mutex);
    --FakeHidBus::bus().open;
    delete device;
}

int hid_set_nonblocking(hid_device *, int)
{
    return 0;
}

int hid_write(hid_device *handle, const unsigned char *data, size_t length)
{
    FakeHidBus &bus = FakeHidBus::bus();
    std::unique_lock<std::mutex> lock(bus.mutex);
    if (!bus.devices.contains(handle->path))
        return -1;
    FakeHidDevice &device = bus.devices[handle->path];
    ++device.writes;
    if (device.takesNoReports) {
        lock.unlock();
        bus.onBlockedWrite();
        return -1;
    }
    device.incoming.append(reinterpret_cast<const char *>(data) + 1, int(length) - 1);
    QByteArray body;
    while (takeFrame(device.incoming, body)) {
        if (execute(device, body))
            continue;
        bus.devices.insert(" " + handle->path, device);
        bus.devices.remove(handle->path);
        break;
    }
    return int(length);
}

int hid_read(hid_device *handle, unsigned char *data, size_t length)
{
    FakeHidBus &bus = FakeHidBus::bus();
    const Lock lock(bus.mutex);
    if (!bus.devices.contains(handle->path))
        return -1;
    FakeHidDevice &device = bus.devices[handle->path];
    if (device.outgoing.isEmpty())
        return 0;
    const QByteArray report = device.outgoing.takeFirst().left(int(length));
    std::memcpy(data, report.constData(), size_t(report.size()));
    return report.size();
}

} // extern "C"
