// SPDX-License-Identifier: MIT
#pragma once

#include "VekInstrumentDescription.h"

#include <QString>

#include <nlohmann/json.hpp>

#include <string>

namespace lab {

/// JSON that keeps its members in the order in which they were written down.
using Json = nlohmann::ordered_json;

inline Json text(const QString &string)
{
    return string.toStdString();
}

/// A finite number, or null: JSON has no infinity.
Json number(double value);

/// The description of an instrument as all outputs of this program have it.
Json descriptionJson(const VekInstrumentDescription &description);

/// Indented text; bytes that are no UTF-8 are replaced, and what a terminal would act on is escaped.
std::string dump(const Json &json);

} // namespace lab
