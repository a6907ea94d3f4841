// SPDX-License-Identifier: MIT
#include "lab/experiments/ExperimentCheck.h"

#include "VekExperimentPlan.h"
#include "lab/experiments/ElementProbe.h"
#include "lab/experiments/ExperimentFile.h"
#include "lab/experiments/ModelWords.h"

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

namespace lab {

namespace {

/// What a model complains about in one element of a file.
class ElementComplaints
{
public:
    ElementComplaints(const FileElement &element, std::vector<VekPlanComplaint> complaints, int modelNumber)
        : _element(element), _complaints(std::move(complaints))
    {
        const bool areAllNamed = std::none_of(_complaints.begin(), _complaints.end(), isUnnamed);
        if (!areAllNamed || !element.unread.empty())
            _probe = std::make_unique<ElementProbe>(element, modelNumber);
    }

    Complaints withLines() const
    {
        Complaints placed;
        for (const VekPlanComplaint &each : _complaints) {
            if (isUnnamed(each) || dependsOnUnread(each))
                continue;
            placed.push_back({lineOf(each.property()), inWordsOfFiles(each.text())});
        }
        for (const VekPlanComplaint &each : _complaints) {
            if (isUnnamed(each))
                place(each, placed);
        }
        return placed;
    }

private:
    static bool isUnnamed(const VekPlanComplaint &complaint) { return complaint.property().isEmpty(); }

    /// The line of a property, else that of the element.
    int lineOf(const QString &property) const
    {
        const auto found = _element.propertyLines.find(property);
        return found == _element.propertyLines.end() ? _element.line : found->second;
    }

    bool isUnread(const QString &property) const { return _element.unread.count(property) > 0; }

    /// Whether a complaint about a property might not be there, had the whole element been read.
    bool dependsOnUnread(const VekPlanComplaint &complaint) const
    {
        if (_element.unread.empty())
            return false;
        const QStringList blamed = _probe->blamed(complaint) << complaint.property();
        return std::any_of(blamed.begin(), blamed.end(), [this](const QString &each) { return isUnread(each); });
    }

    /// At each property that is to blame, save where a complaint that names it says better what is wrong.
    void place(const VekPlanComplaint &complaint, Complaints &placed) const
    {
        const QStringList blamed = _probe->blamed(complaint);
        if (blamed.isEmpty())
            return addOnce({_element.line, complaint.text()}, placed);
        // Said as often as values are wrong; of values that do not go with each other the last one is told.
        auto count = std::count_if(_complaints.begin(), _complaints.end(), [&complaint](const VekPlanComplaint &each) {
            return isUnnamed(each) && each.text() == complaint.text();
        });
        QStringList known;
        for (const QString &property : blamed) {
            if (isUnread(property))
                --count; // it has no value that could be wrong
            else
                known.append(property);
        }
        for (const QString &property : known.mid(known.size() - std::clamp(int(count), 0, known.size()))) {
            if (!isNamedElsewhere(property))
                addOnce({lineOf(property), QStringLiteral("\"%1\": %2").arg(property, complaint.text())}, placed);
        }
    }

    bool isNamedElsewhere(const QString &property) const
    {
        return std::any_of(_complaints.begin(), _complaints.end(),
                           [&property](const VekPlanComplaint &each) { return each.property() == property; });
    }

    static void addOnce(const Complaint &complaint, Complaints &placed)
    {
        const bool isThere = std::any_of(placed.begin(), placed.end(), [&complaint](const Complaint &each) {
            return each.line == complaint.line && each.text == complaint.text;
        });
        if (!isThere)
            placed.push_back(complaint);
    }

    const FileElement &_element;
    std::vector<VekPlanComplaint> _complaints;
    std::unique_ptr<ElementProbe> _probe;
};

} // namespace

Complaints complaintsOf(const ExperimentFile &file, const VekExperimentPlan &plan, int modelNumber)
{
    Complaints complaints = file.complaints;
    std::map<int, std::vector<VekPlanComplaint>> byStep;
    for (const VekPlanComplaint &each : plan.complaints()) {
        if (each.stepNumber() != 0)
            byStep[each.stepNumber()].push_back(each);
        else if (file.isUsable()) // what is wrong with the whole may come from what could not be read
            complaints.push_back({0, each.text()});
    }
    for (auto &[step, ofStep] : byStep) {
        const FileElement &element = file.elements.at(std::size_t(step) - 1);
        const Complaints placed = ElementComplaints(element, std::move(ofStep), modelNumber).withLines();
        complaints.insert(complaints.end(), placed.begin(), placed.end());
    }
    std::stable_sort(complaints.begin(), complaints.end(),
                     [](const Complaint &left, const Complaint &right) { return left.line < right.line; });
    return complaints;
}

} // namespace lab
