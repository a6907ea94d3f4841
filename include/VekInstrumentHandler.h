// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"
#include "VekACData.h"
#include "VekChannelReport.h"
#include "VekDCData.h"
#include "VekErrorCode.h"
#include "VekExperimentEnd.h"
#include "VekExperimentNode.h"
#include "VekInstrumentDescription.h"

#include <QtCore/QObject>

#include <memory>
#include <set>
#include <utility>
#include <vector>

class HandlerLink;
class VekCompRange;
class VekExperiment;
class VekInstrumentHandlerPrivate;

/**
 * One connected instrument: its channels are programmed, run and watched through this object.
 *
 * Get it from VekDeviceTracker::getInstrumentHandler(). When the device goes away the object stays valid: requests
 * then answer with the code VekErrorCode::DeviceNotFound, queries with the neutral value that they name.
 *
 * A request is checked in a fixed order (channel, state of the channel, parameters), and the first failure is the
 * result; nothing has then been sent. Success means that the command was handed to the link: what the instrument
 * makes of it comes by signal. Channels are numbered from 0.
 *
 * @thread Lives on the client's thread, which must run an event loop: all signals arrive through it. Call the requests
 *         from that thread. A few of them wait up to 150 ms for an acknowledgement, an upload up to a second for each
 *         node; events go on being delivered meanwhile.
 */
class NIMBRELLE_EXPORT VekInstrumentHandler : public QObject
{
    Q_OBJECT

public:
    /// Made by the tracker. @p handler is borrowed and may be null: such an object stands for no device.
    explicit VekInstrumentHandler(VekInstrumentHandlerPrivate *handler);
    ~VekInstrumentHandler() override;

    /// @name Experiments
    /// @{

    /**
     * Validates an experiment against the limits of the instrument, expands it and sends it to the channel.
     *
     * The experiment is kept by the channel until it has run; changing @p experiment afterwards has no effect on it.
     *
     * @return ExperimentIsEmpty for a null pointer (also without a device); InvalidChannel; ChannelBusy;
     *         ExperimentTooLarge with more steps than the instrument counts (65,535), a longer group to repeat (32,767) or
     *         more groups inside groups (1,000); InvalidParameters with one line for each broken limit; without any
     *         ImplausibleParameters with one line for each value that cannot be meant: no number, infinity where it is
     *         not "none", a negative time, a rate of 0, limits that cross or lie beyond the model's range. Up to here
     *         nothing has been sent. UploadFailed when the instrument did not acknowledge a node within a second, or
     *         refused one, and then its reason is the message: the channel has no experiment in either case, not even the
     *         one before.
     */
    VekErrorCode uploadExperimentToChannel(unsigned char channel, std::shared_ptr<VekExperiment> experiment) const;
    /// The same for an experiment that the caller keeps.
    VekErrorCode uploadExperimentToChannel(unsigned char channel, const VekExperiment &experiment) const;
    /**
     * Starts what was uploaded last. The channel counts as busy from the return of this call on. If the instrument
     * refuses the start, experimentStopped() comes with its reason, and the channel is free.
     *
     * @return InvalidChannel, ChannelBusy (also when another channel of its group is), ExperimentNotUploaded or
     *         CommandNotSent
     */
    VekErrorCode startUploadedExperiment(unsigned char channel) const;
    /// Makes an idle channel send samples, which arrive with idleDCDataReady(). @return ExperimentUploaded if one waits.
    VekErrorCode startIdleSampling(unsigned char channel) const;
    /// Ends the running step and goes on with the next. @return NoExperimentRunning on an idle channel.
    VekErrorCode skipExperimentStep(unsigned char channel) const;
    /**
     * Holds the experiment; experimentPaused() tells when it stands. Samples taken meanwhile are not delivered, their
     * charge counts.
     *
     * @return NoExperimentRunning, AlreadyPaused or PauseFailed
     */
    VekErrorCode pauseExperiment(unsigned char channel) const;
    /// Goes on after a pause. @return NoExperimentRunning, ExperimentRunning or ResumeFailed
    VekErrorCode resumeExperiment(unsigned char channel) const;
    /// Ends what runs on the channel, a manual experiment too; experimentStopped() follows. An idle channel is not
    /// refused.
    VekErrorCode stopExperiment(unsigned char channel) const;
    /// Host clock at the first sample of the running experiment, in seconds since 1970 (UTC); 0.0 when none runs.
    double getExperimentUTCStartTime(unsigned char channel) const;
    /**
     * Whether the last sample of each node is reported even where thinning would drop it, so that the end of a step is on
     * record; off at first, and for all channels of the instrument.
     *
     * Samples are thinned where a step's interval is longer than the instrument's own, or where a step asks for a least
     * change of voltage. With the switch on, what was dropped last comes with its own time and charge as soon as its node
     * has ended, ahead of the announcement of the next one or of the end of the experiment; of a group, the joined sample.
     * A step that is shorter than its interval so leaves one sample. None comes twice; samples of a pause and of idle
     * channels stay dropped.
     *
     * May be called at any time and takes effect with the next sample. Does nothing without a device.
     */
    void setLastSampleOfNodeReported(bool reported) const;
    /// @}

