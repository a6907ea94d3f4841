// SPDX-License-Identifier: MIT
#include "lab/notation/JsonText.h"

#include <nlohmann/json.hpp>

#include <iterator>

namespace lab {

namespace {

/// Objects and lists within each other; what walks over the tree goes as deep, and its stack must hold out.
constexpr std::size_t deepestNesting = 200;

/// Where in the text the parser stands.
struct Position {
    int line = 1;
    int lineBefore = 1; ///< without the last character: a number is known to end only behind its end
};

/// Walks over the text for the parser and counts its lines.
class CountingIterator
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char *;
    using reference = const char &;

    CountingIterator(const char *at, Position *position) : _at(at), _position(position) {}

    reference operator*() const { return *_at; }
    CountingIterator &operator++()
    {
        _position->lineBefore = _position->line;
        if (*_at == '\n')
            ++_position->line;
        ++_at;
        return *this;
    }
    bool operator==(const CountingIterator &other) const { return _at == other._at; }
    bool operator!=(const CountingIterator &other) const { return _at != other._at; }

private:
    const char *_at;
    Position *_position;
};

/// The last thing in front of a place that is not blank; '\0' without any.
char lastBefore(const QByteArray &text, int at)
{
    const QByteArray front = text.left(at).trimmed();
    return front.isEmpty() ? '\0' : front[front.size() - 1];
}

/// What people write that is no JSON, by the place where the parser gave up; empty for others.
QString mistakeAt(const QByteArray &text, int at)
{
    if (text.mid(at, 2) == "/*" || text.mid(at - 1, 2) == "/*")
        return QStringLiteral("the comment that begins here with \"/*\" has no end: \"*/\"");
    if (text.mid(at, 1) != ",")
        return {};
    const char previous = lastBefore(text, at);
    if (previous == ',')
        return QStringLiteral("two commas with nothing between them: take one out");
    if (previous == '[' || previous == '{')
        return QStringLiteral("a comma with nothing in front of it: take it out");
    return {};
}

/// The parser's own text has its name and a position in front: what is wrong comes behind the last of them.
QString parserWords(const char *what)
{
    const QString text = QString::fromUtf8(what);
    const int begin = text.indexOf(QLatin1String("syntax error"));
    return begin < 0 ? text : text.mid(begin);
}

/// Takes the parser's events and grows a JsonValue of them.
class TreeBuilder : public nlohmann::json_sax<nlohmann::json>
{
public:
    TreeBuilder(const QByteArray &text, const Position &position, Complaints &complaints)
        : _text(text), _position(position), _complaints(complaints)
    {
    }

    JsonValue takeRoot() { return std::move(_root); }

    bool null() override { return add({}); }
    bool boolean(bool value) override
    {
        JsonValue made = ofKind(JsonValue::Kind::Boolean);
        made.boolean = value;
        return add(std::move(made));
    }
    bool number_integer(number_integer_t value) override { return addNumber(static_cast<double>(value)); }
    bool number_unsigned(number_unsigned_t value) override { return addNumber(static_cast<double>(value)); }
    bool number_float(number_float_t value, const string_t &) override { return addNumber(value); }
    bool string(string_t &value) override
    {
        JsonValue made = ofKind(JsonValue::Kind::Text);
        made.text = QString::fromStdString(value);
        return add(std::move(made));
    }
    bool binary(binary_t &) override { return false; }
    bool start_object(std::size_t) override { return open(JsonValue::Kind::Object); }
    bool key(string_t &name) override
    {
        _open.back()->members.push_back({QString::fromStdString(name), _position.line, {}});
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(JsonValue::Kind::List); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t read, const std::string &, const nlohmann::detail::exception &error) override
    {
        const QString mistake = mistakeAt(_text, int(read) - 1);
        _complaints.push_back({_position.lineBefore, mistake.isEmpty() ? parserWords(error.what()) : mistake});
        return false;
    }

private:
    JsonValue ofKind(JsonValue::Kind kind) const
    {
        JsonValue made;
        made.kind = kind;
        made.line = _position.line;
        return made;
    }
    bool addNumber(double value)
    {
        JsonValue made = ofKind(JsonValue::Kind::Number);
        made.number = value;
        made.line = _position.lineBefore;
        return add(std::move(made));
    }
    JsonValue &place(JsonValue value)
    {
        if (_open.empty())
            return _root = std::move(value);
        JsonValue &parent = *_open.back();
        if (parent.kind == JsonValue::Kind::Object)
            return parent.members.back().value = std::move(value);
        parent.items.push_back(std::move(value));
        return parent.items.back();
    }
    bool add(JsonValue value)
    {
        if (value.line == 0)
            value.line = _position.line;
        place(std::move(value));
        return true;
    }
    bool open(JsonValue::Kind kind)
    {
        if (_open.size() == deepestNesting) {
            _complaints.push_back(
                {_position.line,
                 QStringLiteral("more than %1 objects and lists stand within each other").arg(deepestNesting)});
            return false;
        }
        _open.push_back(&place(ofKind(kind)));
        return true;
    }
    bool close()
    {
        _open.pop_back();
        return true;
    }

