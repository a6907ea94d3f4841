// SPDX-License-Identifier: MIT
#include "lab/runs/RunProgress.h"

#include "lab/notation/Units.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace lab {

RunProgress::RunProgress(const VekExperimentPlan &plan) : _total(plan.expectedDuration())
{
    for (const VekPlannedNode &node : plan.nodes()) {
        const auto number = static_cast<std::size_t>(std::max(node.stepNumber(), 0));
        _steps.resize(std::max(_steps.size(), number + 1));
        if (node.expectedDuration() == 0.0)
            continue; // directs the others
        Step &step = _steps[number];
        step.seconds += node.runs() * node.expectedDuration();
        // What a step repeats inside of itself runs more often than the step is begun.
        step.entries = step.entries == 0.0 ? node.runs() : std::min(step.entries, node.runs());
    }
}

void RunProgress::begin(const VekExperimentNode &node, double time)
{
    const bool isSameEntry = node.stepNumber == _node.stepNumber && node.cycleNumber == _node.cycleNumber;
    if (isSameEntry) {
        _node = node;
        return;
    }
    _doneBefore += secondsOfOneEntry(_node.stepNumber);
    _node = node;
    _begin = time;
}

std::optional<double> RunProgress::secondsLeft(double time) const
{
    if (!std::isfinite(_total) || _total <= 0.0)
        return {};
    const double ofThisEntry = std::clamp(time - _begin, 0.0, secondsOfOneEntry(_node.stepNumber));
    return std::max(_total - _doneBefore - ofThisEntry, 0.0);
}

std::optional<double> RunProgress::shareDone(double time) const
{
    const std::optional<double> left = secondsLeft(time);
    return left ? std::optional(1.0 - *left / _total) : std::nullopt;
}

int RunProgress::cycleCount() const
{
    const Step *const present = step(_node.stepNumber);
    return present && std::isfinite(present->entries) ? int(present->entries) : 0;
}

const RunProgress::Step *RunProgress::step(int number) const
{
    return number > 0 && std::size_t(number) < _steps.size() ? &_steps[std::size_t(number)] : nullptr;
}

double RunProgress::secondsOfOneEntry(int number) const
{
    const Step *const found = step(number);
    return found && found->entries > 0.0 ? found->seconds / found->entries : 0.0;
}

QString progressWords(double shareDone, double secondsLeft)
{
    const QDateTime now = QDateTime::currentDateTime();
    const QDateTime end = now.addMSecs(qRound64(secondsLeft * 1e3));
    const QString format = end.date() == now.date() ? QStringLiteral("HH:mm") : QStringLiteral("yyyy-MM-dd HH:mm");
    return QStringLiteral("%1 %, %2 left, ends at %3")
        .arg(QString::number(int(100.0 * shareDone)), formatQuantity(std::ceil(secondsLeft), Dimension::Time),
             end.toString(format));
}

} // namespace lab
