// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"

namespace client {

/// Brings instruments to the firmware that the library carries.
class UpdateCommand : public Command
{
public:
    explicit UpdateCommand(CLI::App &parent);
    int run() override;

private:
    ExitCode updateOne();
    ExitCode updateAll();

    std::string _port;
    bool _updatesAll = false;
};

} // namespace client
