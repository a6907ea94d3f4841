// SPDX-License-Identifier: MIT
// Experiment files of the client: any text ends in complaints with their lines, or in an experiment.

#include "FuzzTarget.h"
#include "VekExperimentPlan.h"
#include "lab/experiments/ExperimentCheck.h"
#include "lab/experiments/ExperimentFile.h"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzProcess::instance();
    const QByteArray text(reinterpret_cast<const char *>(data), int(size));
    const lab::ExperimentFile file = lab::parseExperiment(text, QStringLiteral("fuzz.json"));
    const int lines = text.count('\n') + 1;
    for (const lab::Complaint &complaint : file.complaints) {
        mustHold(1 <= complaint.line && complaint.line <= lines, "a complaint names a line of the file");
        mustHold(!complaint.text.isEmpty(), "a complaint says what is wrong");
    }
    if (!file.isUsable())
        return 0;
    const QString model = QStringLiteral("Alder_2_5");
    const auto plan = VekExperimentPlan::forModel(file.experiment, model);
    const auto complaints = lab::complaintsOf(file, plan, VekExperimentPlan::modelNumber(model));
    mustHold(complaints.empty() == plan.complaints().empty(), "what a plan complains about is told");
    mustHold(plan.nodes().empty() != complaints.empty(), "an experiment is refused, or it has steps");
    return 0;
}
