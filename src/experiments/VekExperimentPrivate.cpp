// SPDX-License-Identifier: MIT
#include "experiments/VekExperimentPrivate.h"

#include <utility>

VekExperimentPrivate::VekExperimentPrivate(std::shared_ptr<CustomExperimentRunner> runner)
    : _runner(std::move(runner)), _experiment(_runner)
{
}
