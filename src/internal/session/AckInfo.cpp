// SPDX-License-Identifier: MIT
#include "session/AckInfo.h"

#include <QDateTime>

double AckInfo::getCurrentTime()
{
    return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}
