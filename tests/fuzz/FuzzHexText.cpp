// SPDX-License-Identifier: MIT
// A firmware image as text, against a reader written down step by step.

#include "FuzzTarget.h"
#include "MemoryFile.h"
#include "images/HexLoader.h"

#include <map>
#include <optional>

namespace {

constexpr quint32 programFlash = 0x9D000000;

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

/// A colon with ten hexadecimal digits behind it, anywhere.
bool holdsRecord(const QByteArray &line)
{
    for (int colon = line.indexOf(':'); colon >= 0; colon = line.indexOf(':', colon + 1)) {
        int digits = 0;
        while (colon + 1 + digits < line.size() && hexDigit(line.at(colon + 1 + digits)) >= 0)
            ++digits;
        if (digits >= 10)
            return true;
    }
    return false;
}

/// All digits of the line in pairs from the right, whatever stands between them.
QByteArray digitsOf(const QByteArray &line)
{
    QByteArray bytes;
    bool isLow = true;
    for (int i = line.size() - 1; i >= 0; --i) {
        const int digit = hexDigit(line.at(i));
        if (digit < 0)
            continue;
        if (isLow)
            bytes.prepend(char(digit));
        else
            bytes[0] = char(bytes.at(0) | digit << 4);
        isLow = !isLow;
    }
    return bytes;
}

std::optional<QByteArray> plainRecord(const QByteArray &line)
{
    if (!holdsRecord(line))
        return std::nullopt;
    const QByteArray bytes = digitsOf(line);
    const auto length = quint8(bytes.at(0));
    quint8 sum = 0;
    for (const char byte : bytes)
        sum = quint8(sum + quint8(byte));
    if (length >= 128 || bytes.size() != length + 5 || sum != 0)
        return std::nullopt;
    return bytes;
}

QList<QByteArray> plainRecords(QByteArray text)
{
    text.replace("\r", ""); // Qt's text mode
    QList<QByteArray> records;
    QList<QByteArray> lines = text.split('\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    for (const QByteArray &line : lines) {
        if (line.startsWith(';'))
            continue;
        const std::optional<QByteArray> record = plainRecord(line);
        if (!record)
            return {};
        records.append(*record);
    }
    return records;
}

quint16 plainCrc(quint16 crc, quint8 byte)
{
    crc = quint16(crc ^ byte << 8);
    for (int bit = 0; bit < 8; ++bit)
        crc = quint16(crc & 0x8000 ? crc << 1 ^ 0x1021 : crc << 1);
    return crc;
}

/// The program flash by address.
class PlainImage
{
public:
    explicit PlainImage(const QList<QByteArray> &records)
    {
        for (const QByteArray &record : records) {
            const auto byte = [&record](int i) { return i < record.size() ? quint32(quint8(record.at(i))) : 0u; };
            const quint32 word = byte(4) << 8 | byte(5);
            const quint32 type = byte(3);
            if (type == 1)
                return;
            if (type == 4)
                base = word << 16;
            else if (type == 2)
                base = word << 4;
            else if (type == 0)
                store(base + (byte(1) << 8 | byte(2)), record.mid(4, record.size() - 5));
        }
    }

    void store(quint32 address, const QByteArray &data)
    {
        address |= 0x80000000;
        if (address < programFlash || address >= 0x9FC00000)
            return;
        lowest = std::min(lowest, address);
        end = std::max(end, address + quint32(data.size()));
        for (int i = 0; i < data.size(); ++i)
            bytes[address + quint32(i)] = quint8(data.at(i));
    }

    quint16 crc() const
    {
        quint16 sum = 0;
        for (quint32 address = lowest; address < end; ++address) {
            const auto found = bytes.find(address);
            sum = plainCrc(sum, found == bytes.end() ? 0xFF : found->second);
        }
        return sum;
    }

    std::map<quint32, quint8> bytes;
    quint32 base = 0;
    quint32 lowest = 0xFFFFFFFF;
    quint32 end = programFlash;
};

/// Summing up megabytes of filling would take most of the fuzzer's time.
bool isQuickToSum(const PlainImage &image)
{
    return image.end < image.lowest || image.end - image.lowest < 1u << 12;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static MemoryFile file;
    const QByteArray text(reinterpret_cast<const char *>(data), int(size));
    const QString path = file.write(text);
    HexLoader::ReadHexSignature(path);
    const QList<QByteArray> records = HexLoader::ReadFile(path);
    mustHold(records == plainRecords(text), "records are read as a plain reader reads them");
    const PlainImage image(records);
    if (!isQuickToSum(image))
        return 0;
    const HexCrc crc = HexLoader::CalculateCrc(records);
    mustHold(crc.address == image.lowest && crc.size == image.end - programFlash, "the image has its address and size");
    mustHold(crc.crc == image.crc(), "the image has its checksum");
    return 0;
}
