#pragma once

#include "commands/Command.h"

namespace client {

/// Lists the serial ports, without opening any unless it is asked to.
class ListCommand : public Command
{
public:
    explicit ListCommand(CLI::App &parent);
    int run() override;

private:
    bool _asks = false;
    bool _wantsJson = false;
};

} // namespace client
