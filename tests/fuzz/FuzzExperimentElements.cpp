// SPDX-License-Identifier: MIT
// Elements of any kind with any numbers, in groups: what a model accepts can be uploaded, and nothing else happens.

#include "FuzzTarget.h"
#include "VekAbstractElement.h"
#include "VekExperiment.h"
#include "VekExperimentPlan.h"
#include "lab/experiments/ElementCatalogue.h"

#include <cmath>

namespace {

double valueFor(const lab::PropertyRow &property, FuzzInput &input)
{
    switch (property.kind) {
    case lab::PropertyKind::Flag:
    case lab::PropertyKind::Automatic:
        return input.flag() ? 1.0 : 0.0;
    case lab::PropertyKind::Count:
        return input.take<quint32>();
    case lab::PropertyKind::VoltageRange:
        return input.take<quint8>();
    case lab::PropertyKind::Quantity:
        return input.number();
    }
    return 0.0;
}

void append(VekExperiment &experiment, FuzzInput &input)
{
    const lab::ElementRow &row = input.oneOf(lab::elementCatalogue());
    const auto element = row.make();
    for (const lab::PropertyRow &property : row.properties) {
        const double value = valueFor(property, input);
        property.set(*element, value);
    }
    const auto repeats = input.take<quint16>();
    mustHold(experiment.appendElement(*element, repeats) == (repeats > 0), "an element runs at least once");
}

VekExperiment compose(FuzzInput &input)
{
    VekExperiment experiment;
    for (int left = 1 + input.below(4); left > 0; --left) {
        append(experiment, input);
        if (input.below(4) == 0) {
            const VekExperiment group = experiment;
            experiment.appendSubExperiment(group, input.take<quint32>());
        }
    }
    return experiment;
}

void mustBeUploadable(const std::vector<VekPlannedNode> &nodes)
{
    mustHold(!nodes.empty() && nodes.back().typeName() == QLatin1String("End"), "an experiment has an end");
    int step = 0;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        mustHold(nodes[i].stepNumber() >= step, "steps are numbered upwards");
        step = nodes[i].stepNumber();
        mustHold(nodes[i].loopTarget() < int(i), "a loop goes back");
        mustHold(!(nodes[i].samplingInterval() < 0.0), "no interval is negative");
        mustHold(!(nodes[i].timeLimit() < 0.0), "no time is negative");
        mustHold(!(nodes[i].expectedDuration() < 0.0), "no node takes less than no time");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzProcess::instance();
    FuzzInput input(data, size);
    static const QStringList models = VekExperimentPlan::modelNames();
    const QString model = models.at(input.below(models.size()));
    const auto plan = VekExperimentPlan::forModel(compose(input), model);
    if (plan.complaints().empty())
        mustBeUploadable(plan.nodes());
    plan.expectedDuration();
    return 0;
}
