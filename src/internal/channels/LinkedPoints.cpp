// SPDX-License-Identifier: MIT
#include "channels/LinkedPoints.h"

namespace {

struct Share {
    double ofCurrentAndCharge;
    double ofVoltage; // before the division by the number of channels
};

Share shareOf(unsigned char channel, bool bipolar)
{
    if (!bipolar)
        return {1.0, 1.0};
    return channel % 2 == 0 ? Share{0.5, 2.0} : Share{-0.5, -2.0};
}

} // namespace

ProcessedDCData joinPoints(const ProcessedDCData &master, const std::vector<LinkedPoint> &members, bool bipolar)
{
    ProcessedDCData joined = master;
    joined.current = 0.0;
    joined.workingElectrodeVoltage = 0.0;
    joined.charge = 0.0;
    for (const auto &[channel, point] : members) {
        const Share share = shareOf(channel, bipolar);
        joined.current += share.ofCurrentAndCharge * point.current;
        joined.charge += share.ofCurrentAndCharge * point.charge;
        joined.workingElectrodeVoltage += share.ofVoltage * point.workingElectrodeVoltage;
    }
    joined.workingElectrodeVoltage /= double(members.size());
    return joined;
}
