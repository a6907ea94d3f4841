// SPDX-License-Identifier: MIT
#pragma once

#include "link/FirmwareErrorCode.h"
#include "link/Notifications.h"
#include "link/PCcommand.h"
#include "simulator/FreeRun.h"
#include "simulator/FrontEnd.h"
#include "simulator/NodeRunner.h"
#include "simulator/NodeStore.h"

#include <functional>
#include <memory>

/// Takes what a channel has to say.
class ChannelOutput
{
public:
    virtual ~ChannelOutput() = default;
    virtual void send(int channel, Notifications_t type, const QByteArray &payload) = 0;
    /// A DC record has been sent; the sample is what the cell gave, before noise and conversion.
    virtual void onDcRecordSent(int channel, int nodeIndex, const DcSample &sample) = 0;
    /// A pass of a node has ended, during which the channel's cell took so much charge.
    virtual void onPassDone(int channel, int nodeIndex, quint64 tick, double charge) = 0;
};

/// Something that happens to a channel at a time of its experiment, because the user asked for it.
struct TimedEvent {
    double seconds = 0.0; ///< after the experiment's start
    Notifications_t alarm = NT_IGNORED_1;
    QByteArray payload;
    ExpStopType_t stops = ExpStopType_t(0); ///< ends the experiment; 0: it goes on
};

/**
 * One channel of the instrument: its cell, front end, node list and mode, and the commands that it obeys.
 *
 * A channel is stopped, samples idly, runs an experiment or is driven by hand. Time passes for it only in step(); between
 * experiments its cell stands still.
 *
 * @thread Lives on the instrument's thread.
 */
class SimulatedChannel : private RunObserver
{
public:
    struct Setup {
        double noise = 0.0;             ///< rms, as a share of the range's full scale
        double temperature = 25.0;      ///< degrees Celsius; NaN without a thermocouple
        double counterResistance = 0.0; ///< ohms between reference and counter electrode
        quint64 seed = 1;
        bool runsAc = false;                         ///< impedance nodes are not refused
        bool hasLoadImpedance = false;               ///< takes one fed forward
        bool hasTare = false;                        ///< measures its offsets before each experiment
        int acCycles = 120;                          ///< the most that one AC record holds
        FirmwareErrorCode startRefusal = FW_SUCCESS; ///< the code with which each start is refused; success: none is
        FirmwareErrorCode nodeRefusal = FW_SUCCESS;  ///< likewise one node of each upload
        int refusedNode = 0;                         ///< its number, from 1
        QVector<TimedEvent> events;
        /// Seconds of a run after which the counter is behind that of the channel's group.
        double lagsFrom = std::numeric_limits<double>::infinity();
    };

    SimulatedChannel(int number, std::unique_ptr<FrontEnd> frontEnd, std::unique_ptr<Cell> cell, const Setup &setup,
                     ChannelOutput &output);

    /// When step() has something to do; the largest number if nothing.
    quint64 nextTick() const;
    void step();
    /// Time passes for the channel, though it may be at rest.
    bool isActive() const { return _mode != Mode::Stopped; }
    /// An experiment, manual or paused too; the channel of a group runs while its leader does.
    bool isBusy() const { return _mode != Mode::Stopped && _mode != Mode::Idle; }
    /// Nothing but the computer's speed limits how fast its time may pass.
    bool isRunningFreely() const { return _mode == Mode::Experiment && !_runner->isPaused(); }

    /// Obeys a command to this channel. @return false if it is none of a channel's
    bool obey(PCcommand_t command, const QByteArray &payload, quint64 now);
    void stopIdleSampling();
    void reset();

    FrontEnd &frontEnd() { return *_frontEnd; }
    const FrontEnd &frontEnd() const { return *_frontEnd; }

    /// Joins idle channels for the next run that is started here: they report with this channel, whose cell is theirs.
    /// A bipolar pair carries the current to and fro and half of the voltage each; others share the current.
    /// @return false if one of them is busy
    bool lead(const std::vector<SimulatedChannel *> &members, bool isBipolar);

private:
    enum class Mode { Stopped, Idle, Experiment, Manual, Member };
    /// A channel that reports a run, and what it carries of the cell's current and voltage.
    struct Part {
        SimulatedChannel *channel;
        double currentShare;
        double voltageShare;
    };
    /// The verdict on a command, and what follows once it has been acknowledged.
    struct Answer {
        FirmwareErrorCode code = FW_SUCCESS;
        std::function<void()> action = {};
    };
    using Handler = Answer (SimulatedChannel::*)(const QByteArray &payload, quint64 now);
    struct CommandRow {
        PCcommand_t command;
        Handler handler;
    };
    static const CommandRow commandRows[];

