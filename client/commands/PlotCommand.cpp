// SPDX-License-Identifier: MIT
#include "client/commands/PlotCommand.h"

#include "client/commands/Pictures.h"
#include "client/terminal/Console.h"

#include <QFileInfo>

#include <algorithm>

namespace client {

PlotCommand::PlotCommand(CLI::App &parent)
    : Command(parent, "plot", "Draw the result of a recorded run, as SVG and PNG in its folder",
              "  nimbrelle plot cycle-20260301-101500")
{
    app().add_option("FOLDER", _folders, "Folder of a run")->required();
}

/// For a folder that is not there nothing has to be loaded.
bool PlotCommand::drawsPictures() const
{
    return std::any_of(_folders.begin(), _folders.end(),
                       [](const std::string &each) { return QFileInfo(QString::fromStdString(each)).isDir(); });
}

int PlotCommand::run()
{
    ExitCode result = Done;
    for (const std::string &each : _folders) {
        const QString folder = QString::fromStdString(each);
        const bool isFolder = QFileInfo(folder).isDir();
        if (isFolder && drawPictures(folder))
            continue;
        Console::instance().error((isFolder ? QStringLiteral("%1: no run with data, or no files could be written")
                                            : QStringLiteral("%1: there is no such folder"))
                                      .arg(folder));
        result = LocalFailure;
    }
    return result;
}

} // namespace client
