#include "ExperimentCheck.h"

#include "Console.h"
#include "ExperimentFile.h"
#include "VekExperimentPlan.h"

#include <algorithm>
#include <set>

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

/// Whether a complaint says something that others do not: those that name a value say it better than those that do not.
bool isNews(const ExperimentFile &file, const VekPlanComplaint &complaint, const std::set<int> &stepsWithNames)
{
    if (complaint.stepNumber() == 0)
        return file.isUsable(); // what is wrong with the whole may come from what could not be read
    const bool isNamed = !complaint.property().isEmpty() || stepsWithNames.count(complaint.stepNumber()) == 0;
    return isNamed && file.elements.at(std::size_t(complaint.stepNumber()) - 1).isWhole;
}

} // namespace

Complaints complaintsOf(const ExperimentFile &file, const VekExperimentPlan &plan)
{
    const std::vector<VekPlanComplaint> ofModel = plan.complaints();
    std::set<int> stepsWithNames;
    for (const VekPlanComplaint &each : ofModel) {
        if (!each.property().isEmpty())
            stepsWithNames.insert(each.stepNumber());
    }
    Complaints complaints = file.complaints;
    for (const VekPlanComplaint &each : ofModel) {
        if (isNews(file, each, stepsWithNames))
            complaints.push_back({lineOf(file, each), each.text()});
    }
    std::stable_sort(complaints.begin(), complaints.end(),
                     [](const Complaint &left, const Complaint &right) { return left.line < right.line; });
    return complaints;
}

void tellComplaints(const ExperimentFile &file, const Complaints &complaints)
{
    for (const Complaint &complaint : complaints)
        Console::instance().complaint(withPlace(file.path, complaint));
}

} // namespace client
