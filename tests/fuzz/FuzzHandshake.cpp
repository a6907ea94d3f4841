// SPDX-License-Identifier: MIT
// Replies of whatever is on a port to the questions of the handshake.

#include "FuzzTarget.h"
#include "hardware_models/HardwareModel.h"
#include "hardware_models/HardwareModelFactory.h"
#include "link/SerialCommunicator.h"
#include "session/InitialInformation.h"

#include <QCoreApplication>

namespace {

/// A link that is lost at each command, which ends the wait at once, and answers by some packets of the input all the
/// same: an answer that fits decides, as the later of the two.
class ScriptedLink : public SerialCommunicator
{
public:
    ScriptedLink() : SerialCommunicator(QStringLiteral("/nowhere")) {}

    void setScript(FuzzInput *script) { _script = script; }

    void SendCommand(PCcommand_t command, unsigned char channel, const QByteArray &) override
    {
        QMetaObject::invokeMethod(this, &SerialCommunicator::deviceDisconnected, Qt::QueuedConnection);
        const int replies = _script->below(4);
        for (int i = 0; i < replies; ++i)
            reply(command, channel);
    }

private:
    struct Row {
        PCcommand_t command;
        Notifications_t answer;
        int size; ///< 0: a text
    };
    static constexpr Row rows[] = {
        {PC_ECHO_TEST, NT_ECHO, 0},
        {PC_PING, NT_PING_REPLY, 0},
        {PC_READ_HARDWARE_VERSION, NT_HARDWARE_VERSION, 64},
        {PC_READ_CHANNEL_COUNT, NT_CHANNEL_COUNT, 1},
        {PC_READ_FIRMWARE_CHECKSUM, NT_FIRMWARE_CHECKSUM, 0},
        {PC_READ_FIRMWARE_VERSION, NT_FIRMWARE_VERSION, 0},
        {PC_READ_FLASH_CAL, NT_RAW_CAL_DATA, 0},
        {PC_READ_CONFIG, NT_CONFIG, 288},
    };

    void reply(PCcommand_t command, unsigned char channel)
    {
        const Row &row = rowOf(command);
        switch (_script->below(4)) {
        case 0:
            return send(Notifications_t(_script->take<qint8>()), _script->take<quint8>(), anySize());
        case 1: // the right answer, of any content
            return send(row.answer, channel, contentOf(row));
        case 2: // the checksum of the firmware that the library carries, which nobody guesses
            return send(NT_FIRMWARE_CHECKSUM, channel, checksumOf(HardwareModel_t(_script->take<quint8>())));
        case 3: // the right answer but for its size
            return send(row.answer, channel, anySize());
        }
    }

    static const Row &rowOf(PCcommand_t command)
    {
        return *std::find_if(std::begin(rows), std::end(rows) - 1,
                             [command](const Row &row) { return row.command == command; });
    }

    QByteArray contentOf(const Row &row)
    {
        if (row.answer == NT_CHANNEL_COUNT)
            return QByteArray(1,
                              char(_script->below(16))); // each channel costs a question, and so a part of the search
        return row.size > 0 ? _script->record(row.size) : _script->text();
    }

    QByteArray anySize() { return _script->bytes(_script->take<quint16>()); }

    static QByteArray checksumOf(HardwareModel_t model)
    {
        static QMap<HardwareModel_t, QByteArray> known; // each question reads a whole image
        if (!known.contains(model)) {
            const QString text = HardwareModelFactory::getHardwareModel(model)->hexFileCheckSum();
            known.insert(model, QByteArray::fromHex(text.toLatin1()));
        }
        return known.value(model);
    }

    void send(Notifications_t type, unsigned int channel, const QByteArray &payload)
    {
        QMetaObject::invokeMethod(
            this, [=] { Q_EMIT ResponseReceived(type, channel, payload); }, Qt::QueuedConnection);
    }

    FuzzInput *_script = nullptr;
};

/// The road of a connection, without its pauses. @return whether the instrument is admitted
bool isAdmitted(SerialCommunicator &link, InstrumentInfo &info)
{
    return InitialInformation::validateFirmware(link, info) == VekErrorCode::Success &&
           !InitialInformation::getFirmwareVersion(link, info) && !InitialInformation::getCalData(link, info) &&
           !InitialInformation::getConfigData(link, info);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzProcess::instance();
    static ScriptedLink link;
    FuzzInput script(data, size);
    link.setScript(&script);
    InstrumentInfo info;
    if (isAdmitted(link, info)) {
        mustHold(info.calibration.size() == info.channelCount, "every channel of an admitted instrument is calibrated");
        mustHold(instrumentLineOf(info.hardware.hwModel) != InstrumentLine::None, "an admitted instrument has a line");
    }
    QCoreApplication::sendPostedEvents(&link); // what came too late for its question is nobody's
    return 0;
}
