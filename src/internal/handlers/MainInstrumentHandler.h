// SPDX-License-Identifier: MIT
#pragma once

#include "handlers/VekInstrumentHandlerPrivate.h"

#include <set>

/**
 * The handler of every instrument but the battery cyclers.
 *
 * Notifications act on models of the main line alone; an obsolete or unknown model is connected but stays silent.
 *
 * @thread As its base. sendInitialDefaults() keeps its thread in a local event loop for up to 5,000 ms while tables are
 *         read from the SD card; notifications go on being served, and the loss of the link ends it.
 */
class MainInstrumentHandler : public VekInstrumentHandlerPrivate
{
    Q_OBJECT

public:
    explicit MainInstrumentHandler(const InstrumentInfo &info, const Clock &clock = Clock::host());
    ~MainInstrumentHandler() override;

    VekErrorCode setFanSpeedVariable(bool variable) override;

public Q_SLOTS:
    void sendInitialDefaults() override;
    void onExperimentNodeBeginning(unsigned char channel, const QByteArray &payload) override;
    void onExperimentNodeCompleted(unsigned char channel, const QByteArray &payload) override;
    void onExperimentDCDataReceived(unsigned char channel, const QByteArray &payload) override;
    void onExperimentACDataReceived(unsigned char channel, const QByteArray &payload) override;
    void onACDataSampleFinshed(unsigned char channel) override;
    void onACDataInvalidated(unsigned char channel, const QByteArray &payload) override;
    /// Takes in which channels hold recovery data and which still run an experiment.
    void channelstatusInformation(const QByteArray &payload);

protected:
    void prepareInstrument() override;
    bool canReport(unsigned char channel) const override;

private:
    using Step = void (MainInstrumentHandler::*)();
    /// Ends with the loss of the link.
    void take(std::initializer_list<Step> steps);
    // The steps of the start-up.
    void askForStatus();
    void readCalibrationTables();
    void setFanUnlessRunning();
    void askForGround();

    void waitForSdCard(std::set<unsigned char> pending);
    void keepThoseBeingRead(std::set<unsigned char> &pending) const;
    void warnOfUnreadTables(const std::set<unsigned char> &channels) const;
    void reportExperimentData(unsigned char channel, VekDCData data);
};
