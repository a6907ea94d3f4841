// SPDX-License-Identifier: MIT
#include "firmware/BootloaderOperator.h"

#include "firmware/HidCommunicator.h"

#include <QDebug>
#include <QtEndian>

namespace {

enum Command : char { READ_BOOT_INFO = 1, ERASE_FLASH = 2, PROGRAM_FLASH = 3, READ_CRC = 4, JUMP_TO_APP = 5 };

constexpr int sizeWithTwoBytes = 3; // the command byte, then the value

QByteArray body(Command command, QByteArray const &data = QByteArray())
{
    return QByteArray(1, command) + data;
}

QByteArray crcRequest(HexCrc const &image)
{
    QByteArray data(12, '\0'); // address, size, CRC, padding
    qToLittleEndian(image.address, data.data());
    qToLittleEndian(image.size, data.data() + 4);
    qToLittleEndian(image.crc, data.data() + 8);
    return data;
}

} // namespace

BootloaderOperator::BootloaderOperator(QString const &hidPath, QObject *parent, const Clock &clock)
    : QObject(parent), _communicator(new HidCommunicator(hidPath, this, clock))
{
    connect(_communicator, &HidCommunicator::DataReceived, this, &BootloaderOperator::DataReceived);
}

void BootloaderOperator::RequestBootloaderInfo()
{
    _communicator->SendData(body(READ_BOOT_INFO));
}

void BootloaderOperator::EraseFlash()
{
    _communicator->SendData(body(ERASE_FLASH));
}

void BootloaderOperator::ProgramFlash(QByteArray const &records)
{
    _communicator->SendData(body(PROGRAM_FLASH, records));
}

void BootloaderOperator::RequestFirmwareCrc(HexCrc const &image)
{
    _communicator->SendData(body(READ_CRC, crcRequest(image)));
}

void BootloaderOperator::JumpToApplication()
{
    _communicator->SendData(body(JUMP_TO_APP));
}

void BootloaderOperator::DataReceived(QByteArray const &data)
{
    switch (data.at(0)) {
    case READ_BOOT_INFO:
        if (data.size() == sizeWithTwoBytes)
            Q_EMIT BootloaderInfoReceived({{quint8(data.at(1)), quint8(data.at(2))}});
        else
            qDebug("Wrong packet length on READ_BOOT_INFO");
        break;
    case ERASE_FLASH:
        Q_EMIT FlashErased();
        break;
    case PROGRAM_FLASH:
        Q_EMIT FlashProgramed();
        break;
    case READ_CRC:
        if (data.size() == sizeWithTwoBytes)
            Q_EMIT FirmwareCrcReceived(qFromLittleEndian<quint16>(data.constData() + 1));
        else
            qDebug("Wrong packet length on READ_CRC");
        break;
    case JUMP_TO_APP:
        break;
    default:
        qDebug("Unknown response");
    }
}
