#include "plots/RunPlots.h"

#include "plots/RunData.h"
#include "plots/TimePlot.h"

#include <QDir>

namespace client {

bool drawRun(const QString &folder)
{
    const std::optional<RunData> run = readRun(folder);
    if (!run || run->dc.isEmpty())
        return false;
    const QDir directory(folder);
    return drawTimePlot(*run, directory.filePath(QStringLiteral("time")));
}

} // namespace client
