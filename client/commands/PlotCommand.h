// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"

namespace client {

/// Draws the pictures of a recorded run again.
class PlotCommand : public Command
{
public:
    explicit PlotCommand(CLI::App &parent);
    bool drawsPictures() const override;
    int run() override;

private:
    std::vector<std::string> _folders;
};

} // namespace client
