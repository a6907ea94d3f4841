// SPDX-License-Identifier: MIT
#pragma once

// For sources alone: headers would give these names to everybody who has constants of the same names.

#include <limits>

constexpr double pi = 3.14159265358979323846;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
