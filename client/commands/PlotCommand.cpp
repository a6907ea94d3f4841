#include "commands/PlotCommand.h"

#include "Console.h"
#include "plots/RunPlots.h"

namespace client {

PlotCommand::PlotCommand(CLI::App &parent)
    : Command(parent, "plot", "Draw the result of a recorded run, as SVG and PNG in its folder",
              "  nimbrelle plot cycle-20260301-101500")
{
    app().add_option("FOLDER", _folders, "Folder of a run")->required();
}

int PlotCommand::run()
{
    ExitCode result = Done;
    for (const std::string &each : _folders) {
        const QString folder = QString::fromStdString(each);
        if (drawRun(folder))
            continue;
        Console::instance().error(QStringLiteral("%1: no run with data, or no files could be written").arg(folder));
        result = LocalFailure;
    }
    return result;
}

} // namespace client
