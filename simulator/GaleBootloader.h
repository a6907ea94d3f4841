// SPDX-License-Identifier: MIT
#pragma once

#include "link/Frame.h"
#include "simulator/BootFaults.h"
#include "simulator/FlashMemory.h"

/**
 * The bootloader of the Gale line, in the frames of the serial link. What is sent to all channels is done by all boards,
 * and each of them answers, with its number as the channel.
 *
 * @thread None; it is called with bytes and answers at once.
 */
class GaleBootloader
{
public:
    /// Flash and faults are borrowed; a fault that has happened is struck out.
    GaleBootloader(FlashMemory &flash, BootFaults &faults, const QByteArray &hardwareRecord, int channels);

    /// Forgets what the last host has said.
    void restart();
    /// Takes bytes and adds the bytes that answer them.
    BootEvent take(const QByteArray &bytes, QByteArray &replies);

private:
    using Answer = BootEvent (GaleBootloader::*)(const Frame &frame);
    struct CommandRow {
        PCcommand_t command;
        BootStep step;
        Answer answer;
    };
    static const CommandRow commandRows[];

    BootEvent obey(const Frame &frame);
    BootEvent answerPing(const Frame &frame);
    BootEvent answerHardware(const Frame &frame);
    BootEvent answerChannelCount(const Frame &frame);
    BootEvent unlock(const Frame &frame);
    BootEvent prepare(const Frame &frame);
    BootEvent takeRecord(const Frame &frame);
    BootEvent reset(const Frame &frame);
    void answerAsBoards(PCcommand_t command, const QByteArray &payload = QByteArray());

    FlashMemory &_flash;
    BootFaults &_faults;
    QByteArray _hardwareRecord;
    int _channels;
    QByteArray _received;
    quint32 _skipped = 0;
    QByteArray _reply; ///< to the command that is being obeyed
    bool _isUnlocked = false;
    bool _isPrepared = false;
};
