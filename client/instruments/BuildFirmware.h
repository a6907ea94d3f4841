// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace client {

/// What this build carries, such as "firmware images: stand-ins, updates are refused".
QString firmwareImagesText();
/// Whether a real instrument cannot be updated by this build.
bool areUpdatesRefused();
/// The command that makes a build with real images.
QString realImagesCommand();

} // namespace client
