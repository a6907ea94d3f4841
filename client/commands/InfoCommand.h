// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"

namespace client {

/// Connects to an instrument and prints what it says of itself.
class InfoCommand : public Command
{
public:
    explicit InfoCommand(CLI::App &parent);
    int run() override;

private:
    std::string _port;
    bool _wantsJson = false;
};

} // namespace client
