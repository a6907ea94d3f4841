// SPDX-License-Identifier: MIT
#include "session/InstrumentOperator.h"

#include "link/SerialCommunicator.h"
#include "session/InstrumentInfo.h"
#include "session/WireValues.h"

#include <QDateTime>
#include <QDebug>
#include <QPointer>

#include <variant>

namespace {

constexpr int fullMemoryBlockSize = 512;

/// What is missing reads as zero.
quint8 byteAt(const QByteArray &data, int position)
{
    return position < data.size() ? static_cast<quint8>(data.at(position)) : 0;
}

} // namespace

/// Where packets of one type go: into a signal or method by its arguments, into a message, or nowhere.
struct InstrumentOperator::Road {
    using ChannelAndPayload = void (InstrumentOperator::*)(unsigned char, const QByteArray &);
    using ChannelAlone = void (InstrumentOperator::*)(unsigned char);
    using PayloadAlone = void (InstrumentOperator::*)(const QByteArray &);
    struct Message {
        void (InstrumentOperator::*signal)(unsigned char, const QString &);
        const char *text;
    };
    struct Dropped {
    };

    void lead(InstrumentOperator &instrument, unsigned char channel, const QByteArray &data) const;

    Notifications_t type;
    std::variant<ChannelAndPayload, ChannelAlone, PayloadAlone, Message, Dropped> end;
};

// clang-format off
const InstrumentOperator::Road InstrumentOperator::_roads[] = { // in the order of the numbers
    {NT_IGNORED_1,              Road::Dropped{}},
    {NT_WE_OUT_OF_RANGE,        Road::Message{&InstrumentOperator::deviceNotification,
                                              "Working electrode potential out of range!"}},
    {NT_RE_OUT_OF_RANGE,        Road::Message{&InstrumentOperator::deviceNotification,
                                              "Reference electrode potential out of range!"}},
    {NT_CURRENT_RANGE_UP,       &InstrumentOperator::onCurrentRangeUp},
    {NT_OVERCURRENT,            Road::Message{&InstrumentOperator::deviceError,
                                              "The current has exceeded instrument limits!"}},
    {NT_IGNORED_6,              Road::Dropped{}},
    {NT_PING_REPLY,             Road::Dropped{}},
    {NT_DC_DATA,                &InstrumentOperator::experimentDCDataReceived},
    {NT_AC_DATA,                &InstrumentOperator::experimentACDataReceived},
    {NT_RAW_CAL_DATA,           &InstrumentOperator::rawDCcalDataReceived},
    {NT_ERROR_TEXT,             &InstrumentOperator::onErrorText},
    {NT_DEVICE_STATUS,          &InstrumentOperator::onDeviceStatus},
    {NT_NODE_APPENDED,          &InstrumentOperator::onNodeAppended},
    {NT_NODE_BEGIN,             &InstrumentOperator::experimentNodeBeginning},
    {NT_NODE_DONE,              &InstrumentOperator::experimentNodeCompleted},
    {NT_EXPERIMENT_DONE,        &InstrumentOperator::experimentCompleted},
    {NT_EXPERIMENT_PAUSED,      &InstrumentOperator::experimentPaused},
    {NT_EXPERIMENT_RESUMED,     &InstrumentOperator::experimentResumed},
    {NT_IGNORED_79,             Road::Dropped{}},
    {NT_AC_DATA_INVALID,        &InstrumentOperator::acDataInvalidated},
    {NT_NODE_SKIPPED,           &InstrumentOperator::experimentNodeSkipped},
    {NT_META_DATA,              &InstrumentOperator::receivedMetaData},
    {NT_MEMORY_DATA_START,      &InstrumentOperator::memoryDataStart},
    {NT_MEMORY_DATA_ERASED,     &InstrumentOperator::memoryDataErased},
    {NT_TIME_REQUEST,           &InstrumentOperator::onTimeRequest},
    {NT_SD_CAL_HEADER,          &InstrumentOperator::calibrationHeaderReceived},
    {NT_SD_CAL_DATA,            &InstrumentOperator::calibrationDataReceived},
    {NT_SD_CAL_WRITE_ACK,       &InstrumentOperator::acknowledgeToWriteCalDataInSDCard},
    {NT_DATA_BEGIN,             &InstrumentOperator::experimentDataBeginning},
    {NT_DC_DATA_92,             &InstrumentOperator::experimentDCDataReceived},
    {NT_OSCILLATION,            Road::Message{&InstrumentOperator::deviceError,
                                              "Excessive oscillation has been detected!"}},
    {NT_MEMORY_BLOCK_END,       &InstrumentOperator::onMemoryBlockEnd},
    {NT_GROUND_FLOAT,           &InstrumentOperator::groundFloatStateChanged},
    {NT_TARE_CURRENT,           &InstrumentOperator::TareCurrentReceived},
    {NT_TARE_VOLTAGE,           &InstrumentOperator::TareVoltageReceived},
    {NT_AC_SAMPLE_DONE,         &InstrumentOperator::acDataSampleFinshed},
    {NT_SPECIAL_CAL_AC_AMP_ERR, &InstrumentOperator::SpecialCalRsp_ACampErr},
    {NT_DC_DATA_102,            &InstrumentOperator::experimentDCDataReceived},
    {NT_GENERAL_ACK,            &InstrumentOperator::filterGeneralAck},
    {NT_CONFIG,                 &InstrumentOperator::deviceConfigReceived},
    {NT_IGNORED_107,            Road::Dropped{}},
    {NT_NONLINEAR_ADC_CAL,      &InstrumentOperator::nonlinearADCCalDataReceived},
};
// clang-format on

