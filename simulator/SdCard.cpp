// SPDX-License-Identifier: MIT
#include "simulator/SdCard.h"

#include "simulator/Payload.h"

namespace {

constexpr quint32 headerMagic = 0x30303031; ///< "1000"
constexpr quint32 wrongMagic = 0x30303032;
constexpr int headerSize = 256;
constexpr int packetSize = 4096;
constexpr char fileSeparator = 0x1C;

} // namespace

void SdCard::setContents(const QByteArray &stream, const SdCardFaults &faults)
{
    _stream = stream;
    if (faults.hasBadFile)
        _stream.insert(_stream.indexOf(fileSeparator), "\n1,2,3,4");
    _readable = faults.isCutShort ? _stream.size() / 2 : _stream.size();
    _hasWrongMagic = faults.hasWrongMagic;
}

void SdCard::rewind()
{
    _nextChannel = 0;
    _waiting.clear();
}

SdCard::Packet SdCard::nextHeader()
{
    const int channel = _nextChannel;
    _nextChannel = (_nextChannel + 1) % _channels;
    if (_readable > 0)
        _waiting.append({channel, 0});
    QByteArray header = packed(_hasWrongMagic ? wrongMagic : headerMagic, qint32(_stream.size()));
    header.append(headerSize - header.size(), '\0');
    return {channel, header};
}

SdCard::Packet SdCard::nextData()
{
    Transfer transfer = _waiting.takeFirst();
    const QByteArray bytes = _stream.mid(transfer.position, qMin(packetSize, _readable - transfer.position));
    transfer.position += bytes.size();
    if (transfer.position < _readable)
        _waiting.append(transfer);
    return {transfer.channel, bytes};
}
