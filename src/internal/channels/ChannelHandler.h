// SPDX-License-Identifier: MIT
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
#include <QString>

#include <memory>
#include <mutex>
#include <utility>

class AbstractExperiment;

/**
 * What one channel of a connected instrument is doing. A passive record: it does not communicate.
 *
 * The linker and the tracker are its first two parts, so that their fields are reached directly; these have no lock
 * (see there). All else is one value, its state, behind one lock: an accessor copies a field in or out under it, and calls
 * nothing meanwhile. What belongs together changes together.
 *
 * @thread The client's threads and the handler's own thread read and write it.
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

    void setIRComp(const IRComp &irComp) { set(&State::irComp, irComp); }
    IRComp getIRComp() const { return get(&State::irComp); }
    void setRunningExperimentMode(ExperimentMode mode) { set(&State::experimentMode, mode); }
    ExperimentMode getExperimentMode() const { return get(&State::experimentMode); }
    void setRunningExperimentStatus(ExperimentStatus status) { set(&State::experimentStatus, status); }
    ExperimentStatus getExperimentStatus() const { return get(&State::experimentStatus); }
    /// Data that start end the wait for the answer to a start.
    void setDataStatus(DataStatus status);
    DataStatus getDataStatus() const { return get(&State::dataStatus); }
    void setSDCardStatus(SDCardStatus status) { set(&State::sdCardStatus, status); }
    SDCardStatus getSDCardStatus() const { return get(&State::sdCardStatus); }

    /// Notes that a start is sent whose acknowledgement is to come.
    void awaitStart(PCcommand_t start) { set(&State::awaitedStart, start); }
    /// Ends that. @return whether it was this start that was awaited: data that begin confirm it as well
    bool endAwaitOfStart(PCcommand_t start);

    void setCellOn(bool on) { set(&State::cellOn, on); }
    /// Whether the running node drives the cell.
    bool isCellOn() const { return get(&State::cellOn); }
    void setCompRange(const VekCompRange &range) { set(&State::compRange, range); }
    VekCompRange getCompRange() const { return get(&State::compRange); }
    void setLoadImpValue(float ohms) { set(&State::loadImpedance, ohms); }
    float getLoadImpValue() const { return get(&State::loadImpedance); }

    void setLoadedExp(std::shared_ptr<AbstractExperiment> experiment);
    std::shared_ptr<AbstractExperiment> getLoadedExp() const { return get(&State::loadedExperiment); }

    /// Stores a copy, which does not change any more.
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
    QByteArray getCalibrationRawData() const { return get(&State::calibrationRawData); }
    void clearCalibrationRawData() { set(&State::calibrationRawData, QByteArray()); }

    void setRecoverDataStatus(bool available) { set(&State::recoverDataAvailable, available); }
    /// The instrument holds stored data of this channel.
    bool isRecoverDataAvailable() const { return get(&State::recoverDataAvailable); }
    void setActiveRecoverExperimentStatus(bool active) { set(&State::activeRecoverExperiment, active); }
    /// An experiment from before the connection still runs on this channel.
    bool isActiveRecoverExperiment() const { return get(&State::activeRecoverExperiment); }
    /// What the instrument has told, of experiments that this program did not start.
    void setReport(VekChannelReport report) { set(&State::report, report); }
    VekChannelReport getReport() const { return get(&State::report); }

    void setVmax(double volts) { setLimit(&ChannelLimit::vMax, volts); }
    void setVmin(double volts) { setLimit(&ChannelLimit::vMin, volts); }
    void setImax(double amperes) { setLimit(&ChannelLimit::iMax, amperes); }
    void setImin(double amperes) { setLimit(&ChannelLimit::iMin, amperes); }
    void setTemperatureMax(double degreesCelsius) { setLimit(&ChannelLimit::temperatureMax, degreesCelsius); }
    ChannelLimit getLimits() const { return get(&State::limits); }
    void resetChannelLimits() { set(&State::limits, ChannelLimit()); }

private:
    static constexpr auto noStart = PCcommand_t(0);

    /// What ends with an experiment.
    struct Run {
        ExperimentStatus experimentStatus = EXPERIMENT_STOPPED;
        ExperimentMode experimentMode = MODE_IDLE;
        DataStatus dataStatus = DATA_NOT_STARTED;
        PCcommand_t awaitedStart = noStart;
        bool cellOn = false;
        std::shared_ptr<AbstractExperiment> loadedExperiment;
        std::shared_ptr<const NodeList> loadedNodes;
        SDCardStatus sdCardStatus = SD_IDLE;
    };
    /// All that several threads read and write of a channel.
    struct State : Run {
        // What the client has set.
        IRComp irComp;
        ChannelLimit limits;
        VekCompRange compRange{QString(), 0, 0};
        float loadImpedance = 0.0f;
        // What the instrument has told.
        QByteArray calibrationRawData;
        bool recoverDataAvailable = false;
        bool activeRecoverExperiment = false;
        VekChannelReport report = VekChannelReport::Unknown;
    };

    template <typename Part, typename Field>
    Field get(Field Part::*field) const
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        return _state.*field;
    }
    template <typename Part, typename Field, typename Value>
    void set(Field Part::*field, Value &&value)
    {
        const std::lock_guard<std::mutex> lock(_mutex);
        _state.*field = std::forward<Value>(value);
    }
    void setLimit(double ChannelLimit::*limit, double value);

    const QString _deviceName;
    const unsigned char _channelNumber;
    mutable std::mutex _mutex; // guards _state
    State _state;
};
