#include "plots/RunPlots.h"

#include "plots/Cycling.h"
#include "plots/Impedance.h"
#include "plots/MottSchottky.h"
#include "plots/RunData.h"
#include "plots/TimePlot.h"
#include "plots/Voltammogram.h"

#include <QApplication>
#include <QDir>

namespace client {

std::unique_ptr<QCoreApplication> makeDrawingApplication(int &argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QApplication>(argc, argv);
}

bool drawRun(const QString &folder)
{
    const std::optional<RunData> run = readRun(folder);
    if (!run || (run->dc.isEmpty() && run->ac.isEmpty()))
        return false;
    bool isDrawn = run->dc.isEmpty() || drawTimePlot(*run, QDir(folder).filePath(QStringLiteral("time")));
    for (const auto &draw : {drawVoltammograms, drawImpedance, drawMottSchottky, drawCycling})
        isDrawn = draw(*run, folder) && isDrawn;
    return isDrawn;
}

} // namespace client
