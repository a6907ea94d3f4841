// SPDX-License-Identifier: MIT
// Stands in for hidapi in a scripted run of an unchanged program: its devices are the sockets in the folder that the
// environment variable NIMBRELLE_TEST_HID names, as nimbrelle-sim --hid makes them. The first packet on a connection
// tells the identity, in five lines; each other one is a report.

#include <hidapi.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <linux/sockios.h>
#include <sstream>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

struct hid_device_ {
    int fd;
};

namespace {

using namespace std::chrono_literals;

constexpr auto writeTimeout = 5s; // the kernel's, for a report that the device does not take
constexpr std::size_t packetSize = 512;

/// A connection, and the identity that came first; -1 if there is nobody.
int connectTo(const std::string &path, std::string &identity)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        close(fd);
        return -1;
    }
    const timeval patience = {1, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    char packet[packetSize];
    const ssize_t size = recv(fd, packet, sizeof packet, 0);
    if (size > 0) {
        identity.assign(packet, std::size_t(size));
        return fd;
    }
    close(fd);
    errno = ENODEV;
    return -1;
}

wchar_t *wide(const std::string &text)
{
    return wcsdup(std::wstring(text.begin(), text.end()).c_str());
}

hid_device_info *describe(const std::string &path, const std::string &identity)
{
    auto *const info = new hid_device_info();
    info->path = strdup(path.c_str());
    std::istringstream fields(identity);
    std::string manufacturer;
    std::string product;
    fields >> info->vendor_id >> info->product_id >> info->release_number >> std::ws;
    std::getline(fields, manufacturer);
    std::getline(fields, product);
    info->manufacturer_string = wide(manufacturer);
    info->product_string = wide(product);
    return info;
}

/// Whether the other side has taken all packets in time.
bool isTaken(int fd)
{
    const auto deadline = std::chrono::steady_clock::now() + writeTimeout;
    int waiting = 1;
    while (ioctl(fd, SIOCOUTQ, &waiting) == 0 && waiting > 0) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

} // namespace

extern "C" {

int hid_init(void)
{
    return 0;
}

int hid_exit(void)
{
    return 0;
}

hid_device_info *hid_enumerate(unsigned short, unsigned short)
{
    const char *const folder = std::getenv("NIMBRELLE_TEST_HID");
    DIR *const entries = folder ? opendir(folder) : nullptr;
    hid_device_info *list = nullptr;
    while (const dirent *entry = entries ? readdir(entries) : nullptr) {
        const std::string path = std::string(folder) + "/" + entry->d_name;
        std::string identity;
        const int fd = entry->d_type == DT_SOCK ? connectTo(path, identity) : -1;
        if (fd < 0)
            continue;
        close(fd);
        hid_device_info *const info = describe(path, identity);
        info->next = list;
        list = info;
    }
    if (entries)
        closedir(entries);
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
    std::string identity;
    const int fd = connectTo(path, identity);
    return fd < 0 ? nullptr : new hid_device_{fd};
}

void hid_close(hid_device *device)
{
    close(device->fd);
    delete device;
}

int hid_set_nonblocking(hid_device *, int)
{
    return 0; // hid_read() never waits
}

int hid_write(hid_device *device, const unsigned char *data, size_t length)
{
    const ssize_t sent = send(device->fd, data + 1, length - 1, MSG_NOSIGNAL); // without the report number
    return sent == ssize_t(length) - 1 && isTaken(device->fd) ? int(length) : -1;
}

int hid_read(hid_device *device, unsigned char *data, size_t length)
{
    const ssize_t size = recv(device->fd, data, length, MSG_DONTWAIT);
    if (size > 0)
        return int(size);
    return size < 0 && errno == EAGAIN ? 0 : -1;
}

} // extern "C"
