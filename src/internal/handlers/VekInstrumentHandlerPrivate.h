// SPDX-License-Identifier: MIT
#pragma once

#include "VekACData.h"
#include "VekChannelReport.h"
#include "VekDCData.h"
#include "VekErrorCode.h"
#include "VekExperimentNode.h"
#include "VekInstrumentDescription.h"
#include "calibration/CalibrationData.h"
#include "channels/ChannelHandler.h"
#include "channels/NodeBeginning.h"
#include "link/FirmwareErrorCode.h"
#include "session/InstrumentInfo.h"
#include "waiting/Clock.h"

#include <QObject>
#include <QPointer>
#include <QReadWriteLock>

#include <memory>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

class AbstractExperiment;
class HandlerLink;
class HandlerThread;
class HardwareModel;
class InstrumentOperator;

/**
 * What both instrument lines share behind a VekInstrumentHandler: checks the client's requests against the state of the
 * channels, hands them to the operator, and turns the instrument's notifications into channel state and signals.
 *
 * The virtual operations are the seam between the common logic and the two lines.
 *
 * Every request returns a VekErrorCode: the checks run in a fixed order, the first failure is the result, and nothing
 * has then been sent or stored. Success of a command means that it was handed to the link; a refusal by the instrument
 * comes later, in one of the ...Ack signals.
 *
 * @thread  Made on the client's thread, with a packet road that passes that thread's event loop; lives on a thread of its
 *          own, where the operator, all slots and all signals are. Requests and queries are called straight on the
 *          client's thread; they touch only what guards itself.
 * @failure An object whose operator is not connected after construction has no channels and no thread: discard it.
 */
class VekInstrumentHandlerPrivate : public QObject
{
    Q_OBJECT

public:
    using RangeList = std::vector<std::pair<double, double>>; ///< lowest and highest value of each range
    using ChannelMap = std::unordered_map<unsigned char, std::unique_ptr<ChannelHandler>>;

    /// Stands for no instrument: no operator, no channels, no thread.
    VekInstrumentHandlerPrivate();
    /// Opens the port of the instrument, which may take 10 s, and starts the handler's thread.
    explicit VekInstrumentHandlerPrivate(const InstrumentInfo &info, const Clock &clock = Clock::host());
    /// Waits for requests that are under way, and for the thread unless it runs on it.
    ~VekInstrumentHandlerPrivate() override;

    /**
     * deleteLater() for the thread that made the handler. Called from there, the original would mark the object in a word
     * that the delivery of events on the handler's thread reads.
     */
    void retire();
    /**
     * Turns requests away and gives up the port, as if the cable had been pulled: deviceDisconnected() follows. What
     * was sent before goes out first. For the client's thread, which is blocked until the port is closed, at most 2 s.
     */
    void letGo();

    /**
     * Names channels that may be running: the start-up sends them no limits, which are all that guards the cell of an
     * experiment. With any such channel it neither sets the fan nor reads the SD card nor erases the memory either.
     *
     * To be called before sendInitialDefaults() is queued, and not again.
     */
    void leaveUntouched(const std::set<unsigned char> &channels);

    // The seam. New ones come last: see compatibility.md, order of virtual operations.
    virtual VekErrorCode uploadExperimentToChannel(unsigned char channel,
                                                   std::shared_ptr<AbstractExperiment> experiment);
    virtual VekErrorCode startUploadedExperiment(unsigned char channel);
    virtual void softReset();
    virtual int setLinkedChannels(std::vector<unsigned char> channels, bool bipolar);
    virtual std::vector<unsigned char> getLinkedChannels(unsigned char channel);
    virtual bool hasBipolarMode(unsigned char channel);
    virtual VekErrorCode setFanSpeedVariable(bool variable);
    virtual VekErrorCode setManualModeConstantVoltage(unsigned char channel, double volts);
    /// The range is a current range: a potentiostatic set point needs one to measure in.
    virtual VekErrorCode setManualModeConstantVoltage(unsigned char channel, double volts, int currentRange);
    virtual VekErrorCode setManualModeConstantCurrent(unsigned char channel, double amperes);
    virtual VekErrorCode setManualModeCurrentRange(unsigned char channel, int range); ///< 10: automatic
    virtual VekErrorCode setManualModeVoltageRange(unsigned char channel, int range); ///< 5: automatic
    /// The ranges that DC experiments may use, in amperes, by index.
    virtual RangeList getDCCurrentRangeList(unsigned char channel);
    /// All current ranges in amperes, clipped to the model's limits.
    virtual RangeList getFullCurrentRangeList(unsigned char channel);
    virtual VekErrorCode setLoadImpedance(unsigned char channel, const float &ohms);

public Q_SLOTS:
    /// Brings a freshly connected instrument to its defaults; ends with initialConnectionRequestFinished().
    virtual void sendInitialDefaults() = 0;
    virtual void onCalibrationHeaderReceived(unsigned char channel, const QByteArray &payload);
    virtual void onCalibrationDataReceived(unsigned char channel, const QByteArray &payload);
    virtual void onReceivedMetaData(const QByteArray &payload);
    virtual void onExperimentCompleted(unsigned char channel, const QByteArray &payload);
    virtual void onExperimentDataBeginning(unsigned char channel, const QByteArray &payload);
    virtual void onExperimentNodeBeginning(unsigned char channel, const QByteArray &payload) = 0;
    virtual void onExperimentNodeCompleted(unsigned char channel, const QByteArray &payload) = 0;
    virtual void onExperimentDCDataReceived(unsigned char channel, const QByteArray &payload) = 0;
    virtual void onExperimentACDataReceived(unsigned char channel, const QByteArray &payload) = 0;
    virtual void onACDataInvalidated(unsigned char channel, const QByteArray &payload) = 0;
    virtual void onACDataSampleFinshed(unsigned char channel); // see compatibility.md, inner names
    virtual void TareCurrentReceived(unsigned char channel, const QByteArray &payload);
    virtual void TareVoltageReceived(unsigned char channel, const QByteArray &payload);
    virtual void onConfigReceived(unsigned char channel, const QByteArray &payload);

public:
    virtual bool isValidVoltageRangeIndex(unsigned char channel, int range);
    /// Begins to read calibration tables from the instrument's SD card.
    virtual VekErrorCode requestSdCardCalibrationData(unsigned char channel);

