// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ExpNode.h"
#include "hardware_models/HardwareModelNumber.h"
#include "hardware_models/RangeTypes.h"
#include "link/FanCtrlMode.h"
#include "link/FirmwareErrorCode.h"
#include "link/Notifications.h"
#include "link/PCcommand.h"
#include "session/AckInfo.h"
#include "waiting/Clock.h"

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QString>

#include <atomic>
#include <memory>
#include <vector>

class SerialCommunicator;
class VekCompRange;
enum class WaitEnd;

namespace Manual {
/// Current range of manual mode as a record; only its first byte travels.
struct RangingMode {
    quint8 range = 0;
};
} // namespace Manual

/**
 * The tongue and ear of a connected instrument: a method for each command, a signal for each notification.
 *
 * It deals in raw values and holds no state of an experiment. A method with a bool result says whether the command was
 * handed to the link, not what the instrument makes of it; those that wait for an acknowledgement say so.
 *
 * @thread  Lives on the thread of its handler, where notifications arrive. The command methods may be called there and on
 *          the thread that made the object, whose event loop every packet passes; the others of that thread's events go
 *          on being delivered while a method waits.
 * @failure A lost link ends every wait with false and is told once by deviceDisconnected(). What is sent afterwards
 *          vanishes without a word.
 */
class InstrumentOperator : public QObject
{
    Q_OBJECT

public:
    /// Opens the port and waits for that, at most 10 s; isConnected() tells the outcome.
    explicit InstrumentOperator(const QString &port, QObject *parent = nullptr, const Clock &clock = Clock::host());
    ~InstrumentOperator() override;

    /**
     * Loads a list of nodes into a channel; each node's acknowledgement is awaited, up to 1,000 ms. One that reached the
     * process in this time counts, however long a thread that it must pass is held by others.
     *
     * @return false as soon as a node was refused or not acknowledged: uploadVerdict() tells which
     */
    virtual bool uploadExperimentToInstrument(unsigned char channel, const QList<ExpNode_t> &nodes,
                                              HardwareModel_t model);
    /// Waits for the acknowledgement, 3 times 50 ms.
    virtual bool setManualSamplingParams(unsigned char channel, const QByteArray &samplingRecord);

    /// How the last upload ended: FW_SUCCESS, the code by which a node was refused, or FW_NO_RESPONSE. Ask it on the
    /// thread that uploaded.
    FirmwareErrorCode uploadVerdict() const { return _uploadVerdict; }
    bool isConnected() const; ///< may be asked on any thread
    void disconnectDevice();  ///< closes the port
    /// Gives the port up for good: deviceDisconnected() follows. Any thread; blocks until the port is closed, at most 2 s.
    void hangUp();
    /// Sends bytes as they stand, unframed.
    void sendCommandToInstr(const QByteArray &bytes);

    /// @name Experiments
    /// @{
    bool startExperiment(unsigned char channel);
    bool stopExperiment(unsigned char channel);
    bool pauseExperiment(unsigned char channel);
    bool resumeExperiment(unsigned char channel);
    bool skipExperimentStep(unsigned char channel);
    void softReset(unsigned char channel);
    void initDefaultSampling(unsigned char channel);
    /// @}

    /// @name Manual mode
    /// @{
    bool startManualExperiment(unsigned char channel);
    bool setManualGalvanoSetpoint(unsigned char channel, int rawSetpoint, unsigned char range);
    bool setManualGalvanoSetpoint(unsigned char channel, float current);
    bool setManualPotentioSetpoint(unsigned char channel, int rawSetpoint, unsigned char range);
    bool setManualPotentioSetpoint(unsigned char channel, float voltage);
    bool setManualOcp(unsigned char channel);
    bool setVoltageRangingMode(unsigned char channel, voltageRange_t range);
    bool setCurrentRangingMode(unsigned char channel, currentRange_t range);
    bool setCurrentRangingMode(unsigned char channel, const Manual::RangingMode &mode);
    /// @}

    /// @name Settings
    /// @{
    void setCompRange(unsigned char channel, const VekCompRange &compRange);
    void setIRCompSettings(unsigned char channel, float uncompensatedResistance, float compensationFraction);
    void setFFImpedance(unsigned char channel, float impedance);
    /// Amperes, volts, and the temperature as a ratio of the sensor. Waits for the acknowledgement, 3 times 50 ms.
    bool setChannelLimits(unsigned char channel, double currentMin, double currentMax, double voltageMin,
                          double voltageMax, double temperatureRatioMax);
    void setChannelsLink(const std::vector<unsigned char> &channels, bool link);
    bool SetFanMode(FanCtrlMode_t mode);
    bool SetFanSpeed(float speed);
    /// @}

    /// @name Questions and recovery data
    /// @{
    bool readDeviceStatus(); ///< waits for the answer, 3 times 100 ms
    void readMetaData();
    void readMemoryData(bool firstBlock);
    bool eraseMemoryData();
    void requestGroundFloatState();
    void readConfiguration(unsigned char channel);
    void pingToDevice();
    /// @}

