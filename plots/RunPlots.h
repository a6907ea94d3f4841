// SPDX-License-Identifier: MIT
#pragma once

#include "plots/PlotModule.h"

namespace plots {

// What PlotModule offers, for who links it.

std::unique_ptr<QCoreApplication> makeDrawingApplication(int &argc, char **argv);
Drawing drawRun(const QString &folder);

} // namespace plots
