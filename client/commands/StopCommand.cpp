// SPDX-License-Identifier: MIT
#include "client/commands/StopCommand.h"

#include "VekInstrumentHandler.h"
#include "client/instruments/Connection.h"
#include "client/terminal/Console.h"
#include "lab/notation/PrintableText.h"
#include "lab/runs/StopChannel.h"

#include <algorithm>
#include <cstdio>
#include <numeric>

namespace client {

using namespace lab;

namespace {

bool contains(const std::vector<int> &channels, int channel)
{
    return std::find(channels.begin(), channels.end(), channel) != channels.end();
}

std::vector<int> allChannels(const Connection &connection)
{
    std::vector<int> channels(std::size_t(connection.handler().getNumberOfChannels()));
    std::iota(channels.begin(), channels.end(), 0);
    return channels;
}

} // namespace

StopCommand::StopCommand(CLI::App &parent)
    : Command(parent, "stop", "End what an instrument runs, whoever started it, and disconnect its cells",
              "  nimbrelle stop ttyACM0              # what runs, where only one channel can be meant\n"
              "  nimbrelle stop ttyACM0 --channel 2\n"
              "  nimbrelle stop ttyACM0 --all\n"
              "What was recorded of the experiment is not touched.")
{
    addPort(_port);
    addChannels(_channels)->excludes(app().add_flag("--all", _stopsAll, "Stop all channels"));
}

std::vector<int> StopCommand::channelsMeant(const Connection &connection) const
{
    if (_stopsAll || connection.handler().getNumberOfChannels() == 1)
        return allChannels(connection);
    if (!_channels.empty())
        return _channels;
    const std::vector<int> running = connection.runningChannels();
    if (running.size() == 1)
        return running;
    Console::instance().error(running.empty()
                                  ? QStringLiteral("which channel? Give --channel N, or --all")
                                  : QStringLiteral("channels %1 run: give --channel N, or --all").arg(listOf(running)));
    return {};
}

int StopCommand::run()
{
    Connection connection(QString::fromStdString(_port));
    if (const ExitCode failure = connection.open())
        return failure;
    const std::vector<int> channels = channelsMeant(connection);
    if (channels.empty())
        return BadInput;
    for (const int channel : channels) {
        if (const ExitCode failure = connection.checkChannel(channel))
            return failure;
    }
    const std::vector<int> running = connection.runningChannels();
    const std::vector<int> untold = connection.untoldChannels();
    const StopResults results = stopChannels(connection.handler(), channels);
    if (results.isLinkLost) {
        Console::instance().error(QStringLiteral("The connection to the instrument was lost."));
        return NoConnection;
    }
    ExitCode exitCode = Done;
    std::vector<int> quiet;
    for (const int channel : channels) {
        const auto end = results.ends.find(channel);
        if (end != results.ends.end()) {
            std::printf("channel %d: %s\n", channel, qPrintable(printable(end->second)));
        } else if (contains(running, channel) || (contains(untold, channel) && !_stopsAll)) {
            Console::instance().error(QStringLiteral("channel %1: the instrument did not confirm an end; "
                                                     "if its cell may still be driven, ask again or disconnect it")
                                          .arg(channel));
            exitCode = Refused;
        } else {
            quiet.push_back(channel);
        }
    }
    if (!quiet.empty())
        Console::instance().note(QStringLiteral("channels without an end, where nothing ran: %1").arg(listOf(quiet)));
    return exitCode;
}

} // namespace client
