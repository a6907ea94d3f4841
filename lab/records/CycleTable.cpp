// SPDX-License-Identifier: MIT
#include "lab/records/CycleTable.h"

#include <cmath>

namespace lab {

namespace {

constexpr double notDefined = std::numeric_limits<double>::quiet_NaN();

// Names of the Battery Data Format where it has them.
const std::vector<CsvColumn> columns{
    {"Cycle Count / 1", Precision::Count},
    {"Test Time / s", Precision::Tick},
    {"Unix Time / s", Precision::Microsecond},
    {"Cycle Charging Capacity / Ah", Precision::Total},
    {"Cycle Discharging Capacity / Ah", Precision::Total},
    {"Cycle Charging Energy / Wh", Precision::Estimate},
    {"Cycle Discharging Energy / Wh", Precision::Estimate},
    {"Coulombic Efficiency / %", Precision::Reading},
    {"Energy Efficiency / %", Precision::Reading},
    {"Mean Charging Voltage / V", Precision::Reading},
    {"Mean Discharging Voltage / V", Precision::Reading},
    {"End of Charge Voltage / V", Precision::Reading},
    {"End of Discharge Voltage / V", Precision::Reading},
    {"Charging Time / s", Precision::Tick},
    {"Discharging Time / s", Precision::Tick},
    {"Cycle Time / s", Precision::Tick},
};

double quotient(double part, double whole)
{
    return whole > 0.0 ? part / whole : notDefined;
}

double percentage(double part, double whole)
{
    return part > 0.0 ? 100.0 * quotient(part, whole) : notDefined;
}

} // namespace

void CycleTable::open(const QString &path, double startUnixTime)
{
    _path = path;
    _begin.unixTime = startUnixTime;
}

void CycleTable::add(CycleMoment now)
{
    if (_path.isEmpty())
        return;
    const CycleMoment &known = _hasRows ? _last : _begin;
    if (!std::isfinite(now.chargingCapacity) || !std::isfinite(now.dischargingCapacity)) {
        now.chargingCapacity = known.chargingCapacity; // the next row counts what has moved meanwhile
        now.dischargingCapacity = known.dischargingCapacity;
    }
    if (_hasRows && now.cycle != _last.cycle) {
        write(true);
        beginCycle();
    }
    noteDirection(now);
    _last = now;
    _hasRows = true;
}

/// A rest tells no direction: what an open cell is read to carry is noise.
void CycleTable::noteDirection(const CycleMoment &now)
{
    if (!now.isDriven || now.current == 0.0)
        return;
    Half &half = now.current > 0.0 ? _charge : _discharge;
    half.endVoltage = now.voltage;
    half.duration += now.time - (_hasRows ? _last : _begin).time;
}

void CycleTable::beginCycle()
{
    _begin = _last;
    _charge = _discharge = Half();
}

void CycleTable::finish(bool isProgramOver)
{
    if (_hasRows)
        write(isProgramOver);
    flush();
    _hasRows = false;
}

void CycleTable::write(bool isWhole)
{
    if (!_file.isOpen() && (!error().isEmpty() || !_file.create(_path, columns)))
        return;
    const double charged = _last.chargingCapacity - _begin.chargingCapacity;
    const double discharged = _last.dischargingCapacity - _begin.dischargingCapacity;
    const double energyIn = _last.chargingEnergy - _begin.chargingEnergy;
    const double energyOut = _last.dischargingEnergy - _begin.dischargingEnergy;
    _file.append({double(_last.cycle), _begin.time, _begin.unixTime, charged, discharged, energyIn, energyOut,
                  isWhole ? percentage(discharged, charged) : notDefined,
                  isWhole ? percentage(energyOut, energyIn) : notDefined, quotient(energyIn, charged),
                  quotient(energyOut, discharged), _charge.endVoltage, _discharge.endVoltage, _charge.duration,
                  _discharge.duration, _last.time - _begin.time});
}

} // namespace lab
