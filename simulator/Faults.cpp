// SPDX-License-Identifier: MIT
#include "simulator/Faults.h"

#include "simulator/Payload.h"

#include <QStringList>

#include <algorithm>
#include <limits>

namespace {

struct NamedCommand {
    const char *name;
    PCcommand_t command;
};

constexpr NamedCommand answeredCommands[] = {
    {"ping", PC_PING},
    {"hardware", PC_READ_HARDWARE_VERSION},
    {"channels", PC_READ_CHANNEL_COUNT},
    {"checksum", PC_READ_FIRMWARE_CHECKSUM},
    {"firmware", PC_READ_FIRMWARE_VERSION},
    {"calibration", PC_READ_FLASH_CAL},
    {"config", PC_READ_CONFIG},
    {"status", PC_READ_DEVICE_STATUS},
    {"node", PC_NODE_APPEND},
    {"limits", PC_CHANNEL_LIMITS},
    {"sampling", PC_MANUAL_SAMPLING_PARAMS},
    {"sdcard", PC_SD_CAL_HEADER_READ},
    {"sddata", PC_SD_CAL_DATA_NEXT},
};

struct NamedStep {
    const char *name;
    BootStep step;
};

constexpr NamedStep bootSteps[] = {
    {"ping", BootStep::Ping},     {"hardware", BootStep::Hardware}, {"channels", BootStep::Channels},
    {"unlock", BootStep::Unlock}, {"prepare", BootStep::Prepare},   {"record", BootStep::Record},
    {"info", BootStep::Info},     {"erase", BootStep::Erase},       {"program", BootStep::Program},
    {"crc", BootStep::Crc},
};

struct NamedAlarm {
    const char *name;
    Notifications_t type;
};

constexpr NamedAlarm alarms[] = {
    {"working-electrode", NT_WE_OUT_OF_RANGE}, {"reference-electrode", NT_RE_OUT_OF_RANGE},
    {"range-up", NT_CURRENT_RANGE_UP},         {"overcurrent", NT_OVERCURRENT},
    {"oscillation", NT_OSCILLATION},           {"text", NT_ERROR_TEXT},
};

template <typename Row, std::size_t size>
const Row *rowNamed(const Row (&rows)[size], const QString &name)
{
    const auto row = std::find_if(std::begin(rows), std::end(rows),
                                  [&](const Row &each) { return name == QLatin1String(each.name); });
    return row == std::end(rows) ? nullptr : row;
}

template <typename Row, std::size_t size>
QString namesOf(const Row (&rows)[size])
{
    QStringList names;
    for (const Row &row : rows)
        names += QLatin1String(row.name);
    return names.join(QLatin1String(", "));
}

bool readNumber(const QString &text, double &number, double least)
{
    bool isGood = false;
    number = text.toDouble(&isGood);
    return isGood && number >= least;
}

/// A whole number that is not less than @p least nor more than @p most.
bool readWhole(const QString &text, int &number, int least, int most)
{
    bool isGood = false;
    number = text.toInt(&isGood);
    return isGood && number >= least && number <= most;
}

/// A verdict other than success; those without a meaning too, since a host must bear them.
bool readRefusal(const QString &text, FirmwareErrorCode &code)
{
    int number = 0;
    if (!readWhole(text, number, 1, std::numeric_limits<qint8>::max()))
        return false;
    code = FirmwareErrorCode(number);
    return true;
}

using Arguments = const QString &;
/// @return whether the arguments make sense
using AddFault = bool (*)(Faults &faults, Arguments arguments);

struct FaultRow {
    const char *kind;
    const char *arguments;
    const char *meaning;
    AddFault add;
};

bool addCommand(QSet<int> &commands, const QString &name)
{
    const NamedCommand *row = rowNamed(answeredCommands, name);
    if (row)
        commands.insert(row->command);
    return row;
}

bool addCount(int &count, const QString &text, int preset)
{
    double number = preset;
    const bool isGood = text.isEmpty() || readNumber(text, number, 1.0);
    count = int(number);
    return isGood;
}

/// What "WHAT[@SECONDS]" says.
struct Timed {
    explicit Timed(const QString &text)
    {
        const QStringList parts = text.split(QLatin1Char('@'));
        what = parts.first();
        isGood = parts.size() == 1 || (parts.size() == 2 && readNumber(parts[1], seconds, 0.0));
    }
    QString what;
    double seconds = 0.0;
    bool isGood;
};

bool addBootStep(Faults &faults, const QString &name)
{
    const NamedStep *row = rowNamed(bootSteps, name);
    if (row)
        faults.boot.silentAt = row->step;
    return row;
}

bool addAlarm(Faults &faults, const QString &text)
{
    const Timed timed(text);
    const NamedAlarm *row = rowNamed(alarms, timed.what);
    if (!row || !timed.isGood)
        return false;
    TimedEvent event;
    event.seconds = timed.seconds;
    event.alarm = row->type;
    if (row->type == NT_CURRENT_RANGE_UP)
        event.payload = packed(quint8(0));
    if (row->type == NT_ERROR_TEXT)
        event.payload = QByteArrayLiteral("Simulated error");
    faults.events.append(event);
    return true;
}

bool addStop(Faults &faults, const QString &text)
{
    const Timed timed(text);
    double type = 0.0;
    if (!timed.isGood || !readNumber(timed.what, type, 1.0) || type > 255.0)
        return false;
    TimedEvent event;
    event.seconds = timed.seconds;
    event.stops = ExpStopType_t(int(type));
    faults.events.append(event);
    return true;
}

bool addMissingCalibration(Faults &faults, const QString &text)
{
    double channel = 0.0;
    if (!readNumber(text, channel, 0.0))
        return false;
    faults.missingCalibration.insert(int(channel));
    return true;
}

bool addLag(Faults &faults, const QString &text)
{
    const Timed timed(text);
    double channel = 0.0;
    if (!timed.isGood || !readNumber(timed.what, channel, 0.0))
        return false;
    faults.lagsFrom.insert(int(channel), timed.seconds);
    return true;
}

bool addRefusedNode(Faults &faults, const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    return parts.size() == 2 && readWhole(parts[0], faults.refusedNode, 1, std::numeric_limits<quint16>::max()) &&
           readRefusal(parts[1], faults.nodeRefusal);
}

bool addDisconnection(Faults &faults, const QString &text)
{
    double number = 0.0;
    if (text.endsWith(QLatin1String("records"))) {
        if (!readNumber(text.left(text.size() - 7), number, 0.0))
            return false;
        faults.disconnectAfter = qint64(number);
        return true;
    }
    return readNumber(text, faults.disconnectAt, 0.0);
}

const FaultRow faultRows[] = {
    // clang-format off
    {"silence", "", "answers nothing", [](Faults &f, Arguments) { return f.isSilent = true; }},
    {"echo", "", "sends back whatever comes in", [](Faults &f, Arguments) { return f.echoes = true; }},
    {"wrong-firmware", "", "reports a checksum that belongs to no image",
        [](Faults &f, Arguments) { return f.hasWrongFirmware = true; }},
    {"unknown-model", "", "reports model number 200", [](Faults &f, Arguments) { return f.hasUnknownModel = true; }},
    {"no-reply", "COMMAND", "leaves a command unanswered",
        [](Faults &f, Arguments a) { return addCommand(f.unanswered, a); }},
    {"no-calibration", "CHANNEL", "leaves out the calibration of one channel", addMissingCalibration},
    {"short-reply", "COMMAND", "cuts the last byte off the answer",
        [](Faults &f, Arguments a) { return addCommand(f.shortReplies, a); }},
    {"late", "MS", "answers each command so much later",
        [](Faults &f, Arguments a) { return addCount(f.delayMs, a, 1500); }},
    {"garbage", "N", "puts garbage before each N-th frame (7)",
        [](Faults &f, Arguments a) { return addCount(f.garbageEvery, a, 7); }},
    {"split", "BYTES", "sends in pieces of so many bytes (5)",
        [](Faults &f, Arguments a) { return addCount(f.pieceSize, a, 5); }},
    {"lost-acks", "N", "loses each N-th acknowledgement (1)",
        [](Faults &f, Arguments a) { return addCount(f.lostAckEvery, a, 1); }},
    {"refuse-start", "CODE", "acknowledges each start, also by hand, with a code from 1 to 127, and does not start",
        [](Faults &f, Arguments a) { return readRefusal(a, f.startRefusal); }},
    {"refuse-node", "N,CODE", "acknowledges the N-th node of each upload with a code, and does not take it",
        addRefusedNode},
    {"sd-magic", "", "gives the SD card's tables a wrong magic",
        [](Faults &f, Arguments) { return f.sdCard.hasWrongMagic = true; }},
    {"sd-cut", "", "falls silent half-way through the SD card's tables",
        [](Faults &f, Arguments) { return f.sdCard.isCutShort = true; }},
    {"sd-file", "", "spoils one table of the SD card", [](Faults &f, Arguments) { return f.sdCard.hasBadFile = true; }},
    {"alarm", "ALARM[@SECONDS]", "reports an alarm during each experiment", addAlarm},
    {"stop", "TYPE[@SECONDS]", "ends each experiment with a stop type", addStop},
    {"lag", "CHANNEL[@SECONDS]", "lets the counter of a linked channel fall behind its group's", addLag},
    {"disconnect", "SECONDS|Nrecords", "pulls the cable, so long after the first start or after N records",
        addDisconnection},
    {"boot-silence", "STEP", "leaves a command to the bootloader unanswered", addBootStep},
    {"boot-crc", "", "tells a wrong CRC of the flash", [](Faults &f, Arguments) { return f.boot.hasWrongCrc = true; }},
    {"boot-refuse", "N", "refuses the N-th record of an image (1)",
        [](Faults &f, Arguments a) { return addCount(f.boot.refusedRecord, a, 1); }},
    {"boot-power", "N", "loses power at the N-th batch of an image, over a serial port at the N-th record (1)",
        [](Faults &f, Arguments a) { return addCount(f.boot.powerLossAt, a, 1); }},
    {"boot-deaf", "MS", "takes no HID report for so long (60000)",
        [](Faults &f, Arguments a) { return addCount(f.boot.deafMs, a, 60000); }},
    // clang-format on
};

} // namespace

