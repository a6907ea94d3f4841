// SPDX-License-Identifier: MIT
#include "client/commands/DoctorCommand.h"

#include "VekErrorCode.h"
#include "client/instruments/BuildFirmware.h"
#include "client/instruments/Connection.h"
#include "lab/notation/JsonOutput.h"
#include "lab/notation/PrintableText.h"

#include <QSerialPortInfo>

#include <algorithm>
#include <cstdio>

namespace client {

using namespace lab;

namespace {

const char *levelName(Finding::Level level)
{
    switch (level) {
    case Finding::Level::Good:
        return "ok";
    case Finding::Level::Doubtful:
        return "maybe";
    case Finding::Level::Bad:
        return "bad";
    }
    return "";
}

bool isBad(const Finding &finding)
{
    return finding.level == Finding::Level::Bad;
}

/// What helps against a refusal; the first row that is in the text of the refusal counts, %1 is the port.
struct CureRow {
    VekErrorCode::ErrorCode code;
    const char *part;
    const char *cure;
};

constexpr CureRow cureRows[] = {
    {VekErrorCode::ConnectionInProgress, "", "nimbrelle info %1"},
    {VekErrorCode::DeviceNotFound, "", "nimbrelle list"},
    {VekErrorCode::ConnectionFailed, "hardware version is invalid",
     "nimbrelle --version (this version may not know the model: ask for a newer one)"},
    {VekErrorCode::ConnectionFailed, "did not become ready",
     "unplug the instrument, count to ten, plug it in again, then: nimbrelle info %1"},
    {VekErrorCode::ConnectionFailed, "was lost", "another cable or port, without a hub, then: nimbrelle info %1"},
    {VekErrorCode::ConnectionFailed, "calibration data",
     "unplug the instrument, count to ten, plug it in again; if that does not help, it needs service"},
    {VekErrorCode::ConnectionFailed, "configuration data",
     "switch the instrument off and on; if that does not help, a board of it needs service"},
    {VekErrorCode::ConnectionFailed, "was not received",
     "another cable or port, without a hub, then: nimbrelle info %1"},
    {VekErrorCode::ConnectionFailed, "",
     "unplug the instrument, count to ten, plug it in again; one that was left in its bootloader: nimbrelle update "
     "--all"},
    {VekErrorCode::Unknown, "", "nimbrelle list (the port sends back what it is sent: no instrument is on it)"},
};

QString cureOf(const VekErrorCode &refusal, const QString &port)
{
    for (const CureRow &row : cureRows) {
        if (refusal.value() == row.code && refusal.message().contains(QLatin1String(row.part)))
            return QString::fromLatin1(row.cure).replace(QLatin1String("%1"), port);
    }
    return QStringLiteral("switch the instrument off and on, then: nimbrelle info %1").arg(port);
}

Findings connectionFindings(const QString &port)
{
    Connection connection(port);
    const VekErrorCode result = connection.connect();
    Findings findings;
    switch (result.value()) {
    case VekErrorCode::Success:
        findings.push_back(
            {Finding::Level::Good, QStringLiteral("An instrument answers, and its firmware is right."), {}});
        break;
    case VekErrorCode::FirmwareNotSupported:
        return {{Finding::Level::Bad, QStringLiteral("An instrument answers, %1").arg(refusalText(result)),
                 areUpdatesRefused() ? realImagesCommand() : QStringLiteral("nimbrelle update %1").arg(port)}};
    default:
        return {{Finding::Level::Bad, QStringLiteral("No instrument could be reached, %1").arg(refusalText(result)),
                 cureOf(result, port)}};
    }
    for (const int channel : connection.runningChannels())
        findings.push_back({Finding::Level::Doubtful, connection.runningText(channel), {}});
    return findings;
}

void append(Findings &findings, const Findings &more)
{
    findings.insert(findings.end(), more.begin(), more.end());
}

/// Instruments without firmware, which have no serial port.
Findings bootloaderFindings()
{
    Findings findings;
    for (const QString &node : bootloaderNodes()) {
        findings.push_back({Finding::Level::Bad,
                            QStringLiteral("An instrument without firmware waits in its bootloader, on %1.").arg(node),
                            areUpdatesRefused() ? realImagesCommand() : QStringLiteral("nimbrelle update --all")});
        const Finding rights = checkRights(node);
        if (isBad(rights))
            findings.push_back({rights.level, QStringLiteral("%1: %2").arg(node, rights.text), rights.command});
    }
    return findings;
}

/// Without a command: whether it is in anybody's way shows by what an instrument answers.
Finding imagesFinding()
{
    return {areUpdatesRefused() ? Finding::Level::Doubtful : Finding::Level::Good, firmwareImagesText(), {}};
}

/// In the order in which one stands in the way of the next; what a broken one makes pointless is left out.
Findings examinePort(const QString &port)
{
    Findings findings{checkPresence(port)};
    if (isBad(findings.back()))
        return findings;
    findings.push_back(checkRights(port));
    append(findings, checkHolders(port));
    findings.push_back(checkUdevRule());
    findings.push_back(checkModemManager());
    findings.push_back(imagesFinding());
    if (std::none_of(findings.begin(), findings.end(), isBad))
        append(findings, connectionFindings(port));
    return findings;
}

Findings examineMachine()
{
    Findings findings;
    for (const QSerialPortInfo &info : QSerialPortInfo::availablePorts()) {
        if (!looksLikeInstrument(info.vendorIdentifier(), info.manufacturer()))
            continue; // its rights are nobody's concern here
        const QString port = info.systemLocation();
        findings.push_back(checkPresence(port));
        findings.push_back(checkRights(port));
        append(findings, checkHolders(port));
    }
    append(findings, bootloaderFindings());
    if (findings.empty())
        findings.push_back({Finding::Level::Bad, QStringLiteral("No instrument found on any port."),
                            QStringLiteral("plug the instrument in, switch it on, then: sudo dmesg | tail")});
    findings.push_back(checkUdevRule());
    findings.push_back(checkModemManager());
    findings.push_back(imagesFinding());
    return findings;
}

void printFindings(const Findings &findings)
{
    for (const Finding &finding : findings) {
        std::printf("%-5s  %s", levelName(finding.level), qPrintable(printable(finding.text)));
        if (!finding.command.isEmpty())
            std::printf("  Try: %s", qPrintable(printable(finding.command)));
        std::printf("\n");
    }
}

Json findingsJson(const Findings &findings)
{
    Json list = Json::array();
    for (const Finding &finding : findings)
        list.push_back(
            {{"level", levelName(finding.level)}, {"text", text(finding.text)}, {"command", text(finding.command)}});
    return list;
}

} // namespace

DoctorCommand::DoctorCommand(CLI::App &parent)
    : Command(parent, "doctor", "Find out why an instrument cannot be reached",
              "  nimbrelle doctor            # looks at the machine, opens nothing\n"
              "  nimbrelle doctor ttyACM0    # and asks the instrument on this port")
{
    app().add_option("PORT", _port, "Serial port to open; without it no port is opened");
    addJson(_wantsJson);
}

int DoctorCommand::run()
{
    const Findings findings = _port.empty() ? examineMachine() : examinePort(QString::fromStdString(_port));
    if (_wantsJson)
        printJson(findingsJson(findings));
    else
        printFindings(findings);
    return std::any_of(findings.begin(), findings.end(), isBad) ? NoConnection : Done;
}

} // namespace client
