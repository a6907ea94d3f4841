#include "ExperimentCheck.h"

#include "Console.h"
#include "ExperimentFile.h"
#include "VekExperimentPlan.h"

#include <algorithm>
#include <iterator>

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

/// What a limit of a model is about, by a word of its text, and the unit in which a complaint that names a value tells it.
struct SubjectRow {
    const char *word;
    const char *unit;
};

constexpr SubjectRow subjectRows[] = {
    {"voltage", " V;"}, {"current", " A;"}, {"power", " W;"}, {"resistance", " Ohm;"}, {"sampling", " s;"},
};

/// Whether a complaint that names a value says better what one without a name says.
bool isSaidBetter(const VekPlanComplaint &unnamed, const VekPlanComplaint &named)
{
    if (named.property().isEmpty() || named.stepNumber() != unnamed.stepNumber())
        return false;
    return std::any_of(std::begin(subjectRows), std::end(subjectRows), [&](const SubjectRow &row) {
        return unnamed.text().contains(QLatin1String(row.word), Qt::CaseInsensitive) &&
               named.text().contains(QLatin1String(row.unit));
    });
}

bool isNews(const ExperimentFile &file, const VekPlanComplaint &complaint, const std::vector<VekPlanComplaint> &all)
{
    if (complaint.stepNumber() == 0)
        return file.isUsable(); // what is wrong with the whole may come from what could not be read
    if (!file.elements.at(std::size_t(complaint.stepNumber()) - 1).isWhole)
        return false;
    return !complaint.property().isEmpty() ||
           std::none_of(all.begin(), all.end(),
                        [&complaint](const VekPlanComplaint &each) { return isSaidBetter(complaint, each); });
}

} // namespace

Complaints complaintsOf(const ExperimentFile &file, const VekExperimentPlan &plan)
{
    const std::vector<VekPlanComplaint> ofModel = plan.complaints();
    Complaints complaints = file.complaints;
    for (const VekPlanComplaint &each : ofModel) {
        if (isNews(file, each, ofModel))
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
