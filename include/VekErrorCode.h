// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"

#include <QtCore/QMetaType>
#include <QtCore/QString>

/**
 * Result of a request: a number that programs compare and a message that people read.
 *
 * A request has succeeded exactly when its result equals VekErrorCode::Success, that is 0:
 *
 *     if (handler.startUploadedExperiment(0) != VekErrorCode::Success) ...
 *
 * A small value: copy it freely, use it on any thread.
 */
class NIMBRELLE_EXPORT VekErrorCode
{
public:
    /// The numbers are fixed: programs may store and compare them.
    enum ErrorCode : quint8 {
        Success = 0,
        ConnectionFailed = 1,
        FirmwareNotSupported = 2, ///< the firmware differs from the image in this library: update it
        FirmwareFileNotFound = 3,
        FirmwareUpToDate = 4,
        ConnectionInProgress = 5, ///< a call that connects is under way around this one, or the device is starting up
        StandInFirmware = 6,      ///< the library carries no real image of this model, so nothing was written
        InvalidChannel = 10,
        ChannelBusy = 11,
        DeviceNotFound = 13,
        FeatureNotSupported = 14,
        ManualExperimentNotRunning = 51,
        ExperimentNotUploaded = 52,
        ExperimentIsEmpty = 53,
        InvalidParameters = 54, ///< the message names every limit that was broken
        NoExperimentRunning = 55,
        ExperimentUploaded = 56,
        ImplausibleParameters = 57, ///< within the limits of the model, but cannot be meant; the message names each one
        ExperimentTooLarge = 58,    ///< more nodes than an instrument can count, a longer loop, or too deep a tree
        CommandNotSent = 100,
        ManualCurrentRangeNotSet = 101,
        ManualVoltageNotSet = 102,
        PauseFailed = 103,
        ResumeFailed = 104,
        StopFailed = 105,
        UploadFailed = 106,
        AlreadyPaused = 107,
        ExperimentRunning = 108,
        ManualVoltageRangeNotSet = 109,
        ManualCurrentNotSet = 110,
        ManualOcpNotSet = 111,
        ManualSamplingNotSet = 112,
        IRCompNotSet = 113,
        CompRangeNotSet = 114,
        ChannelVmaxNotSet = 115,
        ChannelVminNotSet = 116,
        ChannelImaxNotSet = 117,
        ChannelIminNotSet = 118,
        ChannelTemperatureNotSet = 119,
        SendFailed = 254,
        Unknown = 255, ///< for example a port that sends back what it is sent; without a text of its own
    };

    /// For the meta-type system only: the value is Unknown until it is assigned.
    VekErrorCode() = default;
    /// A result with the standard message of its code.
    VekErrorCode(ErrorCode code) : _code(code) {}
    /// A result with a message of its own; an empty one stands for the standard message.
    VekErrorCode(ErrorCode code, const QString &message) : _code(code), _message(message) {}

    /// Makes comparison with 0 or Success possible.
    operator ErrorCode() const { return _code; }
    /// The number.
    ErrorCode value() const { return _code; }
    /// The message of its own if there is one, else the standard one; "Unknown error occurred" for an unlisted code.
    QString message() const;

private:
    ErrorCode _code = Unknown;
    QString _message;
};

Q_DECLARE_METATYPE(VekErrorCode)
