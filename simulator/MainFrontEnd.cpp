// SPDX-License-Identifier: MIT
#include "simulator/MainFrontEnd.h"

#include "simulator/Payload.h"

QByteArray MainFrontEnd::dcRecord(const DcSample &sample, currentRange_t currentRange, voltageRange_t voltageRange,
                                  quint8) const
{
    return packed(_calibration.toRecord(sample, currentRange, voltageRange));
}

QVector<FrontEnd::Packet> MainFrontEnd::acPackets(const AcMeasurement &measurement, Random &random) const
{
    QVector<Packet> packets{{NT_AC_DATA, _ac.record(measurement, _calibration, random)}};
    if (measurement.plan.isLast)
        packets.append({NT_AC_SAMPLE_DONE, QByteArray()});
    return packets;
}