    /// @name Control loop
    /// @{

    /**
     * Sets the compensation of the ohmic drop.
     *
     * @param uncompensatedResistance ohms, not negative
     * @param compensationLevel       percent of it that is compensated, 0 to 100
     * @return InvalidParameters with a message that names each value out of range
     */
    VekErrorCode setIRComp(unsigned char channel, double uncompensatedResistance, double compensationLevel) const;
    /// Sets the stability preset of the control loop; both of its numbers lie in 0 to 10, else InvalidParameters.
    VekErrorCode setCompRange(unsigned char channel, const VekCompRange &compRange) const;
    /// Feed-forward load impedance in ohms (Gale line only); 13.0 without a device, 10.0 for an invalid channel.
    float getLoadImpedance(unsigned char channel);
    /// Sets it: 0 to 10,000 ohms, on an idle channel of the Gale line.
    VekErrorCode setLoadImpedance(unsigned char channel, const float &impedance);
    /// @}

    /// @name Linked channels (Gale line only)
    /// @{

    /**
     * Joins channels in parallel; they then run one experiment as one. A list of one channel undoes its group.
     *
     * @return the lowest channel of the group, on which the experiment is uploaded and started; -1 when refused. A
     *         refused call may have dissolved earlier groups of these channels.
     */
    int setLinkedChannels(std::vector<unsigned char> channels) const;
    /// Joins an even channel and the odd one above it in series; else as setLinkedChannels().
    int setBipolarLinkedChannels(std::vector<unsigned char> channels) const;
    /// Whether the channel belongs to a bipolar pair.
    bool hasBipolarMode(unsigned char channel) const;
    /// All channels of the channel's group in ascending order, itself included; empty without a group.
    std::vector<unsigned char> getLinkedChannels(unsigned char channel) const;
    /// @}

    /// @name State of the device
    /// @{

    /// Lets the instrument drive its fan by need. @return FeatureNotSupported on a model without a fan control
    VekErrorCode setFanSpeedVariable() const;
    /// Runs the fan at full speed.
    VekErrorCode setFanSpeedMaximum() const;
    /// Whether an experiment, paused or not, or a manual experiment runs on the channel.
    bool isChannelBusy(unsigned char channel) const;
    /// Whether the instrument has confirmed a pause.
    bool isChannelPaused(unsigned char channel) const;
    /// The idle channels in ascending order.
    std::vector<unsigned char> getFreeChannels() const;
    /// Number of channels; 0 without a device.
    int getNumberOfChannels() const;
    /// What the instrument said of itself at its connection; a default value without a device.
    VekInstrumentDescription getDescription() const;
    /**
     * Whether an experiment runs on the channel, one that this program did not start included.
     *
     * Of such an experiment it is what the instrument's status word said at the connection, until the end is told; of one
     * that this program has started, what isChannelBusy() says, and Idle after its end. The status word covers channels 0
     * to 3 of the main line. Unknown for all others, when the word did not come or called itself invalid, and without a
     * device.
     */
    VekChannelReport channelReport(unsigned char channel) const;
    /**
     * Ends the restraint of a connection that has left channels untouched, for those that this program will drive.
     *
     * Channels whose report would tell a running experiment, and does not, are freed with them, and the limits of these
     * are taken away, as a connection does that spares none. When no channel is left that may be running by itself, the
     * instrument's memory is erased where it asks for that, the tables are read from its SD card, and its fan is set.
     *
     * The limits of a channel whose report is Unknown stay: it may be running after all. Take them away by
     * resetChannelLimits() once the instrument has accepted an experiment on it: the nodes of an upload, or a manual start.
     *
     * channelsPrepared() follows, after up to 5 s where tables are read, unless the device is lost before.
     *
     * @param channels ones that were not left untouched need nothing
     * @return InvalidChannel; ChannelBusy where one runs an experiment. Nothing has been touched then.
     */
    VekErrorCode prepareChannels(const std::set<unsigned char> &channels) const;
    /// Whether the instrument said at its connection that it holds data of the channel from before, and has not told since
    /// that they are erased. False where its status word covers nothing, as with channelReport().
    bool hasStoredData(unsigned char channel) const;
    /// Erases the data that the instrument kept from before the connection; recoverDataErased() tells the outcome.
    VekErrorCode eraseRecoverData() const;
    /// @}

    /// @name Manual experiments
    /// @{

