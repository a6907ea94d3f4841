// SPDX-License-Identifier: MIT
#include "client/commands/PlanCommand.h"

#include "VekExperimentPlan.h"
#include "client/terminal/Console.h"
#include "lab/experiments/ExperimentCheck.h"
#include "lab/experiments/ExperimentFile.h"
#include "lab/notation/JsonOutput.h"
#include "lab/notation/Suggestion.h"
#include "lab/notation/Units.h"

#include <cmath>
#include <cstdio>

namespace client {

using namespace lab;

namespace {

Json nodeJson(const VekPlannedNode &node)
{
    return {{"stepNumber", node.stepNumber()},
            {"stepName", text(node.stepName())},
            {"type", text(node.typeName())},
            {"unit", text(node.unit())},
            {"start", number(node.startValue())},
            {"end", number(node.endValue())},
            {"startVersusOcp", node.isStartVersusOcp()},
            {"endVersusOcp", node.isEndVersusOcp()},
            {"fixedCurrentRange", number(node.fixedCurrentRange())},
            {"voltageRange", node.voltageRange() < 0 ? Json() : Json(node.voltageRange())},
            {"samplingInterval", number(node.samplingInterval())},
            {"downsampleFactor", node.downsampleFactor()},
            {"timeLimit", number(node.timeLimit())},
            {"chargeLimit", number(node.chargeLimit())},
            {"minVoltage", number(node.minVoltage())},
            {"minVoltageVersusOcp", node.isMinVoltageVersusOcp()},
            {"maxVoltage", number(node.maxVoltage())},
            {"maxVoltageVersusOcp", node.isMaxVoltageVersusOcp()},
            {"minCurrent", number(node.minCurrent())},
            {"maxCurrent", number(node.maxCurrent())},
            {"currentLimitsAreMagnitudes", node.areCurrentLimitsMagnitudes()},
            {"repeats", node.repeats()},
            {"loopTarget", node.loopTarget() < 0 ? Json() : Json(node.loopTarget())},
            {"runs", number(node.runs())},
            {"expectedDuration", number(node.expectedDuration())},
            {"expectedCharge", number(node.expectedCharge())},
            {"expectedRows", number(node.expectedRows())}};
}

Json planJson(const ExperimentFile &file, const QString &model, const Complaints &complaints,
              const VekExperimentPlan &plan)
{
    Json complaintList = Json::array();
    for (const Complaint &complaint : complaints)
        complaintList.push_back({{"line", complaint.line}, {"text", text(complaint.text)}});
    Json nodes = Json::array();
    for (const VekPlannedNode &node : plan.nodes())
        nodes.push_back(nodeJson(node));
    return {{"file", text(file.path)},
            {"model", text(model)},
            {"complaints", complaintList},
            {"nodes", nodes},
            {"expectedDuration", number(plan.expectedDuration())},
            {"expectedCharge", number(plan.expectedCharge())},
            {"expectedRows", number(plan.expectedRows())}};
}

Dimension dimensionOf(const QString &unit)
{
    for (const Dimension each :
         {Dimension::Voltage, Dimension::Current, Dimension::Resistance, Dimension::Power, Dimension::Frequency}) {
        if (baseUnit(each) == unit)
            return each;
    }
    return Dimension::Number;
}

QString valueText(double value, Dimension dimension, bool isVersusOcp)
{
    return formatQuantity(value, dimension) + (isVersusOcp ? QStringLiteral(" vs OCP") : QString());
}

QString setPointText(const VekPlannedNode &node)
{
    if (std::isnan(node.startValue()))
        return node.loopTarget() < 0 ? QString() : QStringLiteral("back to node %1").arg(node.loopTarget());
    const Dimension dimension = dimensionOf(node.unit());
    const QString start = valueText(node.startValue(), dimension, node.isStartVersusOcp());
    const QString end = valueText(node.endValue(), dimension, node.isEndVersusOcp());
    return start == end ? start : QStringLiteral("%1 to %2").arg(start, end);
}

QString rowsText(double rows)
{
    if (std::isnan(rows))
        return QStringLiteral("-");
    return std::isinf(rows) ? QStringLiteral("unlimited") : QString::number(rows, 'f', 0);
}

/// Sampling, duration, charge and rows; blank for steps that only direct the others.
QStringList measureCells(const VekPlannedNode &node)
{
    if (node.expectedDuration() == 0.0)
        return {QString(), QString(), QString(), QString()};
    const bool isSampled = node.samplingInterval() > 0.0;
    return {isSampled ? formatQuantity(node.samplingInterval(), Dimension::Time) : QString(),
            formatQuantity(node.expectedDuration(), Dimension::Time),
            formatQuantity(node.expectedCharge(), Dimension::Charge), rowsText(node.expectedRows())};
}

void printRow(const QStringList &cells)
{
    constexpr int widths[] = {4, 4, 24, 26, 11, 11, 10, 9, 7};
    QString line;
    for (int column = 0; column < cells.size(); ++column)
        line += cells[column].leftJustified(widths[column]) + QLatin1Char(' ');
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    std::printf("%s\n", qPrintable(line));
}

void printTable(const VekExperimentPlan &plan)
{
    printRow({QStringLiteral("NODE"), QStringLiteral("STEP"), QStringLiteral("TYPE"), QStringLiteral("SET POINT"),
              QStringLiteral("SAMPLING"), QStringLiteral("DURATION"), QStringLiteral("CHARGE"), QStringLiteral("ROWS"),
              QStringLiteral("RUNS")});
    int position = 0;
    for (const VekPlannedNode &node : plan.nodes()) {
        const double runs = node.loopTarget() < 0 ? node.runs() : double(node.repeats());
        printRow(QStringList{QString::number(position++), QString::number(node.stepNumber()), node.typeName(),
                             setPointText(node)} +
                 measureCells(node) + QStringList{QString::number(runs, 'f', 0)});
    }
    std::printf("Total: %s, %s, %s rows; limits of voltage or current may end a step earlier.\n",
                qPrintable(formatQuantity(plan.expectedDuration(), Dimension::Time)),
                qPrintable(formatQuantity(plan.expectedCharge(), Dimension::Charge)),
                qPrintable(rowsText(plan.expectedRows())));
}

QString listOfModels()
{
    QStringList lines;
    QStringList names = VekExperimentPlan::modelNames();
    for (int number = 0; number < names.size(); ++number)
        lines.append(QStringLiteral("%1 %2").arg(number, 4).arg(names[number]));
    return QStringLiteral("\nThe models are, by number and name:\n") + lines.join(QLatin1Char('\n'));
}

/// What may help behind the refusal of a model; a name that several models share has its list already.
QString furtherWords(const QString &model)
{
    const QStringList models = VekExperimentPlan::modelNames();
    if (models.contains(model, Qt::CaseInsensitive))
        return {};
    const QString nearest = nearestWord(model, models);
    const QString question = nearest.isEmpty() ? QString() : QStringLiteral(" Did you mean \"%1\"?").arg(nearest);
    return question + listOfModels();
}

} // namespace

PlanCommand::PlanCommand(CLI::App &parent)
    : Command(parent, "plan", "Check an experiment file and show what an instrument would execute; needs no instrument",
              "  nimbrelle plan cycle.json --model Alder_2_5\n"
              "  nimbrelle plan cycle.json --model Gale --json")
{
    app().add_option("FILE", _file, "Experiment file")->required();
    app().add_option("-m,--model", _model, "Model of instrument by name or number, for example Alder_2_5 or 35");
    addJson(_wantsJson);
}

int PlanCommand::run()
{
    if (_model.empty()) {
        Console::instance().error(QStringLiteral("plan needs --model, since limits differ.") + listOfModels());
        return BadInput;
    }
    QString refusal;
    const int model = VekExperimentPlan::modelNumber(QString::fromStdString(_model), &refusal);
    if (model < 0) {
        Console::instance().error(refusal + furtherWords(QString::fromStdString(_model)));
        return BadInput;
    }
    const ExperimentFile file = readExperimentFile(QString::fromStdString(_file));
    const bool isRead = file.isUsable() || !file.elements.empty();
    const VekExperimentPlan plan = isRead ? VekExperimentPlan::forModel(file.experiment, model) : VekExperimentPlan();
    const Complaints complaints = complaintsOf(file, plan, model);
    if (_wantsJson)
        printJson(planJson(file, VekExperimentPlan::modelName(model), complaints, plan));
    else
        tellComplaints(file.path, complaints);
    if (!complaints.empty())
        return BadInput;
    if (!_wantsJson)
        printTable(plan);
    return Done;
}

} // namespace client
