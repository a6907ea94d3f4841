// SPDX-License-Identifier: MIT
#pragma once

#include "lab/records/RunData.h"

#include <QString>

namespace lab {

struct RunSummary;

/// Reads dc.csv once, thinned, into the samples and segments of @p run, whose experiment has been read before.
void readSamples(const QString &path, const RunSummary &summary, RunData &run);

} // namespace lab
