#include "support/FakeInstrument.h"

#include <algorithm>

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
        if (const Answer answer = _answers.value(command.command))
            answer(command);
        Q_EMIT commandReceived(command.command, command.channel, command.payload);
    }
}
