// SPDX-License-Identifier: MIT
#include "session/InitialInformation.h"

#include "hardware_models/HardwareModel.h"
#include "hardware_models/HardwareModelFactory.h"
#include "link/SerialCommunicator.h"
#include "waiting/BoundedWait.h"

#include <QDebug>

#include <algorithm>
#include <cstring>
#include <functional>

namespace {

constexpr int answerTimeoutMs = 1000;
constexpr int galePreHandshakeMs = 500;

/// A command and the notification that answers it.
struct Question {
    PCcommand_t command;
    Notifications_t answer;
    int size = anySize; ///< of the answer's payload; others are ignored
    int otherSize = size;

    static constexpr int anySize = -1;

    bool isAnsweredBy(Notifications_t type, const QByteArray &payload) const
    {
        return type == answer && (size == anySize || payload.size() == size || payload.size() == otherSize);
    }
};

// clang-format off
constexpr Question echoTest         {PC_ECHO_TEST,              NT_ECHO};
constexpr Question ping             {PC_PING,                   NT_PING_REPLY};
constexpr Question hardwareVersion  {PC_READ_HARDWARE_VERSION,  NT_HARDWARE_VERSION, 256, 64};
constexpr Question channelCount     {PC_READ_CHANNEL_COUNT,     NT_CHANNEL_COUNT,    1};
constexpr Question firmwareChecksum {PC_READ_FIRMWARE_CHECKSUM, NT_FIRMWARE_CHECKSUM};
constexpr Question firmwareVersion  {PC_READ_FIRMWARE_VERSION,  NT_FIRMWARE_VERSION};
constexpr Question calibration      {PC_READ_FLASH_CAL,         NT_RAW_CAL_DATA};
constexpr Question boardConfig      {PC_READ_CONFIG,            NT_CONFIG,           sizeof(Gale_Cfg_t)};
// clang-format on

/// Looks at what answers a question and takes it over; false for an answer to somebody else, which is ignored.
using Taker = std::function<bool(unsigned int channel, const QByteArray &payload)>;

bool takesAnything(unsigned int, const QByteArray &)
{
    return true;
}

/// Asks one question. @return true when the answer did NOT come
bool ask(SerialCommunicator &link, const Question &question, const Taker &take = takesAnything,
         unsigned char channel = deviceChannel)
{
    if (link.isLost())
        return true;
    BoundedWait wait(answerTimeoutMs, link.clock());
    wait.endOn(&link, &SerialCommunicator::deviceDisconnected, WaitEnd::LinkLost);
    QObject context; // undoes the connection
    bool isAnswered = false;
    QObject::connect(&link, &SerialCommunicator::ResponseReceived, &context,
                     [&](Notifications_t type, unsigned int answerChannel, const QByteArray &payload) {
                         if (isAnswered || !question.isAnsweredBy(type, payload) || !take(answerChannel, payload))
                             return;
                         isAnswered = true;
                         wait.end(WaitEnd::Answered);
                     });
    link.SendCommand(question.command, channel);
    wait.exec();
    return !isAnswered; // and not what has ended the wait: the answer may have come in one go with the end of the time
}

void complainOfMissingCalibration(const InstrumentInfo &info, int channel)
{
    qDebug().noquote() << QStringLiteral("Error: Calibration data for %1 channel %2 was not returned by the device")
                              .arg(info.deviceName)
                              .arg(channel);
}

void addCalibration(InstrumentInfo &info, int channel, const QByteArray &record)
{
    CalibrationData data;
    data.setModelType(info.hardware.hwModel);
    data.importCalData(record.constData(), record.size());
    info.calibration.insert(std::min(channel, info.calibration.size()), data); // a channel before it may be missing
}

void configureBoard(InstrumentInfo &info, int firstChannel, const QByteArray &record)
{
    Gale_Cfg_t config;
    std::memcpy(&config, record.constData(), sizeof config);
    for (int channel = firstChannel; channel < firstChannel + galeFacts.channelsPerBoard; ++channel) {
        if (channel >= info.calibration.size()) {
            qWarning().noquote() << QStringLiteral("Unable to update info for channel %1").arg(channel);
            return;
        }
        info.calibration[channel].setGaleCfgData(config);
    }
}

/// Looks at a record that a channel has answered with; false for one that is ignored.
using RecordTaker = std::function<bool(int asked, int answering, const QByteArray &record)>;

/// Asks for a record of each channel, or of every second one. @return true when any did NOT come
bool askChannels(SerialCommunicator &link, const InstrumentInfo &info, const Question &question, int step,
                 const RecordTaker &take)
{
    bool anyFailed = false;
    for (int channel = 0; channel < info.channelCount; channel += step) {
        const auto takeFor = [&take, channel](unsigned int answering, const QByteArray &record) {
            return take(channel, int(answering), record);
        };
        if (ask(link, question, takeFor, static_cast<unsigned char>(channel))) {
            complainOfMissingCalibration(info, channel);
            anyFailed = true;
        }
    }
    return anyFailed;
}

VekErrorCode notConnected(QLatin1String message)
{
    return VekErrorCode(VekErrorCode::ConnectionFailed, message);
}

// clang-format off
const QLatin1String noPing(
    "A connection with the device could not be successfully established because the device did not respond to ping. "
    "Please try to reconnect after restarting the device.");
const QLatin1String noPingOfGale( // see compatibility.md, missing word
    "A connection with the could not be successfully established because the device did not respond to ping. "
    "Please try to reconnect after restarting the device.");
const QLatin1String noHardwareVersion(
    "A connection with the device could not be successfully established because hardware version was not received. "
    "Please try to reconnect after restarting the device.");
const QLatin1String wrongHardwareVersion(
    "A connection with the device could not be successfully established because hardware version is invalid. "
    "Please try to reconnect after writing correct hardware information.");
const QLatin1String noChannelAmount(
    "A connection with the device could not be successfully established because total number of channels was not "
    "received. Please try to reconnect after restarting the device.");
const QLatin1String wrongFirmware(
    "A connection with the device could not be successfully established because device firmware did not match with API "
    "version. Please update device firmware using updateFirmwareOnComPort or updateFirmwareOnAllAvailableDevices or use "
    "utility application which is provided with library.");
const QLatin1String noFirmwareVersion(
    "A connection with the device could not be successfully established because firmware version was not received. "
    "Please try to reconnect after restarting the device.");
const QLatin1String noCalibration(
    "A connection with the device could not be successfully established because DC calibration data was not received. "
    "Please try to reconnect after restarting the device.");
const QLatin1String noConfiguration(
    "A connection with the device could not be successfully established because configuration data was not received. "
    "Please try to reconnect after restarting the device.");
// clang-format on

/// The Gale line is told that a handshake follows, and is given time; then it must answer another ping.
bool preparesGale(SerialCommunicator &link)
{
    link.SendCommand(PC_GALE_PRE_HANDSHAKE, allChannels);
    link.clock().sleep(galePreHandshakeMs);
    return !InitialInformation::doHandShake(link);
}

} // namespace

