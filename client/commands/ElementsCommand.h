// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"

namespace client {

/// Shows the vocabulary of experiment files.
class ElementsCommand : public Command
{
public:
    explicit ElementsCommand(CLI::App &parent);
    int run() override;

private:
    std::string _name;
    bool _wantsSchema = false;
    bool _wantsMarkdown = false;
};

} // namespace client
