// SPDX-License-Identifier: MIT
#pragma once

#include "link/Notifications.h"
#include "link/PCcommand.h"
#include "simulator/BootFaults.h"
#include "simulator/SdCard.h"
#include "simulator/SimulatedChannel.h"

#include <QMap>
#include <QSet>
#include <QString>

/**
 * What the instrument does wrong on purpose, as the user asked for it with `--fault KIND[:ARGUMENTS]`.
 *
 * Nothing is random: the same faults give the same bytes.
 */
struct Faults {
    bool isSilent = false; ///< answers nothing
    bool echoes = false;   ///< sends back what comes in, as a plugged loop does
    bool hasWrongFirmware = false;
    bool hasUnknownModel = false;
    QSet<int> unanswered;         ///< commands (PCcommand_t) that get no answer
    QSet<int> missingCalibration; ///< channels whose calibration is not sent
    QMap<int, double> lagsFrom;   ///< channels whose counter falls behind their group's, and the second of a run
    QSet<int> shortReplies;       ///< commands whose answer lacks its last byte
    int lostAckEvery = 0;         ///< each n-th acknowledgement, of nodes too, is lost; 0: none
    FirmwareErrorCode startRefusal = FW_SUCCESS; ///< of each start, also by hand; success: none is refused
    FirmwareErrorCode nodeRefusal = FW_SUCCESS;  ///< of one node of each upload
    int refusedNode = 0;                         ///< its number, from 1; 0: none
    int delayMs = 0;                             ///< each answer to a command comes so much later
    int garbageEvery = 0;                        ///< garbage stands before each n-th frame; 0: never
    int pieceSize = 0;                           ///< frames go out in pieces of so many bytes; 0: whole
    double disconnectAt = -1.0;                  ///< seconds of instrument time after the first start; negative: never
    qint64 disconnectAfter = -1;                 ///< DC records; negative: never
    SdCardFaults sdCard;
    BootFaults boot; ///< of the bootloader
    QVector<TimedEvent> events;

    /// Adds the fault that a text names. @return an empty text, or what is wrong with it
    QString add(const QString &text);
    /// One line for each kind, for the help.
    static QString help();
};
