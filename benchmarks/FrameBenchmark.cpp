// SPDX-License-Identifier: MIT
// What the link makes of a stream of bytes, for sound and damaged streams and every size of arrival.

#include "TableRow.h"
#include "link/PacketBuffer.h"
#include "reference/PlainFrames.h"

#include <benchmark/benchmark.h>

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

/// Hands the bytes over in pieces, as they arrive.
template <typename Frames>
TableRow::Work arrival(const QByteArray &bytes, int piece, Frames (*cut)(QByteArray &, quint32 &))
{
    return [bytes, piece, cut] {
        QByteArray buffer;
        quint32 skipped = 0;
        for (int at = 0; at < bytes.size(); at += piece) {
            buffer.append(bytes.constData() + at, qMin(piece, bytes.size() - at));
            benchmark::DoNotOptimize(cut(buffer, skipped));
        }
    };
}

/// The way of the link: the frames travel as they are to the thread that unwraps them.
int unwrapped(QByteArray &buffer, quint32 &skipped)
{
    PacketBuffer packets = takePackets(buffer, skipped);
    int bytes = 0;
    while (!packets.isEmpty())
        bytes += packets.takeFirst().payload.size();
    return bytes;
}

} // namespace

int main(int argc, char **argv)
{
    const char *against = "plain parser with one cut per arrival";
    TableRow worst(
        "frame stream, worst of: DC, AC, empty, zeros, 0xEE, random, false lengths, in pieces of 1, 64, 4096, "
        "65536",
        against, {Aim::TimesAtMost, 1.5});
    for (const Stream &stream : streams())
        for (const int size : {1, 64, 4096, 65536})
            worst.addCase(std::string(stream.name) + " in pieces of " + std::to_string(size),
                          arrival(stream.bytes, size, unwrapped), arrival(stream.bytes, size, plainFrames));
    TableRow garbage("random garbage in pieces of 4096", against, {Aim::TimesAtMost, 0.2});
    const QByteArray bytes = randomBytes(streamSize);
    garbage.addCase("random garbage", arrival(bytes, 4096, unwrapped), arrival(bytes, 4096, plainFrames));
    return measureRows(argc, argv, {&worst, &garbage});
}