bool InitialInformation::PingToInstrument(const QString &port, const Clock &clock)
{
    SerialCommunicator link(port, nullptr, clock);
    link.Start(true);
    return !doHandShake(link);
}

VekErrorCode InitialInformation::getBasicInfoSuccessfully(const QString &port, InstrumentInfo &info, const Clock &clock)
{
    SerialCommunicator link(port, nullptr, clock);
    link.Start(true);
    const VekErrorCode verdict = validateFirmware(link, info);
    if (verdict != VekErrorCode::Success)
        return verdict;
    if (isGale(info) && !preparesGale(link))
        return notConnected(noPingOfGale);
    if (getFirmwareVersion(link, info))
        return notConnected(noFirmwareVersion);
    if (getCalData(link, info))
        return notConnected(noCalibration);
    if (isGale(info) && getConfigData(link, info))
        return notConnected(noConfiguration);
    link.WaitForBytesSent();
    info.comPort = port;
    return VekErrorCode::Success;
}

VekErrorCode InitialInformation::validateFirmware(SerialCommunicator &link, InstrumentInfo &info)
{
    const bool isEcho = !testForEcho(link);
    if (isEcho)
        return VekErrorCode::Unknown; // see compatibility.md, echo is unknown
    if (doHandShake(link))
        return notConnected(noPing);
    if (getHardwareVersion(link, info))
        return notConnected(noHardwareVersion);
    if (!hasCorrectHardwareVersion(info))
        return notConnected(wrongHardwareVersion);
    if (getChannelAmount(link, info))
        return notConnected(noChannelAmount);
    getFirmwareChecksum(link, info); // one that did not come is empty, and the next step refuses it
    if (!hasCorrectFirmware(info))
        return VekErrorCode(VekErrorCode::FirmwareNotSupported, wrongFirmware);
    return VekErrorCode::Success;
}

