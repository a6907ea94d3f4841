// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/**
 * The socket that a device is plugged into: the system's path of its USB device, the same for a serial port and for the
 * HID that takes its place. Empty for what is no USB device.
 *
 * @param node    a serial port or a HID, with or without "/dev/" in front; symbolic links are followed
 * @param sysRoot where the system tells of its devices; another one is for tests
 */
QString usbPlaceOf(const QString &node, const QString &sysRoot = QStringLiteral("/sys"));
