// What the link makes of a stream of bytes, for sound and damaged streams and every size of arrival.

#include "TableRow.h"
#include "link/Frame.h"
#include "reference/PlainFrames.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>

namespace {

constexpr int streamSize = 1 << 18;

struct Stream {
    const char *name;
    QByteArray bytes;
};

QByteArray repeated(const QByteArray &part)
{
    return part.repeated(streamSize / part.size());
}

QByteArray randomBytes(int size)
{
    std::mt19937 generator(20260101u);
    QByteArray bytes;
    while (bytes.size() < size)
        bytes.append(char(generator() & 0xFF));
    return bytes;
}

/// Each with a header that promises more than what comes.
QByteArray falseLengths()
{
    const QByteArray header("\xEE\xFF\x42\x00\xFF\xFF", frameHeaderSize);
    const QByteArray frames = makeFrame(65, 0, QByteArray(34, '\x11')).repeated(100);
    return (header + frames).repeated(streamSize / (header.size() + frames.size()));
}

std::vector<Stream> streams()
{
    return {{"DC", repeated(makeFrame(65, 0, randomBytes(34)))},
            {"AC", repeated(makeFrame(66, 0, randomBytes(4096)))},
            {"empty frames", repeated(makeFrame(65, 0))},
            {"zeros", QByteArray(streamSize, '\0')},
            {"0xEE", QByteArray(streamSize, '\xEE')},
            {"random", randomBytes(streamSize)},
            {"false lengths", falseLengths()}};
}

/// The bytes in pieces, as they arrive.
template <typename Buffer>
std::vector<Buffer> inPieces(const QByteArray &bytes, int size)
{
    std::vector<Buffer> pieces;
    for (int at = 0; at < bytes.size(); at += size) {
        const QByteArray piece = bytes.mid(at, size);
        pieces.emplace_back(piece.begin(), piece.end());
    }
    return pieces;
}

template <>
std::vector<QByteArray> inPieces<QByteArray>(const QByteArray &bytes, int size)
{
    std::vector<QByteArray> pieces;
    for (int at = 0; at < bytes.size(); at += size)
        pieces.push_back(bytes.mid(at, size));
    return pieces;
}

using PlainBytes = std::vector<unsigned char>;

TableRow::Work libraryWork(const QByteArray &bytes, int size)
{
    return [pieces = inPieces<QByteArray>(bytes, size)] {
        QByteArray buffer;
        quint32 skipped = 0;
        for (const QByteArray &piece : pieces) {
            buffer += piece;
            benchmark::DoNotOptimize(takeFrames(buffer, skipped));
        }
    };
}

TableRow::Work plainWork(const QByteArray &bytes, int size)
{
    return [pieces = inPieces<PlainBytes>(bytes, size)] {
        PlainBytes buffer;
        std::uint32_t skipped = 0;
        for (const PlainBytes &piece : pieces) {
            buffer.insert(buffer.end(), piece.begin(), piece.end());
            benchmark::DoNotOptimize(plainFrames(buffer, skipped));
        }
    };
}

} // namespace

int main(int argc, char **argv)
{
    const char *against = "plain parser with one cut per arrival";
    TableRow worst("frame stream, worst of: DC, AC, empty, zeros, 0xEE, random, false lengths, in pieces of 1, 64, 4096, "
                   "65536",
                   against, {Aim::TimesAtMost, 1.5});
    for (const Stream &stream : streams())
        for (const int size : {1, 64, 4096, 65536})
            worst.addCase(std::string(stream.name) + " in pieces of " + std::to_string(size),
                          libraryWork(stream.bytes, size), plainWork(stream.bytes, size));
    TableRow garbage("random garbage in pieces of 4096", against, {Aim::TimesAtMost, 0.2});
    garbage.addCase("random garbage", libraryWork(randomBytes(streamSize), 4096),
                    plainWork(randomBytes(streamSize), 4096));
    return measureRows(argc, argv, {&worst, &garbage});
}
