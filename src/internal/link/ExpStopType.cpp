// SPDX-License-Identifier: MIT
#include "link/ExpStopType.h"

namespace {

using End = VekExperimentEnd;

struct EndRow {
    ExpStopType_t type;
    End end;
    const char *text;
};

// clang-format off
constexpr EndRow endRows[] = {
    {STOP_COMPLETED,          End::Completed,           "Experiment completed"},
    {STOP_BY_USER,            End::StoppedByUser,       "Experiment stopped by user"},
    {STOP_CURRENT_MIN,        End::CurrentMinimum,      "Experiment stopped: current exceeded user specified Current Min safety limit"},
    {STOP_CURRENT_MAX,        End::CurrentMaximum,      "Experiment stopped: current exceeded user specified Current Max safety limit"},
    {STOP_VOLTAGE_MIN,        End::VoltageMinimum,      "Experiment stopped: voltage exceeded user specified Voltage Min safety limit"},
    {STOP_VOLTAGE_MAX,        End::VoltageMaximum,      "Experiment stopped: voltage exceeded user specified Voltage Max safety limit"},
    {STOP_TEMPERATURE_MAX,    End::TemperatureMaximum,  "Experiment stopped: temperature exceeded user specified Temperature Max safety limit"},
    {STOP_NO_TEMPERATURE,     End::NoTemperature,       "Experiment stopped: temperature safety limit set but no temperature data received from thermocouple"},
    {STOP_OVERHEATED,         End::Overheated,          "Experiment stopped: instrument overheated"},
    {STOP_CURRENT_INSTRUMENT, End::CurrentOfInstrument, "Experiment stopped: current exceeded instrument limits"},
    {STOP_VOLTAGE_INSTRUMENT, End::VoltageOfInstrument, "Experiment stopped: voltage exceeded instrument limits"},
    {STOP_PULSE_CURRENT,      End::PulseCurrent,        "Experiment stopped: current exceeded maximum current expected in pulse experiment"},
    {STOP_CONTROL_FAULT,      End::ControlFault,        "Experiment stopped: control fault"},
    {STOP_BAD_NODE,           End::InvalidNode,         "Experiment stopped: invalid configuration of a node"},
    {STOP_RECOVERY_ACTION,    End::RecoveryAction,      "Experiment stopped: recovery data action"},
    {STOP_NOT_IDLE,           End::NotIdle,             "Experiment stopped: command sent that required device to be in an idle state"},
};
// clang-format on

constexpr EndRow otherEnd = {ExpStopType_t(0), End::UnknownReason, "Experiment stopped: unknown reason."};

const EndRow &endRowOf(ExpStopType_t type)
{
    for (const EndRow &row : endRows) {
        if (row.type == type)
            return row;
    }
    return otherEnd;
}

} // namespace

QString getStopMessage(ExpStopType_t type)
{
    return QString::fromLatin1(endRowOf(type).text);
}

VekExperimentEnd experimentEndOf(ExpStopType_t type)
{
    return endRowOf(type).end;
}
