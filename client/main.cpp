// SPDX-License-Identifier: MIT
#include "VekVersion.h"
#include "client/commands/DoctorCommand.h"
#include "client/commands/ElementsCommand.h"
#include "client/commands/InfoCommand.h"
#include "client/commands/LimitsCommand.h"
#include "client/commands/ListCommand.h"
#include "client/commands/ManualCommand.h"
#include "client/commands/MonitorCommand.h"
#include "client/commands/Pictures.h"
#include "client/commands/PlanCommand.h"
#include "client/commands/PlotCommand.h"
#include "client/commands/RunCommand.h"
#include "client/commands/StopCommand.h"
#include "client/commands/UpdateCommand.h"
#include "client/instruments/BuildFirmware.h"
#include "client/terminal/Console.h"
#include "client/terminal/ExitCode.h"
#include "client/terminal/SignalWatcher.h"
#include "lab/notation/Suggestion.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>
#include <sstream>
#include <vector>

namespace {

using namespace client;
using namespace lab;

using Commands = std::vector<std::unique_ptr<Command>>;

constexpr const char *examples =
    "Examples:\n"
    "  nimbrelle list                                    # which ports are there?\n"
    "  nimbrelle info ttyACM0                            # who is on this one?\n"
    "  nimbrelle plan cycle.json --model Alder_2_5       # check an experiment\n"
    "  nimbrelle run cycle.json --port ttyACM0 --plot    # run and record it\n"
    "  nimbrelle stop ttyACM0 --all                      # end whatever it runs\n"
    "  nimbrelle COMMAND --help                          # more on one command\n"
    "\n"
    "Exit codes: 0 done, 1 a file could not be written, 2 usage or a bad experiment file,\n"
    "3 no connection, 4 refused or stopped by the instrument, 130 interrupted.";

std::string versionText()
{
    return "nimbrelle " NIMBRELLE_VERSION_STRING "\n" + firmwareImagesText().toStdString();
}

template <typename... Each>
Commands makeCommands(CLI::App &app)
{
    Commands commands;
    (commands.push_back(std::make_unique<Each>(app)), ...);
    return commands;
}

/// Only what draws takes any part of the GUI. @return null, after a message, where that is not to be had
std::unique_ptr<QCoreApplication> makeApplication(const Command &command, int &argc, char **argv)
{
    if (!command.drawsPictures())
        return std::make_unique<QCoreApplication>(argc, argv);
    plots::PlotModule *const module = plotModule();
    return module ? module->makeApplication(argc, argv) : nullptr;
}

/// Qt's own dispatcher takes a third less processor time for each packet than GLib's. The user's choice goes first.
void chooseEventDispatcher()
{
    if (!qEnvironmentVariableIsSet("QT_NO_GLIB"))
        qputenv("QT_NO_GLIB", "1");
}

int execute(const Commands &commands, int &argc, char **argv)
{
    for (const std::unique_ptr<Command> &command : commands) {
        if (!command->isChosen())
            continue;
        chooseEventDispatcher();
        const std::unique_ptr<QCoreApplication> application = makeApplication(*command, argc, argv);
        if (!application)
            return LocalFailure;
        const SignalWatcher watcher;
        return command->run();
    }
    return BadInput;
}

QStringList optionNames(const CLI::App &app)
{
    QStringList names;
    for (const CLI::Option *option : app.get_options()) {
        for (const std::string &name : option->get_lnames())
            names.append(QStringLiteral("--") + QString::fromStdString(name));
    }
    for (const CLI::App *each : app.get_subcommands([](const CLI::App *) { return true; })) {
        if (each->get_name().empty()) // a group of options
            names.append(optionNames(*each));
    }
    return names;
}

QStringList commandNames(const CLI::App &app)
{
    QStringList names;
    for (const CLI::App *each : app.get_subcommands([](const CLI::App *) { return true; }))
        names.append(QString::fromStdString(each->get_name()));
    return names;
}

/// What nothing takes of what was typed; the parser would rather name what is missing for it.
QString unknownWord(const CLI::App &app)
{
    const std::vector<CLI::App *> chosen = app.get_subcommands();
    for (const std::string &each : app.remaining(true)) {
        const QString word = QString::fromStdString(each).section(QLatin1Char('='), 0, 0);
        const bool isOption = word.startsWith(QLatin1String("--"));
        if (isOption) {
            const QStringList known = optionNames(chosen.empty() ? app : *chosen.front()) + optionNames(app);
            return QStringLiteral("there is no option \"%1\"%2").arg(word, didYouMean(word, known));
        }
        if (chosen.empty())
            return QStringLiteral("there is no command \"%1\"%2").arg(word, didYouMean(word, commandNames(app)));
    }
    return {};
}

/// What was typed stands in a complaint, and may hold anything.
int tellUsage(const CLI::App &app, const CLI::ParseError &error)
{
    std::ostringstream help;
    std::ostringstream complaint;
    const bool isHelp = app.exit(error, help, complaint) == 0;
    std::fputs(help.str().c_str(), stdout);
    const QString unknown = isHelp ? QString() : unknownWord(app);
    if (!unknown.isEmpty())
        Console::instance().error(unknown);
    if (!complaint.str().empty())
        Console::instance().complaint(QString::fromStdString(complaint.str()).trimmed());
    return isHelp ? Done : BadInput;
}

} // namespace

int main(int argc, char **argv)
{
    CLI::App app("Control and record Nimbrelle electrochemical instruments", "nimbrelle");
    app.set_version_flag("--version", versionText);
    app.require_subcommand(1);
    app.footer(examples);
    bool isQuiet = false;
    bool isVerbose = false;
    app.add_flag("-q,--quiet", isQuiet, "Only errors on standard error");
    app.add_flag("-v,--verbose", isVerbose, "The library's diagnostic lines too");
    const Commands commands =
        makeCommands<ListCommand, InfoCommand, DoctorCommand, ElementsCommand, PlanCommand, RunCommand, PlotCommand,
                     MonitorCommand, ManualCommand, StopCommand, LimitsCommand, UpdateCommand>(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return tellUsage(app, error);
    }
    using Verbosity = Console::Verbosity;
    Console::instance().setVerbosity(isQuiet ? Verbosity::Quiet : isVerbose ? Verbosity::Verbose : Verbosity::Normal);
    return execute(commands, argc, argv);
}
