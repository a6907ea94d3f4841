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

/// All reasons at once; of one code, since a check runs only when those before it have nothing to say.
using ExperimentComplaints = std::vector<ExperimentComplaint>;

/// The result of a request: Success without complaints, else their code with all texts, one a line.
VekErrorCode resultOf(const ExperimentComplaints &complaints);