    const QByteArray &_text;
    const Position &_position;
    Complaints &_complaints;
    JsonValue _root;
    std::vector<JsonValue *> _open; // from the root to the innermost; only the last one grows, so none of them moves
};

/// The position behind a comment that begins here; the same position where none does, or one without an end.
int behindComment(const QByteArray &text, int begin)
{
    if (text.mid(begin, 2) == "//") {
        const int end = text.indexOf('\n', begin);
        return end < 0 ? text.size() : end;
    }
    if (text.mid(begin, 2) == "/*") {
        const int end = text.indexOf("*/", begin + 2);
        return end < 0 ? begin : end + 2;
    }
    return begin;
}

/// The position behind a text in quotes that begins here.
int behindQuotes(const QByteArray &text, int begin)
{
    int at = begin + 1;
    while (at < text.size() && text[at] != '"')
        at += text[at] == '\\' ? 2 : 1;
    return qMin(at + 1, text.size());
}

void blank(QByteArray &text, int begin, int end)
{
    for (int at = begin; at < end; ++at) {
        if (text[at] != '\n')
            text[at] = ' ';
    }
}

bool isBlank(char character)
{
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

} // namespace

QByteArray plainJson(const QByteArray &text)
{
    QByteArray plain = text;
    int comma = -1; // the last thing before, if it is a comma behind an item
    char before = '[';
    for (int at = 0; at < plain.size();) {
        const int behind = behindComment(plain, at);
        const char character = plain[at];
        if (behind > at) {
            blank(plain, at, behind);
            at = behind;
            continue;
        }
        if (!isBlank(character)) {
            if ((character == ']' || character == '}') && comma >= 0)
                plain[comma] = ' ';
            const bool isBehindItem = before != '[' && before != '{' && before != ',';
            comma = character == ',' && isBehindItem ? at : -1;
            before = character;
        }
        at = character == '"' ? behindQuotes(plain, at) : at + 1;
    }
    return plain;
}

const JsonMember *JsonValue::find(const QString &name) const
{
    for (const JsonMember &member : members) {
        if (member.name == name)
            return &member;
    }
    return nullptr;
}

QString kindName(JsonValue::Kind kind)
{
    switch (kind) {
    case JsonValue::Kind::Null:
        return QStringLiteral("null");
    case JsonValue::Kind::Boolean:
        return QStringLiteral("true or false");
    case JsonValue::Kind::Number:
        return QStringLiteral("a number");
    case JsonValue::Kind::Text:
        return QStringLiteral("a text");
    case JsonValue::Kind::List:
        return QStringLiteral("a list");
    case JsonValue::Kind::Object:
        return QStringLiteral("an object");
    }
    return {};
}

std::optional<JsonValue> parseJson(const QByteArray &text, Complaints &complaints)
{
    Position position;
    const QByteArray plain = plainJson(text);
    TreeBuilder builder(plain, position, complaints);
    const CountingIterator begin(plain.constData(), &position);
    const CountingIterator end(plain.constData() + plain.size(), &position);
    if (!nlohmann::json::sax_parse(begin, end, &builder))
        return std::nullopt;
    return builder.takeRoot();
}

} // namespace lab
