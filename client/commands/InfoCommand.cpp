// SPDX-License-Identifier: MIT
#include "client/commands/InfoCommand.h"

#include "client/instruments/Connection.h"
#include "lab/notation/JsonOutput.h"
#include "lab/notation/PrintableText.h"

#include <cstdio>

namespace client {

using namespace lab;

InfoCommand::InfoCommand(CLI::App &parent)
    : Command(parent, "info", "Show name, model, firmware and channels of an instrument",
              "  nimbrelle info ttyACM0\n"
              "  nimbrelle info /dev/ttyACM0 --json")
{
    addPort(_port);
    addJson(_wantsJson);
}

int InfoCommand::run()
{
    Connection connection(QString::fromStdString(_port));
    if (const ExitCode failure = connection.open())
        return failure;
    const VekInstrumentDescription instrument = connection.description();
    if (_wantsJson) {
        Json json = descriptionJson(instrument);
        json["running"] = connection.runningChannels();
        json["runningUntold"] = connection.untoldChannels();
        printJson(json);
        return Done;
    }
    std::printf("Name:      %s\n", qPrintable(printable(instrument.deviceName)));
    std::printf("Model:     %s (%s, number %d)\n", qPrintable(instrument.vanityName), qPrintable(instrument.modelName),
                instrument.modelNumber);
    std::printf("Firmware:  %s, checksum %s\n", qPrintable(printable(instrument.firmwareVersion)),
                qPrintable(instrument.firmwareChecksum));
    std::printf("Port:      %s\n", qPrintable(instrument.portName));
    std::printf("Channels:  %d\n", instrument.channelCount);
    for (const int channel : connection.runningChannels())
        std::printf("Running:   %s\n", qPrintable(connection.runningText(channel)));
    return Done;
}

} // namespace client
