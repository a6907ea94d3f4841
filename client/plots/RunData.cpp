#include "plots/RunData.h"

#include "JsonOutput.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace client {

namespace {

const QStringList dcColumns{
    QStringLiteral("Test Time / s"),  QStringLiteral("Voltage / V"),    QStringLiteral("Current / A"),
    QStringLiteral("Net Charge / C"), QStringLiteral("Step Count / 1"), QStringLiteral("Cycle Count / 1"),
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

/// From the announcements that the record kept.
std::vector<Segment> announcedSegments(const Json &marks, std::size_t rowCount)
{
    std::vector<Segment> segments;
    for (const Json &mark : marks) {
        const auto begin = std::min(mark.value("firstDcRow", std::size_t(0)), rowCount);
        if (!segments.empty())
            segments.back().end = begin;
        segments.push_back({QString::fromStdString(mark.value("stepName", std::string())), mark.value("stepNumber", 0),
                            mark.value("cycleNumber", 0), mark.value("substepNumber", 0), begin, rowCount});
    }
    segments.erase(
        std::remove_if(segments.begin(), segments.end(), [](const Segment &each) { return each.begin >= each.end; }),
        segments.end());
    return segments;
}

/// From the rows alone, for the record of a run that was cut off.
std::vector<Segment> countedSegments(const Table &dc)
{
    const Column &step = dc.column("Step Count / 1");
    const Column &cycle = dc.column("Cycle Count / 1");
    std::vector<Segment> segments;
    for (std::size_t row = 0; row < step.size(); ++row) {
        if (row == 0 || step[row] != step[row - 1] || cycle[row] != cycle[row - 1])
            segments.push_back({QString(), static_cast<int>(step[row]), static_cast<int>(cycle[row]), 0, row, row});
        segments.back().end = row + 1;
    }
    return segments;
}

std::optional<Json> readSummary(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    Json summary = Json::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (!summary.is_object() || !summary.contains("experiment"))
        return std::nullopt;
    return summary;
}

} // namespace

bool Table::isEmpty() const
{
    return columns.isEmpty() || columns.begin()->empty();
}

const Column &Table::column(const char *heading) const
{
    static const Column none;
    const auto found = columns.constFind(QString::fromUtf8(heading));
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

const FileElement *RunData::element(int step) const
{
    const auto index = static_cast<std::size_t>(step - 1);
    return step >= 1 && index < experiment.elements.size() ? &experiment.elements[index] : nullptr;
}

std::optional<RunData> readRun(const QString &folder)
{
    const QDir directory(folder);
    const std::optional<Table> dc = readTable(directory.filePath(QStringLiteral("dc.csv")), dcColumns);
    const std::optional<Json> summary = readSummary(directory.filePath(QStringLiteral("run.json")));
    if (!dc || !summary)
        return std::nullopt;
    RunData run;
    run.dc = *dc;
    run.ac = readTable(directory.filePath(QStringLiteral("ac.csv")), acColumns).value_or(Table());
    const Json &experiment = (*summary)["experiment"];
    run.title = QString::fromStdString(experiment.value("name", std::string()));
    run.experiment = parseExperiment(QByteArray::fromStdString(experiment.value("content", Json()).dump()), folder);
    run.segments = announcedSegments(summary->value("elements", Json::array()), run.dc.column("Test Time / s").size());
    if (run.segments.empty())
        run.segments = countedSegments(run.dc);
    return run;
}

} // namespace client
