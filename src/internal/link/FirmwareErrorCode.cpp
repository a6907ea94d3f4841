#include "link/FirmwareErrorCode.h"

namespace {

struct FirmwareErrorRow {
    FirmwareErrorCode code;
    const char *text;
};

constexpr FirmwareErrorRow firmwareErrorRows[] = {
    {FW_NO_RESPONSE, "The device did not respond to the command."},
    {FW_SUCCESS, "Command sucessful."}, // so spelled
    {FW_ALREADY_SET, "Requested parameters already set."},
    {FW_BAD_BANDWIDTH_INDEX, "Invalid bandwidth index."},
    {FW_BAD_STABILITY_INDEX, "Invalid stability factor index."},
    {FW_MANUAL_START_FAILED, "Manual experiment failed to start."},
    {FW_BAD_CURRENT_RANGE, "Invalid current range."},
    {FW_BAD_VOLTAGE_RANGE, "Invalid voltage range."},
    {FW_CHANNEL_NOT_IDLE, "Channel is not in the idle state."},
    {FW_NODE_NOT_APPENDED, "Experiment node cannot be appended to node list."},
    {FW_NO_EXPERIMENT, "No experiment is uploaded to the channel."},
    {FW_BAD_CHANNEL_STATE, "The channel was not in the proper state to execute the command"},
    {FW_BAD_PARAMETERS, "Invalid parameters."},
    {FW_NOT_SUPPORTED, "This feature is not supported on this model."},
};

} // namespace

QString handle_error(FirmwareErrorCode code)
{
    for (const FirmwareErrorRow &row : firmwareErrorRows) {
        if (row.code == code)
            return QString::fromLatin1(row.text);
    }
    return QStringLiteral("Unknown Error Code");
}