    /// @name Requests
    /// @{
    VekErrorCode startIdleSampling(unsigned char channel);
    VekErrorCode skipExperimentStep(unsigned char channel);
    VekErrorCode pauseExperiment(unsigned char channel);
    VekErrorCode resumeExperiment(unsigned char channel);
    VekErrorCode stopExperiment(unsigned char channel);
    VekErrorCode startManualExperiment(unsigned char channel);
    VekErrorCode setManualModeOCP(unsigned char channel);
    VekErrorCode setManualModeSamplingInterval(unsigned char channel, double seconds);
    VekErrorCode setCompRange(unsigned char channel, const VekCompRange &range);
    VekErrorCode setIRComp(unsigned char channel, double uncompensatedResistance, double levelPercent);
    VekErrorCode setChannelVmax(unsigned char channel, double volts);
    VekErrorCode setChannelVmin(unsigned char channel, double volts);
    VekErrorCode setChannelImax(unsigned char channel, double amperes);
    VekErrorCode setChannelImin(unsigned char channel, double amperes);
    VekErrorCode setChannelMaxTemperature(unsigned char channel, double degreesCelsius);
    VekErrorCode resetChannelLimits(unsigned char channel);
    VekErrorCode eraseRecoverDataFromDevice();
    void startRecoveryProcess();
    void eraseRecoveryData();
    void disconnectDevice();
    /**
     * Makes channels that were left untouched ready to be driven. Those that the instrument can report, and does not
     * report as running, count as free too, and their limits are taken away. Once no channel is left that may be running
     * by itself, what the start-up left out for the instrument as a whole follows. Ends with channelsPrepared().
     *
     * @return InvalidChannel; ChannelBusy for one that runs; nothing is sent then
     */
    VekErrorCode prepareChannels(const std::set<unsigned char> &channels);
    void setLastSampleOfNodeReported(bool reported) { _isLastSampleReported = reported; }
    /// @}

    /// @name Queries
    /// @{
    bool isConnected() const;
    bool isValidChannel(unsigned char channel) const;
    bool isChannelBusy(unsigned char channel) const;
    bool isChannelPause(unsigned char channel) const;
    bool isManualExperimentRun(unsigned char channel) const;
    bool isIdleExperimentRun(unsigned char channel) const;
    bool isSDCardReading(unsigned char channel) const;
    bool isSDCardWriting(unsigned char channel) const;
    VekChannelReport channelReport(unsigned char channel) const;
    bool hasStoredData(unsigned char channel) const;
    std::vector<unsigned char> getFreeChannels() const; ///< ascending
    int getNumberOfChannels() const;
    VekInstrumentDescription getDescription() const;
    double getExperimentUTCStartTime(unsigned char channel) const; ///< seconds since 1970; 0.0 on an idle channel
    float getLoadImpedance(unsigned char channel) const;           ///< ohms; 10.0 for an invalid channel
    RangeList getManualModeVoltageRangeList(unsigned char channel) const;
    const ChannelMap &getChannelHandlers() const { return _channels; }
    std::shared_ptr<HandlerLink> link() const { return _link; }
    /// @}

