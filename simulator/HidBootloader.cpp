// SPDX-License-Identifier: MIT
#include "simulator/HidBootloader.h"

#include "simulator/Payload.h"

namespace {

constexpr char startOfFrame = 0x01;
constexpr char endOfFrame = 0x04;
constexpr char escape = 0x10;
constexpr int crcSize = 2;
constexpr int recordOverhead = 5;

enum Command : char { ReadInfo = 1, EraseFlash = 2, ProgramFlash = 3, ReadCrc = 4, JumpToApplication = 5 };

bool isControl(char byte)
{
    return byte == startOfFrame || byte == endOfFrame || byte == escape;
}

BootStep stepOf(char command)
{
    constexpr BootStep steps[] = {BootStep::None, BootStep::Info, BootStep::Erase, BootStep::Program, BootStep::Crc};
    return command >= ReadInfo && command <= ReadCrc ? steps[int(command)] : BootStep::None;
}

QByteArray reportWith(const QByteArray &body)
{
    QByteArray frame(1, startOfFrame);
    const QByteArray content = body + packed(crc16(body));
    for (const char byte : content) {
        if (isControl(byte))
            frame.append(escape);
        frame.append(byte);
    }
    return frame.append(endOfFrame).leftJustified(HidBootloader::reportSize, '\xFF');
}

} // namespace

HidBootloader::HidBootloader(FlashMemory &flash, BootFaults &faults) : _flash(flash), _faults(faults)
{
}

BootEvent HidBootloader::take(const QByteArray &report, QList<QByteArray> &replies)
{
    BootEvent event = BootEvent::None;
    for (const char byte : report) {
        const bool isPlain = _isEscaped || !isControl(byte);
        _isEscaped = !isPlain && byte == escape;
        if (isPlain)
            _frame.append(byte);
        else if (byte == startOfFrame)
            _frame.clear();
        else if (byte == endOfFrame && _frame.size() > crcSize &&
                 crc16(_frame.chopped(crcSize)) == readAt<quint16>(_frame, _frame.size() - crcSize))
            event = execute(_frame.chopped(crcSize), replies);
        if (event != BootEvent::None)
            break;
    }
    return event;
}

BootEvent HidBootloader::execute(const QByteArray &body, QList<QByteArray> &replies)
{
    BootEvent event = BootEvent::None;
    QByteArray reply = body.left(1);
    switch (body.at(0)) {
    case ReadInfo:
        reply.append(packed(quint8(1), quint8(0)));
        break;
    case EraseFlash:
        _flash.erase();
        break;
    case ProgramFlash:
        event = program(body.mid(1), reply);
        break;
    case ReadCrc:
        reply.append(crcOf(body.mid(1)));
        break;
    case JumpToApplication:
        return BootEvent::StartFirmware;
    default:
        return BootEvent::None;
    }
    if (!reply.isEmpty() && !_faults.takeSilence(stepOf(body.at(0))))
        replies.append(reportWith(reply));
    return event;
}

/// Without a reply when a record is refused.
BootEvent HidBootloader::program(const QByteArray &records, QByteArray &reply)
{
    if (_faults.takePowerLoss()) {
        reply.clear();
        return BootEvent::PowerLoss;
    }
    for (int position = 0; position < records.size();) {
        const QByteArray record = records.mid(position, quint8(records.at(position)) + recordOverhead);
        position += record.size();
        if (!_flash.program(_faults.takeRefusal() ? record.chopped(1) : record))
            reply.clear();
    }
    return BootEvent::None;
}

/// The request: address, size and expected CRC, little-endian, and two bytes of padding.
QByteArray HidBootloader::crcOf(const QByteArray &request)
{
    const quint16 crc = _flash.crc(readAt<quint32>(request, 0), readAt<quint32>(request, 4));
    return packed(quint16(_faults.takeWrongCrc() ? ~crc : crc));
}
