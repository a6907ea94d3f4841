// SPDX-License-Identifier: MIT
#pragma once

#include "lab/notation/Complaint.h"

class VekExperimentPlan;

namespace lab {

struct ExperimentFile;

/**
 * What is wrong with a file, and what the plan of its experiment complains about, each with its line as far as one is
 * to blame. What a model says of values that could not be read is left out.
 *
 * @param modelNumber the one that the plan is for
 */
Complaints complaintsOf(const ExperimentFile &file, const VekExperimentPlan &plan, int modelNumber);

} // namespace lab
