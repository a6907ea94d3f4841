// SPDX-License-Identifier: MIT
#include "client/commands/LimitsCommand.h"

#include "VekInstrumentHandler.h"
#include "client/instruments/Connection.h"
#include "client/terminal/Console.h"
#include "lab/notation/JsonOutput.h"
#include "lab/notation/Units.h"

#include <cstdio>

namespace client {

using namespace lab;

namespace {

using Ranges = std::vector<std::pair<double, double>>;

Json rangesJson(const Ranges &ranges)
{
    Json list = Json::array();
    for (const auto &[low, high] : ranges)
        list.push_back({{"min", number(low)}, {"max", number(high)}});
    return list;
}

void printRanges(int channel, const char *kind, const Ranges &ranges, Dimension dimension)
{
    int index = 0;
    for (const auto &[low, high] : ranges)
        std::printf("%7d  %-7s  %5d  %12s  %12s\n", channel, kind, index++, qPrintable(formatQuantity(low, dimension)),
                    qPrintable(formatQuantity(high, dimension)));
}

void printRangesAsTable(const VekInstrumentHandler &handler, const std::vector<int> &channels)
{
    std::printf("CHANNEL  RANGE    INDEX           MIN           MAX\n");
    for (const int number : channels) {
        const auto channel = static_cast<unsigned char>(number);
        printRanges(number, "current", handler.getManualModeCurrentRangeList(channel), Dimension::Current);
        printRanges(number, "voltage", handler.getManualModeVoltageRangeList(channel), Dimension::Voltage);
    }
}

Json rangesAsJson(const VekInstrumentHandler &handler, const std::vector<int> &channels)
{
    Json list = Json::array();
    for (const int number : channels) {
        const auto channel = static_cast<unsigned char>(number);
        list.push_back({{"channel", number},
                        {"currentRanges", rangesJson(handler.getManualModeCurrentRangeList(channel))},
                        {"voltageRanges", rangesJson(handler.getManualModeVoltageRangeList(channel))}});
    }
    return list;
}

std::vector<int> allChannels(int count)
{
    std::vector<int> channels;
    for (int channel = 0; channel < count; ++channel)
        channels.push_back(channel);
    return channels;
}

} // namespace

LimitsCommand::LimitsCommand(CLI::App &parent)
    : Command(parent, "limits", "Show the ranges of channels, and set their safety limits",
              "  nimbrelle limits ttyACM0\n"
              "  nimbrelle limits ttyACM0 --channel 0 --max-voltage 4.2V\n"
              "\"run\" and \"manual\" begin without limits: to guard one, give the limits to it. Those of a channel "
              "that runs\n"
              "already are replaced by the ones given here; a limit that is not named is taken away.")
{
    addPort(_port);
    addChannels(_channels);
    addSafetyLimits(_limits);
    addJson(_wantsJson);
}

int LimitsCommand::run()
{
    Connection connection(QString::fromStdString(_port));
    if (const ExitCode failure = connection.open())
        return failure;
    const VekInstrumentHandler &handler = connection.handler();
    if (_channels.empty())
        _channels = allChannels(handler.getNumberOfChannels());
    for (const int channel : _channels) {
        if (const ExitCode failure = connection.checkChannel(channel))
            return failure;
        const VekErrorCode result = _limits.apply(handler, static_cast<unsigned char>(channel));
        if (result == VekErrorCode::Success)
            continue;
        Console::instance().error(QStringLiteral("channel %1: %2").arg(QString::number(channel), refusalText(result)));
        return Refused;
    }
    if (_wantsJson)
        printJson(rangesAsJson(handler, _channels));
    else
        printRangesAsTable(handler, _channels);
    return Done;
}

} // namespace client
