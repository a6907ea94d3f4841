#include "firmware/SerialBootloader.h"

#include "link/Frame.h"

#include <QDeadlineTimer>
#include <QSerialPort>
#include <QThread>

namespace {

constexpr int openTimeoutMs = 10000;
constexpr unsigned long openPauseMs = 5;
constexpr int replyTimeoutMs = 5000;
constexpr int readSliceMs = 5;
constexpr int channelPosition = 3;

bool mayGoOn(const QDeadlineTimer &deadline)
{
    return !deadline.hasExpired() && !QThread::currentThread()->isInterruptionRequested();
}

} // namespace

bool SerialBootloader::tryOpen(QSerialPort &port)
{
    const QDeadlineTimer deadline(openTimeoutMs);
    while (!port.open(QIODevice::ReadWrite)) {
        if (!mayGoOn(deadline))
            return false;
        QThread::msleep(openPauseMs);
    }
    return true;
}

QByteArray SerialBootloader::waitForResponse(QSerialPort &port, int size)
{
    const QDeadlineTimer deadline(replyTimeoutMs);
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

int SerialBootloader::writeRecords(QSerialPort &port, QIODevice &file, int count)
{
    int written = 0;
    while (!file.atEnd() && written < count) {
        const QByteArray line = file.readLine();
        if (!line.startsWith(':'))
            continue;
        port.write(makeFrame(PC_BOOT_RECORD, allChannels, QByteArray::fromHex(line.mid(1))));
        ++written;
    }
    return written;
}
