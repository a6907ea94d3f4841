// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace lab {
struct RunData;
}

namespace plots {

/// Voltage and current against time, the beginnings of steps marked, as PATH.svg and PATH.png.
bool drawTimePlot(const lab::RunData &run, const QString &path);

} // namespace plots
