// SPDX-License-Identifier: MIT
#include "session/AdmittedInstrument.h"

#include "hardware_models/HardwareModel.h"
#include "hardware_models/HardwareModelFactory.h"

namespace {

QByteArray calibrationRecord(HardwareModel_t model)
{
    const bool isGale = model == HardwareModel_t::Gale;
    return QByteArray(isGale ? "vc07" : "400v") + QByteArray(isGale ? 736 : 372, '\0');
}

QByteArray checksumOf(HardwareModel_t model)
{
    return QByteArray::fromHex(HardwareModelFactory::getHardwareModel(model)->hexFileCheckSum().toLatin1());
}

} // namespace

AdmittedInstrument::AdmittedInstrument(HardwareModel_t model, const QByteArray &name, int channelCount)
{
    answerHandshake(model, name, channelCount);
    answerStartUp();
}

QByteArray AdmittedInstrument::hardwareRecord(HardwareModel_t model, const QByteArray &name)
{
    return (QByteArray(1, char(model)) + name + '\n').leftJustified(256, '\0');
}

void AdmittedInstrument::answerHandshake(HardwareModel_t model, const QByteArray &name, int channelCount)
{
    reply(PC_PING, NT_PING_REPLY);
    reply(PC_READ_HARDWARE_VERSION, NT_HARDWARE_VERSION, hardwareRecord(model, name));
    reply(PC_READ_CHANNEL_COUNT, NT_CHANNEL_COUNT, QByteArray(1, char(channelCount)));
    reply(PC_READ_FIRMWARE_CHECKSUM, NT_FIRMWARE_CHECKSUM, checksumOf(model));
    reply(PC_READ_FIRMWARE_VERSION, NT_FIRMWARE_VERSION, "2.5.1");
    reply(PC_READ_FLASH_CAL, NT_RAW_CAL_DATA, calibrationRecord(model));
    reply(PC_READ_CONFIG, NT_CONFIG, QByteArray(288, '\0'));
}

void AdmittedInstrument::answerStartUp()
{
    reply(PC_READ_DEVICE_STATUS, NT_DEVICE_STATUS, QByteArray(2, '\0'));
    reply(PC_CHANNEL_LIMITS, NT_GENERAL_ACK, QByteArray(1, char(PC_CHANNEL_LIMITS)) + '\0');
    reply(PC_READ_GROUND_FLOAT, NT_GROUND_FLOAT, QByteArray(1, '\1'));
}
