// SPDX-License-Identifier: MIT
#include "lab/records/TableReader.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace lab {

namespace {

constexpr std::size_t bufferSize = 256 * 1024; ///< stays in the cache of a processor
constexpr std::size_t absent = std::numeric_limits<std::size_t>::max();

std::size_t columnOf(const std::vector<std::string_view> &headings, const char *heading)
{
    const auto found = std::find(headings.begin(), headings.end(), heading);
    return found == headings.end() ? absent : static_cast<std::size_t>(found - headings.begin());
}

} // namespace

TableReader::TableReader(const QString &path, const std::vector<HeadingRow> &headings)
    : _file(path), _buffer(bufferSize)
{
    if (!_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !takeLine())
        return;
    _fields.resize(static_cast<std::size_t>(std::count(_line.begin(), _line.end(), ',')) + 1);
    splitLine();
    for (const HeadingRow &row : headings) {
        _places.resize(std::max(_places.size(), static_cast<std::size_t>(row.quantity) + 1), {0, absent, 1.0});
        Place &place = _places[static_cast<std::size_t>(row.quantity)];
        if (place.column == absent)
            place = {row.quantity, columnOf(_fields, row.heading), row.factor};
    }
}

bool TableReader::next()
{
    while (true) {
        _row += _isBeforeFirst ? 0 : 1;
        _isBeforeFirst = false;
        if (!isOpen() || !takeLine())
            return false;
        const bool isWhole = splitLine() && !_hasLostStart;
        _hasLostStart = false;
        if (isWhole)
            return true;
        ++_damagedRows;
    }
}

std::string_view TableReader::field(int quantity) const
{
    const Place *place = placeOf(quantity);
    return place ? _fields[place->column] : std::string_view();
}

double TableReader::number(int quantity) const
{
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    const Place *place = placeOf(quantity);
    if (!place)
        return none;
    const std::string_view text = _fields[place->column];
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() ? value * place->factor : none;
}

const TableReader::Place *TableReader::placeOf(int quantity) const
{
    const auto index = static_cast<std::size_t>(quantity);
    return index < _places.size() && _places[index].column != absent ? &_places[index] : nullptr;
}

bool TableReader::takeLine()
{
    std::size_t length = 0;
    while ((length = _unread.find('\n')) == std::string_view::npos) {
        if (!refill())
            return false;
    }
    _line = _unread.substr(0, length);
    _unread.remove_prefix(length + 1);
    if (!_line.empty() && _line.back() == '\r')
        _line.remove_suffix(1);
    return true;
}

/// Reads on behind what is unread, which moves to the front; a line that fills the buffer loses its start.
bool TableReader::refill()
{
    if (_unread.size() == _buffer.size()) {
        _unread = {};
        _hasLostStart = true;
    }
    std::copy(_unread.begin(), _unread.end(), _buffer.begin()); // to the front of it, hence forward
    const qint64 count =
        _file.read(_buffer.data() + _unread.size(), static_cast<qint64>(_buffer.size() - _unread.size()));
    _unread = {_buffer.data(), _unread.size() + static_cast<std::size_t>(std::max(qint64(0), count))};
    return count > 0;
}

/// @return false for another number of fields than the headings have
bool TableReader::splitLine()
{
    std::string_view rest = _line;
    for (std::size_t index = 0; index + 1 < _fields.size(); ++index) {
        const void *comma = std::memchr(rest.data(), ',', rest.size());
        if (!comma)
            return false;
        const auto length = static_cast<std::size_t>(static_cast<const char *>(comma) - rest.data());
        _fields[index] = rest.substr(0, length);
        rest.remove_prefix(length + 1);
    }
    _fields.back() = rest;
    return !std::memchr(rest.data(), ',', rest.size());
}

} // namespace lab
