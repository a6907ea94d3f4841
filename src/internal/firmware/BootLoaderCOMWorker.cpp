#include "firmware/BootLoaderCOMWorker.h"

#include "firmware/SerialBootloader.h"
#include "link/Frame.h"
#include "session/InstrumentInfo.h"

#include <QFile>
#include <QSerialPort>
#include <QThread>
#include <QtEndian>

using namespace SerialBootloader;

namespace {

constexpr int recordsInFlight = 8; // keep the line busy while the boards write to their flash
constexpr int channelsPerBoard = 2;
constexpr int writeTimeoutMs = 1000;
constexpr unsigned long resetMs = 100;
constexpr char accessCode[] = "W4TnKqYs8LhBfM2c"; // instrument and host hold the same

/// Opens the port and throws away what was on its way.
bool openClean(QSerialPort &port)
{
    if (!tryOpen(port))
        return false;
    port.clear();
    return true;
}

bool hasOpened(QSerialPort &port)
{
    port.setBaudRate(QSerialPort::Baud57600);
    port.setDataBits(QSerialPort::Data8);
    port.setFlowControl(QSerialPort::NoFlowControl);
    port.setParity(QSerialPort::NoParity);
    port.setStopBits(QSerialPort::OneStop);
    return openClean(port);
}

QByteArray emptyFrame(PCcommand_t command, unsigned char channel = deviceChannel)
{
    return makeFrame(command, channel);
}

bool isAnswered(QSerialPort &port, const QByteArray &frame, const QByteArray &reply, int boards = 1)
{
    port.write(frame);
    return checkResponses(port, reply, boards);
}

bool answersPing(QSerialPort &port)
{
    return isAnswered(port, emptyFrame(PC_PING), emptyFrame(PC_PING));
}

void reset(QSerialPort &port)
{
    port.write(emptyFrame(PC_SOFT_RESET, allChannels));
    port.waitForBytesWritten(writeTimeoutMs);
    port.close();
}

bool unlocksFlash(QSerialPort &port, int boards)
{
    const QByteArray unlock = makeFrame(PC_BOOT_UNLOCK, allChannels, accessCode);
    return isAnswered(port, unlock, emptyFrame(PC_BOOT_UNLOCK), boards) &&
           isAnswered(port, emptyFrame(PC_BOOT_PREPARE, allChannels), emptyFrame(PC_BOOT_PREPARE), boards);
}

/// Restarts the instrument; its bootloader is what answers afterwards.
bool entersBootloader(QSerialPort &port)
{
    reset(port);
    QThread::msleep(resetMs);
    return openClean(port);
}

/// Asks for the hardware record; its bytes behind the model are at most 64. @return false without a reply
bool readHardware(QSerialPort &port, QString &hardware)
{
    if (!isAnswered(port, emptyFrame(PC_READ_HARDWARE_VERSION), emptyFrame(PC_READ_HARDWARE_VERSION).left(4)))
        return false;
    const QByteArray lengthAndModel = waitForResponse(port, 3);
    if (lengthAndModel.size() < 3)
        return false;
    const int rest = qFromLittleEndian<quint16>(lengthAndModel.constData()) - 1;
    hardware = textIn(waitForResponse(port, qBound(0, rest, 64)));
    return true;
}

bool countBoards(QSerialPort &port, int &boards)
{
    const QByteArray replyHeader = makeFrame(NT_CHANNEL_COUNT, deviceChannel, "?").left(frameHeaderSize);
    if (!isAnswered(port, emptyFrame(PC_READ_CHANNEL_COUNT), replyHeader))
        return false;
    const QByteArray channels = waitForResponse(port, 1);
    if (channels.isEmpty())
        return false;
    boards = static_cast<qint8>(channels.at(0)) / channelsPerBoard;
    return true;
}

int countRecords(QIODevice &file)
{
    int records = 0;
    while (!file.atEnd())
        records += file.readLine().startsWith(':') ? 1 : 0;
    file.seek(0);
    return records;
}

} // namespace

BootLoaderCOMWorker::BootLoaderCOMWorker(const QString &portName, const QString &hexFile, const QString &deviceName)
    : _portName(portName), _hexFile(hexFile), _deviceName(deviceName)
{
}

void BootLoaderCOMWorker::process()
{
    Q_EMIT ShowDialog();
    Q_EMIT Started(_deviceName);
    const bool success = update();
    if (success)
        Q_EMIT finished();
    Q_EMIT Finished(_deviceName, success);
}

bool BootLoaderCOMWorker::update()
{
    QFile file(_hexFile);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    QSerialPort port(_portName);
    QString hardware;
    if (!hasOpened(port) || !answersPing(port) || !readHardware(port, hardware))
        return false;
    Q_EMIT Found(hardware);
    int boards = 0;
    if (!entersBootloader(port) || !answersPing(port) || !countBoards(port, boards) || !unlocksFlash(port, boards))
        return false;
    if (!sendImage(port, file, boards))
        return false;
    Q_EMIT Progress(_deviceName, 100);
    reset(port);
    return true;
}

bool BootLoaderCOMWorker::sendImage(QSerialPort &port, QIODevice &file, int boards)
{
    const QByteArray reply = emptyFrame(PC_BOOT_RECORD);
    const int records = countRecords(file);
    int written = writeRecords(port, file, recordsInFlight);
    int acknowledged = 0;
    int lastPercent = -1;
    while (!file.atEnd()) {
        if (!checkResponses(port, reply, boards))
            return false;
        ++acknowledged;
        const int percent = acknowledged * 100 / records;
        if (percent != lastPercent)
            Q_EMIT Progress(_deviceName, percent);
        lastPercent = percent;
        written += writeRecords(port, file, 1);
    }
    return checkResponses(port, reply, boards * (written - acknowledged));
}
