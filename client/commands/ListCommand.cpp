// SPDX-License-Identifier: MIT
#include "client/commands/ListCommand.h"

#include "client/instruments/Connection.h"
#include "client/instruments/SystemChecks.h"
#include "client/terminal/Console.h"
#include "lab/notation/JsonOutput.h"
#include "lab/notation/PrintableText.h"

#include <QSerialPortInfo>

#include <algorithm>
#include <cstdio>

namespace client {

using namespace lab;

namespace {

struct ListedPort {
    QSerialPortInfo port; // null for one that the system does not list
    QString location;
    bool mayBeAsked;

    QString name() const { return port.isNull() ? location : port.portName(); }

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
    Json json = {{"port", text(listed.name())},
                 {"location", text(listed.location)},
                 {"usb", text(usbIdentity(listed.port))},
                 {"manufacturer", text(listed.port.manufacturer())},
                 {"description", text(listed.port.description())},
                 {"serialNumber", text(listed.port.serialNumber())}};
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
    const QString text =
        QStringLiteral("%1 (%2)").arg(printable(listed.instrument.deviceName), listed.instrument.vanityName);
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
        printLine(listed.name(), usbIdentity(listed.port), orDash(printable(description).trimmed()),
                  hasAsked ? instrumentText(listed) : QString());
    }
}

} // namespace

ListCommand::ListCommand(CLI::App &parent)
    : Command(
          parent, "list", "List the serial ports of this machine",
          "  nimbrelle list\n"
          "  nimbrelle list --ask              # opens the ports that look like an instrument and asks who is there\n"
          "  nimbrelle list --ask /dev/ttyS0   # and this one, whatever it looks like")
{
    CLI::Option *ask = app().add_flag(
        "--ask", _asks, "Open each port that looks like an instrument and ask it (each takes a second or more)");
    app().add_option("PORT", _named, "Ports to ask besides, for example ttyUSB0")->needs(ask);
    addJson(_wantsJson);
}

bool ListCommand::isNamed(const QString &location) const
{
    return std::any_of(_named.begin(), _named.end(), [&location](const std::string &name) {
        return devicePath(QString::fromStdString(name)) == devicePath(location);
    });
}

int ListCommand::run()
{
    std::vector<ListedPort> ports;
    for (const QSerialPortInfo &info : QSerialPortInfo::availablePorts()) {
        const bool isLikely = looksLikeInstrument(info.vendorIdentifier(), info.manufacturer());
        ports.push_back({info, info.systemLocation(), isLikely || isNamed(info.systemLocation()), {}, {}});
    }
    for (const std::string &name : _named) {
        const QString location = devicePath(QString::fromStdString(name));
        const bool isListed = std::any_of(ports.begin(), ports.end(), [&location](const ListedPort &each) {
            return devicePath(each.location) == location;
        });
        if (!isListed) // no serial port by the system's list, such as a pseudo-terminal
            ports.push_back({QSerialPortInfo(), location, true, {}, {}});
    }
    for (ListedPort &listed : ports) {
        if (!_asks || !listed.mayBeAsked)
            continue;
        Connection connection(listed.location);
        const ExitCode result = connection.open();
        if (result == Interrupted)
            return result;
        if (result != Done)
            continue;
        listed.instrument = connection.description();
        listed.runningChannels = connection.runningChannels();
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
