// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QString>

#include <string_view>
#include <vector>

namespace lab {

/// One way in which tables write a quantity. Of the rows for one quantity the first counts whose heading is there.
struct HeadingRow {
    int quantity; ///< the caller's number for it, from 0
    const char *heading;
    double factor = 1.0; ///< from the unit of the heading to that of the caller
};

/**
 * Reads a CSV file with one line of headings row by row, in little memory however long it is.
 *
 * A line with another number of fields than the headings, as a crash leaves it, is passed over but counts as a row, and
 * so does one of more than a quarter of a megabyte. A last line without its end is left out.
 */
class TableReader
{
public:
    TableReader(const QString &path, const std::vector<HeadingRow> &headings);

    bool isOpen() const { return _file.isOpen(); }
    bool has(int quantity) const { return placeOf(quantity) != nullptr; }
    /// Goes to the next whole row. @return false at the end
    bool next();
    /// Number of the row, from 0; behind the end the number of rows.
    std::size_t row() const { return _row; }
    std::size_t damagedRows() const { return _damagedRows; }
    /// A field as it stands; empty for a quantity that the table does not have.
    std::string_view field(int quantity) const;
    /// In the unit of the caller; NaN for what is no number.
    double number(int quantity) const;

private:
    struct Place {
        int quantity;
        std::size_t column;
        double factor;
    };

    const Place *placeOf(int quantity) const;
    bool takeLine();
    bool refill();
    bool splitLine();

    QFile _file;
    std::vector<char> _buffer;
    std::string_view _unread; // in _buffer
    std::string_view _line;
    std::vector<std::string_view> _fields;
    std::vector<Place> _places; // by quantity
    std::size_t _row = 0;
    std::size_t _damagedRows = 0;
    bool _isBeforeFirst = true;
    bool _hasLostStart = false; // of the line to come
};

} // namespace lab
