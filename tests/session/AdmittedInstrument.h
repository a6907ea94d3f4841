// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/HardwareModelNumber.h"
#include "support/FakeInstrument.h"

/**
 * A fake that a host admits and starts up: it answers every question of the handshake as the right instrument would.
 *
 * Its calibration records are empty but for their tags, and of an SD card it knows nothing: a start-up that wants to read
 * one waits in vain. Spoil single answers with on() and reply().
 */
class AdmittedInstrument : public FakeInstrument
{
public:
    explicit AdmittedInstrument(HardwareModel_t model = HardwareModel_t::Alder_2_5,
                                const QByteArray &name = "Alder-0042", int channelCount = 2);

    /// A hardware record of 256 bytes.
    static QByteArray hardwareRecord(HardwareModel_t model, const QByteArray &name);
    void fallSilentOn(PCcommand_t command) { on(command, Answer()); }

private:
    void answerHandshake(HardwareModel_t model, const QByteArray &name, int channelCount);
    void answerStartUp();
};
