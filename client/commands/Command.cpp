#include "commands/Command.h"

#include "Units.h"

namespace client {

namespace {

constexpr int largestChannel = 254; // 255 stands for all of them on the wire

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
        const ParsedQuantity quantity = parseQuantity(QString::fromStdString(argument), dimension);
        if (!quantity.isValid())
            throw CLI::ValidationError(name, quantity.complaint.toStdString());
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

} // namespace client
