// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"

#include <vector>

namespace client {

class Connection;

/// Ends what an instrument runs, whoever started it.
class StopCommand : public Command
{
public:
    explicit StopCommand(CLI::App &parent);
    int run() override;

private:
    /// The channels that are meant; empty, after a message, where that cannot be told.
    std::vector<int> channelsMeant(const Connection &connection) const;

    std::string _port;
    std::vector<int> _channels;
    bool _stopsAll = false;
};

} // namespace client