    bool event(QEvent *event) override;

public Q_SLOTS:
    void onThreadStarted();
    void onExperimentPaused(unsigned char channel);
    void onExperimentResumed(unsigned char channel);
    void onDeviceNotification(unsigned char channel, const QString &text);
    void onDeviceError(unsigned char channel, const QString &text);
    void onGroundFloatStateChanged(const QByteArray &payload);
    void onMemoryDataStart(const QByteArray &payload);
    void onMemoryDataErased(const QByteArray &payload);
    void onExperimentStartAcknowledged(unsigned char channel, const FirmwareErrorCode &code);
    void onManualStartAcknowledged(unsigned char channel, const FirmwareErrorCode &code);
    void onManualOcpSet(unsigned char channel, const FirmwareErrorCode &code);
    void onManualCurrentRangeSet(unsigned char channel, const FirmwareErrorCode &code);
    void onManualVoltageRangeSet(unsigned char channel, const FirmwareErrorCode &code);
    void onManualVoltageValueSet(unsigned char channel, const FirmwareErrorCode &code);
    void onManualCurrentValueSet(unsigned char channel, const FirmwareErrorCode &code);
    void onManualSamplingIntervalSet(unsigned char channel, const FirmwareErrorCode &code);
    void onSetOfIRComp(unsigned char channel, const FirmwareErrorCode &code);
    void onSetOfCompRange(unsigned char channel, const FirmwareErrorCode &code);

Q_SIGNALS:
    void deviceReady(); ///< for tools; nothing in the library emits it
    void deviceDisconnected();
    void groundFloatStateChanged(bool grounded);
    void experimentStarting(unsigned char channel);
    void activeExperimentNodeBeginning(unsigned char channel, const VekExperimentNode &node);
    void recoveryExperimentNodeBeginning(unsigned char channel, const VekExperimentNode &node);
    void activeDCDataReady(unsigned char channel, const VekDCData &data);
    void idleDCDataReady(unsigned char channel, const VekDCData &data);
    void recoveryDCDataReady(unsigned char channel, const VekDCData &data);
    void activeACDataReady(unsigned char channel, const VekACData &data);
    void recoveryACDataReady(unsigned char channel, const VekACData &data);
    void memoryDataStarting();
    void memoryDataErased(bool erased);
    void experimentCompleted(unsigned char channel, const QString &reason);
    void experimentEnded(unsigned char channel, VekExperimentEnd end, const QString &reason); ///< with the above
    void experimentPaused(unsigned char channel);
    void experimentResumed(unsigned char channel);
    void deviceNotification(unsigned char channel, QString text);
    void deviceError(unsigned char channel, QString text);
    void manualOcpAck(unsigned char channel, const VekErrorCode &result);
    void manualCurrentRangeAck(unsigned char channel, const VekErrorCode &result);
    void manualVoltageRangeAck(unsigned char channel, const VekErrorCode &result);
    void manualVoltageValueAck(unsigned char channel, const VekErrorCode &result);
    void manualCurrentValueAck(unsigned char channel, const VekErrorCode &result);
    void manualSamplingIntervalAck(unsigned char channel, const VekErrorCode &result);
    void irCompAck(unsigned char channel, const VekErrorCode &result);
    void compRangeAck(unsigned char channel, const VekErrorCode &result);
    void channelGlobalLimitAck(unsigned char channel, const VekErrorCode &result);
    void initialConnectionRequestFinished(bool connected);
    void channelsPrepared();

protected:
    /**
     * Closes the way for requests, ends the thread and lets go of all receivers. The first line of every concrete class's
     * destructor: as long as a request, a slot or a receiver's destructor may run, all of the object must be there.
     */
    void shutDown();

    std::vector<unsigned char> channelNumbers() const;      ///< ascending
    ChannelHandler *channelAt(unsigned char channel) const; ///< null for an invalid channel
    bool hasCalibration(unsigned char channel) const;
    /// Calibration of a channel, one that converts nothing where there is none. On the handler's thread only.
    const CalibrationData &calibrationOf(unsigned char channel) const;
    /// Asks the calibration of a channel something on any thread.
    template <typename Question>
    auto askCalibration(unsigned char channel, Question question) const
    {
        const QReadLocker locker(&_calibrationLock);
        return question(calibrationOf(channel));
    }
    /// Changes the calibration of a channel that has one. On the handler's thread only.
    template <typename Change>
    void changeCalibration(unsigned char channel, Change change)
    {
        const QWriteLocker locker(&_calibrationLock);
        if (hasCalibration(channel))
            change(_info.calibration[channel]);
    }
    static constexpr int automaticCurrentRange = index(currentRange_t::Auto);
    HardwareModel_t modelNumber() const { return _info.hardware.hwModel; }
    InstrumentLine line() const { return instrumentLineOf(modelNumber()); }
    std::shared_ptr<const HardwareModel> model() const;

