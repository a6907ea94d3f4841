// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace lab {

/// Something wrong with a line of a file.
struct Complaint {
    int line = 0; ///< from 1; 0 where no line is to blame
    QString text;
};
using Complaints = std::vector<Complaint>;

/// "path:12: text" as compilers write it, so that editors find the place.
QString withPlace(const QString &path, const Complaint &complaint);

} // namespace lab
