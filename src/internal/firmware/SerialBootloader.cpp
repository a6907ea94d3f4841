// SPDX-License-Identifier: MIT
#include "firmware/SerialBootloader.h"

#include "link/Frame.h"
#include "session/InstrumentInfo.h"
#include "waiting/Clock.h"

#include <QSerialPort>
#include <QThread>
#include <QtEndian>

namespace {

constexpr int openTimeoutMs = 10000;
constexpr int openPauseMs = 5;
constexpr int serialReplyTimeoutMs = 5000;
constexpr int readSliceMs = 5; // of the system's time: looks at the port, which decide nothing
constexpr int channelPosition = 3;
constexpr int longestHardwareText = 64;
constexpr char accessCode[] = "W4TnKqYs8LhBfM2c"; // instrument and host hold the same

bool mayGoOn(const Deadline &deadline)
{
    return !deadline.hasCome() && !QThread::currentThread()->isInterruptionRequested();
}

QByteArray emptyFrame(PCcommand_t command, unsigned char channel = deviceChannel)
{
    return makeFrame(command, channel);
}

bool isAnswered(QSerialPort &port, const QByteArray &frame, const QByteArray &reply, int boards = 1)
{
    port.write(frame);
    return SerialBootloader::checkResponses(port, reply, boards);
}

} // namespace

bool SerialBootloader::tryOpen(QSerialPort &port)
{
    const Deadline deadline(openTimeoutMs, Clock::host());
    while (!port.open(QIODevice::ReadWrite)) {
        if (!mayGoOn(deadline))
            return false;
        Clock::host().sleep(openPauseMs);
    }
    return true;
}

QByteArray SerialBootloader::waitForResponse(QSerialPort &port, int size)
{
    const Deadline deadline(serialReplyTimeoutMs, Clock::host());
    port.waitForReadyRead(readSliceMs);
    QByteArray response = port.read(size);
    while (response.size() < size && mayGoOn(deadline)) {
        if (!port.waitForReadyRead(readSliceMs) && port.error() != QSerialPort::TimeoutError)
            QThread::msleep(readSliceMs); // a port that is gone does not wait
        response += port.read(size - response.size());
    }
    return response;
}

bool SerialBootloader::checkResponses(QSerialPort &port, const QByteArray &expected, int count)
{
    for (int i = 0; i < count; ++i) {
        QByteArray response = waitForResponse(port, expected.size());
        if (response.size() > channelPosition)
            response[channelPosition] = '\0'; // the board that answers
        if (response != expected)
            return false;
    }
    return true;
}

bool SerialBootloader::answersPing(QSerialPort &port)
{
    return isAnswered(port, emptyFrame(PC_PING), emptyFrame(PC_PING));
}

bool SerialBootloader::readHardware(QSerialPort &port, QString &hardware)
{
    if (!isAnswered(port, emptyFrame(PC_READ_HARDWARE_VERSION), emptyFrame(PC_READ_HARDWARE_VERSION).left(4)))
        return false;
    const QByteArray lengthAndModel = waitForResponse(port, 3);
    if (lengthAndModel.size() < 3 || lengthAndModel.at(2) != static_cast<char>(HardwareModel_t::Gale))
        return false;
    const int rest = qFromLittleEndian<quint16>(lengthAndModel.constData()) - 1;
    hardware = textIn(waitForResponse(port, qBound(0, rest, longestHardwareText)));
    return true;
}

bool SerialBootloader::countBoards(QSerialPort &port, int &boards)
{
    const QByteArray replyHeader = makeFrame(NT_CHANNEL_COUNT, deviceChannel, "?").left(frameHeaderSize);
    if (!isAnswered(port, emptyFrame(PC_READ_CHANNEL_COUNT), replyHeader))
        return false;
    const QByteArray channels = waitForResponse(port, 1);
    if (channels.isEmpty())
        return false;
    boards = static_cast<qint8>(channels.at(0)) / galeFacts.channelsPerBoard;
    return true;
}

bool SerialBootloader::unlocksFlash(QSerialPort &port, int boards)
{
    const QByteArray unlock = makeFrame(PC_BOOT_UNLOCK, allChannels, accessCode);
    return isAnswered(port, unlock, emptyFrame(PC_BOOT_UNLOCK), boards) &&
           isAnswered(port, emptyFrame(PC_BOOT_PREPARE, allChannels), emptyFrame(PC_BOOT_PREPARE), boards);
}

int SerialBootloader::writeRecords(QSerialPort &port, QIODevice &file, int count)
{
    int written = 0;
    while (written < count) {
        const QByteArray line = file.readLine();
        if (line.isEmpty()) // the end, or a file that cannot be read any further
            break;
        if (!line.startsWith(':'))
            continue;
        port.write(makeFrame(PC_BOOT_RECORD, allChannels, QByteArray::fromHex(line.mid(1))));
        ++written;
    }
    return written;
}
