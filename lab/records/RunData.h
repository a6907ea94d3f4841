// SPDX-License-Identifier: MIT
#pragma once

#include "lab/experiments/ExperimentFile.h"
#include "lab/records/Sample.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace lab {

/// A stretch of samples between two announcements of the instrument.
struct Segment {
    QString stepName; ///< empty where the record does not have it
    int step = 0;     ///< number of the element, from 1
    int cycle = 0;    ///< as the table counts
    int entry = 0;    ///< differs from that of the segment before when the step was entered anew
    int repeat = 1;   ///< how many times the element has run, this time included
    bool isQuiet = false;
    std::size_t begin = 0; ///< first of its samples
    std::size_t end = 0;   ///< the one behind its last
};

/// One row of ac.csv, as far as pictures need it.
struct ImpedancePoint {
    double frequency; ///< hertz
    double real;      ///< ohms, like the next two
    double imaginary;
    double magnitude;
    double phaseDeg;
    double bias; ///< volts
    int step;
    bool opensSweep; ///< not measured in one sweep with the point before
};

/// What pictures are drawn from: the record of one run.
struct RunData {
    QString title; ///< the experiment's name
    ExperimentFile experiment;
    bool isCompleted = false; ///< the experiment came to its own end
    std::vector<Sample> dc;   ///< thinned where there are very many
    std::vector<ImpedancePoint> ac;
    std::vector<Segment> segments; ///< of the DC samples, in their order; none is empty
    QStringList oddities;          ///< what is not as a record has it, a sentence each

    /// The element of a step number, from 1; null without one.
    const FileElement *element(int step) const;
};

/// Reads the folder of a run. @return nothing when it holds none
std::optional<RunData> readRun(const QString &folder);

} // namespace lab
