// SPDX-License-Identifier: MIT
#pragma once

#include "lab/notation/JsonOutput.h"

class VekAbstractElement;

namespace lab {

struct PropertyRow;

/// The JSON schema of experiment files, made from the catalogue of elements.
Json experimentSchema();

/// One Markdown table for each element, made from the catalogue.
QString elementTables();

/// What may be written: "a current (A), or none".
QString valueText(const PropertyRow &property);

/// "required", or the value of a fresh element.
QString defaultText(const PropertyRow &property, const VekAbstractElement &fresh);

} // namespace lab
