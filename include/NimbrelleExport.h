// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/qglobal.h>

/// Marks what leaves the library; everything else is hidden.
#if defined(NIMBRELLE_LIBRARY)
#define NIMBRELLE_EXPORT Q_DECL_EXPORT
#else
#define NIMBRELLE_EXPORT Q_DECL_IMPORT
#endif
