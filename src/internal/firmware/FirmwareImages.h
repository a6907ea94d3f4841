// SPDX-License-Identifier: MIT
#pragma once

#include "VekErrorCode.h"
#include "hardware_models/HardwareModelNumber.h"

#include <QByteArray>
#include <QList>
#include <QString>

/**
 * Which images may be written into an instrument. Whoever writes one asks here first, before anything is erased or reset.
 *
 * An image that would leave an instrument without firmware is refused: one that lacks its end or its data, one of another
 * family of models, and a stand-in. The stand-ins in this library's sources let it be tried out with simulated
 * instruments; they are known by what they would store, "stand-in for Nimbrelle_..." at their lowest address, so that a
 * copy of one stays one under whatever name, and no program of an instrument can be taken for one. The environment
 * variable NIMBRELLE_ALLOW_STAND_IN, set to 1, allows them.
 *
 * @thread Any.
 */
namespace FirmwareImages {

/// Path of the image of a model; of none, should the number be no model's.
QString pathFor(int model);
/// Whether the image of a model may be written. @return Success, FirmwareFileNotFound or StandInFirmware
VekErrorCode verdictOn(int model);
/// The same of an image file, and of the signature text of the family that it must be for.
VekErrorCode verdictOn(const QString &path, const QString &family);
/// The records of an image; none if it cannot be read, or is a stand-in that may not be written.
QList<QByteArray> recordsToWrite(const QString &path);
/// Whether these records are a stand-in that may not be written.
bool isRefusedStandIn(const QList<QByteArray> &records);
/// Whether any image of this library is a stand-in, allowed or not.
bool includeStandIn();

} // namespace FirmwareImages
