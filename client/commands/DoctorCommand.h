// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"

#include "client/instruments/SystemChecks.h"

namespace client {

/// Finds out why an instrument cannot be reached. Opens the port that it is given, and no other.
class DoctorCommand : public Command
{
public:
    explicit DoctorCommand(CLI::App &parent);
    int run() override;

private:
    std::string _port;
    bool _wantsJson = false;
};

} // namespace client
