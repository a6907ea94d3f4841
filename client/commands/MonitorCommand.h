// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"

namespace client {

/// Prints the samples of an idle channel as they come.
class MonitorCommand : public Command
{
public:
    explicit MonitorCommand(CLI::App &parent);
    int run() override;

private:
    std::string _port;
    int _channel = 0;
    std::optional<double> _duration;
    std::optional<int> _count;
};

} // namespace client