    /// @name Calibration and hardware record
    /// @{
    void requestSDcardCalibrationHeader();
    void requestNextCalibrationData();
    void requesFlashCalibrationData(unsigned char channel); // see compatibility.md, inner names
    /// Returns when the record counts as written. See compatibility.md, five hundred milliseconds.
    void writeCalDataToDevice(unsigned char channel, const QByteArray &record);
    void writeCalFileHeaderToSDCard(unsigned char channel, const QByteArray &header);
    void calFileDataAppendToSDCard(unsigned char channel, const QByteArray &data);
    void writeHardwareDataToDevice(unsigned char channel, const QByteArray &record);
    /// @}

public Q_SLOTS:
    /// Sorts one packet of the instrument.
    void responseReceived(Notifications_t type, unsigned int channel, const QByteArray &data);
    void filterGeneralAck(unsigned char channel, const QByteArray &data);

Q_SIGNALS:
    void experimentDataBeginning(unsigned char channel, const QByteArray &data);
    void experimentNodeBeginning(unsigned char channel, const QByteArray &data);
    void experimentNodeCompleted(unsigned char channel, const QByteArray &data);
    void experimentDCDataReceived(unsigned char channel, const QByteArray &data);
    void experimentACDataReceived(unsigned char channel, const QByteArray &data);
    void acDataSampleFinshed(unsigned char channel); // see compatibility.md, inner names
    void acDataInvalidated(unsigned char channel, const QByteArray &data);
    void experimentCompleted(unsigned char channel, const QByteArray &data);
    void experimentPaused(unsigned char channel);
    void experimentResumed(unsigned char channel);
    void experimentNodeSkipped(unsigned char channel);
    void deviceNotification(unsigned char channel, const QString &text);
    void deviceError(unsigned char channel, const QString &text);
    void channelstatusInformation(const QByteArray &data);
    void receivedMetaData(const QByteArray &data);
    void memoryDataStart(const QByteArray &data);
    void memoryDataErased(const QByteArray &data);
    void groundFloatStateChanged(const QByteArray &data);
    void calibrationHeaderReceived(unsigned char channel, const QByteArray &data);
    void calibrationDataReceived(unsigned char channel, const QByteArray &data);
    void TareCurrentReceived(unsigned char channel, const QByteArray &data);
    void TareVoltageReceived(unsigned char channel, const QByteArray &data);
    void deviceConfigReceived(unsigned char channel, const QByteArray &data);
    void acknowledgeToWriteCalDataInSDCard(unsigned char channel, const QByteArray &data);
    void rawDCcalDataReceived(unsigned char channel, const QByteArray &data);
    void SpecialCalRsp_ACampErr(unsigned char channel, const QByteArray &data);
    void nonlinearADCCalDataReceived(unsigned char channel, const QByteArray &data);
    void appendExperimentNodeAcked(unsigned char channel);
    void acknowledge(unsigned char channel, PCcommand_t command);
    void acktoExperimentStart(unsigned char channel, const FirmwareErrorCode &code);
    // See compatibility.md, inner names.
    void acktoManualStart(unsigned char channel, const FirmwareErrorCode &code);
    void acktoManualOcpSet(unsigned char channel, const FirmwareErrorCode &code);
    void acktoManualCurrentRangeSet(unsigned char channel, const FirmwareErrorCode &code);
    void acktoManualVoltageRangeSet(unsigned char channel, const FirmwareErrorCode &code);
    void acktoManualVoltageSetPoint(unsigned char channel, const FirmwareErrorCode &code);
    void acktoManualCurrentSetPoint(unsigned char channel, const FirmwareErrorCode &code);
    void acktoManualSamplingIntervalSet(unsigned char channel, const FirmwareErrorCode &code);
    void acktoIRComp(unsigned char channel, const FirmwareErrorCode &code);
    void acktoCompRange(unsigned char channel, const FirmwareErrorCode &code);
    /// The link is lost; comes once.
    void deviceDisconnected();

private:
    struct Road;
    class Wait;

    void takePackets();
    void onMarkPassed(int number);
    void onLinkLost();
    void onCurrentRangeUp(unsigned char channel, const QByteArray &data);
    void onErrorText(unsigned char channel, const QByteArray &data);
    void onDeviceStatus(unsigned char channel, const QByteArray &data);
    void onNodeAppended(unsigned char channel, const QByteArray &data);
    void onTimeRequest(unsigned char channel, const QByteArray &data);
    void onMemoryBlockEnd(unsigned char channel, const QByteArray &data);

    bool send(PCcommand_t command, unsigned char channel = deviceChannel, const QByteArray &payload = QByteArray());
    bool sendAndWait(PCcommand_t command, unsigned char channel, const QByteArray &payload, int milliseconds);
    FirmwareErrorCode appendNode(unsigned char channel, const ExpNode_t &node);
    void letArrivedPacketsThrough(Wait &wait);

    bool receivedAcknowledgment(const AckInfo &ack);
    void receivedNodeAcknowledgment(const AckInfo &ack);
    bool waitForAcknowledgment(Wait &wait, const AckInfo &wanted, int milliseconds);
    bool claimAcknowledgment(const AckInfo &wanted);
    template <typename Condition>
    void wakeWaits(Condition condition, WaitEnd reason);

    static const Road _roads[];

    const Clock &_clock;
    SerialCommunicator *_communicator; // stays on the thread that made it
    QObject *_communicatorOwner;       // its parent, on the same thread
    QMutex _guard;                     // guards the next two, and what the waits have been told
    QList<AckInfo> _acks;              // received and not yet claimed
    QList<Wait *> _waits;              // under way, on whatever thread
    std::atomic<int> _lastMark{0};
    std::atomic<FirmwareErrorCode> _uploadVerdict{FW_SUCCESS};
    std::atomic<bool> _connected; // read on the client's thread too
};
