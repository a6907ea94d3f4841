// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QMetaType>

/**
 * What a firmware update has come to, for programs to compare; VekDeviceTracker::firmwareUpdateStageReached() has the words
 * beside it.
 *
 * The numbers are fixed: programs may store them. New ones may come, which are no ends.
 */
enum class VekFirmwareUpdateStage : quint8 {
    Begun = 0,           ///< the bootloader was asked to begin
    BootloaderFound = 1, ///< the instrument is in its bootloader
    Writing = 2,         ///< some percent of the image are written

    // Why the instrument is left alone. It is no end by itself: Failed follows where an update was under way.
    BootloaderGone = 10,  ///< the bootloader that was found has gone, or is another model's
    StandInFirmware = 11, ///< the library carries no real image of the model

    // Ends: the update of a device comes to one of them, once.
    Succeeded = 20,
    Failed = 21,       ///< the instrument may have been left in its bootloader, where the next update finds it
    UnknownModel = 22, ///< a bootloader does not tell whose it is, so that nothing can be written; it has no name
};

Q_DECLARE_METATYPE(VekFirmwareUpdateStage)
