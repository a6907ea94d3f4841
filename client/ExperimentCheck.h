#pragma once

#include "Complaint.h"

class VekExperimentPlan;

namespace client {

struct ExperimentFile;

/// What a plan of a usable file's experiment complains about, each with its line as far as one is to blame.
Complaints complaintsOf(const ExperimentFile &file, const VekExperimentPlan &plan);

/// Writes complaints to the console, each as "file:line: text".
void tellComplaints(const ExperimentFile &file, const Complaints &complaints);

} // namespace client
