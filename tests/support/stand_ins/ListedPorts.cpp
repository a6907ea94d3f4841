// SPDX-License-Identifier: MIT
// Stands in for libudev in front of a program that lists serial ports through Qt: there are those alone that the
// environment variable NIMBRELLE_TEST_PORTS names, separated by colons, so that no port of the machine is opened.

#include <libudev.h>

#include <cstdlib>
#include <deque>
#include <sstream>
#include <string>

struct udev {
};

struct udev_list_entry {
    std::string name;
    udev_list_entry *next;
};

struct udev_enumerate {
    std::deque<udev_list_entry> entries;
};

struct udev_device {
    std::string name;
};

namespace {

udev_device usbInterface; // every port's parent

} // namespace

extern "C" {

udev *udev_new(void)
{
    return new udev;
}

udev *udev_unref(udev *object)
{
    delete object;
    return nullptr;
}

udev_enumerate *udev_enumerate_new(udev *)
{
    return new udev_enumerate;
}

udev_enumerate *udev_enumerate_unref(udev_enumerate *list)
{
    delete list;
    return nullptr;
}

int udev_enumerate_add_match_subsystem(udev_enumerate *, const char *)
{
    return 0;
}

int udev_enumerate_scan_devices(udev_enumerate *list)
{
    const char *const given = std::getenv("NIMBRELLE_TEST_PORTS");
    // An empty list would make Qt look elsewhere, hence one that cannot be opened.
    std::istringstream names(given && *given ? given : "/dev/no-port");
    for (std::string name; std::getline(names, name, ':');) {
        list->entries.push_back({name, nullptr});
        if (list->entries.size() > 1)
            list->entries[list->entries.size() - 2].next = &list->entries.back();
    }
    return 0;
}

udev_list_entry *udev_enumerate_get_list_entry(udev_enumerate *list)
{
    return &list->entries.front();
}

udev_list_entry *udev_list_entry_get_next(udev_list_entry *entry)
{
    return entry->next;
}

const char *udev_list_entry_get_name(udev_list_entry *entry)
{
    return entry->name.c_str();
}

udev_device *udev_device_new_from_syspath(udev *, const char *path)
{
    return new udev_device{path};
}

udev_device *udev_device_unref(udev_device *device)
{
    delete device;
    return nullptr;
}

udev_device *udev_device_get_parent(udev_device *)
{
    return &usbInterface;
}

const char *udev_device_get_driver(udev_device *)
{
    return "cdc_acm";
}

const char *udev_device_get_sysname(udev_device *device)
{
    return device->name.c_str();
}

const char *udev_device_get_devnode(udev_device *device)
{
    return device->name.c_str();
}

const char *udev_device_get_property_value(udev_device *, const char *)
{
    return nullptr;
}

} // extern "C"
