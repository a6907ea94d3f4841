// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// What this process holds of the system at this moment, for tests that look for what is not given back.
namespace ProcessFigures {

/// Threads, the main one included.
int threads();
/// Open file descriptors.
int openFiles();
/// How many of them are this file.
int openings(const QString &path);
/// Bytes of the heap that are in use, in all arenas; what is freed but kept for later does not count. 0 under sanitizers.
qint64 heapBytes();
/// Resident memory in megabytes, after the heap has given back what it keeps for later. 0 under sanitizers, which keep a
/// history of each access or what was freed.
double residentMegabytes();

} // namespace ProcessFigures
