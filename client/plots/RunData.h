#pragma once

#include "ExperimentFile.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace client {

using Column = std::vector<double>;

/// The columns of a table of numbers, by heading.
struct Table {
    QHash<QString, Column> columns;

    bool isEmpty() const;
    /// Empty for a heading that the table does not have.
    const Column &column(const char *heading) const;
};

/**
 * Reads a CSV file with one line of headings.
 *
 * A last line without its end, as a killed program leaves it, is left out; a field that is no number counts as NaN.
 *
 * @param headings the columns that are wanted
 * @return nothing when the file cannot be read
 */
std::optional<Table> readTable(const QString &path, const QStringList &headings);

/// A stretch of samples between two announcements of the instrument.
struct Segment {
    QString stepName; ///< empty where the record does not have it
    int step = 0;     ///< number of the element, from 1
    int cycle = 0;
    int substep = 0;
    std::size_t begin = 0; ///< first row among the DC samples
    std::size_t end = 0;   ///< the row behind the last one
};

/// What pictures are drawn from: the record of one run.
struct RunData {
    QString title; ///< the experiment's name
    ExperimentFile experiment;
    Table dc;
    Table ac;
    std::vector<Segment> segments; ///< of the DC samples, in their order; none is empty

    /// The element of a step number, from 1; null without one.
    const FileElement *element(int step) const;
};

/// Reads the folder of a run. @return nothing when it holds none
std::optional<RunData> readRun(const QString &folder);

} // namespace client
