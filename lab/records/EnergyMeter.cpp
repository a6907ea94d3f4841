// SPDX-License-Identifier: MIT
#include "lab/records/EnergyMeter.h"

#include <cmath>

namespace lab {

void EnergyMeter::add(double time, double voltage, double current, int stepCount)
{
    const Moment now{time, current, voltage * current, stepCount};
    const double seconds = time - _last.time;
    if (now.stepCount != _last.stepCount) {
        book(now.current, now.power * seconds);
    } else if ((now.current < 0.0) == (_last.current < 0.0)) {
        book(now.current, (_last.power + now.power) / 2.0 * seconds);
    } else {
        const double share = _last.current / (_last.current - now.current); // until the current is zero
        book(_last.current, _last.power / 2.0 * share * seconds);
        book(now.current, now.power / 2.0 * (1.0 - share) * seconds);
    }
    _last = now;
}

void EnergyMeter::book(double current, double wattSeconds)
{
    constexpr double secondsOfHour = 3600.0;
    if (!std::isfinite(wattSeconds))
        return;
    if (current < 0.0)
        _discharging -= wattSeconds / secondsOfHour;
    else
        _charging += wattSeconds / secondsOfHour;
}

} // namespace lab
