// SPDX-License-Identifier: MIT
#include "VekVersion.h"

QString VekVersion::ofLibrary()
{
    return QStringLiteral(NIMBRELLE_VERSION);
}
