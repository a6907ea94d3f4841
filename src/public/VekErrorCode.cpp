// SPDX-License-Identifier: MIT
#include "VekErrorCode.h"

namespace {

struct ErrorTextRow {
    VekErrorCode::ErrorCode code;
    const char *text;
};

constexpr ErrorTextRow errorTextRows[] = {
    {VekErrorCode::Success, "Success"},
    {VekErrorCode::ConnectionFailed, "Failed to connect to device."},
    {VekErrorCode::FirmwareNotSupported, "Firmware not supported by this version of the API"},
    {VekErrorCode::FirmwareFileNotFound, "Firmware file is not available in API bundle."},
    {VekErrorCode::FirmwareUpToDate, "Device has up to date firmware."},
    {VekErrorCode::ConnectionInProgress, "Another connection is being made. Please try again when it is done."},
    {VekErrorCode::StandInFirmware,
     "The firmware image of this API bundle is a stand-in without a program and is not written to an instrument."},
    {VekErrorCode::InvalidChannel, "Channel number is invalid."},
    {VekErrorCode::ChannelBusy,
     "An experiment is already running on the given channel. Please use a different channel."},
    {VekErrorCode::DeviceNotFound,
     "Device is not found. Please make sure the device is properly connected and to the correct COM port"},
    {VekErrorCode::FeatureNotSupported, "Device does not support this feature."},
    {VekErrorCode::ManualExperimentNotRunning,
     "Manual Experiment is not Running. Please Start Manual Experiment to use this API."},
    {VekErrorCode::ExperimentNotUploaded,
     "Experiment is not uploaded on the given channel. Please upload the experiment first."},
    {VekErrorCode::ExperimentIsEmpty,
     "Elements are not added to the experiment. Please add at least 1 element to the experiment."},
    {VekErrorCode::InvalidParameters, "Invalid parameters entered."},
    {VekErrorCode::NoExperimentRunning, "No experiment is currently running."},
    {VekErrorCode::ExperimentUploaded, "An experiment is currently uploaded to this channel."},
    {VekErrorCode::ImplausibleParameters, "The parameters are within the limits of the device but cannot be meant."},
    {VekErrorCode::ExperimentTooLarge, "Experiment is too large for the device. Please split it into several."},
    {VekErrorCode::CommandNotSent, "API is unable to send command to device. Please try again."},
    {VekErrorCode::ManualCurrentRangeNotSet, "Current Range is not set for manual mode. Please try again."},
    {VekErrorCode::ManualVoltageNotSet, "Constant voltage is not set for manual mode. Please try again."},
    {VekErrorCode::PauseFailed,
     "Experiment was not successfully paused. Either the given channel has no running experiment or, there was a "
     "failure in communication with the device."},
    {VekErrorCode::ResumeFailed,
     "Experiment was not successfully resumed. Either the given channel has no paused experiment or, there was a "
     "failure in communication with the device."},
    {VekErrorCode::StopFailed,
     "Experiment was not successfully stopped. Either the given channel has no running or paused experiment or, there "
     "was a failure in communication with the device."},
    {VekErrorCode::UploadFailed, "Experiment was not successfully uploaded to the channel. Please try again."},
    {VekErrorCode::AlreadyPaused, "Experiment is already Paused."},
    {VekErrorCode::ExperimentRunning, "Experiment is currently running."},
    {VekErrorCode::ManualVoltageRangeNotSet, "Failed to set manual mode voltage range."},
    {VekErrorCode::ManualCurrentNotSet, "Constant current is not set for manual mode. Please try again."},
    {VekErrorCode::ManualOcpNotSet, "open circuit mode is not in manual mode. Please try again."},
    {VekErrorCode::ManualSamplingNotSet, "Failed to set manual mode sampling interval."},
    {VekErrorCode::IRCompNotSet, "Failed to set IR compensation."},
    {VekErrorCode::CompRangeNotSet, "Failed to set compensation range."},
    {VekErrorCode::ChannelVmaxNotSet, "Channel maximum voltage is not set. Please try again."},
    {VekErrorCode::ChannelVminNotSet, "Channel minimum voltage is not set. Please try again."},
    {VekErrorCode::ChannelImaxNotSet, "Channel maximum current is not set. Please try again."},
    {VekErrorCode::ChannelIminNotSet, "Channel minimum current is not set. Please try again."},
    // The code guards the maximum. See compatibility.md, minimum of the temperature.
    {VekErrorCode::ChannelTemperatureNotSet, "Channel minimum temperature is not set. Please try again."},
    {VekErrorCode::SendFailed, "Failed to send command to device."},
};

} // namespace

QString VekErrorCode::message() const
{
    if (!_message.isEmpty())
        return _message;
    for (const ErrorTextRow &row : errorTextRows) {
        if (row.code == _code)
            return QString::fromLatin1(row.text);
    }
    return QStringLiteral("Unknown error occurred");
}
