#include "plots/RunPlots.h"

#include "Console.h"
#include "plots/Cycling.h"
#include "plots/Fonts.h"
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

namespace {

void tellMissingLetters(const QString &title)
{
    const QString letters = lettersWithoutGlyph(title + QString::fromUtf8("Ω µ °")); // and those of the axes
    if (!letters.isEmpty())
        Console::instance().note(QStringLiteral("no font of this computer has the letters \"%1\" of the pictures; the "
                                                "Debian package fonts-unifont has almost all there are")
                                     .arg(letters));
}

} // namespace

bool drawRun(const QString &folder)
{
    const std::optional<RunData> run = readRun(folder);
    if (!run)
        return false;
    for (const QString &oddity : run->oddities)
        Console::instance().note(QStringLiteral("%1: %2").arg(folder, oddity));
    if (run->dc.empty() && run->ac.empty())
        return false;
    tellMissingLetters(run->title);
    bool isDrawn = run->dc.empty() || drawTimePlot(*run, QDir(folder).filePath(QStringLiteral("time")));
    for (const auto &draw : {drawVoltammograms, drawImpedance, drawMottSchottky, drawCycling})
        isDrawn = draw(*run, folder) && isDrawn;
    return isDrawn;
}

} // namespace client
