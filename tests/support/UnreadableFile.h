// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>

/**
 * A file that opens, claims a size, and whose reading fails, as one on a broken card does: a speed that the loopback
 * device does not have. Empty where the system offers none.
 */
inline QString unreadableFile()
{
    const QString path = QStringLiteral("/sys/class/net/lo/speed");
    QFile file(path);
    char byte = 0;
    const bool claimsSize = file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && file.size() > 0;
    return claimsSize && file.read(&byte, 1) < 0 ? path : QString();
}
