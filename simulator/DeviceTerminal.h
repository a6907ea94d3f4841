// SPDX-License-Identifier: MIT
#pragma once

#include "SerialEnd.h"

#include <QTimer>

/**
 * A line that the system has already: a terminal device, such as the device side of a USB serial gadget. While it is
 * missing, and each time that its other side has gone, it is tried again.
 *
 * @thread As SerialEnd.
 */
class DeviceTerminal : public SerialEnd
{
    Q_OBJECT

public:
    explicit DeviceTerminal(const QString &path, QObject *parent = nullptr);

    /// Opens the device, now or when it appears. Never false.
    bool plug() override;
    void unplug() override;

protected:
    void onHangUp() override;

private:
    void open();

    QTimer _retry;
};
