#include "commands/ListCommand.h"

#include "Connection.h"
#include "Console.h"
#include "JsonOutput.h"

#include <QSerialPortInfo>

#include <cstdio>

namespace client {

namespace {

struct ListedPort {
    QSerialPortInfo port;
    VekInstrumentDescription instrument; // default where nobody was asked or nobody answered
    std::vector<int> runningChannels;    // with experiments that this program did not start
};

QString usbIdentity(const QSerialPortInfo &port)
{
    if (!port.hasVendorIdentifier() || !port.hasProductIdentifier())
        return QStringLiteral("-");
    return QStringLiteral("%1:%2")
        .arg(port.vendorIdentifier(), 4, 16, QLatin1Char('0'))
        .arg(port.productIdentifier(), 4, 16, QLatin1Char('0'));
}

QString orDash(const QString &text)
{
    return text.isEmpty() ? QStringLiteral("-") : text;
}

Json portJson(const ListedPort &listed)
{
    Json json = {{"port", text(listed.port.portName())},           {"location", text(listed.port.systemLocation())},
                 {"usb", text(usbIdentity(listed.port))},          {"manufacturer", text(listed.port.manufacturer())},
                 {"description", text(listed.port.description())}, {"serialNumber", text(listed.port.serialNumber())}};
    if (!listed.instrument.deviceName.isEmpty()) {
        json["instrument"] = descriptionJson(listed.instrument);
        json["instrument"]["running"] = listed.runningChannels;
    }
    return json;
}

void printLine(const QString &port, const QString &usb, const QString &description, const QString &instrument)
{
    std::printf("%-14s %-10s %-36s %s\n", qPrintable(port), qPrintable(usb), qPrintable(description),
                qPrintable(instrument));
}

QString instrumentText(const ListedPort &listed)
{
    if (listed.instrument.deviceName.isEmpty())
        return QStringLiteral("-");
    const QString text = QStringLiteral("%1 (%2)").arg(listed.instrument.deviceName, listed.instrument.vanityName);
    if (listed.runningChannels.empty())
        return text;
    return QStringLiteral("%1, runs an experiment on channel %2").arg(text, listOf(listed.runningChannels));
}

void printTable(const std::vector<ListedPort> &ports, bool hasAsked)
{
    printLine(QStringLiteral("PORT"), QStringLiteral("USB"), QStringLiteral("DESCRIPTION"),
              hasAsked ? QStringLiteral("INSTRUMENT") : QString());
    for (const ListedPort &listed : ports) {
        const QString description = listed.port.manufacturer() + QLatin1Char(' ') + listed.port.description();
        printLine(listed.port.portName(), usbIdentity(listed.port), orDash(description.trimmed()),
                  hasAsked ? instrumentText(listed) : QString());
    }
}

} // namespace

ListCommand::ListCommand(CLI::App &parent)
    : Command(parent, "list", "List the serial ports of this machine",
              "  nimbrelle list\n"
              "  nimbrelle list --ask      # opens every port and asks who is there")
{
    app().add_flag("--ask", _asks, "Open every port and ask for an instrument (each takes a second or more)");
    addJson(_wantsJson);
}

int ListCommand::run()
{
    std::vector<ListedPort> ports;
    for (const QSerialPortInfo &port : QSerialPortInfo::availablePorts()) {
        ports.push_back({port, {}, {}});
        Connection connection(port.systemLocation());
        if (!_asks)
            continue;
        const ExitCode result = connection.open();
        if (result == Interrupted)
            return result;
        if (result != Done)
            continue;
        ports.back().instrument = connection.description();
        ports.back().runningChannels = connection.runningChannels();
    }
    if (_wantsJson) {
        Json list = Json::array();
        for (const ListedPort &listed : ports)
            list.push_back(portJson(listed));
        printJson(list);
    } else if (ports.empty()) {
        Console::instance().note(QStringLiteral("No serial ports. Is the instrument plugged in and switched on?"));
    } else {
        printTable(ports, _asks);
    }
    return Done;
}

} // namespace client
