// SPDX-License-Identifier: MIT
#include "support/FakeInstrument.h"

#include <algorithm>

namespace {

constexpr int answerTimeoutMs = 1000;

bool isQuestion(PCcommand_t command)
{
    static const QSet<int> questions = {PC_ECHO_TEST,
                                        PC_PING,
                                        PC_READ_HARDWARE_VERSION,
                                        PC_READ_CHANNEL_COUNT,
                                        PC_READ_FIRMWARE_CHECKSUM,
                                        PC_READ_FIRMWARE_VERSION,
                                        PC_READ_FLASH_CAL,
                                        PC_READ_CONFIG};
    return questions.contains(command);
}

} // namespace

FakeInstrument::FakeInstrument(QObject *parent) : QObject(parent)
{
    connect(&_terminal, &PseudoTerminal::received, this, &FakeInstrument::onReceived);
}

QVector<PCcommand_t> FakeInstrument::commandNames() const
{
    QVector<PCcommand_t> names;
    for (const Command &command : _commands)
        names << command.command;
    return names;
}

int FakeInstrument::count(PCcommand_t command) const
{
    return int(std::count_if(_commands.begin(), _commands.end(),
                             [command](const Command &each) { return each.command == command; }));
}

void FakeInstrument::reply(PCcommand_t command, Notifications_t type, const QByteArray &payload)
{
    on(command, [this, type, payload](const Command &received) { send(type, received.channel, payload); });
}

void FakeInstrument::send(Notifications_t type, quint8 channel, const QByteArray &payload)
{
    _hasSent = true;
    _terminal.write(makeFrame(quint8(type), channel, payload));
}

void FakeInstrument::onReceived(const QByteArray &bytes)
{
    if (_echoing)
        _terminal.write(bytes);
    _buffer += bytes;
    const QVector<Frame> frames = takeFrames(_buffer, _skipped);
    for (const Frame &frame : frames) {
        const Command command{PCcommand_t(quint8(frame.type)), quint8(frame.channel), frame.payload};
        _commands.append(command);
        _hasSent = _echoing;
        if (const Answer answer = _answers.value(command.command))
            answer(command);
        if (!_hasSent && _clock && isPluggedIn() && isQuestion(command.command))
            _clock->step(answerTimeoutMs);
        Q_EMIT commandReceived(command.command, command.channel, command.payload);
    }
}
