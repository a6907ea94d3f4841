// SPDX-License-Identifier: MIT
#include "simulator/GaleBootloader.h"

#include "simulator/Payload.h"

#include <algorithm>

namespace {

constexpr int channelsPerBoard = 2;
const QByteArray accessCode = QByteArrayLiteral("W4TnKqYs8LhBfM2c");
const QByteArray refusal = QByteArrayLiteral("\x01"); ///< an answer with a payload says no

} // namespace

const GaleBootloader::CommandRow GaleBootloader::commandRows[] = {
    {PC_PING, BootStep::Ping, &GaleBootloader::answerPing},
    {PC_READ_HARDWARE_VERSION, BootStep::Hardware, &GaleBootloader::answerHardware},
    {PC_READ_CHANNEL_COUNT, BootStep::Channels, &GaleBootloader::answerChannelCount},
    {PC_BOOT_UNLOCK, BootStep::Unlock, &GaleBootloader::unlock},
    {PC_BOOT_PREPARE, BootStep::Prepare, &GaleBootloader::prepare},
    {PC_BOOT_RECORD, BootStep::Record, &GaleBootloader::takeRecord},
    {PC_SOFT_RESET, BootStep::None, &GaleBootloader::reset},
};

GaleBootloader::GaleBootloader(FlashMemory &flash, BootFaults &faults, const QByteArray &hardwareRecord, int channels)
    : _flash(flash), _faults(faults), _hardwareRecord(hardwareRecord), _channels(channels)
{
}

void GaleBootloader::restart()
{
    _received.clear();
    _isUnlocked = _isPrepared = false;
}

BootEvent GaleBootloader::take(const QByteArray &bytes, QByteArray &replies)
{
    _received += bytes;
    const QVector<Frame> frames = takeFrames(_received, _skipped);
    BootEvent event = BootEvent::None;
    for (const Frame &frame : frames) {
        _reply.clear();
        event = std::max(event, obey(frame)); // what comes behind a reset is answered by the one that starts over
        if (event == BootEvent::PowerLoss)
            break;
        replies += _reply;
    }
    return event;
}

BootEvent GaleBootloader::obey(const Frame &frame)
{
    const auto row = std::find_if(std::begin(commandRows), std::end(commandRows), [&frame](const CommandRow &each) {
        return each.command == PCcommand_t(quint8(frame.type));
    });
    if (row == std::end(commandRows))
        return BootEvent::None;
    const BootEvent event = (this->*row->answer)(frame);
    if (_faults.takeSilence(row->step))
        _reply.clear();
    return event;
}

void GaleBootloader::answerAsBoards(PCcommand_t command, const QByteArray &payload)
{
    for (int board = 0; board < _channels / channelsPerBoard; ++board)
        _reply += makeFrame(quint8(command), quint8(board), payload);
}

BootEvent GaleBootloader::answerPing(const Frame &)
{
    _reply = makeFrame(NT_PING_REPLY, deviceChannel);
    return BootEvent::None;
}

BootEvent GaleBootloader::answerHardware(const Frame &)
{
    _reply = makeFrame(NT_HARDWARE_VERSION, deviceChannel, _hardwareRecord);
    return BootEvent::None;
}

BootEvent GaleBootloader::answerChannelCount(const Frame &)
{
    _reply = makeFrame(NT_CHANNEL_COUNT, deviceChannel, packed(quint8(_channels)));
    return BootEvent::None;
}

BootEvent GaleBootloader::unlock(const Frame &frame)
{
    _isUnlocked = frame.payload == accessCode;
    answerAsBoards(PC_BOOT_UNLOCK, _isUnlocked ? QByteArray() : refusal);
    return BootEvent::None;
}

BootEvent GaleBootloader::prepare(const Frame &)
{
    _isPrepared = _isUnlocked;
    if (_isPrepared)
        _flash.erase();
    answerAsBoards(PC_BOOT_PREPARE, _isPrepared ? QByteArray() : refusal);
    return BootEvent::None;
}

BootEvent GaleBootloader::takeRecord(const Frame &frame)
{
    if (_faults.takePowerLoss())
        return BootEvent::PowerLoss;
    const QByteArray record = _faults.takeRefusal() ? frame.payload.chopped(1) : frame.payload;
    const bool isTaken = _isPrepared && _flash.program(record);
    answerAsBoards(PC_BOOT_RECORD, isTaken ? QByteArray() : refusal);
    return BootEvent::None;
}

/// Only after an update; a host that begins one resets us first, whatever the flash holds.
BootEvent GaleBootloader::reset(const Frame &)
{
    const bool isUpdated = _isPrepared && _flash.isComplete();
    _isUnlocked = _isPrepared = false;
    return isUpdated ? BootEvent::StartFirmware : BootEvent::Restart;
}
