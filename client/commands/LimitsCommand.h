// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"

namespace client {

/// Shows the measuring ranges of channels and tries safety limits on them.
class LimitsCommand : public Command
{
public:
    explicit LimitsCommand(CLI::App &parent);
    int run() override;

private:
    std::string _port;
    std::vector<int> _channels;
    lab::SafetyLimits _limits;
    bool _wantsJson = false;
};

} // namespace client
