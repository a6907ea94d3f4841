// SPDX-License-Identifier: MIT
#include "simulator/FlashMemory.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr quint32 cachedBit = 0x80000000; // an address in a record may be the physical one
constexpr quint32 flashStart = 0x9D000000;
constexpr quint32 flashSize = 2u << 20;
constexpr quint32 bootFlashStart = 0x9FC00000; // the bootloader's own, which it leaves alone
constexpr int dataOffset = 4;
constexpr int recordOverhead = 5;

quint32 wordAt(const QByteArray &record, int position) // high byte first
{
    return quint32(quint8(record.at(position))) << 8 | quint8(record.at(position + 1));
}

bool isSound(const QByteArray &record)
{
    return record.size() >= recordOverhead && record.size() == quint8(record.at(0)) + recordOverhead &&
           std::accumulate(record.begin(), record.end(), 0) % 256 == 0;
}

quint32 crc32(const QByteArray &bytes)
{
    quint32 crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xEDB88320 : crc >> 1;
    }
    return ~crc;
}

} // namespace

quint16 crc16(const QByteArray &bytes)
{
    quint32 crc = 0;
    for (const char byte : bytes) {
        crc ^= quint32(quint8(byte)) << 8;
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 0x8000 ? crc << 1 ^ 0x1021 : crc << 1;
    }
    return quint16(crc);
}

void FlashMemory::erase()
{
    *this = FlashMemory();
}

bool FlashMemory::program(const QByteArray &record)
{
    const bool isTaken = isSound(record) && execute(record);
    _isSpoiled = _isSpoiled || !isTaken;
    return isTaken;
}

bool FlashMemory::execute(const QByteArray &record)
{
    enum Type : char { Data = 0, End = 1, SegmentAddress = 2, LinearAddress = 4 };
    const char type = record.at(3);
    const bool isAddress = type == SegmentAddress || type == LinearAddress;
    if (isAddress && record.at(0) != 2)
        return false;
    if (isAddress)
        _base = wordAt(record, dataOffset) << (type == LinearAddress ? 16 : 4);
    _hasEnd = _hasEnd || type == End;
    return type != Data || store(record);
}

bool FlashMemory::store(const QByteArray &record)
{
    const quint32 address = (_base + wordAt(record, 1)) | cachedBit;
    const QByteArray data = record.mid(dataOffset, record.size() - recordOverhead);
    if (address >= bootFlashStart)
        return true;
    if (address < flashStart || address + quint32(data.size()) > flashStart + flashSize)
        return false;
    const int offset = int(address - flashStart);
    _bytes = _bytes.leftJustified(offset + data.size(), '\xFF');
    _bytes.replace(offset, data.size(), data);
    return true;
}

void FlashMemory::load(const QList<QByteArray> &records)
{
    erase();
    for (const QByteArray &record : records)
        program(record);
}

void FlashMemory::age()
{
    if (!_bytes.isEmpty())
        _bytes[0] = char(~_bytes.at(0));
}

quint16 FlashMemory::crc(quint32 address, quint32 size) const
{
    const quint32 offset = std::min(address - flashStart, flashSize);
    const QByteArray flash = _bytes.leftJustified(int(std::min(size, flashSize)), '\xFF', true);
    return crc16(flash.mid(int(offset)));
}

QByteArray firmwareChecksum(const QByteArray &image)
{
    if (image.isEmpty())
        return QByteArray();
    const quint32 crc = crc32(image);
    QByteArray bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.append(char(crc >> shift));
    return bytes;
}
