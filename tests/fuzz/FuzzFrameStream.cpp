// SPDX-License-Identifier: MIT
// A stream of bytes from the port, once in one piece and once cut at random.

#include "FuzzTarget.h"
#include "link/Frame.h"

namespace {

struct Received {
    QVector<Frame> frames;
    quint32 skipped = 0;
    QByteArray buffer;

    void take(const QByteArray &bytes)
    {
        buffer += bytes;
        frames += takeFrames(buffer, skipped);
    }
};

/// Pieces of 1 to 64 bytes, more often small ones; the state is all that decides.
Received takenInPieces(const QByteArray &stream, quint32 state)
{
    Received received;
    for (int position = 0; position < stream.size();) {
        state = state * 1664525u + 1013904223u;
        const int size = 1 + int(state >> 26 & state >> 20 & 63u);
        received.take(stream.mid(position, size));
        position += size;
    }
    return received;
}

bool isSame(const Frame &one, const Frame &other)
{
    return one.type == other.type && one.channel == other.channel && one.payload == other.payload;
}

/// Every frame stands in the stream as it would be sent, in this order, without overlap.
void mustStandIn(const QByteArray &stream, const Received &received)
{
    int position = 0;
    int framed = 0;
    for (const Frame &frame : received.frames) {
        const QByteArray sent = makeFrame(quint8(frame.type), quint8(frame.channel), frame.payload);
        const int found = stream.indexOf(sent, position);
        mustHold(found >= position, "a packet was sent as it arrives");
        position = found + sent.size();
        framed += sent.size();
    }
    mustHold(framed + int(received.skipped) + received.buffer.size() == stream.size(), "every byte is accounted for");
    mustHold(stream.endsWith(received.buffer), "what waits is the end of the stream");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const auto chunking = input.take<quint32>();
    const QByteArray stream = input.rest();
    Received whole;
    whole.take(stream);
    const Received pieces = takenInPieces(stream, chunking);
    mustHold(std::equal(whole.frames.begin(), whole.frames.end(), pieces.frames.begin(), pieces.frames.end(), isSame),
             "packets do not depend on where the stream is cut");
    mustHold(whole.skipped == pieces.skipped && whole.buffer == pieces.buffer, "neither do the bytes left over");
    mustStandIn(stream, whole);
    return 0;
}
