// SPDX-License-Identifier: MIT
#include "link/FirmwareErrorCode.h"

namespace {

using End = VekExperimentEnd;

struct FirmwareErrorRow {
    FirmwareErrorCode code;
    End refusal; ///< of a start
    const char *text;
};

// clang-format off
constexpr FirmwareErrorRow firmwareErrorRows[] = {
    {FW_NO_RESPONSE,         End::RefusedNoAnswer,        "The device did not respond to the command."},
    // No refusal. See compatibility.md, spelling of verdicts.
    {FW_SUCCESS,             End::Refused,                "Command sucessful."},
    {FW_ALREADY_SET,         End::RefusedAlreadySet,      "Requested parameters already set."},
    {FW_BAD_BANDWIDTH_INDEX, End::RefusedBandwidthIndex,  "Invalid bandwidth index."},
    {FW_BAD_STABILITY_INDEX, End::RefusedStabilityIndex,  "Invalid stability factor index."},
    {FW_MANUAL_START_FAILED, End::RefusedManualStart,     "Manual experiment failed to start."},
    {FW_BAD_CURRENT_RANGE,   End::RefusedCurrentRange,    "Invalid current range."},
    {FW_BAD_VOLTAGE_RANGE,   End::RefusedVoltageRange,    "Invalid voltage range."},
    {FW_CHANNEL_NOT_IDLE,    End::RefusedNotIdle,         "Channel is not in the idle state."},
    {FW_NODE_NOT_APPENDED,   End::RefusedNode,            "Experiment node cannot be appended to node list."},
    {FW_NO_EXPERIMENT,       End::RefusedNoExperiment,    "No experiment is uploaded to the channel."},
    {FW_BAD_CHANNEL_STATE,   End::RefusedChannelState,    "The channel was not in the proper state to execute the command"},
    {FW_BAD_PARAMETERS,      End::RefusedParameters,      "Invalid parameters."},
    {FW_NOT_SUPPORTED,       End::RefusedNotSupported,    "This feature is not supported on this model."},
};
// clang-format on

constexpr FirmwareErrorRow otherError = {FirmwareErrorCode(-128), End::Refused, "Unknown Error Code"};

const FirmwareErrorRow &rowOf(FirmwareErrorCode code)
{
    for (const FirmwareErrorRow &row : firmwareErrorRows) {
        if (row.code == code)
            return row;
    }
    return otherError;
}

} // namespace

QString handle_error(FirmwareErrorCode code)
{
    return QString::fromLatin1(rowOf(code).text);
}

VekExperimentEnd refusalOf(FirmwareErrorCode code)
{
    return rowOf(code).refusal;
}
