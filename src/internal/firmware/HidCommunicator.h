// SPDX-License-Identifier: MIT
#pragma once

#include "waiting/Clock.h"

#include <QByteArray>
#include <QMap>
#include <QObject>
#include <QString>

#include <memory>

struct hid_device_;

/**
 * One instrument in its HID bootloader: finds such devices, writes bodies in frames, polls for replies.
 *
 * The last report stays in a buffer of its own, and each poll decodes all of it again. A reply is therefore delivered
 * every 20 ms until the next one comes, and a wait for the same reply ends at the next poll. That sets the pace of
 * programming. See compatibility.md, replies seen again.
 *
 * @thread  Lives on the thread that makes it, which must run an event loop. Searching is free of any thread: the calls
 *          into hidapi that do not bear two threads take turns.
 * @failure A device that cannot be opened leaves an object that sends and receives nothing. A write blocks up to 5 s on
 *          a device that takes no reports; after the first that fails so, nothing more is sent.
 */
class HidCommunicator : public QObject
{
    Q_OBJECT

public:
    /// Opens the device. Refused rights are waited for up to 2 s, since udev grants them after the device appears.
    explicit HidCommunicator(QString const &path, QObject *parent = nullptr, const Clock &clock = Clock::host());
    ~HidCommunicator() override;

    /// The bootloaders that are there: path to USB release number, which is the model number or 256 for an unknown one.
    static QMap<QString, int> SearchForBootloaderHidPath();
    /// Sends a body in a frame.
    void SendData(QByteArray const &body);

Q_SIGNALS:
    /// The body of a reply; comes again and again.
    void DataReceived(QByteArray const &body);

private:
    void write(const QByteArray &report);
    void poll();
    void TryToReceive();

    const Clock &_clock;
    hid_device_ *_device = nullptr;
    QByteArray _received; ///< decoded since the last start of a frame
    const std::unique_ptr<Alarm> _pollAlarm;
    bool _isDeaf = false; ///< a write has blocked in vain
};
