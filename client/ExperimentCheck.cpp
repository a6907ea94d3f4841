#include "ExperimentCheck.h"

#include "Console.h"
#include "ExperimentFile.h"
#include "VekExperimentPlan.h"

namespace client {

Complaints complaintsOfModel(const ExperimentFile &file, const QString &model)
{
    Complaints complaints;
    for (const FileElement &each : file.elements) {
        VekExperiment alone;
        alone.appendElement(*each.element, 1);
        for (const QString &text : VekExperimentPlan::forModel(alone, model).complaints())
            complaints.push_back({each.line, text});
    }
    return complaints;
}

void tellComplaints(const ExperimentFile &file, const Complaints &complaints)
{
    for (const Complaint &complaint : complaints)
        Console::instance().complaint(withPlace(file.path, complaint));
}

} // namespace client
