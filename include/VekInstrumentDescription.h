// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QString>

/// What an instrument has said of itself at its connection. A plain value; use it on any thread.
struct VekInstrumentDescription {
    QString deviceName; ///< The instrument's own name, by which the tracker knows it; empty without a device.
    QString
        vanityName;    ///< The kind of instrument as shown to people, for example "Alder"; several models may share it.
    QString modelName; ///< The one model, as VekExperimentPlan::modelName() has it, for example "Alder_2_5".
    int modelNumber = -1;     ///< The number of the model on the wire, 0 to 35; -1 without a device.
    QString firmwareVersion;  ///< As the instrument reports it.
    QString firmwareChecksum; ///< Upper-case hexadecimal; that of the image in this library.
    QString portName;         ///< The serial port.
    int channelCount = 0;     ///< Number of channels.
};

Q_DECLARE_METATYPE(VekInstrumentDescription)
