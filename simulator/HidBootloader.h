// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/BootFaults.h"
#include "simulator/FlashMemory.h"

#include <QByteArray>
#include <QList>

/**
 * The bootloader of the main line: frames out of 64-byte reports, commands, replies as reports.
 *
 * A frame is SOH, the body and its CRC-16 (low byte first), EOT; DLE stands in front of each byte that is one of these
 * three. What does not make a whole and sound frame is dropped.
 *
 * @thread None; it is called with a report and answers at once.
 */
class HidBootloader
{
public:
    static constexpr int reportSize = 64;

    /// Both are borrowed; a fault that has happened is struck out.
    HidBootloader(FlashMemory &flash, BootFaults &faults);

    /// Takes a report and adds the reports that answer it.
    BootEvent take(const QByteArray &report, QList<QByteArray> &replies);

private:
    BootEvent execute(const QByteArray &body, QList<QByteArray> &replies);
    BootEvent program(const QByteArray &records, QByteArray &reply);
    QByteArray crcOf(const QByteArray &request);

    FlashMemory &_flash;
    BootFaults &_faults;
    QByteArray _frame; ///< decoded since the last SOH
    bool _isEscaped = false;
};