    Answer startExperiment(const QByteArray &payload, quint64 now);
    Answer stopExperiment(const QByteArray &payload, quint64 now);
    Answer pauseExperiment(const QByteArray &payload, quint64 now);
    Answer resumeExperiment(const QByteArray &payload, quint64 now);
    Answer skipStep(const QByteArray &payload, quint64 now);
    Answer startIdleSampling(const QByteArray &payload, quint64 now);
    Answer startManual(const QByteArray &payload, quint64 now);
    Answer setManualSampling(const QByteArray &payload, quint64 now);
    Answer setManualCurrent(const QByteArray &payload, quint64 now);
    Answer setManualVoltage(const QByteArray &payload, quint64 now);
    Answer setManualCurrentCode(const QByteArray &payload, quint64 now);
    Answer setManualVoltageCode(const QByteArray &payload, quint64 now);
    Answer setManualOpenCircuit(const QByteArray &payload, quint64 now);
    Answer setManualCurrentRange(const QByteArray &payload, quint64 now);
    Answer setManualVoltageRange(const QByteArray &payload, quint64 now);
    Answer setCompensation(const QByteArray &payload, quint64 now);
    Answer setIrCompensation(const QByteArray &payload, quint64 now);
    Answer setSafetyLimits(const QByteArray &payload, quint64 now);
    Answer setLoadImpedance(const QByteArray &payload, quint64 now);
    Answer setManualControl(const Control &control, quint64 now);

    void onNodeBegin(quint64 tick, int index) override;
    void onSample(const RunSample &sample) override;
    void onAcRecord(const RunSample &sample, const AcPlan &plan,
                    const std::vector<std::complex<double>> &impedances) override;
    void onNodeDone(quint64 tick, int index) override;
    void onNodeSkipped() override;
    void onRunDone(quint64 tick, ExpStopType_t reason) override;

    bool takeNodeList(PCcommand_t command, const QByteArray &payload);
    FirmwareErrorCode takeNode(const QByteArray &record);
    void begin(Mode mode, quint64 now);
    void endManual(quint64 tick, ExpStopType_t reason);
    void stepFreeRun();
    void obeyPendingStop();
    void meetEvents(quint64 tick);
    void checkTemperature();
    bool hasRangesOf(const ExpNode_t &node) const;
    void setRanges(int currentRange, int voltageRange);
    void chooseRanges(const CellReading &reading);
    void beginNode(quint64 tick, int index, const ExpNode_t &node);
    double secondsOfRun(quint64 tick) const;
    void measure(const RunSample &run, const Part &part, quint8 counter);
    void sendDcRecord(const DcSample &sample, quint8 counter);
    void sendToAll(Notifications_t type, const QByteArray &payload = QByteArray());
    void dissolveGroup();
    void send(Notifications_t type, const QByteArray &payload = QByteArray());

    const int _number;
    ChannelOutput &_output;
    Setup _setup;
    Random _random;
    std::unique_ptr<FrontEnd> _frontEnd;
    Regulator _regulator;
    NodeStore _store;
    int _offeredNodes = 0;               ///< of this upload
    std::unique_ptr<NodeRunner> _runner; ///< kept after its end until the next start
    std::unique_ptr<FreeRun> _freeRun;
    Mode _mode = Mode::Stopped;
    std::vector<Part> _parts;            ///< at least this channel itself, last
    SimulatedChannel *_leader = nullptr; ///< of a member while the leader's run goes on
    double _chargeBefore = 0.0;          ///< of the instrument's counter when the pass began
    double _lastCharge = 0.0;            ///< of the last sample
    quint8 _counter = 0;                 ///< the same on samples that were taken together
    SafetyLimits _limits;
    float _temperatureLimit = std::numeric_limits<float>::infinity();
    quint64 _startTick = 0;
    int _nextEvent = 0;
    int _nodeIndex = -1; ///< of the list; -1 outside of an experiment
    std::optional<ExpStopType_t> _pendingStop;
    int _currentRangeSetting = index(currentRange_t::Auto);
    int _voltageRangeSetting = index(voltageRange_t::Auto);
    currentRange_t _currentRange = currentRange_t::Largest;
    voltageRange_t _voltageRange = voltageRange_t::Largest;
};
