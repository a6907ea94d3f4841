#include "handlers/GaleInstrumentHandler.h"

#include "handlers/LinkedPoints.h"
#include "handlers/OutputData.h"

void GaleInstrumentHandler::onExperimentDCDataReceived(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler || line() != InstrumentLine::Gale || payload.size() != int(sizeof(GaleDcRecord_t)))
        return;
    const ProcessedDCData point = calibrationOf(channel).ProcessDCDataPoint(ExperimentalDcData::fromPayload(payload));
    if (!hasExperimentData(*handler)) {
        Q_EMIT idleDCDataReady(channel, DcOutputData(point));
        return;
    }
    const bool isDue = handler->dc.countSample();
    if (isChannelPause(channel) || !isDue)
        return;
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
    const ChannelHandler *const master = channelAt(channel.masterChannel);
    if (!master)
        return;
    std::vector<LinkedPoint> members;
    for (const ChannelHandler *const member : group) {
        if (member->lastPoint.counter != point.counter)
            return; // not all samples of this moment are in
        members.emplace_back(member->getChannelNumber(), member->lastPoint);
    }
    postProcessDataAndEmit(master->getChannelNumber(), joinPoints(master->lastPoint, members, master->bipolar));
}

// Other than on the main line, charge is taken from reported samples alone, of a group from its joined ones.
void GaleInstrumentHandler::postProcessDataAndEmit(unsigned char channel, const ProcessedDCData &point)
{
    ChannelHandler *const handler = channelAt(channel);
    handler->capacity.onDcDataReceived(point.charge);
    if (!hasMinVoltageDifference(channel, point.workingElectrodeVoltage))
        return;
    VekDCData data = withCharge(DcOutputData(point), point.charge, handler->capacity);
    data.timestamp -= handler->startTimestamp;
    emitDCData(channel, data);
}
