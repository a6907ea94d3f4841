// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/AcFrontEnd.h"
#include "simulator/Faults.h"
#include "simulator/Line.h"
#include "simulator/SdCard.h"
#include "simulator/SimulatedChannel.h"
#include "simulator/TruthFile.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

/**
 * An instrument of either line behind a pseudo-terminal: frames in, frames out.
 *
 * All channels share one clock. It goes on while a channel does something, and stands still otherwise, so that what a run
 * yields does not depend on when it was started. It follows the wall clock times the speed; without a speed limit it runs
 * as fast as the other side reads while an experiment runs, and with the wall clock while there are only idle sampling,
 * manual mode and pauses. When the other side does not read, time stands still: no record is ever dropped.
 *
 * @thread Lives on one thread, which must run an event loop.
 */
class SimulatedInstrument : public QObject, private ChannelOutput
{
    Q_OBJECT

public:
    struct Setup {
        HardwareModel_t model = HardwareModel_t::Alder_2_5;
        QString name = QStringLiteral("Simulated");
        double speed = 1.0; ///< instrument time against wall time; 0: no limit
        SimulatedChannel::Setup channel;
        AcFrontEnd::Harmonics harmonics; ///< of the current in AC records
        Faults faults;
        /// Of a symbolic link to the port, which then is not there before it is plugged in; none if empty.
        QString linkPath;
        QString devicePath; ///< terminal to run on; a pseudo-terminal of its own if empty
    };

    /// @param cells one for each channel
    SimulatedInstrument(const Setup &setup, std::vector<std::unique_ptr<Cell>> cells, QObject *parent = nullptr);

    /// Files to write to; borrowed, and may be null.
    void setFiles(TruthFile *truth, PassFile *passes);

    QString portName() const { return _terminal->portName(); }
    SerialEnd &serialEnd() { return *_terminal; }
    QByteArray hardwareRecord() const { return _hardwareRecord; }
    int channelCount() const { return int(_channels.size()); }

    /// Stops obeying, and forgets everything but its cells, calibration and hardware record.
    void switchOff();
    /// Starts firmware that reports this checksum. A new object has started the one that the library carries.
    void switchOn(const QByteArray &firmwareChecksum);

    /// One line per channel: how many records have been sent.
    QString statistics() const;

Q_SIGNALS:
    /// A fault has pulled the cable.
    void unplugged();
    /// The host wants the bootloader.
    void resetRequested();

private:
    using Answer = void (SimulatedInstrument::*)(const Frame &frame);
    struct CommandRow {
        PCcommand_t command;
        Answer answer;
    };
    static const CommandRow commandRows[];
    /// What the last link command said; it holds for the next start of one of its channels.
    struct Link {
        quint32 mask = 0; ///< bit n: channel n of a block of 32
        bool isBipolar = false;
    };
    struct Counts {
        qint64 dc = 0;
        qint64 ac = 0;
    };

    void send(int channel, Notifications_t type, const QByteArray &payload) override;
    void onDcRecordSent(int channel, int nodeIndex, const DcSample &sample) override;
    void onPassDone(int channel, int nodeIndex, quint64 tick, double charge) override;

    void onReceived(const QByteArray &bytes);
    void obey(const Frame &frame);
    void obeyOnChannel(int channel, PCcommand_t command, const QByteArray &payload);
    void makeChannels(std::vector<std::unique_ptr<Cell>> cells);
    bool isGale() const { return _setup.model == HardwareModel_t::Gale; }

    quint16 status() const;
    void answerPing(const Frame &frame);
    void answerStatus(const Frame &frame);
    void answerCalibration(const Frame &frame);
    void takeCalibration(const Frame &frame);
    void answerHardware(const Frame &frame);
    void takeHardware(const Frame &frame);
    void answerChannelCount(const Frame &frame);
    void answerReset(const Frame &frame);
    void answerFirmwareVersion(const Frame &frame);
    void answerChecksum(const Frame &frame);
    void answerMetaData(const Frame &frame);
    void answerMemory(const Frame &frame);
    void answerErase(const Frame &frame);
    void answerSdWrite(const Frame &frame);
    void answerSdHeader(const Frame &frame);
    void answerSdData(const Frame &frame);
    void answerGround(const Frame &frame);
    void answerConfiguration(const Frame &frame);
    void answerLink(const Frame &frame);
    bool formGroup(int leader);
    void answerFanMode(const Frame &frame);
    void stayStill(const Frame &frame);

    void flush();
    void schedule();
    void onTimer();
    void runFreely();
    void runPaced();
    bool runOne(quint64 until);
    void anchor();
    quint64 wallTick() const;
    bool isFree() const;
    void unplug();

    Setup _setup;
    std::shared_ptr<const HardwareModel> _model;
    TruthFile *_truth = nullptr;
    PassFile *_passes = nullptr;
    std::unique_ptr<SerialEnd> _terminal;
    Line _line;
    SdCard _sdCard;
    std::vector<std::unique_ptr<SimulatedChannel>> _channels;
    std::vector<Counts> _counts;
    QByteArray _received;
    quint32 _skipped = 0;
    QByteArray _hardwareRecord;
    QByteArray _firmwareChecksum;
    bool _isOn = true;
    Link _link;
    bool _askedForTime = false;
    quint64 _now;
    QTimer _timer;
    QElapsedTimer _wall;
    quint64 _anchorTick = 0;
    qint64 _anchorNs = 0;
    bool _isAnchored = false;
    std::optional<quint64> _unplugTick;
};
