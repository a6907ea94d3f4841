// SPDX-License-Identifier: MIT
#pragma once

#include "firmware/ApplicationSingleton.h"

#include <QObject>
#include <QString>

/**
 * Starts the updates of battery cyclers over their serial port, and passes on what they tell.
 *
 * @thread Lives on the thread that first called Instance(), which must run an event loop; flash() is called there. Each
 *         update has a worker and a thread of its own. After a failure these stay, idle, until the application ends.
 *         See compatibility.md, threads of failed updates.
 */
class BootLoaderCOM : public QObject
{
    Q_OBJECT

public:
    static BootLoaderCOM *Instance();
    /// Ends the threads of all updates.
    ~BootLoaderCOM() override;

    /// Starts an update; returns at once.
    void flash(QString const &port, QString const &hexFile, QString const &deviceName);

Q_SIGNALS:
    void ShowDialog();
    /// The instrument has answered; with its hardware record as text.
    void Found(QString hardware);
    void Started(QString deviceName);
    void Progress(QString deviceName, int percent);
    void Finished(QString deviceName, bool success);

private:
    friend class ApplicationSingleton<BootLoaderCOM>;
    BootLoaderCOM() = default;
};
