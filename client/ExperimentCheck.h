#pragma once

#include "Complaint.h"

namespace client {

struct ExperimentFile;

/**
 * The limits of a model that a usable file breaks, each with the line of its element.
 *
 * @p model is one of VekExperimentPlan::modelNames().
 */
Complaints complaintsOfModel(const ExperimentFile &file, const QString &model);

/// Writes complaints to the console, each as "file:line: text".
void tellComplaints(const ExperimentFile &file, const Complaints &complaints);

} // namespace client
