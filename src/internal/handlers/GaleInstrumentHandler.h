// SPDX-License-Identifier: MIT
#pragma once

#include "handlers/VekInstrumentHandlerPrivate.h"

#include <optional>

/**
 * The handler of the battery cyclers. Their channels sit two to a board and can be joined: in parallel, or as a bipolar
 * pair of an even channel and the odd one above it, in series. A group runs one experiment, which is uploaded to and
 * started on one of its channels, the master of that run.
 *
 * @thread As its base. Groups change on the client's thread; a channel that still runs can lose its group to one that has
 *         ended. Each notification therefore looks at the group once.
 */
class GaleInstrumentHandler : public VekInstrumentHandlerPrivate
{
    Q_OBJECT

public:
    explicit GaleInstrumentHandler(const InstrumentInfo &info, const Clock &clock = Clock::host());
    ~GaleInstrumentHandler() override;

    static constexpr int getNumberofChannelperBoard() { return galeFacts.channelsPerBoard; }

    VekErrorCode uploadExperimentToChannel(unsigned char channel,
                                           std::shared_ptr<AbstractExperiment> experiment) override;
    /// @return of a group, Unknown if its start could not be sent. See compatibility.md, group that was not started.
    VekErrorCode startUploadedExperiment(unsigned char channel) override;
    /// @return the lowest channel of the new group, or -1; earlier groups of the channels may be gone even then
    int setLinkedChannels(std::vector<unsigned char> channels, bool bipolar) override;
    bool hasBipolarMode(unsigned char channel) override;
    VekErrorCode setFanSpeedVariable(bool variable) override;
    VekErrorCode setManualModeConstantVoltage(unsigned char channel, double volts) override;
    VekErrorCode setManualModeConstantVoltage(unsigned char channel, double volts, int currentRange) override;
    VekErrorCode setManualModeConstantCurrent(unsigned char channel, double amperes) override;
    /// @param index into the list that getDCCurrentRangeList() last returned; 10: automatic
    VekErrorCode setManualModeCurrentRange(unsigned char channel, int index) override;
    /// The ranges that lie within the limits of the channel's board, clipped to them.
    RangeList getDCCurrentRangeList(unsigned char channel) override;
    VekErrorCode setLoadImpedance(unsigned char channel, const float &ohms) override;
    bool isValidVoltageRangeIndex(unsigned char channel, int range) override;

    /// Dissolves the whole group of a channel; the group's list takes in the channel that is to lead the next one.
    void clearLinkedChannels(unsigned char channel, unsigned char newPrimary);

public Q_SLOTS:
    void sendInitialDefaults() override;
    void onExperimentCompleted(unsigned char channel, const QByteArray &payload) override;
    void onExperimentDataBeginning(unsigned char channel, const QByteArray &payload) override;
    void onExperimentNodeBeginning(unsigned char channel, const QByteArray &payload) override;
    void onExperimentNodeCompleted(unsigned char channel, const QByteArray &payload) override;
    void onExperimentDCDataReceived(unsigned char channel, const QByteArray &payload) override;
    void onExperimentACDataReceived(unsigned char channel, const QByteArray &payload) override;
    /// On this line the notification opens an AC batch.
    void onACDataInvalidated(unsigned char channel, const QByteArray &payload) override;
    void TareCurrentReceived(unsigned char channel, const QByteArray &payload) override;
    void TareVoltageReceived(unsigned char channel, const QByteArray &payload) override;
    void onConfigReceived(unsigned char channel, const QByteArray &payload) override;

private:
    using Group = std::vector<ChannelHandler *>;

    /// The channels of a channel's group, two at least, or the channel alone. It is alone in a manual experiment: the
    /// group is kept for the next one that is started on it.
    Group groupOf(ChannelHandler &channel) const override;
    bool areAllFree(const std::vector<unsigned char> &channels) const;
    bool fitTogether(const std::vector<unsigned char> &channels) const;
    VekErrorCode startGroup(unsigned char channel);

    void joinGroupSample(ChannelHandler &channel, const Group &group, const ProcessedDCData &point);
    /// The group's sample of the moment that a channel's latest belongs to; none until all members have theirs.
    std::optional<ProcessedDCData> joinedPoint(const ChannelHandler &channel, const Group &group,
                                               ProcessedDCData ChannelLinker::*latest) const;
    /// Holds a sample back that was not due; of a group, the joined one on its master.
    void holdBackThinned(ChannelHandler &channel, const ProcessedDCData &point);
    static HeldBackSample heldBackSample(const ChannelHandler &channel, const ProcessedDCData &point);
    void postProcessDataAndEmit(unsigned char channel, const ProcessedDCData &point);
    static qint64 packetsAwaitedBy(const Group &group);
    std::vector<ComplexDataPoint_t> analyseBatch(const Group &group) const;

    std::vector<unsigned char> _manualRangeIndices; // current range behind each entry of the list last returned
};
