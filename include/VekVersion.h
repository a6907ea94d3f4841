// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"

#include <QtCore/QString>

// The version of the headers that a program is built with. The build of the library reads it from here.

/// Changes when programs have to be adapted.
#define NIMBRELLE_VERSION_MAJOR 1
/// Changes when something is added.
#define NIMBRELLE_VERSION_MINOR 0
/// Changes when something is mended.
#define NIMBRELLE_VERSION_PATCH 0
/// All three.
#define NIMBRELLE_VERSION_STRING "1.0.0"

/// The version of the library that a program runs with; it may be newer than the headers. Any thread.
class NIMBRELLE_EXPORT VekVersion
{
public:
    /// For example "1.0.0".
    static QString ofLibrary();
};
