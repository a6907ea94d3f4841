#pragma once

#include <QString>

#include <memory>

class QCoreApplication;

namespace client {

/// The application object that drawRun() needs; it takes no display.
std::unique_ptr<QCoreApplication> makeDrawingApplication(int &argc, char **argv);

/**
 * Draws the pictures of a run into its folder, each as SVG and PNG: "time" always, and what its data call for.
 *
 * @return false when the folder holds no run, no data, or takes no files
 */
bool drawRun(const QString &folder);

} // namespace client
