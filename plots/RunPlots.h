#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class QCoreApplication;

namespace plots {

/// The application object that drawRun() needs; it takes no display.
std::unique_ptr<QCoreApplication> makeDrawingApplication(int &argc, char **argv);

/// What became of the pictures of a run.
struct Drawing {
    bool isDone = false; ///< false when the folder holds no run, no data, or takes no files
    QStringList notes;   ///< a sentence each: what is odd about the record, and which letters no font has
};

/// Draws the pictures of a run into its folder, each as SVG and PNG: "time" always, and what its data call for.
Drawing drawRun(const QString &folder);

} // namespace plots
