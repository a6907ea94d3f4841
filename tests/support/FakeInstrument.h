// SPDX-License-Identifier: MIT
#pragma once

#include "link/Frame.h"
#include "simulator/PseudoTerminal.h"
#include "support/SteppedClock.h"

#include <QMap>

#include <functional>

/**
 * The far end of a serial link for tests: speaks frames on a pseudo-terminal and does as it is told.
 *
 * It answers each command by the function set for it and keeps every command that came. Bytes of its own, framed or not,
 * go out at any time.
 *
 * @thread Lives on the test's thread and is served by its event loop.
 */
class FakeInstrument : public QObject
{
    Q_OBJECT

public:
    struct Command {
        PCcommand_t command;
        quint8 channel;
        QByteArray payload;
    };
    using Answer = std::function<void(const Command &)>;

    explicit FakeInstrument(QObject *parent = nullptr);

    QString portName() const { return _terminal.portName(); }
    const QVector<Command> &commands() const { return _commands; }
    QVector<PCcommand_t> commandNames() const;
    /// How often a command has come.
    int count(PCcommand_t command) const;
    void forgetCommands() { _commands.clear(); }

    /// What to do when a command comes; an empty function stands for silence.
    void on(PCcommand_t command, Answer answer) { _answers[command] = std::move(answer); }
    /// What it does when a command comes, for tests that spoil a right answer.
    Answer answerTo(PCcommand_t command) const { return _answers.value(command); }
    /// Answers a command with one notification on the command's channel.
    void reply(PCcommand_t command, Notifications_t type, const QByteArray &payload = QByteArray());
    void send(Notifications_t type, quint8 channel, const QByteArray &payload = QByteArray());
    void sendRaw(const QByteArray &bytes) { _terminal.write(bytes); }
    /// Sends everything back that arrives, as a plugged loop would.
    void setEchoing(bool echoing) { _echoing = echoing; }
    /// Lets the second of the handshake be over on a clock as soon as a question of it is left without an answer.
    void setClock(SteppedClock &clock) { _clock = &clock; }
    void unplug() { _terminal.unplug(); }
    bool isPluggedIn() const { return _terminal.isOpen(); }

Q_SIGNALS:
    void commandReceived(PCcommand_t command, unsigned char channel, const QByteArray &payload);

private:
    void onReceived(const QByteArray &bytes);

    PseudoTerminal _terminal;
    QByteArray _buffer;
    quint32 _skipped = 0;
    bool _echoing = false;
    bool _hasSent = false;
    SteppedClock *_clock = nullptr;
    QVector<Command> _commands;
    QMap<int, Answer> _answers;
};
