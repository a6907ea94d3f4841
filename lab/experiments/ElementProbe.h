// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

class VekPlanComplaint;

namespace lab {

struct FileElement;

/**
 * Finds out which properties of an element a complaint of a model is about, where the complaint does not say: the model
 * is asked again with one property after the other set to values that nearly every model takes. What lifts the
 * complaint is to blame.
 *
 * Asking takes a plan for each property and value, so make one only where it is needed.
 */
class ElementProbe
{
public:
    ElementProbe(const FileElement &element, int modelNumber);

    /// The properties whose change lifts a complaint, in the order of the catalogue.
    QStringList blamed(const VekPlanComplaint &complaint) const;

private:
    struct Trial {
        QString property;
        std::vector<VekPlanComplaint> complaints;
    };

    std::vector<VekPlanComplaint> _complaints; // of the element as it stands
    std::vector<Trial> _trials;
};

} // namespace lab
