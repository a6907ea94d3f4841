// SPDX-License-Identifier: MIT
#include "client/commands/RunCommand.h"

#include "VekExperimentPlan.h"
#include "VekInstrumentHandler.h"
#include "client/commands/Pictures.h"
#include "client/instruments/Connection.h"
#include "client/terminal/Console.h"
#include "client/terminal/SignalWatcher.h"
#include "lab/experiments/ExperimentCheck.h"
#include "lab/experiments/ExperimentFile.h"
#include "lab/notation/JsonOutput.h"
#include "lab/notation/PrintableText.h"
#include "lab/records/RunRecorder.h"
#include "lab/runs/EventWait.h"
#include "lab/runs/RecordedRun.h"
#include "lab/runs/RunSignals.h"

#include <QDir>
#include <QRegularExpression>

#include <algorithm>
#include <cstdio>
#include <tuple>

namespace client {

using namespace lab;

namespace {

/// A name for a folder: the experiment's name without what shells and file systems make trouble over.
QString folderName(const QString &experimentName)
{
    static const QRegularExpression unwelcome(QStringLiteral("[^A-Za-z0-9._-]+"));
    const QString name = QString(experimentName).replace(unwelcome, QStringLiteral("-")).left(60);
    const QString utc = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    return QStringLiteral("%1-%2").arg(name.isEmpty() ? QStringLiteral("run") : name, utc);
}

ExitCode exitCodeOf(const VekErrorCode &error)
{
    switch (error.value()) {
    case VekErrorCode::InvalidParameters:
    case VekErrorCode::ImplausibleParameters:
    case VekErrorCode::ExperimentTooLarge:
    case VekErrorCode::ExperimentIsEmpty:
    case VekErrorCode::InvalidChannel:
        return BadInput;
    case VekErrorCode::DeviceNotFound:
        return NoConnection;
    default:
        return Refused;
    }
}

ExitCode exitCodeOf(const RecordedRun &run)
{
    if (run.isRecordToBlame())
        return LocalFailure;
    switch (run.state()) {
    case RunState::Interrupted:
        return Interrupted;
    case RunState::DeviceLost:
        return NoConnection;
    case RunState::Stopped:
        return Refused;
    case RunState::Running:
    case RunState::Completed:
        break;
    }
    return Done;
}

/// Complains about what is no list of channels, in the way of the option parser.
std::string isChannelList(const std::string &text)
{
    static const QRegularExpression list(QStringLiteral("^\\d{1,3}(,\\d{1,3})+$"));
    return list.match(QString::fromStdString(text)).hasMatch() ? std::string() : "takes a list such as 0,1";
}

std::vector<int> channelsIn(const std::string &group)
{
    std::vector<int> channels;
    for (const QString &number : QString::fromStdString(group).split(QLatin1Char(',')))
        channels.push_back(number.toInt());
    return channels;
}

/// The most telling of several ends: a failure before an interruption before success.
int severity(ExitCode exitCode)
{
    switch (exitCode) {
    case Done:
        return 0;
    case Interrupted:
        return 1;
    default:
        return 2 + (exitCode == NoConnection ? 1 : 0);
    }
}

} // namespace

RunCommand::RunCommand(CLI::App &parent)
    : Command(parent, "run", "Run an experiment and record it in a folder",
              "  nimbrelle run cycle.json --port ttyACM0 --plot\n"
              "  nimbrelle run a.json b.json --port ttyACM0 --channel 0,1 --out results\n"
              "  nimbrelle run cycle.json --port ttyACM0 --max-voltage 4.25V\n"
              "  nimbrelle run cycle.json --port ttyACM0 --link 0,1,2,3\n"
              "The folder of the run is printed to standard output. Ctrl-C stops the experiment on the instrument and\n"
              "keeps the data; a second Ctrl-C, a second or more later, ends the program at once.")
{
    app().add_option("FILE", _paths, "Experiment file: one for all channels, or one for each")->required();
    app().add_option("-p,--port", _port, "Serial port, for example ttyACM0 or /dev/ttyACM0")->required();
    CLI::Option *channels = addChannels(_channels);
    for (const auto &[name, groups, help] :
         {std::tuple{"--link", &_parallelGroups, "Run these channels in parallel as one, for example 0,1,2,3"},
          std::tuple{"--bipolar", &_bipolarGroups, "Run an even channel and the next one in series as one"}})
        app().add_option(name, *groups, help)->type_name("N,N...")->check(isChannelList)->excludes(channels);
    app().add_option("-o,--out", _folder,
                     "Folder to record in (default: the experiment's name and the time); several channels get a "
                     "folder each in it");
    app().add_flag("--keep-going", _keepsGoing, "Go on when the disk takes no more rows, instead of stopping");
    app().add_flag("--plot", _plots, "Draw the result into the folder, as SVG and PNG");
    addSafetyLimits(_limits);
    addJson(_wantsJson);
}

RunCommand::~RunCommand() = default;

int RunCommand::run()
{
    if (const ExitCode failure = readFiles())
        return failure;
    const bool isLinked = !_parallelGroups.empty() || !_bipolarGroups.empty();
    if (const ExitCode failure = isLinked ? Done : assignChannels())
        return failure;
    Connection connection(QString::fromStdString(_port));
    if (const ExitCode failure = connection.openToDrive(drivenChannels()))
        return failure;
    const VekErrorCode fault = _limits.check(connection.description());
    if (fault != VekErrorCode::Success) {
        Console::instance().error(refusalText(fault));
        return exitCodeOf(fault);
    }
    if (const ExitCode failure = isLinked ? linkChannels(connection) : Done)
        return failure;
    for (Task &task : _tasks) {
        if (const ExitCode failure = upload(connection, task))
            return failure;
    }
    if (SignalWatcher::wasInterrupted())
        return Interrupted;
    connection.handler().setLastSampleOfNodeReported(true); // the moment that ends a step is on record
    const ExitCode failure = startAll(connection);
    wait();
    const ExitCode result = report();
    return failure ? failure : result;
}

ExitCode RunCommand::readFiles()
{
    ExitCode result = Done;
    for (const std::string &path : _paths) {
        _files.push_back(readExperimentFile(QString::fromStdString(path)));
        tellComplaints(_files.back().path, _files.back().complaints);
        if (!_files.back().isUsable())
            result = BadInput;
    }
    return result;
}

/// Every channel that will be driven, each member of a group.
std::vector<int> RunCommand::drivenChannels() const
{
    std::vector<int> channels;
    for (const std::vector<std::string> *groups : {&_parallelGroups, &_bipolarGroups}) {
        for (const std::string &group : *groups) {
            const std::vector<int> members = channelsIn(group);
            channels.insert(channels.end(), members.begin(), members.end());
        }
    }
    return channels.empty() ? _channels : channels;
}

/// Each group then runs as its lowest channel; every member watches the limits.
ExitCode RunCommand::linkChannels(const Connection &connection)
{
    const VekInstrumentHandler &handler = connection.handler();
    std::vector<int> masters;
    const auto link = [&](const std::string &group, auto setLinked) {
        const std::vector<int> members = channelsIn(group);
        const int master = (handler.*setLinked)(std::vector<unsigned char>(members.begin(), members.end()));
        if (master < 0)
            Console::instance().error(
                QStringLiteral("channels %1 cannot be linked on this instrument").arg(QString::fromStdString(group)));
        masters.push_back(master);
        return master >= 0;
    };
    for (const std::string &group : _parallelGroups) {
        if (!link(group, &VekInstrumentHandler::setLinkedChannels))
            return Refused;
    }
    for (const std::string &group : _bipolarGroups) {
        if (!link(group, &VekInstrumentHandler::setBipolarLinkedChannels))
            return Refused;
    }
    _channels = masters;
    return assignChannels();
}

ExitCode RunCommand::assignChannels()
{
    if (_files.size() != 1 && _files.size() != _channels.size()) {
        Console::instance().error(QStringLiteral("%1 files for %2 channels: give one file, or one for each channel")
                                      .arg(_files.size())
                                      .arg(_channels.size()));
        return BadInput;
    }
    for (std::size_t index = 0; index < _channels.size(); ++index) {
        const bool isTwice = std::count(_channels.begin(), _channels.end(), _channels[index]) > 1;
        if (isTwice) {
            Console::instance().error(QStringLiteral("channel %1 is given twice").arg(_channels[index]));
            return BadInput;
        }
        _tasks.push_back({_channels[index], _files.size() == 1 ? &_files.front() : &_files[index], nullptr, nullptr});
    }
    return Done;
}

/// Of a linked group on each of its members, which measure what passes through themselves.
VekErrorCode RunCommand::applyLimits(const VekInstrumentHandler &handler, unsigned char channel) const
{
    const std::vector<unsigned char> group = handler.getLinkedChannels(channel);
    for (const unsigned char member : group.empty() ? std::vector<unsigned char>{channel} : group) {
        const VekErrorCode result = _limits.replace(handler, member);
        if (result != VekErrorCode::Success)
            return result;
    }
    return VekErrorCode::Success;
}

ExitCode RunCommand::upload(const Connection &connection, Task &task) const
{
    const VekInstrumentHandler &handler = connection.handler();
    const auto channel = static_cast<unsigned char>(task.channel);
    // The limits behind the upload, which an instrument refuses that still drives the cell under those of before.
    VekErrorCode result = handler.uploadExperimentToChannel(channel, task.file->experiment);
    if (result == VekErrorCode::Success)
        result = applyLimits(handler, channel);
    if (result == VekErrorCode::Success)
        return Done;
    Console::instance().error(QStringLiteral("channel %1: %2").arg(QString::number(task.channel), refusalText(result)));
    const auto plan = VekExperimentPlan::forModel(task.file->experiment, connection.description());
    if (plan.result() == result.value())
        tellComplaints(task.file->path, complaintsOf(*task.file, plan, connection.description().modelNumber));
    const bool mayRun = handler.channelReport(channel) == VekChannelReport::Unknown;
    if (result == VekErrorCode::UploadFailed && mayRun)
        Console::instance().note(
            QStringLiteral("if the channel still runs an experiment: nimbrelle stop %1 --channel %2")
                .arg(QString::fromStdString(_port), QString::number(task.channel)));
    return exitCodeOf(result);
}

ExitCode RunCommand::start(const Connection &connection, Task &task) const
{
    const RunSetup setup{connection.description(), task.channel,    task.file->path,
                         task.file->text,          task.file->name, task.file->description};
    task.recorder = std::make_unique<RunRecorder>();
    if (!task.recorder->create(folderOf(task), setup)) {
        Console::instance().error(task.recorder->error());
        return LocalFailure;
    }
    const auto channel = static_cast<unsigned char>(task.channel);
    const auto plan = VekExperimentPlan::forModel(task.file->experiment, connection.description());
    task.run = std::make_unique<RecordedRun>(
        connection.handler(), *_signals, channel, *task.recorder, RunProgress(plan),
        _keepsGoing ? RecordedRun::WhenUnrecorded::KeepGoing : RecordedRun::WhenUnrecorded::Stop);
    QObject::connect(task.run.get(), &RecordedRun::troubled, task.run.get(),
                     [](const QString &text) { Console::instance().error(text); });
    const VekErrorCode result = task.run->start();
    if (result == VekErrorCode::Success)
        return Done;
    task.run.reset();
    Console::instance().error(QStringLiteral("channel %1: %2").arg(QString::number(task.channel), refusalText(result)));
    return exitCodeOf(result);
}

ExitCode RunCommand::startAll(const Connection &connection)
{
    _signals = std::make_unique<RunSignals>(connection.handler());
    for (Task &task : _tasks) {
        const ExitCode failure = start(connection, task);
        if (!failure)
            continue;
        interruptAll();
        return failure;
    }
    return Done;
}

void RunCommand::wait()
{
    EventWait wait;
    for (const Task &task : _tasks) {
        if (!task.run)
            continue;
        const RecordedRun &run = *task.run;
        QObject::connect(&run, &RecordedRun::progressed, &wait, [this, &run] {
            Console::instance().progress([&](int room) { return progressLines(run, room); });
        });
        QObject::connect(&run, &RecordedRun::finished, &wait, [this, &wait] {
            if (isOver())
                wait.end();
        });
    }
    QObject::connect(SignalWatcher::instance(), &SignalWatcher::interrupted, &wait, [this] { onInterrupted(); });
    if (SignalWatcher::wasInterrupted())
        onInterrupted(); // while the experiments were being started
    if (!isOver())
        wait.exec();
    Console::instance().endProgress();
}

bool RunCommand::isOver() const
{
    return std::all_of(_tasks.begin(), _tasks.end(),
                       [](const Task &task) { return !task.run || task.run->state() != RunState::Running; });
}

void RunCommand::onInterrupted() const
{
    Console::instance().note(
        QStringLiteral("Stopping; Ctrl-C once more, a second or more later, ends the program at once."));
    interruptAll();
}

void RunCommand::interruptAll() const
{
    for (const Task &task : _tasks) {
        if (task.run)
            task.run->interrupt();
    }
}

ExitCode RunCommand::report() const
{
    ExitCode result = Done;
    Json list = Json::array();
    bool hasToldLoss = false;
    for (const Task &task : _tasks) {
        if (!task.run)
            continue;
        tellEnd(task, hasToldLoss);
        hasToldLoss = hasToldLoss || task.run->state() == RunState::DeviceLost;
        const ExitCode exitCode = exitCodeOf(*task.run);
        if (severity(exitCode) > severity(result))
            result = exitCode;
        if (_plots && !drawPictures(task.recorder->folder()))
            Console::instance().note(QStringLiteral("%1: nothing to draw").arg(task.recorder->folder()));
        list.push_back(summaryOf(task));
        if (!_wantsJson)
            std::printf("%s\n", qPrintable(task.recorder->folder()));
    }
    if (_wantsJson)
        printJson(list);
    return result;
}

void RunCommand::tellEnd(const Task &task, bool hasToldLoss)
{
    const ExitCode exitCode = exitCodeOf(*task.run);
    const QString message =
        QStringLiteral("channel %1: %2").arg(QString::number(task.channel), printable(task.run->endMessage()));
    if (task.run->state() == RunState::DeviceLost) {
        if (!hasToldLoss) // a lost device ends all of its channels
            Console::instance().error(task.run->endMessage());
    } else if (exitCode == Done || exitCode == Interrupted) {
        Console::instance().note(message);
    } else {
        Console::instance().error(exitCode == LocalFailure ? task.recorder->error() : message);
    }
}

Json RunCommand::summaryOf(const Task &task)
{
    return {{"channel", task.channel},
            {"folder", text(task.recorder->folder())},
            {"state", text(runStateName(task.run->state()))},
            {"endMessage", text(task.run->endMessage())},
            {"dcRows", task.recorder->dcRowCount()},
            {"acRows", task.recorder->acRowCount()}};
}

QString RunCommand::folderOf(const Task &task) const
{
    const QString folder = _folder.empty() ? folderName(task.file->name) : QString::fromStdString(_folder);
    if (_tasks.size() == 1)
        return folder;
    return QDir(folder).filePath(QStringLiteral("channel-%1").arg(task.channel));
}

/// A line for each channel where there is room, else one for all with the latest word of one.
QStringList RunCommand::progressLines(const RecordedRun &latest, int room) const
{
    QStringList lines;
    int running = 0;
    qint64 points = 0;
    for (const Task &task : _tasks) {
        if (!task.run)
            continue;
        lines.append(QStringLiteral("channel %1: %2").arg(QString::number(task.channel), task.run->progressText()));
        running += task.run->state() == RunState::Running ? 1 : 0;
        points += task.recorder->dcRowCount() + task.recorder->acRowCount();
    }
    if (_tasks.size() == 1)
        return {latest.progressText()};
    if (lines.size() <= room)
        return lines;
    return {QStringLiteral("%1 of %2 channels running | %3 points | channel %4: %5")
                .arg(QString::number(running), QString::number(_tasks.size()), QString::number(points),
                     QString::number(latest.channel()), latest.progressText())};
}

} // namespace client
