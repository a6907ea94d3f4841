// SPDX-License-Identifier: MIT
#include "handlers/GaleInstrumentHandler.h"

#include "calibration/RecordBytes.h"
#include "channels/DeltaPacket.h"
#include "nimbrellelibrary/NimbrelleLib.h"

#include <cstring>
#include <utility>

namespace {

constexpr quint32 samplesPerPacket = 8;

/// Packets that carry so many samples, the last of them perhaps in part.
qint32 packetsFor(quint32 samples)
{
    return qint32(samples / samplesPerPacket + (samples % samplesPerPacket != 0));
}

/// The whole words at the front of some bytes.
std::vector<int> wordsOf(const QByteArray &bytes)
{
    std::vector<int> words(std::size_t(bytes.size()) / sizeof(int));
    if (!words.empty())
        std::memcpy(words.data(), bytes.constData(), words.size() * sizeof(int));
    return words;
}

} // namespace

void GaleInstrumentHandler::onACDataInvalidated(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler || line() != InstrumentLine::Gale)
        return;
    handler->ac.header = payload;
    handler->ac.beginBatch(packetsFor(recordFromBytes<Gale_AC_Header_t>(payload).samplesPerSignal));
}

void GaleInstrumentHandler::onExperimentACDataReceived(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler || line() != InstrumentLine::Gale)
        return;
    unpackDeltaEncodedCompression(payload, handler->ac.data);
    --handler->ac.packetsRemaining;
    const Group group = groupOf(*handler);
    if (packetsAwaitedBy(group) != 0)
        return;
    const std::vector<ComplexDataPoint_t> points = analyseBatch(group);
    ChannelHandler *const target = group.size() > 1 ? channelAt(handler->masterChannel) : handler;
    if (points.empty() || !target)
        return; // nothing is reset: the next header begins anew
    target->startClockOnce(points.front().timestamp);
    if (isChannelPause(channel)) // the channel that completed the batch, not the target
        return;
    for (const ComplexDataPoint_t &point : points)
        emitACData(target->getChannelNumber(), point);
    for (ChannelHandler *const member : group)
        member->ac.packetsRemaining = member->ac.packetsTotal;
}

qint64 GaleInstrumentHandler::packetsAwaitedBy(const Group &group)
{
    qint64 awaited = 0;
    for (const ChannelHandler *const member : group)
        awaited += member->ac.packetsRemaining;
    return awaited;
}

std::vector<ComplexDataPoint_t> GaleInstrumentHandler::analyseBatch(const Group &group) const
{
    std::vector<Gale_AC_Header_t> headers;
    std::vector<std::vector<int>> words;
    std::vector<std::pair<int *, int>> views;
    std::vector<const CalibrationData *> calibrations;
    for (ChannelHandler *const member : group) {
        headers.push_back(recordFromBytes<Gale_AC_Header_t>(member->ac.header));
        words.push_back(wordsOf(member->ac.data));
        views.emplace_back(words.back().data(), int(words.back().size())); // stays where it is when the list grows
        calibrations.push_back(&calibrationOf(member->getChannelNumber()));
    }
    const bool bipolar = group.size() > 1 && group.front()->bipolar;
    return NimbrelleLib::AnalyzeFRA(headers, views, calibrations, bipolar, {}, QString(), 0.0);
}
