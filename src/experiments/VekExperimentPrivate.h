// SPDX-License-Identifier: MIT
#pragma once

#include "elements/CustomExperimentRunner.h"

#include <memory>

/// The private half of VekExperiment: one runner, reachable as what grows and as what a handler runs.
class VekExperimentPrivate
{
public:
    explicit VekExperimentPrivate(std::shared_ptr<CustomExperimentRunner> runner);

    std::shared_ptr<CustomExperimentRunner> getRunner() const { return _runner; }
    /// What the handler takes.
    std::shared_ptr<AbstractExperiment> getExperiment() const { return _experiment; }

private:
    std::shared_ptr<CustomExperimentRunner> _runner;
    std::shared_ptr<AbstractExperiment> _experiment; // the same object
};
