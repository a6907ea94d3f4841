// SPDX-License-Identifier: MIT
#include "firmware/HidFrame.h"

#include "images/CrcCalculator.h"

namespace {

constexpr char startOfFrame = 0x01;
constexpr char endOfFrame = 0x04;
constexpr char escape = 0x10;
constexpr int crcSize = 2;

bool needsEscape(char byte)
{
    return byte == startOfFrame || byte == endOfFrame || byte == escape;
}

QByteArray crcOf(const QByteArray &body)
{
    const uint16_t crc = CrcCalculator::Get16(body.constData(), static_cast<unsigned>(body.size()));
    return QByteArray().append(static_cast<char>(crc)).append(static_cast<char>(crc >> 8));
}

/// Takes the CRC off a decoded frame. @return false, with the frame untouched, if it does not fit
bool takeCrc(QByteArray &frame)
{
    const QByteArray body = frame.left(frame.size() - crcSize);
    if (frame.size() < crcSize || frame.right(crcSize) != crcOf(body))
        return false;
    frame = body;
    return true;
}

} // namespace

QByteArray HidFrame::make(const QByteArray &body)
{
    QByteArray frame(1, startOfFrame);
    const QByteArray content = body + crcOf(body);
    for (const char byte : content) {
        if (needsEscape(byte))
            frame.append(escape);
        frame.append(byte);
    }
    return frame.append(endOfFrame);
}

QList<QByteArray> HidFrame::reportsOf(const QByteArray &frame)
{
    QList<QByteArray> reports;
    for (int position = 0; position < frame.size(); position += reportSize) {
        const QByteArray piece = frame.mid(position, reportSize);
        reports.append(QByteArray(1, '\0') + piece.leftJustified(reportSize, '\xFF'));
    }
    return reports;
}

QList<QByteArray> HidFrame::takeBodies(const QByteArray &bytes, QByteArray &received)
{
    QList<QByteArray> bodies;
    bool isEscaped = false;
    for (const char byte : bytes) {
        const bool isPlain = isEscaped || !needsEscape(byte);
        isEscaped = !isPlain && byte == escape;
        if (isPlain)
            received.append(byte);
        else if (byte == startOfFrame)
            received.clear();
        else if (byte == endOfFrame && takeCrc(received) && !received.isEmpty())
            bodies.append(received);
    }
    return bodies;
}
