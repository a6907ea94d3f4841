// SPDX-License-Identifier: MIT
#include "client/commands/Command.h"

#include "client/terminal/Console.h"
#include "lab/notation/Units.h"

#include <cstdio>

namespace client {

using namespace lab;

namespace {

constexpr int largestChannel = 254; // 255 stands for all of them on the wire

/// Where experiment files say what an option cannot: that a voltage counts from the open circuit.
struct OpenCircuitRow {
    const char *option;
    const char *flag;
    const char *element;
};

constexpr OpenCircuitRow openCircuitRows[] = {
    {"--voltage", "voltageVsOCP", "ConstantPot"},
    {"--max-voltage", "maximumVoltageVsOCP", "ConstantPower"},
    {"--min-voltage", "minimumVoltageVsOCP", "ConstantPower"},
};

/// No advice to leave the words out: the cell would get another potential.
QString openCircuitComplaint(const char *option, const QString &argument)
{
    for (const OpenCircuitRow &row : openCircuitRows) {
        if (qstrcmp(row.option, option) == 0)
            return QStringLiteral("\"%1\" counts from the open circuit; on the command line voltages count from the "
                                  "reference electrode. An experiment file can say it: \"%2\" of a %3")
                .arg(argument, QLatin1String(row.flag), QLatin1String(row.element));
    }
    return QStringLiteral("\"%1\" counts from the open circuit, which this option cannot").arg(argument);
}

QString complaintOf(const char *option, const QString &argument, Dimension dimension, const ParsedQuantity &quantity)
{
    if (quantity.isAgainstOpenCircuit)
        return openCircuitComplaint(option, argument);
    const bool isTime = dimension == Dimension::Time; // an interval or a duration, all of them
    if (quantity.isValid() && isTime && !(quantity.value > 0.0))
        return QStringLiteral("\"%1\" does not last: the time has to be above 0 s").arg(argument);
    return quantity.complaint;
}

} // namespace

Command::Command(CLI::App &parent, const char *name, const char *description, const char *examples)
    : _app(parent.add_subcommand(name, description))
{
    _app->footer(std::string("Examples:\n") + examples);
    _app->fallthrough();
}

void Command::addPort(std::string &port)
{
    _app->add_option("PORT", port, "Serial port, for example ttyACM0 or /dev/ttyACM0")->required();
}

void Command::addChannel(int &channel)
{
    _app->add_option("-c,--channel", channel, "Channel, counted from 0")
        ->check(CLI::Range(0, largestChannel))
        ->capture_default_str();
}

CLI::Option *Command::addChannels(std::vector<int> &channels)
{
    return _app->add_option("-c,--channel", channels, "Channels, counted from 0, separated by commas")
        ->check(CLI::Range(0, largestChannel))
        ->delimiter(',')
        ->capture_default_str();
}

void Command::addJson(bool &wantsJson)
{
    _app->add_flag("--json", wantsJson, "Print JSON instead of text");
}

CLI::Option *Command::addQuantity(const char *name, Dimension dimension, std::optional<double> &value, const char *help)
{
    const auto read = [name, dimension, &value](const std::string &argument) {
        const QString typed = QString::fromStdString(argument);
        const ParsedQuantity quantity = parseQuantity(typed, dimension);
        const QString complaint = complaintOf(name, typed, dimension, quantity);
        if (!complaint.isEmpty())
            throw CLI::ValidationError(name, complaint.toStdString());
        value = quantity.value;
    };
    CLI::Option *option = _app->add_option_function<std::string>(name, read, help);
    return option->type_name(baseUnit(dimension).toStdString());
}

void Command::addSafetyLimits(SafetyLimits &limits)
{
    addQuantity("--max-voltage", Dimension::Voltage, limits.maxVoltage, "Stop above this voltage");
    addQuantity("--min-voltage", Dimension::Voltage, limits.minVoltage, "Stop below this voltage");
    addQuantity("--max-current", Dimension::Current, limits.maxCurrent, "Stop above this current");
    addQuantity("--min-current", Dimension::Current, limits.minCurrent, "Stop below this current");
    addQuantity("--max-temperature", Dimension::Temperature, limits.maxTemperature, "Stop above this temperature");
}

void Command::printJson(const Json &json)
{
    std::printf("%s\n", dump(json).c_str());
}

void Command::tellComplaints(const QString &path, const Complaints &complaints)
{
    for (const Complaint &complaint : complaints)
        Console::instance().complaint(withPlace(path, complaint));
}

} // namespace client
