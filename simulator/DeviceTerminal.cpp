// SPDX-License-Identifier: MIT
#include "DeviceTerminal.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int retryMs = 20;

} // namespace

DeviceTerminal::DeviceTerminal(const QString &path, QObject *parent) : SerialEnd(parent)
{
    setPortName(path);
    _retry.setInterval(retryMs);
    connect(&_retry, &QTimer::timeout, this, &DeviceTerminal::open);
}

bool DeviceTerminal::plug()
{
    _retry.start();
    open();
    return true;
}

void DeviceTerminal::unplug()
{
    _retry.stop();
    SerialEnd::unplug();
}

void DeviceTerminal::onHangUp()
{
    SerialEnd::unplug();
    _retry.start();
}

void DeviceTerminal::open()
{
    const int fd = ::open(QFile::encodeName(portName()).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return;
    if (!makeRaw(fd)) {
        ::close(fd);
        return;
    }
    _retry.stop();
    use(fd);
    Q_EMIT drained(); // whoever waited for room has all of it
}
