// SPDX-License-Identifier: MIT
#pragma once

#include "VekErrorCode.h"

#include <QString>

#include <vector>

/// One reason why an experiment is refused.
struct ExperimentComplaint {
    VekErrorCode::ErrorCode code;
    int stepNumber = 0; ///< number of the element that is to blame, from 1; 0 where it is the experiment as a whole
    QString property;   ///< of that element, as its getter names it; empty where no single one is to blame
    QString text;       ///< for people, with the name of the model filled in
};

/// All reasons at once, by the checks that found them: size, limits of the model, values that cannot be meant.
using ExperimentComplaints = std::vector<ExperimentComplaint>;

/// The result of a request: Success without complaints, else the code of the first with all texts of that code, a line each.
VekErrorCode resultOf(const ExperimentComplaints &complaints);
