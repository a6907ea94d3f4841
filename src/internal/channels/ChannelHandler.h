#pragma once

#include "VekChannelReport.h"
#include "VekCompRange.h"
#include "channels/ChannelLimit.h"
#include "channels/ChannelLinker.h"
#include "channels/CrossThreadValue.h"
#include "channels/RealTimeTracker.h"
#include "elements/NodeList.h"
#include "link/PCcommand.h"

#include <QByteArray>
#include <QReadWriteLock>
#include <QString>

#include <atomic>
#include <memory>

class AbstractExperiment;

/**
 * What one channel of a connected instrument is doing. A passive record: it does not communicate.
 *
 * The linker and the tracker are its first two parts, so that their fields are reached directly; these have no lock
 * (see there). All other fields are reached through accessors, each of which holds one lock for the copy of its field
 * and returns by value; the report alone is atomic instead. Locks are never nested.
 *
 * @thread The client's threads and the handler's own thread read and write it. A node list must not be uploaded while a
 *         node is looked up on the same channel; a busy channel refuses uploads, so this does not happen.
 */
class ChannelHandler : public ChannelLinker, public RealTimeTracker
{
public:
    /// What is taken off by the compensation of the ohmic drop.
    struct IRComp {
        double uncompensatedResistance = 0.0; ///< ohms
        double compensationLevel = 0.0;       ///< a fraction, 0.0 to 1.0
    };

    enum ExperimentStatus {
        EXPERIMENT_STOPPED = 0, ///< nothing runs; the channel is free
        EXPERIMENT_RUNNING = 1, ///< started, or resumed
        EXPERIMENT_PAUSED = 2,  ///< the instrument confirmed a pause
    };
    enum ExperimentMode {
        MODE_IDLE = 0,     ///< no experiment of the client's: data are idle samples
        MODE_MANUAL = 1,   ///< manual experiment
        MODE_ACTIVE = 2,   ///< uploaded experiment
        MODE_RECOVERY = 3, ///< data that the instrument had stored; for tools, nothing in the library sets it
    };
    enum DataStatus {
        DATA_NOT_STARTED = 0,
        DATA_STARTED = 1, ///< the experiment's first data have been announced
    };
    enum SDCardStatus {
        SD_IDLE = 0,
        SD_READING = 1, ///< calibration is being read from the card
        SD_WRITING = 2, ///< calibration is being written to the card
    };

    ChannelHandler(const QString &deviceName, unsigned char channelNumber);

    QString getDeviceName() const { return _deviceName; }
    unsigned char getChannelNumber() const { return _channelNumber; }

    /// Back to the state of a freshly connected channel; what the client has set (limits, compensation, load impedance,
    /// linking) survives.
    void setIdealConfig();

    void setIRComp(const IRComp &irComp);
    IRComp getIRComp() const;
    void setRunningExperimentMode(ExperimentMode mode);
    ExperimentMode getExperimentMode() const;
    void setRunningExperimentStatus(ExperimentStatus status);
    ExperimentStatus getExperimentStatus() const;
    void setDataStatus(DataStatus status);
    DataStatus getDataStatus() const;
    void setSDCardStatus(SDCardStatus status);
    SDCardStatus getSDCardStatus() const;

    /// Notes that a start is sent whose acknowledgement is to come.
    void awaitStart(PCcommand_t start);
    /// Ends that. @return whether it was this start that was awaited: data that begin confirm it as well
    bool endAwaitOfStart(PCcommand_t start);

    void setCellOn(bool on);
    /// Whether the running node drives the cell.
    bool isCellOn() const;
    void setCompRange(const VekCompRange &range);
    VekCompRange getCompRange() const;
    void setLoadImpValue(float ohms);
    float getLoadImpValue() const;

    void setLoadedExp(std::shared_ptr<AbstractExperiment> experiment);
    std::shared_ptr<AbstractExperiment> getLoadedExp() const;

    /// Stores a copy.
    void setLoadedNodeList(const NodeList &nodes);
    /// An empty list if nothing is loaded.
    NodeList getLoadedNodeList() const;
    bool isLoadedNodeListEmpty() const;
    /// Highest index of a node; 0 without nodes.
    int getMaximumNodeIndex() const;
    /// The node at an index, a default one if nothing is loaded.
    /// @failure std::out_of_range for a bad index into a loaded list: clamp it first
    Node getNodeAt(int index) const;
    /// The 64 bytes of that node as they travel, zeros if nothing is loaded. Fails as getNodeAt().
    QByteArray getHardwareNodeAt(int index) const;

    /// Collects calibration bytes, from the start if this chunk is the first.
    void appendCalibrationRawData(bool isFirstChunk, const QByteArray &chunk);
    QByteArray getCalibrationRawData() const;
    void clearCalibrationRawData();

    void setRecoverDataStatus(bool available);
    /// The instrument holds stored data of this channel.
    bool isRecoverDataAvailable() const;
    void setActiveRecoverExperimentStatus(bool active);
    /// An experiment from before the connection still runs on this channel.
    bool isActiveRecoverExperiment() const;
    /// What the instrument has told, of experiments that this program did not start.
    void setReport(VekChannelReport report) { _report = report; }
    VekChannelReport getReport() const { return _report; }

    void setVmax(double volts);
    void setVmin(double volts);
    void setImax(double amperes);
    void setImin(double amperes);
    void setTemperatureMax(double degreesCelsius);
    ChannelLimit getLimits() const;
    void resetChannelLimits();

private:
    static constexpr auto noStart = PCcommand_t(0);

    const QString _deviceName;
    const unsigned char _channelNumber;
    IRComp _irComp;
    ChannelLimit _limits;
    SDCardStatus _sdCardStatus = SD_IDLE;
    ExperimentMode _experimentMode = MODE_IDLE;
    DataStatus _dataStatus = DATA_NOT_STARTED;
    ExperimentStatus _experimentStatus = EXPERIMENT_STOPPED;
    std::atomic<PCcommand_t> _awaitedStart{noStart};
    VekCompRange _compRange{QString(), 0, 0};
    bool _cellOn = false;
    QByteArray _calibrationRawData;
    bool _recoverDataAvailable = false;
    bool _activeRecoverExperiment = false;
    CrossThreadValue<VekChannelReport> _report = VekChannelReport::Unknown;
    float _loadImpedance = 0.0f;
    std::shared_ptr<AbstractExperiment> _loadedExperiment;
    std::shared_ptr<NodeList> _loadedNodeList;

    mutable QReadWriteLock _sdCardStatusLock;
    mutable QReadWriteLock _irCompLock;
    mutable QReadWriteLock _experimentModeLock;
    mutable QReadWriteLock _dataStatusLock;
    mutable QReadWriteLock _spareLock; // guards nothing
    mutable QReadWriteLock _experimentStatusLock;
    mutable QReadWriteLock _compRangeLock; // also held to read _loadedNodeList
    mutable QReadWriteLock _cellOnLock;
    mutable QReadWriteLock _loadedExperimentLock;
    mutable QReadWriteLock _loadedNodeListLock; // deliberate: held to write _loadedNodeList alone
    mutable QReadWriteLock _calibrationRawDataLock;
    mutable QReadWriteLock _recoverDataLock;
    mutable QReadWriteLock _activeRecoverLock;
    mutable QReadWriteLock _limitsLock;
    mutable QReadWriteLock _loadImpedanceLock;
};
