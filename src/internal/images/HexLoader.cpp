#include "images/HexLoader.h"

#include "images/CrcCalculator.h"

#include <QFile>
#include <QFileInfo>
#include <QRegExp>

#include <cstring>
#include <numeric>

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
    // Deliberate: the size counts from the start of the flash, the CRC from the lowest address.
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

bool hasRightLength(const QByteArray &record)
{
    const auto length = static_cast<qint8>(record.at(0)); // signed: long records are refused
    return record.size() == length + recordOverhead;
}

bool hasRightChecksum(const QByteArray &record)
{
    return std::accumulate(record.begin(), record.end(), 0) % 256 == 0;
}

/// The lines of a file, without their ends. All at once: line by line, Qt drops a stray carriage return here, not there.
QList<QByteArray> linesOf(QFile &file)
{
    QList<QByteArray> lines = file.readAll().split('\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

/// Takes the last line off, without its comment signs; empty if there is none.
QString takeCommentLine(QList<QByteArray> &lines)
{
    return lines.isEmpty() ? QString() : QString::fromUtf8(lines.takeLast()).remove(QLatin1Char(';'));
}

} // namespace

bool ReadHexRecord(QString const &line, QByteArray &record)
{
    // One per thread, since a match leaves its traces in the expression.
    thread_local const QRegExp form(
        QStringLiteral(":([0-9a-fA-F]{2}[0-9a-fA-F]{4}[0-9a-fA-F]{2}([0-9a-fA-F]{2})*[0-9a-fA-F]{2})"));
    if (form.indexIn(line) < 0)
        return false;
    const QByteArray bytes = QByteArray::fromHex(line.toLatin1());
    if (!hasRightLength(bytes) || !hasRightChecksum(bytes))
        return false;
    record = bytes;
    return true;
}

QList<QByteArray> HexLoader::ReadFile(QString const &path)
{
    QFile file(path);
    if (!QFileInfo(path).isReadable() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QList<QByteArray> records;
    const QList<QByteArray> lines = linesOf(file);
    if (file.error() != QFileDevice::NoError)
        return {};
    for (const QByteArray &line : lines) {
        if (line.startsWith(';'))
            continue;
        QByteArray record;
        if (!ReadHexRecord(QString::fromLatin1(line.constData(), line.size()), record)) // past a NUL too
            return {};
        records.append(record);
    }
    return records;
}

HexSignature HexLoader::ReadHexSignature(QString const &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QList<QByteArray> lines = linesOf(file);
    HexSignature signature;
    signature.text = takeCommentLine(lines);
    signature.checksum = takeCommentLine(lines);
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
