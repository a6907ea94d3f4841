// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/UpdatableInstrument.h"

/// What the command line asks for.
struct Options {
    UpdatableInstrument::Setup setup;
    std::vector<std::unique_ptr<Cell>> cells; ///< one for each channel
    QString truthPath;
    QString passesPath;
    bool wantsStatistics = false;
};

/**
 * Reads the command line. What asks for words alone (help, version, lists) and what makes no sense ends here: the words
 * go to the standard output, one line of complaint to the standard error.
 *
 * @return the options, or nothing with @p exitCode set: 0 after words, 2 after a complaint
 */
std::optional<Options> parseOptions(int argc, char **argv, int &exitCode);
