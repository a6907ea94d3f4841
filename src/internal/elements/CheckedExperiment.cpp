// SPDX-License-Identifier: MIT
#include "elements/CheckedExperiment.h"

#include "elements/AbstractExperiment.h"
#include "elements/ExperimentSize.h"

CheckedExperiment checkAndExpand(AbstractExperiment &experiment, const CalibrationData &calibration,
                                 const HardwareVersion &hardware)
{
    const ExperimentComplaints complaints = experiment.findComplaints(hardware);
    if (!complaints.empty())
        return {complaints, NodeList()};
    const NodeList nodes = experiment.GetNodesData(calibration, hardware);
    const ExperimentComplaints size = ExperimentSize::complaintsOf(nodes);
    return {size, size.empty() ? nodes : NodeList()};
}