namespace {

using AckSignal = void (InstrumentOperator::*)(unsigned char, const FirmwareErrorCode &);

/// What an acknowledgement of one command leads to; a command without a row is passed on by acknowledge().
struct AckRow {
    PCcommand_t command;
    AckSignal signal; ///< may be null
    bool isRecorded;  ///< a method of the operator waits for it
};

// clang-format off
constexpr AckRow ackRows[] = {
    {PC_EXPERIMENT_START,         &InstrumentOperator::acktoExperimentStart,            false},
    {PC_MANUAL_START,             &InstrumentOperator::acktoManualStart,                false},
    {PC_MANUAL_SAMPLING_PARAMS,   &InstrumentOperator::acktoManualSamplingIntervalSet,  true},
    {PC_MANUAL_OCP,               &InstrumentOperator::acktoManualOcpSet,               false},
    {PC_CURRENT_RANGE,            &InstrumentOperator::acktoManualCurrentRangeSet,      false},
    {PC_COMP_RANGE,               &InstrumentOperator::acktoCompRange,                  false},
    {PC_IR_COMP,                  &InstrumentOperator::acktoIRComp,                     false},
    {PC_VOLTAGE_RANGE,            &InstrumentOperator::acktoManualVoltageRangeSet,      false},
    {PC_MANUAL_GALVANO_SETPOINT,  &InstrumentOperator::acktoManualCurrentSetPoint,      false},
    {PC_MANUAL_POTENTIO_SETPOINT, &InstrumentOperator::acktoManualVoltageSetPoint,      false},
    {PC_CHANNEL_LIMITS,           nullptr,                                              true},
};
// clang-format on

const AckRow *ackRowOf(PCcommand_t command)
{
    for (const AckRow &row : ackRows) {
        if (row.command == command)
            return &row;
    }
    return nullptr;
}

} // namespace

void InstrumentOperator::Road::lead(InstrumentOperator &instrument, unsigned char channel, const QByteArray &data) const
{
    struct {
        InstrumentOperator &instrument;
        unsigned char channel;
        const QByteArray &data;

        void operator()(ChannelAndPayload member) const { (instrument.*member)(channel, data); }
        void operator()(ChannelAlone member) const { (instrument.*member)(channel); }
        void operator()(PayloadAlone member) const { (instrument.*member)(data); }
        void operator()(const Message &message) const
        {
            (instrument.*message.signal)(channel, QString::fromLatin1(message.text));
        }
        void operator()(Dropped) const {}
    } const traveller = {instrument, channel, data};
    std::visit(traveller, end);
}

void InstrumentOperator::responseReceived(Notifications_t type, unsigned int channel, const QByteArray &data)
{
    const auto narrowChannel = static_cast<unsigned char>(channel);
    for (const Road &road : _roads) {
        if (road.type == type)
            return road.lead(*this, narrowChannel, data);
    }
    Q_EMIT deviceNotification(narrowChannel, QStringLiteral("Unknown response. Response ID: %1").arg(int(type)));
}

void InstrumentOperator::takePackets()
{
    if (!_communicator)
        return;
    const QPointer<InstrumentOperator> alive(this); // a listener may discard the handler
    qint64 bytesHandled = 0;
    _communicator->packets().deliver([&](const Frame &packet) {
        responseReceived(packet.type, packet.channel, packet.payload);
        bytesHandled += packet.size();
        return alive && _communicator;
    });
    if (alive && _communicator)
        _communicator->packetsHandled(bytesHandled);
}

void InstrumentOperator::onCurrentRangeUp(unsigned char channel, const QByteArray &data)
{
    Q_EMIT deviceNotification(channel, QStringLiteral("The current limit for the current range has been exceeded. "
                                                      "Current Range incremented to %1")
                                           .arg(byteAt(data, 0)));
}

void InstrumentOperator::onErrorText(unsigned char channel, const QByteArray &data)
{
    Q_EMIT deviceError(channel, textIn(data));
}

void InstrumentOperator::onDeviceStatus(unsigned char, const QByteArray &data)
{
    Q_EMIT channelstatusInformation(data);
    receivedAcknowledgment(AckInfo(deviceChannel, PC_READ_DEVICE_STATUS)); // that it came is the acknowledgement
}

void InstrumentOperator::onNodeAppended(unsigned char channel, const QByteArray &data)
{
    const auto code = FirmwareErrorCode(byteAt(data, 0));
    if (code != FW_SUCCESS)
        qDebug().noquote().nospace() << "  : " << handle_error(code);
    receivedNodeAcknowledgment(AckInfo(channel, PC_NODE_APPEND, code));
    Q_EMIT appendExperimentNodeAcked(channel); // of a refused node as well
}

void InstrumentOperator::onTimeRequest(unsigned char, const QByteArray &)
{
    send(PC_SET_TIME, deviceChannel, packed(qint64(QDateTime::currentMSecsSinceEpoch())));
}

void InstrumentOperator::onMemoryBlockEnd(unsigned char, const QByteArray &data)
{
    if (data.size() <= fullMemoryBlockSize)
        readMemoryData(false);
}

void InstrumentOperator::filterGeneralAck(unsigned char channel, const QByteArray &data)
{
    const auto command = PCcommand_t(byteAt(data, 0));
    const auto code = FirmwareErrorCode(byteAt(data, 1));
    if (command == PC_SOFT_RESET) {
        qDebug(" boot loader reset ");
        return;
    }
    const AckRow *row = ackRowOf(command);
    if (!row) {
        Q_EMIT acknowledge(channel, command);
        return;
    }
    if (row->signal)
        (this->*row->signal)(channel, code);
    if (row->isRecorded)
        receivedAcknowledgment(AckInfo(channel, command));
}
