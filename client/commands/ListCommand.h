// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"

namespace client {

/// Lists the serial ports, without opening any unless it is asked to, and then those of instruments alone, or named ones.
class ListCommand : public Command
{
public:
    explicit ListCommand(CLI::App &parent);
    int run() override;

private:
    bool isNamed(const QString &location) const;

    std::vector<std::string> _named;
    bool _asks = false;
    bool _wantsJson = false;
};

} // namespace client
