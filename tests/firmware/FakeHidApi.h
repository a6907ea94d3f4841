// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <mutex>
#include <string>

/// One bootloader on the bus.
struct FakeHidDevice {
    // identity
    unsigned short vendor = 0x04D8;
    unsigned short product = 0x003C;
    std::wstring manufacturer = L"Brenmoor Apparatus";
    std::wstring name = L"Nimbrelle HID bootloader";
    bool hasManufacturer = true;
    bool hasName = true;
    unsigned short release = 35;
    // faults
    int silentAt = 0;             ///< command that gets no reply
    bool repliesWrongCrc = false; ///< READ_CRC tells another value
    bool takesNoReports = false;  ///< a write blocks, see onBlockedWrite, then fails
    int refusedOpens = 0;         ///< so many opens are refused for lack of rights
    bool isBroken = false;        ///< cannot be opened at all
    // what it has seen
    QByteArray commands;       ///< command bytes in order
    QList<QByteArray> batches; ///< data of each PROGRAM_FLASH
    QByteArray flash;          ///< records, one behind the other
    QByteArray crcRequest;
    int writes = 0;
    bool hasJumped = false;
    // between host and device
    QByteArray incoming;
    QList<QByteArray> outgoing;
};

/**
 * Takes the place of hidapi in a test program: a USB bus with bootloaders that store what they are sent.
 *
 * A bootloader decodes frames by itself, keeps the records of PROGRAM_FLASH, answers READ_CRC with the CRC of what it
 * holds, and leaves the bus on JUMP_TO_APP. Faults are switched on per device.
 *
 * @thread Any thread, while no update runs; the calls of hidapi lock.
 */
class FakeHidBus
{
public:
    static FakeHidBus &bus();
    void clear();
    void plug(const QString &path, const FakeHidDevice &device = FakeHidDevice());
    FakeHidDevice device(const QString &path);
    void mend(const QString &path); ///< switches the faults off
    /// How often two threads were inside hidapi's unsafe calls at once.
    int overlaps();
    int openDevices();
    int searches(); ///< for devices, so far

    // for hidapi's functions
    std::mutex mutex;                         // guards what follows
    QMap<std::string, FakeHidDevice> devices; ///< those that have left are kept under their path with a blank in front
    int open = 0;
    int overlapCount = 0;
    int searchCount = 0;
    std::function<void()> onBlockedWrite; // the time that it takes; set while no update runs
};