    /// Hands the channel to the client's set points, to be ended by stopExperiment(). A refusal by the instrument comes as
    /// at startUploadedExperiment(). A linked channel runs by itself meanwhile and stays in its group for later.
    VekErrorCode startManualExperiment(unsigned char channel) const;
    /// Interval of the reported samples in seconds; the instrument never samples slower than once a second.
    VekErrorCode setManualModeSamplingInterval(unsigned char channel, double seconds) const;
    /// Disconnects the cell.
    VekErrorCode setManualModeOCP(unsigned char channel) const;
    /// Controls the potential, in volts. @return ImplausibleParameters outside the model's range; nothing is then sent
    VekErrorCode setManualModeConstantVoltage(unsigned char channel, double volts) const;
    /// Controls the potential and then chooses the current range to measure in.
    VekErrorCode setManualModeConstantVoltage(unsigned char channel, double volts, int currentRange) const;
    /// Controls the current, in amperes. @return ImplausibleParameters outside the model's range; nothing is then sent
    VekErrorCode setManualModeConstantCurrent(unsigned char channel, double amperes) const;
    /// Chooses a current range, an index into getManualModeCurrentRangeList().
    VekErrorCode setManualModeCurrentRange(unsigned char channel, int currentRange) const;
    /// Lets the instrument choose the current range.
    VekErrorCode setManualModeCurrentAutorange(unsigned char channel) const;
    /// Chooses a voltage range, an index into getManualModeVoltageRangeList().
    VekErrorCode setManualModeVoltageRange(unsigned char channel, int voltageRange) const;
    /// Lets the instrument choose the voltage range.
    VekErrorCode setManualModeVoltageAutorange(unsigned char channel) const;
    /// Lowest and highest current of each range, in amperes, by range index.
    std::vector<std::pair<double, double>> getManualModeCurrentRangeList(unsigned char channel) const;
    /// Lowest and highest voltage of each range, in volts, by range index.
    std::vector<std::pair<double, double>> getManualModeVoltageRangeList(unsigned char channel) const;
    /// @}

    /// @name Safety limits
    /// The instrument itself ends an experiment that breaks one. Infinity stands for no limit. A limit that could not be
    /// sent stays stored and goes out with the next one; NaN is refused with ImplausibleParameters, and not stored.
    /// @{

    /// Volts. @return ChannelVmaxNotSet when the instrument did not answer within 150 ms
    VekErrorCode setChannelMaximumVoltage(unsigned char channel, double volts) const;
    /// Volts. @return ChannelVminNotSet when the instrument did not answer within 150 ms
    VekErrorCode setChannelMinimumVoltage(unsigned char channel, double volts) const;
    /// Amperes. @return ChannelImaxNotSet when the instrument did not answer within 150 ms
    VekErrorCode setChannelMaximumCurrent(unsigned char channel, double amperes) const;
    /// Amperes. @return ChannelIminNotSet when the instrument did not answer within 150 ms
    VekErrorCode setChannelMinimumCurrent(unsigned char channel, double amperes) const;
    /// Degrees Celsius. @return ChannelTemperatureNotSet when the instrument did not answer within 150 ms
    VekErrorCode setChannelMaximumTemperature(unsigned char channel, double degreesCelsius) const;
    /// Removes all five limits.
    VekErrorCode resetChannelLimits(unsigned char channel) const;
    /// @}

Q_SIGNALS:
    /// The device has gone; comes once. Every request answers DeviceNotFound from now on.
    void deviceDisconnected();
    /// The instrument's ground is connected (true) or floating.
    void groundFloatStateChanged(bool grounded);
    /// The first data of an experiment are on their way.
    void experimentStarting(unsigned char channel);
    /// Another element, or another cycle of it, has begun.
    void experimentNewElementStarting(unsigned char channel, const VekExperimentNode &node);
    /// A sample of the running experiment.
    void activeDCDataReady(unsigned char channel, const VekDCData &data);
    /// A sample of an idle channel, or of an experiment whose data have not begun.
    void idleDCDataReady(unsigned char channel, const VekDCData &data);
    /// A sample that the instrument had stored.
    void recoveryDCDataReady(unsigned char channel, const VekDCData &data);
    /// An impedance point of the running experiment.
    void activeACDataReady(unsigned char channel, const VekACData &data);
    /// An impedance point that the instrument had stored.
    void recoveryACDataReady(unsigned char channel, const VekACData &data);
    /// The experiment has ended, or the instrument has refused to start it, with the reason in words; the channel is free
    /// again.
    void experimentStopped(unsigned char channel, const QString &reason);
    /// The instrument has confirmed a pause.
    void experimentPaused(unsigned char channel);
    /// The instrument has confirmed that it goes on.
    void experimentResumed(unsigned char channel);
    /// Outcome of eraseRecoverData().
    void recoverDataErased(bool erased);
    /// The instrument raised an alarm; the library has stopped the channel. An alarm for a channel that the instrument does
    /// not have stops nothing, and its text says so.
    void deviceError(unsigned char channel, const QString &text);
    /// What prepareChannels() was asked for is done.
    void channelsPrepared();
    /// experimentStopped() once more, right behind it, with the end as a value beside the reason in words.
    void experimentEnded(unsigned char channel, VekExperimentEnd end, const QString &reason);

private Q_SLOTS:
    void onDeviceDisconnected();
    void onActiveExperimentNodeBeginning(unsigned char channel, const VekExperimentNode &node);
    void onRecoveryExperimentNodeBeginning(unsigned char channel, const VekExperimentNode &node);

private:
    void connectWithOperatorSignals(VekInstrumentHandlerPrivate *handler);

    std::shared_ptr<HandlerLink> _link; // leads to the private half; null once the device has gone
};
