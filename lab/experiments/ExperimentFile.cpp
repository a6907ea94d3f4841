// SPDX-License-Identifier: MIT
#include "lab/experiments/ExperimentFile.h"

#include "lab/experiments/ElementCatalogue.h"
#include "lab/notation/JsonText.h"
#include "lab/notation/Suggestion.h"
#include "lab/notation/Units.h"

#include <QFile>

#include <algorithm>
#include <map>
#include <optional>

namespace lab {

namespace {

/// What may stand in an object that is not an element: its name, the kind of its value, whether it has to be there.
struct MemberRow {
    const char *name;
    JsonValue::Kind kind;
    bool isRequired;
};

constexpr MemberRow fileMembers[] = {
    {"schemaVersion", JsonValue::Kind::Number, true},
    {"name", JsonValue::Kind::Text, false},
    {"description", JsonValue::Kind::Text, false},
    {"elements", JsonValue::Kind::List, true},
};

constexpr MemberRow groupMembers[] = {
    {"group", JsonValue::Kind::List, true},
    {"repeats", JsonValue::Kind::Number, false},
    {"name", JsonValue::Kind::Text, false},
};

bool isWholeNumber(double value)
{
    return std::floor(value) == value;
}

/// Builds the experiment from the tree of a JSON text and collects what is wrong with it.
class Reader
{
public:
    explicit Reader(ExperimentFile &file) : _file(file) {}

    void readFile(const JsonValue &root)
    {
        if (root.kind != JsonValue::Kind::Object)
            return complain(root.line, QStringLiteral("an experiment is an object, not %1").arg(kindName(root.kind)));
        checkMembers(root, fileMembers, QStringLiteral("an experiment"));
        readVersion(root);
        _file.name = textOf(root, "name");
        _file.description = textOf(root, "description");
        if (!_file.name.isEmpty())
            _file.experiment.setExperimentName(_file.name);
        if (!_file.description.isEmpty())
            _file.experiment.setDescription(_file.description);
        if (const JsonMember *elements = find(root, "elements", JsonValue::Kind::List))
            readList(elements->value, _file.experiment);
    }

private:
    void complain(int line, const QString &text) { _file.complaints.push_back({line, text}); }

    static const JsonMember *find(const JsonValue &object, const char *name, JsonValue::Kind kind)
    {
        const JsonMember *member = object.find(QString::fromLatin1(name));
        return member && member->value.kind == kind ? member : nullptr;
    }

    static QString textOf(const JsonValue &object, const char *name)
    {
        const JsonMember *member = find(object, name, JsonValue::Kind::Text);
        return member ? member->value.text : QString();
    }

    template <std::size_t count>
    void checkMembers(const JsonValue &object, const MemberRow (&rows)[count], const QString &what)
    {
        QStringList names;
        for (const MemberRow &row : rows)
            names.append(QString::fromLatin1(row.name));
        checkNames(object, names, what);
        for (const MemberRow &row : rows)
            checkMember(object, row, what);
    }

    void checkMember(const JsonValue &object, const MemberRow &row, const QString &what)
    {
        const QString name = QString::fromLatin1(row.name);
        const JsonMember *member = object.find(name);
        if (!member && row.isRequired)
            complain(object.line, QStringLiteral("%1 needs \"%2\"").arg(what, name));
        if (member && member->value.kind != row.kind)
            complainOfKind(*member, kindName(row.kind));
    }

    void complainOfKind(const JsonMember &member, const QString &wanted)
    {
        complain(member.value.line,
                 QStringLiteral("\"%1\" takes %2, not %3").arg(member.name, wanted, kindName(member.value.kind)));
    }

    /// Complains about names that are not known and names that come twice.
    void checkNames(const JsonValue &object, const QStringList &known, const QString &what)
    {
        std::map<QString, int> firstLines;
        for (const JsonMember &member : object.members) {
            const auto [first, isNew] = firstLines.emplace(member.name, member.line);
            if (!isNew)
                complain(member.line, QStringLiteral("\"%1\" stands twice, first on line %2")
                                          .arg(member.name, QString::number(first->second)));
            else if (!known.contains(member.name))
                complain(member.line,
                         QStringLiteral("%1 has no \"%2\"%3").arg(what, member.name, didYouMean(member.name, known)));
        }
    }

    void readVersion(const JsonValue &root)
    {
        const JsonMember *version = find(root, "schemaVersion", JsonValue::Kind::Number);
        if (version && version->value.number != experimentSchemaVersion)
            complain(version->value.line,
                     QStringLiteral("this program reads schema version %1, not %2")
                         .arg(QString::number(experimentSchemaVersion), QString::number(version->value.number)));
    }

