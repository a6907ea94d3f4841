#include "ExperimentCheck.h"

#include "Console.h"
#include "ExperimentFile.h"
#include "VekExperimentPlan.h"

namespace client {

namespace {

/// The line of the property that is to blame, else that of its element, else none.
int lineOf(const ExperimentFile &file, const VekPlanComplaint &complaint)
{
    if (complaint.stepNumber() == 0)
        return 0;
    const FileElement &element = file.elements.at(std::size_t(complaint.stepNumber()) - 1);
    const auto property = element.propertyLines.find(complaint.property());
    return property == element.propertyLines.end() ? element.line : property->second;
}

} // namespace

Complaints complaintsOf(const ExperimentFile &file, const VekExperimentPlan &plan)
{
    Complaints complaints;
    for (const VekPlanComplaint &each : plan.complaints())
        complaints.push_back({lineOf(file, each), each.text()});
    return complaints;
}

void tellComplaints(const ExperimentFile &file, const Complaints &complaints)
{
    for (const Complaint &complaint : complaints)
        Console::instance().complaint(withPlace(file.path, complaint));
}

} // namespace client
