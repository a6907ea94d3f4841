// SPDX-License-Identifier: MIT
#include "client/commands/MonitorCommand.h"

#include "VekInstrumentHandler.h"
#include "client/instruments/Connection.h"
#include "client/instruments/SampleStream.h"
#include "client/terminal/Console.h"

#include <limits>

namespace client {

using namespace lab;

MonitorCommand::MonitorCommand(CLI::App &parent)
    : Command(parent, "monitor", "Print voltage and current of an idle channel until interrupted, as CSV",
              "  nimbrelle monitor ttyACM0 --channel 2\n"
              "  nimbrelle monitor ttyACM0 --count 10 > idle.csv")
{
    addPort(_port);
    addChannel(_channel);
    addQuantity("--duration", Dimension::Time, _duration, "End after this time");
    app()
        .add_option("-n,--count", _count, "End after so many samples")
        ->check(CLI::Range(1, std::numeric_limits<int>::max()));
}

int MonitorCommand::run()
{
    Connection connection(QString::fromStdString(_port));
    if (const ExitCode failure = connection.open())
        return failure;
    if (const ExitCode failure = connection.checkChannel(_channel))
        return failure;
    const VekInstrumentHandler &handler = connection.handler();
    const auto channel = static_cast<unsigned char>(_channel);
    SampleStream stream(handler, channel, SampleStream::Source::Idle, {_duration, _count});
    const bool isRunning = handler.channelReport(channel) == VekChannelReport::Running;
    if (isRunning) // its samples come by themselves, and what else is asked of it might end it
        Console::instance().error(connection.runningText(_channel));
    const VekErrorCode result = isRunning ? VekErrorCode(VekErrorCode::Success) : handler.startIdleSampling(channel);
    if (result != VekErrorCode::Success) {
        Console::instance().error(refusalText(result));
        return Refused;
    }
    return stream.run();
}

} // namespace client
