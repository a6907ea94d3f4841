// SPDX-License-Identifier: MIT
#pragma once

#include "VekVersion.h"

#include <QStringList>
#include <QtPlugin>

#include <memory>

class QCoreApplication;

namespace plots {

/// What became of the pictures of a run.
struct Drawing {
    bool isDone = false; ///< false when the folder holds no run, no data, or takes no files
    QStringList notes;   ///< a sentence each: what is odd about the record, and which letters no font has
};

/**
 * What draws, as a module that a program loads when pictures are wanted: Qt's GUI takes as long to load as all the rest of
 * a command that draws none.
 *
 * @thread The main thread.
 */
class PlotModule
{
public:
    virtual ~PlotModule() = default;

    /// The application object that drawRun() needs; it takes no display.
    virtual std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv) = 0;

    /// Draws the pictures of a run into its folder, each as SVG and PNG: "time" always, and what its data call for.
    virtual Drawing drawRun(const QString &folder) = 0;
};

} // namespace plots

/// With the version: program and module are of one build, and know each other's classes as they are in it.
#define NIMBRELLE_PLOT_MODULE "nimbrelle.plots/" NIMBRELLE_VERSION_STRING
Q_DECLARE_INTERFACE(plots::PlotModule, NIMBRELLE_PLOT_MODULE)
