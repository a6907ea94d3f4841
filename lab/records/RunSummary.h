// SPDX-License-Identifier: MIT
#pragma once

#include "lab/experiments/ExperimentFile.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace lab {

/// Where in the tables an element of the experiment begins, as the instrument announced it.
struct ElementMark {
    QString stepName;
    int step = 0;  ///< number of the element, from 1
    int entry = 0; ///< how many times its step has been entered
    std::size_t dcRow = 0;
    std::size_t acRow = 0;
};

/// What run.json says, as far as pictures need it.
struct RunSummary {
    QString title; ///< the experiment's name
    ExperimentFile experiment;
    std::vector<ElementMark> marks; ///< their rows never descend
    bool isCompleted = false;       ///< the experiment came to its own end
};

/**
 * Reads run.json. Whatever is damaged is left out.
 *
 * @param oddities takes a sentence for each thing that is not as a record has it
 */
RunSummary readSummary(const QString &path, QStringList &oddities);

} // namespace lab