    void readList(const JsonValue &list, VekExperiment &experiment)
    {
        if (list.items.empty())
            complain(list.line, QStringLiteral("the list is empty: it needs at least one element"));
        for (const JsonValue &item : list.items)
            readItem(item, experiment);
    }

    void readItem(const JsonValue &item, VekExperiment &experiment)
    {
        if (item.kind != JsonValue::Kind::Object)
            complain(item.line, QStringLiteral("an element or a group is an object, not %1").arg(kindName(item.kind)));
        else if (item.find(QStringLiteral("group")))
            readGroup(item, experiment);
        else if (item.find(QStringLiteral("element")))
            readElement(item, experiment);
        else
            complain(item.line, QStringLiteral("either \"element\" or \"group\" has to say what this is"));
    }

    void readGroup(const JsonValue &item, VekExperiment &experiment)
    {
        checkMembers(item, groupMembers, QStringLiteral("a group"));
        VekExperiment group;
        if (const JsonMember *members = find(item, "group", JsonValue::Kind::List))
            readList(members->value, group);
        experiment.appendSubExperiment(group, readRepeats(item));
    }

    unsigned int readRepeats(const JsonValue &item)
    {
        const JsonMember *repeats = item.find(QStringLiteral("repeats"));
        if (!repeats || repeats->value.kind != JsonValue::Kind::Number)
            return 1;
        const double count = repeats->value.number;
        if (isWholeNumber(count) && count >= 1 && count <= largestRepeatCount)
            return static_cast<unsigned int>(count);
        complain(repeats->value.line,
                 QStringLiteral("\"repeats\" takes a whole number from 1 to %1").arg(largestRepeatCount));
        return 1;
    }

    void readElement(const JsonValue &item, VekExperiment &experiment)
    {
        const JsonMember &name = *item.find(QStringLiteral("element"));
        if (name.value.kind != JsonValue::Kind::Text)
            return complainOfKind(name, kindName(JsonValue::Kind::Text));
        const ElementRow *row = findElement(name.value.text);
        if (!row)
            return complain(
                name.value.line,
                QStringLiteral("there is no element \"%1\"%2").arg(name.value.text, elementMeant(name.value.text)));
        FileElement read{item.line, name.value.text, row->make(), linesOf(item), {}};
        checkElementNames(item, *row, read);
        for (const PropertyRow &property : row->properties)
            readProperty(item, *row, property, read);
        experiment.appendElement(*read.element, readRepeats(item));
        _file.elements.push_back(read);
    }

    static std::map<QString, int> linesOf(const JsonValue &item)
    {
        std::map<QString, int> lines;
        for (const JsonMember &member : item.members)
            lines.emplace(member.name, member.line);
        return lines;
    }

    void checkElementNames(const JsonValue &item, const ElementRow &row, FileElement &read)
    {
        const QStringList own{QStringLiteral("element"), QStringLiteral("repeats")};
        const QStringList known = own + row.propertyNames();
        checkNames(item, known, QString::fromLatin1(row.name));
        QStringList seen;
        for (const JsonMember &member : item.members) {
            const bool isKnown = known.contains(member.name);
            const QString meant = isKnown ? member.name : nearestWord(member.name, known);
            const bool isMissed = !isKnown || seen.contains(member.name); // what was meant has not got this value
            if (isMissed && !meant.isEmpty())
                read.unread.insert(meant);
            seen.append(member.name);
        }
        const JsonMember *repeats = item.find(QStringLiteral("repeats"));
        if (repeats && repeats->value.kind != JsonValue::Kind::Number)
            complainOfKind(*repeats, kindName(JsonValue::Kind::Number));
    }

    void readProperty(const JsonValue &item, const ElementRow &row, const PropertyRow &property, FileElement &read)
    {
        const QString name = QString::fromLatin1(property.name);
        const JsonMember *member = item.find(name);
        if (!member) {
            if (!property.isRequired)
                return;
            complain(item.line, QStringLiteral("%1 needs \"%2\"").arg(QString::fromLatin1(row.name), name));
            read.unread.insert(name);
            return;
        }
        checkCompany(item, property, *member, read);
        if (const std::optional<double> value = valueOf(*member, row, property))
            property.set(*read.element, *value);
        else
            read.unread.insert(name);
    }

    /// Complains about properties that a property cannot do with, or without.
    void checkCompany(const JsonValue &item, const PropertyRow &property, const JsonMember &member, FileElement &read)
    {
        if (property.excludes && item.find(QString::fromLatin1(property.excludes))) {
            complain(member.line, QStringLiteral("\"%1\" and \"%2\" are one value of this element: give one of them")
                                      .arg(member.name, QString::fromLatin1(property.excludes)));
            read.unread.insert(member.name);
            read.unread.insert(QString::fromLatin1(property.excludes));
        }
        const bool isFalse = member.value.kind == JsonValue::Kind::Boolean && !member.value.boolean;
        if (property.partner && isFalse && !item.find(QString::fromLatin1(property.partner)))
            complain(member.line, QStringLiteral("without \"%1\" the element needs \"%2\"")
                                      .arg(member.name, QString::fromLatin1(property.partner)));
    }