QString Faults::add(const QString &text)
{
    const QString kind = text.section(QLatin1Char(':'), 0, 0);
    const FaultRow *row = std::find_if(std::begin(faultRows), std::end(faultRows),
                                       [&kind](const FaultRow &each) { return kind == QLatin1String(each.kind); });
    if (row == std::end(faultRows))
        return QStringLiteral("there is no fault named '%1'").arg(kind);
    if (!row->add(*this, text.section(QLatin1Char(':'), 1)))
        return QStringLiteral("'%1' wants '%2:%3'").arg(text, kind, QLatin1String(row->arguments));
    std::stable_sort(events.begin(), events.end(),
                     [](const TimedEvent &a, const TimedEvent &b) { return a.seconds < b.seconds; });
    return QString();
}

QString Faults::help()
{
    QString text = QStringLiteral("Faults:\n");
    for (const FaultRow &row : faultRows) {
        const QString name = QLatin1String(row.kind) + (row.arguments[0] ? QStringLiteral(":") : QString()) +
                             QLatin1String(row.arguments);
        text += QStringLiteral("  %1 %2\n").arg(name, -28).arg(QLatin1String(row.meaning));
    }
    text += QStringLiteral("  COMMAND is one of %1\n").arg(namesOf(answeredCommands));
    text += QStringLiteral("  STEP is one of %1\n").arg(namesOf(bootSteps));
    text += QStringLiteral("  ALARM is one of %1\n").arg(namesOf(alarms));
    return text;
}
