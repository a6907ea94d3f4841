// SPDX-License-Identifier: MIT
#pragma once

#include "plots/PlotModule.h"

namespace client {

/// The module that draws, which is loaded by the first call. @return null, each time after a message, where it cannot be
plots::PlotModule *plotModule();

/// Draws the pictures of a run into its folder and tells what is odd about them. @return false when there are none
bool drawPictures(const QString &folder);

} // namespace client
