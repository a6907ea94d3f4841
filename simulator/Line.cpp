// SPDX-License-Identifier: MIT
#include "simulator/Line.h"

namespace {

/// No magic in it, though its last byte looks like the beginning of one.
const QByteArray garbage = QByteArrayLiteral("\x00\xFF\xEE\x17\xEE");
constexpr int pieceIntervalMs = 1;

} // namespace

Line::Line(SerialEnd &terminal, const Faults &faults, QObject *parent)
    : QObject(parent), _terminal(terminal), _faults(faults)
{
    _pieceTimer.setInterval(pieceIntervalMs);
    connect(&_pieceTimer, &QTimer::timeout, this, &Line::sendPiece);
}

bool Line::isLost(quint8 type)
{
    if (_faults.isSilent || (_answered && _faults.unanswered.contains(*_answered)))
        return true;
    const bool isAck = type == NT_GENERAL_ACK || type == NT_NODE_APPENDED;
    return isAck && _faults.lostAckEvery > 0 && ++_ackCount % _faults.lostAckEvery == 0;
}

void Line::send(quint8 type, int channel, const QByteArray &payload)
{
    if (isLost(type))
        return;
    const bool isShort = _answered && _faults.shortReplies.contains(*_answered);
    QByteArray bytes = makeFrame(type, quint8(channel), isShort ? payload.chopped(qMin(1, payload.size())) : payload);
    if (_faults.garbageEvery > 0 && ++_frameCount % _faults.garbageEvery == 0)
        bytes.prepend(garbage);
    if (_answered && _faults.delayMs > 0)
        QTimer::singleShot(_faults.delayMs, this, [this, bytes] { sendRaw(bytes); });
    else
        _batch += bytes;
}

void Line::sendRaw(const QByteArray &bytes)
{
    _batch += bytes;
    flush();
}

void Line::flush()
{
    if (_faults.pieceSize > 0) {
        _pieces += _batch;
        _pieceTimer.start();
    } else if (!_batch.isEmpty()) {
        _terminal.write(_batch);
    }
    _batch.clear();
}

void Line::sendPiece()
{
    _terminal.write(_pieces.left(_faults.pieceSize));
    _pieces.remove(0, _faults.pieceSize);
    if (_pieces.isEmpty())
        _pieceTimer.stop();
}

void Line::clear()
{
    _batch.clear();
    _pieces.clear();
    _pieceTimer.stop();
}
