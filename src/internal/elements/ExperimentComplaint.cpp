// SPDX-License-Identifier: MIT
#include "elements/ExperimentComplaint.h"

#include <QStringList>

VekErrorCode resultOf(const ExperimentComplaints &complaints)
{
    if (complaints.empty())
        return VekErrorCode::Success;
    QStringList lines;
    for (const ExperimentComplaint &complaint : complaints) {
        if (complaint.code == complaints.front().code)
            lines.append(complaint.text);
    }
    return VekErrorCode(complaints.front().code, lines.join(QLatin1Char('\n')));
}
