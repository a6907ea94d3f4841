// SPDX-License-Identifier: MIT
#include "firmware/BootLoaderCOMWorker.h"

#include "firmware/FirmwareImages.h"
#include "firmware/SerialBootloader.h"
#include "images/HexLoader.h"
#include "link/Frame.h"
#include "waiting/Clock.h"

#include <QFile>
#include <QSerialPort>

using namespace SerialBootloader;

namespace {

constexpr int recordsInFlight = 8; // keep the line busy while the boards write to their flash
constexpr int writeTimeoutMs = 1000;
constexpr int resetMs = 100;

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

void reset(QSerialPort &port)
{
    port.write(makeFrame(PC_SOFT_RESET, allChannels));
    port.waitForBytesWritten(writeTimeoutMs);
    port.close();
}

/// Restarts the instrument; its bootloader is what answers afterwards.
bool entersBootloader(QSerialPort &port)
{
    reset(port);
    Clock::host().sleep(resetMs);
    return openClean(port);
}

/// Counts an image's records and goes back to its start; false if it cannot be read to its end.
bool countsRecords(QIODevice &file, int &records)
{
    // Not until atEnd(): a file that fails to be read never gets there.
    for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine())
        records += line.startsWith(':') ? 1 : 0;
    return file.atEnd() && file.seek(0);
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
    if (FirmwareImages::isRefusedStandIn(HexLoader::ReadFile(_hexFile)))
        return false;
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
    const QByteArray reply = makeFrame(PC_BOOT_RECORD, deviceChannel);
    int records = 0;
    if (!countsRecords(file, records))
        return false;
    int written = writeRecords(port, file, recordsInFlight);
    int acknowledged = 0;
    int lastPercent = -1;
    while (!file.atEnd()) {
        if (!checkResponses(port, reply, boards))
            return false;
        ++acknowledged;
        // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): a file without records is at its end
        const int percent = acknowledged * 100 / records;
        if (percent != lastPercent)
            Q_EMIT Progress(_deviceName, percent);
        lastPercent = percent;
        const int writtenNow = writeRecords(port, file, 1);
        if (writtenNow == 0 && !file.atEnd())
            return false; // unreadable by now; what the boards have is no image
        written += writtenNow;
    }
    return checkResponses(port, reply, boards * (written - acknowledged));
}
