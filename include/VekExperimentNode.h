// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QString>

/// Announces that the instrument has begun another element of the experiment. A plain value; use it on any thread.
struct VekExperimentNode {
    QString stepName;      ///< For example "Constant Current".
    int stepNumber = 0;    ///< Number of the element in the experiment, from 1.
    int cycleNumber = 0;   ///< How many times this step has been entered in this experiment, from 1.
    int substepNumber = 0; ///< Position inside the step, from 0.
};

Q_DECLARE_METATYPE(VekExperimentNode)
