#pragma once

#include <QString>

namespace client {

/**
 * Draws the pictures of a run into its folder, each as SVG and PNG: "time" always, and what its data call for.
 *
 * Needs a QApplication.
 *
 * @return false when the folder holds no run, no data, or takes no files
 */
bool drawRun(const QString &folder);

} // namespace client
