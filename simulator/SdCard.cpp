#include "simulator/SdCard.h"

#include "simulator/Payload.h"

namespace {

constexpr quint32 headerMagic = 0x30303031; ///< "1000"
constexpr int headerSize = 256;
constexpr int packetSize = 4096;

} // namespace

void SdCard::rewind()
{
    _nextChannel = 0;
    _waiting.clear();
}

SdCard::Packet SdCard::nextHeader()
{
    const int channel = _nextChannel;
    _nextChannel = (_nextChannel + 1) % _channels;
    const int size = _streams.value(channel).size();
    if (size > 0)
        _waiting.append({channel, 0});
    QByteArray header = packed(headerMagic, qint32(size));
    header.append(headerSize - header.size(), '\0');
    return {channel, header};
}

SdCard::Packet SdCard::nextData()
{
    if (_waiting.isEmpty())
        return {0, QByteArray()};
    Transfer transfer = _waiting.takeFirst();
    const QByteArray stream = _streams.value(transfer.channel);
    const QByteArray bytes = stream.mid(transfer.position, packetSize);
    transfer.position += bytes.size();
    if (transfer.position < stream.size())
        _waiting.append(transfer);
    return {transfer.channel, bytes};
}