    std::optional<double> valueOf(const JsonMember &member, const ElementRow &row, const PropertyRow &property)
    {
        switch (property.kind) {
        case PropertyKind::Quantity:
            return quantityOf(member, row, property);
        case PropertyKind::Flag:
        case PropertyKind::Automatic:
            return flagOf(member);
        case PropertyKind::Count:
            return countOf(member);
        case PropertyKind::VoltageRange:
            return voltageRangeOf(member);
        }
        return std::nullopt;
    }

    /// By what an element says that a voltage counts from the open circuit; empty where it cannot.
    static QString flagWords(const ElementRow &row, const PropertyRow &property)
    {
        QStringList flags = row.propertyNames().filter(QStringLiteral("VsOCP"));
        const QString own = QLatin1String(property.name) + QStringLiteral("VsOCP");
        if (flags.contains(own))
            flags = QStringList(own);
        return flags.join(QLatin1String("\" or \""));
    }

    static QString openCircuitComplaint(const JsonMember &member, const ElementRow &row, const PropertyRow &property)
    {
        const QString flags = flagWords(row, property);
        if (flags.isEmpty()) // no advice to another zero
            return QStringLiteral("\"%1\" counts from the open circuit, and this voltage of the element cannot")
                .arg(member.value.text);
        return QStringLiteral("%1: \"%2\"").arg(parseQuantity(member.value.text, property.dimension).complaint, flags);
    }

    std::optional<double> quantityOf(const JsonMember &member, const ElementRow &row, const PropertyRow &property)
    {
        if (member.value.kind == JsonValue::Kind::Number)
            return member.value.number;
        if (member.value.kind != JsonValue::Kind::Text) {
            complainOfKind(member, dimensionName(property.dimension));
            return std::nullopt;
        }
        if (property.mayBeNone() && member.value.text == QLatin1String("none"))
            return property.none;
        const ParsedQuantity quantity = parseQuantity(member.value.text, property.dimension);
        if (quantity.isValid())
            return quantity.value;
        complain(member.value.line,
                 QStringLiteral("\"%1\": %2")
                     .arg(member.name, quantity.isAgainstOpenCircuit ? openCircuitComplaint(member, row, property)
                                                                     : quantity.complaint));
        return std::nullopt;
    }

    std::optional<double> flagOf(const JsonMember &member)
    {
        if (member.value.kind == JsonValue::Kind::Boolean)
            return member.value.boolean ? 1.0 : 0.0;
        complainOfKind(member, kindName(JsonValue::Kind::Boolean));
        return std::nullopt;
    }

    std::optional<double> countOf(const JsonMember &member)
    {
        const double count = member.value.number;
        const bool isNumber = member.value.kind == JsonValue::Kind::Number;
        if (isNumber && isWholeNumber(count) && count >= 0 && count <= std::numeric_limits<quint32>::max())
            return count;
        complain(member.value.line, QStringLiteral("\"%1\" takes a whole number from 0").arg(member.name));
        return std::nullopt;
    }

    std::optional<double> voltageRangeOf(const JsonMember &member)
    {
        const double range = member.value.number;
        const bool isKnown = range == 0 || range == 1 || range == 2 || range == 3 || range == 5;
        if (member.value.kind == JsonValue::Kind::Number && isKnown)
            return range;
        complain(member.value.line, QStringLiteral("\"%1\" takes 0, 1, 2, 3, or 5 for automatic").arg(member.name));
        return std::nullopt;
    }

    ExperimentFile &_file;
};

} // namespace

ExperimentFile readExperimentFile(const QString &path)
{
    QFile source(path);
    if (source.open(QIODevice::ReadOnly))
        return parseExperiment(source.readAll(), path);
    ExperimentFile unread;
    unread.path = path;
    unread.complaints.push_back({0, QStringLiteral("cannot be read: %1").arg(source.errorString())});
    return unread;
}

ExperimentFile parseExperiment(const QByteArray &text, const QString &path)
{
    ExperimentFile file;
    file.path = path;
    file.text = text;
    if (const std::optional<JsonValue> root = parseJson(text, file.complaints))
        Reader(file).readFile(*root);
    std::stable_sort(file.complaints.begin(), file.complaints.end(),
                     [](const Complaint &left, const Complaint &right) { return left.line < right.line; });
    return file;
}

} // namespace lab
