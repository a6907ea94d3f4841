// SPDX-License-Identifier: MIT
#include "client/instruments/BuildFirmware.h"

#include "VekDeviceTracker.h"

namespace client {

namespace {

constexpr char permission[] = "NIMBRELLE_ALLOW_STAND_IN";

} // namespace

QString firmwareImagesText()
{
    if (!VekDeviceTracker::carriesStandInFirmware())
        return QStringLiteral("firmware images: real");
    return areUpdatesRefused()
               ? QStringLiteral("firmware images: stand-ins, updates are refused")
               : QStringLiteral("firmware images: stand-ins, updates are allowed by %1").arg(QLatin1String(permission));
}

bool areUpdatesRefused()
{
    return VekDeviceTracker::carriesStandInFirmware() && qgetenv(permission) != "1";
}

QString realImagesCommand()
{
    return QStringLiteral("cmake --preset release -DNIMBRELLE_FIRMWARE_DIR=DIR && cmake --build build/release");
}

} // namespace client
