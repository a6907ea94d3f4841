#pragma once

#include <QString>

namespace client {

/// Draws the pictures of a run into its folder and tells what is odd about them. @return false when there are none
bool drawPictures(const QString &folder);

} // namespace client
