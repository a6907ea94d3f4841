// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QMetaType>

/**
 * How an experiment has ended, for programs to compare; VekInstrumentHandler::experimentEnded() has the words beside it.
 *
 * The numbers are fixed: programs may store them. New ones may come; a client takes one that it does not know for an end
 * that was not meant. An instrument that is lost has not told an end: deviceDisconnected() comes instead, and what ran on
 * the instrument may go on.
 */
enum class VekExperimentEnd : quint8 {
    UnknownReason = 0, ///< the instrument has ended it for a reason that this library does not know
    Completed = 1,     ///< all its steps were run, or skipped
    StoppedByUser = 2, ///< by stopExperiment(), of this program or of another one

    // A safety limit of the channel was broken.
    CurrentMinimum = 3,
    CurrentMaximum = 4,
    VoltageMinimum = 5,
    VoltageMaximum = 6,
    TemperatureMaximum = 7,
    NoTemperature = 8, ///< the temperature is limited, and there is none: the thermocouple does not answer

    // The instrument protects itself.
    Overheated = 9,
    CurrentOfInstrument = 10, ///< more than the instrument bears
    VoltageOfInstrument = 11, ///< more than the instrument bears
    PulseCurrent = 12,        ///< more than was expected of an experiment with pulses
    ControlFault = 13,

    // The experiment and what was asked of the instrument do not fit together.
    InvalidNode = 14,    ///< a step is configured in a way that cannot be run
    RecoveryAction = 15, ///< an action on the data that the instrument has stored
    NotIdle = 16,        ///< a command came that an idle channel takes alone

    // The instrument has refused the start: nothing has run, and the cell was not driven. All from here on are refusals.
    Refused = 100, ///< for a reason that this library does not know
    RefusedAlreadySet = 101,
    RefusedBandwidthIndex = 102,
    RefusedStabilityIndex = 103,
    RefusedManualStart = 104,
    RefusedCurrentRange = 105,
    RefusedVoltageRange = 106,
    RefusedNotIdle = 107,
    RefusedNode = 108,
    RefusedNoExperiment = 109, ///< the channel holds none
    RefusedChannelState = 110,
    RefusedParameters = 111,
    RefusedNotSupported = 112,
    RefusedNoAnswer = 113,
};

Q_DECLARE_METATYPE(VekExperimentEnd)
