// SPDX-License-Identifier: MIT
#include "images/HexLoader.h"

#include "images/CrcCalculator.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <cstring>
#include <iterator>
#include <numeric>
#include <utility>

// The images would not survive static linking without this reference; it also makes them available to every user of
// this class before main() begins. Outside of the namespace below, since the macro declares a global function.
static const bool firmwareIsRegistered = [] {
    Q_INIT_RESOURCE(firmware);
    return true;
}();

namespace {

enum RecordType : quint8 { Data = 0, EndOfFile = 1, ExtendedSegmentAddress = 2, ExtendedLinearAddress = 4 };

constexpr int dataOffset = 4;     // behind length, address and type
constexpr int recordOverhead = 5; // these and the checksum
constexpr int mostDataBytes = 127;

quint8 byteAt(const QByteArray &record, int position)
{
    return position < record.size() ? static_cast<quint8>(record.at(position)) : 0;
}

quint32 wordAt(const QByteArray &record, int position) // high byte first
{
    return byteAt(record, position) * 256u + byteAt(record, position + 1);
}

/// The target's program flash, filled record by record.
class FlashImage
{
public:
    /// False once the image is at its end.
    bool take(const QByteArray &record);
    HexCrc summary() const;
    /// From the lowest address to the end.
    QByteArray used() const { return _bytes.mid(static_cast<int>(_lowestAddress - programFlash)); }

private:
    void store(const QByteArray &record);

    // Memory as the target's processor sees it through the cache.
    static constexpr quint32 cachedBit = 0x80000000;
    static constexpr quint32 programFlash = 0x9D000000;
    static constexpr quint32 bootFlash = 0x9FC00000;

    QByteArray _bytes; // from the start of the program flash
    quint32 _lowestAddress = 0xFFFFFFFF;
    quint32 _linearBase = 0;
    quint32 _segmentBase = 0;
};

bool FlashImage::take(const QByteArray &record)
{
    switch (byteAt(record, 3)) {
    case EndOfFile:
        return false;
    case ExtendedLinearAddress:
        _segmentBase = 0;
        _linearBase = wordAt(record, dataOffset) << 16;
        break;
    case ExtendedSegmentAddress:
        _linearBase = 0;
        _segmentBase = wordAt(record, dataOffset) * 16;
        break;
    case Data:
        store(record);
        break;
    }
    return true;
}

void FlashImage::store(const QByteArray &record)
{
    const quint32 address = (wordAt(record, 1) + _linearBase + _segmentBase) | cachedBit;
    // What lies below the program flash is memory that no image fills; it would make this one gigabytes long.
    if (address >= bootFlash || address < programFlash)
        return;
    _lowestAddress = qMin(_lowestAddress, address);
    const int offset = static_cast<int>(address - programFlash);
    const QByteArray data = record.mid(dataOffset, qMax(0, record.size() - recordOverhead));
    const int end = offset + data.size();
    if (_bytes.size() < end)
        _bytes.append(end - _bytes.size(), '\xFF');
    std::memcpy(_bytes.data() + offset, data.constData(), static_cast<size_t>(data.size()));
}

HexCrc FlashImage::summary() const
{
    // The CRC is of what lies above the lowest address. See compatibility.md, size from the start of the flash.
    const QByteArray bytes = used();
    return {_lowestAddress, static_cast<quint32>(_bytes.size()),
            CrcCalculator::Get16(bytes.constData(), static_cast<unsigned>(bytes.size()))};
}

FlashImage imageOf(const QList<QByteArray> &records)
{
    FlashImage image;
    for (const QByteArray &record : records) {
        if (!image.take(record))
            break;
    }
    return image;
}

constexpr quint8 noDigit = 0xFF;

constexpr std::array<quint8, 256> digitValues = [] {
    std::array<quint8, 256> values{};
    for (quint8 &value : values)
        value = noDigit;
    for (quint8 value = 0; value < 16; ++value) {
        values[quint8("0123456789ABCDEF"[value])] = value;
        values[quint8("0123456789abcdef"[value])] = value;
    }
    return values;
}();

quint8 digitOf(char character)
{
    return digitValues[static_cast<quint8>(character)];
}

/// One line, without its end.
struct Line {
    const char *begin;
    const char *end;

