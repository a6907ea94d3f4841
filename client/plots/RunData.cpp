#include "plots/RunData.h"

#include "JsonOutput.h"

#include <QDir>
#include <QFile>

#include <charconv>
#include <cstring>
#include <limits>

namespace client {

namespace {

const QStringList dcColumns{
    QStringLiteral("Test Time / s"), QStringLiteral("Voltage / V"),    QStringLiteral("Current / A"),
    QStringLiteral("Charge / C"),    QStringLiteral("Step Count / 1"), QStringLiteral("Cycle Count / 1"),
};

const QStringList acColumns{
    QStringLiteral("Frequency / Hz"),       QStringLiteral("Absolute Impedance / Ohm"),
    QStringLiteral("Real Impedance / Ohm"), QStringLiteral("Imaginary Impedance / Ohm"),
    QStringLiteral("Phase / deg"),          QStringLiteral("Voltage Bias / V"),
    QStringLiteral("Step Count / 1"),       QStringLiteral("Cycle Count / 1"),
};

double numberIn(const char *begin, const char *end)
{
    double value = 0.0;
    const auto result = std::from_chars(begin, end, value);
    return result.ec == std::errc() ? value : std::numeric_limits<double>::quiet_NaN();
}

/// The wanted columns in the order of the file; null where a column is not wanted.
std::vector<Column *> chooseColumns(Table &table, const QByteArray &headingLine, const QStringList &headings)
{
    std::vector<Column *> chosen;
    for (const QString &heading : QString::fromUtf8(headingLine.trimmed()).split(QLatin1Char(',')))
        chosen.push_back(headings.contains(heading) ? &table.columns[heading] : nullptr);
    return chosen;
}

void readLine(const QByteArray &line, const std::vector<Column *> &columns)
{
    const char *begin = line.constData();
    const char *const lineEnd = begin + line.size() - 1; // without the line feed
    for (Column *column : columns) {
        const void *comma = std::memchr(begin, ',', static_cast<std::size_t>(lineEnd - begin));
        const char *end = comma ? static_cast<const char *>(comma) : lineEnd;
        if (column)
            column->push_back(numberIn(begin, end));
        begin = comma ? end + 1 : lineEnd;
    }
}

/// Appends the class names of a list of elements, groups opened up.
void appendElements(const Json &list, QStringList &names)
{
    for (const Json &item : list) {
        if (item.contains("group"))
            appendElements(item["group"], names);
        else
            names.append(QString::fromStdString(item.value("element", std::string())));
    }
}

bool readSummary(const QString &path, RunData &run)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    const Json summary = Json::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (!summary.contains("experiment"))
        return false;
    const Json &experiment = summary["experiment"];
    run.title = QString::fromStdString(experiment.value("name", std::string()));
    if (experiment.contains("content") && experiment["content"].contains("elements"))
        appendElements(experiment["content"]["elements"], run.elements);
    return true;
}

} // namespace

bool Table::isEmpty() const
{
    return columns.isEmpty() || columns.begin()->empty();
}

const Column &Table::column(const QString &heading) const
{
    static const Column none;
    const auto found = columns.constFind(heading);
    return found == columns.constEnd() ? none : *found;
}

std::optional<Table> readTable(const QString &path, const QStringList &headings)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    Table table;
    const std::vector<Column *> columns = chooseColumns(table, file.readLine(), headings);
    for (QByteArray line = file.readLine(); line.endsWith('\n'); line = file.readLine())
        readLine(line, columns);
    return table;
}

std::optional<RunData> readRun(const QString &folder)
{
    RunData run;
    const QDir directory(folder);
    const std::optional<Table> dc = readTable(directory.filePath(QStringLiteral("dc.csv")), dcColumns);
    if (!dc || !readSummary(directory.filePath(QStringLiteral("run.json")), run))
        return std::nullopt;
    run.dc = *dc;
    run.ac = readTable(directory.filePath(QStringLiteral("ac.csv")), acColumns).value_or(Table());
    return run;
}

} // namespace client
