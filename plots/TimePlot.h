#pragma once

#include <QString>

namespace client {

struct RunData;

/// Voltage and current against time, the beginnings of steps marked, as PATH.svg and PATH.png.
bool drawTimePlot(const RunData &run, const QString &path);

} // namespace client
