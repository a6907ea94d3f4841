#include "link/ExpStopType.h"

namespace {

struct StopReasonRow {
    ExpStopType_t type;
    const char *reason;
};

constexpr StopReasonRow stopReasonRows[] = {
    {STOP_CURRENT_MIN, "current exceeded user specified Current Min safety limit"},
    {STOP_CURRENT_MAX, "current exceeded user specified Current Max safety limit"},
    {STOP_VOLTAGE_MIN, "voltage exceeded user specified Voltage Min safety limit"},
    {STOP_VOLTAGE_MAX, "voltage exceeded user specified Voltage Max safety limit"},
    {STOP_TEMPERATURE_MAX, "temperature exceeded user specified Temperature Max safety limit"},
    {STOP_NO_TEMPERATURE, "temperature safety limit set but no temperature data received from thermocouple"},
    {STOP_OVERHEATED, "instrument overheated"},
    {STOP_CURRENT_INSTRUMENT, "current exceeded instrument limits"},
    {STOP_VOLTAGE_INSTRUMENT, "voltage exceeded instrument limits"},
    {STOP_PULSE_CURRENT, "current exceeded maximum current expected in pulse experiment"},
    {STOP_CONTROL_FAULT, "control fault"},
    {STOP_BAD_NODE, "invalid configuration of a node"},
    {STOP_RECOVERY_ACTION, "recovery data action"},
    {STOP_NOT_IDLE, "command sent that required device to be in an idle state"},
};

QString stopReason(ExpStopType_t type)
{
    for (const StopReasonRow &row : stopReasonRows) {
        if (row.type == type)
            return QString::fromLatin1(row.reason);
    }
    return QStringLiteral("unknown reason.");
}

} // namespace

QString getStopMessage(ExpStopType_t type)
{
    if (type == STOP_COMPLETED)
        return QStringLiteral("Experiment completed");
    if (type == STOP_BY_USER)
        return QStringLiteral("Experiment stopped by user");
    return QStringLiteral("Experiment stopped: ") + stopReason(type);
}