bool InitialInformation::testForEcho(SerialCommunicator &link)
{
    return ask(link, echoTest);
}

bool InitialInformation::doHandShake(SerialCommunicator &link)
{
    return ask(link, ping);
}

bool InitialInformation::getHardwareVersion(SerialCommunicator &link, InstrumentInfo &info)
{
    return ask(link, hardwareVersion, [&info](unsigned int, const QByteArray &record) {
        info.hardware = HardwareVersion();
        std::memcpy(&info.hardware, record.constData(), std::size_t(record.size()));
        info.deviceName = deviceNameIn(info.hardware);
        return true;
    });
}

bool InitialInformation::getChannelAmount(SerialCommunicator &link, InstrumentInfo &info)
{
    return ask(link, channelCount, [&info](unsigned int, const QByteArray &count) {
        info.channelCount = static_cast<quint8>(count.at(0));
        return true;
    });
}

bool InitialInformation::getFirmwareChecksum(SerialCommunicator &link, InstrumentInfo &info)
{
    return ask(link, firmwareChecksum, [&info](unsigned int, const QByteArray &checksum) {
        info.firmwareChecksum = QString::fromLatin1(checksum.toHex().toUpper());
        return true;
    });
}

bool InitialInformation::getFirmwareVersion(SerialCommunicator &link, InstrumentInfo &info)
{
    const bool failed = ask(link, firmwareVersion, [&info](unsigned int, const QByteArray &text) {
        info.firmwareVersion = textIn(text);
        return true;
    });
    if (failed)
        qDebug().noquote() << QStringLiteral("Firmware version for device: %1 could not be read.").arg(info.deviceName);
    return failed;
}

bool InitialInformation::getCalData(SerialCommunicator &link, InstrumentInfo &info)
{
    const auto take = [&info](int asked, int answering, const QByteArray &record) {
        if (answering != asked)
            return false;
        addCalibration(info, asked, record);
        return true;
    };
    return askChannels(link, info, calibration, 1, take);
}

bool InitialInformation::getConfigData(SerialCommunicator &link, InstrumentInfo &info)
{
    if (!isGale(info))
        return false;
    // See compatibility.md, board that answers.
    const auto take = [&info](int, int answering, const QByteArray &record) {
        configureBoard(info, answering, record);
        return true;
    };
    return askChannels(link, info, boardConfig, galeFacts.channelsPerBoard, take);
}

bool InitialInformation::hasCorrectFirmware(const InstrumentInfo &info)
{
    const QString carried = HardwareModelFactory::getHardwareModel(info.hardware.hwModel)->hexFileCheckSum();
    return !carried.isEmpty() && carried.toLower() == info.firmwareChecksum.toLower();
}

bool InitialInformation::hasCorrectHardwareVersion(const InstrumentInfo &info)
{
    const auto model = HardwareModelFactory::getHardwareModel(info.hardware.hwModel);
    return model->getVanityName() != QLatin1String("Invalid") &&
           model->getHexFileSignatureText() != QLatin1String("INVALID_MODEL");
}
