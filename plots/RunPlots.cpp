// SPDX-License-Identifier: MIT
#include "plots/RunPlots.h"

#include "lab/records/RunData.h"
#include "plots/Cycling.h"
#include "plots/Fonts.h"
#include "plots/Impedance.h"
#include "plots/MottSchottky.h"
#include "plots/TimePlot.h"
#include "plots/Voltammogram.h"

#include <QApplication>
#include <QDir>

namespace plots {

using namespace lab;

std::unique_ptr<QCoreApplication> makeDrawingApplication(int &argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QApplication>(argc, argv);
}

namespace {

/// Empty when the fonts have all of them.
QStringList missingLettersNote(const QString &title)
{
    const QString letters = lettersWithoutGlyph(title + QString::fromUtf8("Ω µ °")); // and those of the axes
    if (letters.isEmpty())
        return {};
    return {QStringLiteral("no font of this computer has the letters \"%1\" of the pictures; the Debian package "
                           "fonts-unifont has almost all there are")
                .arg(letters)};
}

} // namespace

Drawing drawRun(const QString &folder)
{
    const std::optional<RunData> run = readRun(folder);
    if (!run)
        return {};
    Drawing drawing;
    for (const QString &oddity : run->oddities)
        drawing.notes.append(QStringLiteral("%1: %2").arg(folder, oddity));
    if (run->dc.empty() && run->ac.empty())
        return drawing;
    drawing.notes.append(missingLettersNote(run->title));
    drawing.isDone = run->dc.empty() || drawTimePlot(*run, QDir(folder).filePath(QStringLiteral("time")));
    for (const auto &draw : {drawVoltammograms, drawImpedance, drawMottSchottky, drawCycling})
        drawing.isDone = draw(*run, folder) && drawing.isDone;
    return drawing;
}

} // namespace plots
