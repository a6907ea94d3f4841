// SPDX-License-Identifier: MIT
#pragma once

#include "link/Frame.h"
#include "simulator/Faults.h"
#include "simulator/SerialEnd.h"

#include <QTimer>

/**
 * The instrument's transmitter: wraps payloads, applies the faults of transmission, and hands bytes to the terminal.
 *
 * Frames are gathered until flush(), so that a burst costs one write. Nothing is lost when the other side does not read;
 * bytesWaiting() tells how much stands in the queue.
 *
 * @thread Lives on the instrument's thread.
 */
class Line : public QObject
{
    Q_OBJECT

public:
    Line(SerialEnd &terminal, const Faults &faults, QObject *parent = nullptr);

    void send(quint8 type, int channel, const QByteArray &payload);
    void sendRaw(const QByteArray &bytes);
    void flush();
    /// Throws away what has not gone to the terminal yet.
    void clear();
    int bytesWaiting() const { return _batch.size() + _pieces.size() + _terminal.bytesWaiting(); }

    /// From now until endAnswer() frames are answers to this command; faults of answers apply to them.
    void beginAnswer(PCcommand_t command) { _answered = command; }
    void endAnswer() { _answered.reset(); }

private:
    bool isLost(quint8 type);
    void sendPiece();

    SerialEnd &_terminal;
    const Faults &_faults;
    std::optional<PCcommand_t> _answered;
    QByteArray _batch;
    QByteArray _pieces; ///< bytes that leave piece by piece
    QTimer _pieceTimer;
    int _frameCount = 0;
    int _ackCount = 0;
};
