// SPDX-License-Identifier: MIT
// What packets take of the memory while they wait in front of a client that stands still.

#include "link/PacketBuffer.h"
#include "waiting/Mailbox.h"

#include <algorithm>
#include <cstdio>
#include <malloc.h>
#include <memory>

namespace {

constexpr qint64 bytesUnderWay = 12'000'000; ///< so many the link lets be on their way
constexpr double mostMegabytes = 16.0;

/// Of the heap, for frames that arrive in pieces.
double megabytesWaiting(const QByteArray &frame, int piece)
{
    const QByteArray stream = frame.repeated(1 + 2 * piece / frame.size());
    const auto before = mallinfo2();
    Mailbox<PacketBuffer> arrivals([] {});
    QByteArray buffer;
    quint32 skipped = 0;
    int at = 0;
    for (qint64 bytes = 0; bytes < bytesUnderWay; bytes += piece) {
        buffer.append(stream.constData() + at, piece);
        at = (at + piece) % frame.size();
        arrivals.put(takePackets(buffer, skipped));
    }
    const auto after = mallinfo2(); // large blocks are counted apart
    return (double(after.uordblks) - double(before.uordblks) + double(after.hblkhd) - double(before.hblkhd)) / 1e6;
}

} // namespace

int main()
{
    double most = 0.0;
    for (const int payload : {0, 34, 4096}) {
        for (const int piece : {1, 64, 4096, 65536}) {
            const double megabytes = megabytesWaiting(makeFrame(65, 0, QByteArray(payload, '\x11')), piece);
            std::fprintf(stderr, "payloads of %d bytes in pieces of %d: %.1f MB\n", payload, piece, megabytes);
            most = std::max(most, megabytes);
        }
    }
    std::printf("| packets waiting in front of a slow client, in whatever pieces they came | their %.0f MB on the wire "
                "| %.0f MB at "
                "most | %.1f |\n",
                double(bytesUnderWay) / 1e6, mostMegabytes, most);
    return most <= mostMegabytes ? 0 : 1;
}
