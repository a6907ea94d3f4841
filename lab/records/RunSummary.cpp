// SPDX-License-Identifier: MIT
#include "lab/records/RunSummary.h"

#include "lab/notation/JsonOutput.h"

#include <QFile>
#include <QFileInfo>

#include <limits>

namespace lab {

namespace {

constexpr int deepest = 512; ///< levels of brackets; an experiment has far less

/// Reads members whose kinds nobody has checked, and tells of those that are wrong.
class Members
{
public:
    Members(const Json &object, const QString &place, QStringList &oddities)
        : _object(object), _place(place), _oddities(oddities)
    {
    }

    QString textOf(const char *name) const
    {
        const Json *member = find(name);
        if (!member)
            return {};
        if (member->is_string())
            return QString::fromStdString(member->get_ref<const std::string &>());
        complain(name, QStringLiteral("is no text"));
        return {};
    }

    /// A whole number that a row or a count can be; 0 for any other.
    int countOf(const char *name) const
    {
        const Json *member = find(name);
        if (!member)
            return complain(name, QStringLiteral("is missing"));
        if (!member->is_number_integer())
            return complain(name, QStringLiteral("is no whole number"));
        const bool isPositive = member->is_number_unsigned() || member->get<qint64>() >= 0;
        if (!isPositive)
            return complain(name, QStringLiteral("is negative"));
        if (member->get<quint64>() > quint64(std::numeric_limits<int>::max()))
            return complain(name, QStringLiteral("is too large"));
        return member->get<int>();
    }

    const Json *find(const char *name) const
    {
        const auto found = _object.is_object() ? _object.find(name) : _object.end();
        return found == _object.end() ? nullptr : &*found;
    }

    int complain(const char *name, const QString &what) const
    {
        _oddities.append(QStringLiteral("%1: \"%2\" %3").arg(_place, QString::fromLatin1(name), what));
        return 0;
    }

private:
    const Json &_object;
    QString _place;
    QStringList &_oddities;
};

/// Whether what goes through a JSON text level by level can be let loose on this one.
bool isShallow(const QByteArray &bytes)
{
    int depth = 0;
    bool isInText = false;
    for (int index = 0; index < bytes.size(); ++index) {
        const char byte = bytes[index];
        if (byte == '\\')
            ++index;
        else if (byte == '"')
            isInText = !isInText;
        else if (!isInText && (byte == '[' || byte == '{') && ++depth > deepest)
            return false;
        else if (!isInText && (byte == ']' || byte == '}'))
            --depth;
    }
    return true;
}

/// An object, empty for a file that holds none.
Json readObject(const QString &path, QStringList &oddities)
{
    const QString name = QFileInfo(path).fileName();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        oddities.append(QStringLiteral("%1: %2").arg(name, file.errorString()));
        return Json::object();
    }
    const QByteArray bytes = file.readAll();
    Json object = isShallow(bytes) ? Json::parse(bytes.begin(), bytes.end(), nullptr, false) : Json();
    if (object.is_object())
        return object;
    oddities.append(QStringLiteral("%1: holds no JSON object").arg(name));
    return Json::object();
}

bool readMark(const Json &json, int number, const ElementMark &before, ElementMark &mark, QStringList &oddities)
{
    QStringList own;
    const QString place = QStringLiteral("run.json: element %1").arg(number);
    const Members members(json, place, own);
    mark.stepName = members.textOf("stepName");
    mark.step = members.countOf("stepNumber");
    mark.entry = members.countOf("cycleNumber");
    mark.dcRow = static_cast<std::size_t>(members.countOf("firstDcRow"));
    mark.acRow = static_cast<std::size_t>(members.countOf("firstAcRow"));
    if (own.isEmpty() && (mark.dcRow < before.dcRow || mark.acRow < before.acRow))
        members.complain("firstDcRow", QStringLiteral("or \"firstAcRow\" lies before that of the element before it"));
    oddities += own;
    return own.isEmpty();
}

/// The sound announcements; one sentence, however many are not.
std::vector<ElementMark> readMarks(const Json *elements, QStringList &oddities)
{
    std::vector<ElementMark> marks;
    if (!elements || !elements->is_array()) {
        oddities.append(
            QStringLiteral("run.json: \"elements\" is no list; the elements are told by the columns of dc.csv"));
        return marks;
    }
    QStringList damages;
    int number = 0, damaged = 0;
    for (const Json &each : *elements) {
        ElementMark mark;
        if (readMark(each, ++number, marks.empty() ? ElementMark() : marks.back(), mark, damages))
            marks.push_back(mark);
        else
            ++damaged;
    }
    if (damaged > 0)
        oddities.append(damaged == 1 ? damages.first()
                                     : QStringLiteral("%1, and %2 more elements are damaged")
                                           .arg(damages.first(), QString::number(damaged - 1)));
    return marks;
}

ExperimentFile readExperiment(const Members &summary, QString &title, QStringList &oddities)
{
    const Json *experiment = summary.find("experiment");
    if (!experiment || !experiment->is_object()) {
        summary.complain("experiment", QStringLiteral("is no object: only what needs no experiment is drawn"));
        return {};
    }
    const Members members(*experiment, QStringLiteral("run.json: experiment"), oddities);
    title = members.textOf("name");
    const Json *content = members.find("content");
    ExperimentFile file = parseExperiment(QByteArray::fromStdString(content ? dump(*content) : std::string()), {});
    if (!file.isUsable())
        members.complain("content",
                         QStringLiteral("is not an experiment of this program: %1").arg(file.complaints.front().text));
    return file;
}

} // namespace

RunSummary readSummary(const QString &path, QStringList &oddities)
{
    RunSummary summary;
    const Json object = readObject(path, oddities);
    if (object.empty())
        return summary;
    const Members members(object, QStringLiteral("run.json"), oddities);
    summary.experiment = readExperiment(members, summary.title, oddities);
    summary.isCompleted = members.textOf("state") == QLatin1String("completed");
    summary.marks = readMarks(members.find("elements"), oddities);
    return summary;
}

} // namespace lab
