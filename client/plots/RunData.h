#pragma once

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
    const Column &column(const QString &heading) const;
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

/// What pictures are drawn from: the record of one run.
struct RunData {
    QString title;        ///< the experiment's name
    QStringList elements; ///< the element classes of the experiment, by step number from 1
    Table dc;
    Table ac;
};

/// Reads the folder of a run. @return nothing when it holds none
std::optional<RunData> readRun(const QString &folder);

} // namespace client
