// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"

namespace client {

/// Checks an experiment file against a model and shows what the instrument would execute.
class PlanCommand : public Command
{
public:
    explicit PlanCommand(CLI::App &parent);
    int run() override;

private:
    std::string _file;
    std::string _model;
    bool _wantsJson = false;
};

} // namespace client
