// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/cells/Cell.h"

#include <QString>

/// A cell as a command line describes it, or what is wrong with the description.
struct CellOrError {
    std::unique_ptr<Cell> cell;
    QString error;
};

/**
 * Makes a cell from "KIND" or "KIND:NAME=VALUE,NAME=VALUE", for example "rc:Rs=10,R=1000,C=1e-3".
 *
 * Values are SI numbers; "inf" is one. What is left out has the default that cellHelp() shows.
 */
CellOrError makeCell(const QString &description);

/// One line for each kind with its parameters and defaults.
QString cellHelp();