    // The checks that requests begin with; Success lets the request go on.
    VekErrorCode checkValid(unsigned char channel) const;  ///< InvalidChannel
    VekErrorCode checkFree(unsigned char channel) const;   ///< InvalidChannel, ChannelBusy
    VekErrorCode checkBusy(unsigned char channel) const;   ///< InvalidChannel, NoExperimentRunning
    VekErrorCode checkManual(unsigned char channel) const; ///< InvalidChannel, ManualExperimentNotRunning
    /// As checkManual(), then ImplausibleParameters for a set point that cannot be meant.
    VekErrorCode checkManualVoltage(unsigned char channel, double volts) const;
    VekErrorCode checkManualCurrent(unsigned char channel, double amperes) const;

    /// The channels that run as one with a channel: it alone, or those that are linked with it.
    virtual std::vector<ChannelHandler *> groupOf(ChannelHandler &channel) const;
    /// Sends all limits of a channel. @return whether the instrument answered
    bool sendLimits(unsigned char channel);
    /// Sends a current range; InvalidParameters above 10.
    VekErrorCode sendCurrentRange(unsigned char channel, quint8 range);
    /// Loads the tables of earlier SD card transfers from the disk.
    void loadCalibrationTables(unsigned char channel);

    /// What the start-up does for the instrument as a whole where no channel has to be left untouched.
    virtual void prepareInstrument();
    /// Whether the instrument can tell of this channel that it runs an experiment.
    virtual bool canReport(unsigned char channel) const;
    /// Whether an experiment from before the connection may run on a channel, by the instrument's word or the client's.
    bool mayStillRun(unsigned char channel) const;
    /// The start-up's: removes the limits of all other channels. Ends with the loss of the link.
    void resetLimitsOfIdleChannels();

    /// What both lines do when a node begins; the rules say what they do differently.
    void beginNode(unsigned char channel, const QByteArray &payload, const NodeRules &rules);
    /// Whether the voltage moved enough since the last reported sample; if so, it is remembered as reported.
    bool hasMinVoltageDifference(unsigned char channel, double volts);
    /// Keeps a sample that is not reported for the case that its node ends with it.
    void holdBack(ChannelHandler &channel, const HeldBackSample &sample) const;
    /// Reports what is held back of a node that has ended. Before anything that tells or books the end.
    void reportHeldBack(unsigned char channel);
    /// Frees a channel whose experiment has ended.
    static void endRun(ChannelHandler &channel);
    /// Sends a sample of a running experiment out by the signal of the channel's mode; none in idle mode. What was held
    /// back is older, and forgotten.
    void emitDCData(unsigned char channel, const VekDCData &data);
    /// Sends an impedance point out by the signal of the channel's mode, its time counted from the channel's start.
    void emitACData(unsigned char channel, const ComplexDataPoint_t &point);
    /// Whether samples of the channel belong to an experiment whose first data have been announced.
    static bool hasExperimentData(const ChannelHandler &channel);
    /// Tells the end of an experiment by what the instrument says of it.
    void tellEnd(unsigned char channel, const QByteArray &payload);
    void tellEnd(unsigned char channel, VekExperimentEnd end, const QString &reason);

    const Clock &_clock;
    InstrumentInfo _info;
    quint8 _groundFloatState = 0;
    InstrumentOperator *_op = nullptr; // a child
    ChannelMap _channels;
    QPointer<HandlerThread> _thread;    // deletes itself
    std::set<unsigned char> _untouched; // of this instrument; written before the start-up, then on the handler's thread
    CrossThreadValue<bool> _isLastSampleReported = false;

private:
    void freeChannels(const std::set<unsigned char> &channels);
    void takeRetirement();
    void connectWithOperatorSignals();
    void startThread();
    static Node nodeAt(const ChannelHandler &channel, int index);
    CSVdataImporter &importerOf(unsigned char channel);
    QString lineOfLog(int channel, const QString &text) const;
    void reportAlarm(unsigned char channel, const QString &text);
    VekErrorCode upload(unsigned char channel, const NodeList &nodes);
    VekErrorCode start(unsigned char channel, PCcommand_t command, ChannelHandler::ExperimentMode mode);
    void takeStartVerdict(unsigned char channel, PCcommand_t start, FirmwareErrorCode code);
    VekErrorCode setLimit(unsigned char channel, void (ChannelHandler::*store)(double), double value,
                          VekErrorCode::ErrorCode failure);

    std::shared_ptr<HandlerLink> _link;
    bool _isFolderWarningSaid = false;
    // Guards the calibration. The handler's thread alone changes it, hence reads without the lock: a tare may arrive
    // while a client asks for ranges.
    mutable QReadWriteLock _calibrationLock;
};
