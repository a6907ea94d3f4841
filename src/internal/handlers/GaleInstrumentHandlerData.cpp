// SPDX-License-Identifier: MIT
#include "handlers/GaleInstrumentHandler.h"

#include "channels/LinkedPoints.h"
#include "channels/OutputData.h"

void GaleInstrumentHandler::onExperimentDCDataReceived(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler || line() != InstrumentLine::Gale || payload.size() != int(sizeof(GaleDcRecord_t)))
        return;
    const ProcessedDCData point = calibrationOf(channel).ProcessDCDataPoint(payload);
    if (!hasExperimentData(*handler)) {
        Q_EMIT idleDCDataReady(channel, DcOutputData(point));
        return;
    }
    const bool isDue = handler->dc.countSample();
    if (isChannelPause(channel))
        return;
    if (!isDue) {
        holdBackThinned(*handler, point);
        return;
    }
    const Group group = groupOf(*handler);
    if (group.size() == 1)
        postProcessDataAndEmit(channel, point);
    else
        joinGroupSample(*handler, group, point);
}

void GaleInstrumentHandler::joinGroupSample(ChannelHandler &channel, const Group &group, const ProcessedDCData &point)
{
    channel.lastPoint = point;
    if (channel.getChannelNumber() != channel.masterChannel) // each member stays visible by itself
        Q_EMIT idleDCDataReady(channel.getChannelNumber(), DcOutputData(point));
    if (const auto joined = joinedPoint(channel, group, &ChannelLinker::lastPoint))
        postProcessDataAndEmit(channel.masterChannel, *joined);
}

std::optional<ProcessedDCData> GaleInstrumentHandler::joinedPoint(const ChannelHandler &channel, const Group &group,
                                                                  ProcessedDCData ChannelLinker::*latest) const
{
    const ChannelHandler *const master = channelAt(channel.masterChannel);
    if (!master)
        return std::nullopt;
    std::vector<LinkedPoint> members;
    for (const ChannelHandler *const member : group) {
        if ((member->*latest).counter != (channel.*latest).counter)
            return std::nullopt;
        members.emplace_back(member->getChannelNumber(), member->*latest);
    }
    return joinPoints(master->*latest, members, master->bipolar);
}

// Other than on the main line, charge is taken from reported samples alone, of a group from its joined ones.
void GaleInstrumentHandler::postProcessDataAndEmit(unsigned char channel, const ProcessedDCData &point)
{
    ChannelHandler *const handler = channelAt(channel);
    handler->capacity.onDcDataReceived(point.charge);
    if (!hasMinVoltageDifference(channel, point.workingElectrodeVoltage)) {
        holdBack(*handler, heldBackSample(*handler, point));
        return;
    }
    VekDCData data = withCharge(DcOutputData(point), point.charge, handler->capacity);
    data.timestamp -= handler->startTimestamp;
    emitDCData(channel, data);
}

void GaleInstrumentHandler::holdBackThinned(ChannelHandler &channel, const ProcessedDCData &point)
{
    if (!_isLastSampleReported) {
        channel.heldBack.reset(); // one that was held back before is the last no more
        return;
    }
    channel.lastThinnedPoint = point;
    const Group group = groupOf(channel);
    if (group.size() == 1) {
        holdBack(channel, heldBackSample(channel, point));
    } else if (const auto joined = joinedPoint(channel, group, &ChannelLinker::lastThinnedPoint)) {
        ChannelHandler &master = *channelAt(channel.masterChannel);
        holdBack(master, heldBackSample(master, *joined));
    }
}

/// Its charge is counted when it is reported, like that of all that are; one that was counted adds nothing then.
HeldBackSample GaleInstrumentHandler::heldBackSample(const ChannelHandler &channel, const ProcessedDCData &point)
{
    VekDCData data = DcOutputData(point);
    data.timestamp -= channel.startTimestamp;
    return {data, point.charge};
}