    bool isComment() const { return begin != end && *begin == ';'; }
};

/// Whether a colon has the digits of a record without data behind it. Anything may stand around these.
bool holdsRecord(const Line &line)
{
    constexpr int outside = -1; // of a row of digits that began with a colon
    int digits = outside;
    for (const char *character = line.begin; character != line.end; ++character) {
        if (*character == ':')
            digits = 0;
        else if (digits == outside || digitOf(*character) == noDigit)
            digits = outside;
        else if (++digits == 2 * recordOverhead)
            return true;
    }
    return false;
}

/// Shortens a line to what stands in front of its last digit; noDigit where it has none.
quint8 takeLastDigit(Line &line)
{
    while (line.end != line.begin) {
        const quint8 digit = digitOf(*--line.end);
        if (digit != noDigit)
            return digit;
    }
    return noDigit;
}

/// All digits of a line in pairs from the right, whatever stands between them; cut short where no record is so long.
QByteArray bytesOf(Line line)
{
    char bytes[mostDataBytes + recordOverhead + 1];
    char *first = std::end(bytes);
    while (first != bytes) {
        const quint8 low = takeLastDigit(line);
        if (low == noDigit)
            break;
        const quint8 high = takeLastDigit(line);
        *--first = static_cast<char>(high == noDigit ? low : high << 4 | low);
    }
    return QByteArray(first, static_cast<int>(std::end(bytes) - first));
}

bool hasRightLength(const QByteArray &record)
{
    const auto length = static_cast<qint8>(record.at(0)); // signed: long records are refused
    return record.size() == length + recordOverhead;
}

bool hasRightChecksum(const QByteArray &record)
{
    return std::accumulate(record.begin(), record.end(), 0) % 256 == 0;
}

bool readRecord(const Line &line, QByteArray &record)
{
    if (!holdsRecord(line))
        return false;
    QByteArray bytes = bytesOf(line);
    if (!hasRightLength(bytes) || !hasRightChecksum(bytes))
        return false;
    record = std::move(bytes);
    return true;
}

/// Takes the first line off a text.
Line takeLine(const char *&text, const char *end)
{
    const auto *lineEnd = static_cast<const char *>(std::memchr(text, '\n', static_cast<std::size_t>(end - text)));
    const Line line{text, lineEnd ? lineEnd : end};
    text = lineEnd ? lineEnd + 1 : end;
    return line;
}

/// All records of a text; empty if a line is neither record nor comment.
QList<QByteArray> recordsOf(const QByteArray &text)
{
    QList<QByteArray> records;
    const char *const end = text.constData() + text.size();
    for (const char *rest = text.constData(); rest != end;) {
        const Line line = takeLine(rest, end);
        if (line.isComment())
            continue;
        records.append(QByteArray()); // filled in place: counting references is slow
        if (!readRecord(line, records.last()))
            return {};
    }
    return records;
}

/// Takes the last line off, without its comment signs; empty if there is none.
QString takeCommentLine(QByteArray &text)
{
    if (text.endsWith('\n'))
        text.chop(1);
    const int begin = text.lastIndexOf('\n') + 1;
    const QString line = QString::fromUtf8(text.mid(begin)).remove(QLatin1Char(';'));
    text.truncate(begin);
    return line;
}

} // namespace

bool ReadHexRecord(QString const &line, QByteArray &record)
{
    const QByteArray characters = line.toLatin1();
    return readRecord({characters.begin(), characters.end()}, record);
}

// The text of a file is read at once: line by line, Qt drops a stray carriage return here, not there.

QList<QByteArray> HexLoader::ReadFile(QString const &path)
{
    QFile file(path);
    if (!QFileInfo(path).isReadable() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    const QByteArray text = file.readAll();
    return file.error() == QFileDevice::NoError ? recordsOf(text) : QList<QByteArray>();
}

HexSignature HexLoader::ReadHexSignature(QString const &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QByteArray text = file.readAll();
    HexSignature signature;
    signature.text = takeCommentLine(text);
    signature.checksum = takeCommentLine(text);
    return signature;
}

HexCrc HexLoader::CalculateCrc(QList<QByteArray> const &records)
{
    return imageOf(records).summary();
}

QByteArray HexLoader::ImageBytes(QList<QByteArray> const &records)
{
    return imageOf(records).used();
}

QString HexLoader::getDefaultHexPath(QString const &fileName)
{
    return QStringLiteral(":/VekFirmwareHexFiles/%2").arg(fileName);
}
