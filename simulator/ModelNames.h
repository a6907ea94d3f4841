// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/HardwareModelNumber.h"

#include <QString>
#include <QStringList>

#include <optional>

/// The models that can be simulated, by the names that a command line takes ("Alder_2_5", in any case, or "35").
std::optional<HardwareModel_t> modelNamed(const QString &nameOrNumber);
/// One line per model: number, name.
QStringList modelList();
