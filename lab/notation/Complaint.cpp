// SPDX-License-Identifier: MIT
#include "lab/notation/Complaint.h"

namespace lab {

QString withPlace(const QString &path, const Complaint &complaint)
{
    if (complaint.line == 0)
        return QStringLiteral("%1: %2").arg(path, complaint.text);
    return QStringLiteral("%1:%2: %3").arg(path, QString::number(complaint.line), complaint.text);
}

} // namespace lab
