// SPDX-License-Identifier: MIT
#pragma once

namespace lab {

struct FileElement;

/// A property of an element as a number, flags as 0 and 1; NaN for one that the element does not have.
double propertyOf(const FileElement &element, const char *name);

/// Whether the samples of the element are the levels of pulses.
bool isPulsed(const FileElement &element);

/// Whether the element holds a current, a power or a resistance.
bool isLoad(const FileElement &element);

/// The longest time in seconds that the element lets pass between two samples: infinite where it samples as the voltage
/// changes, 0 where the element does not tell.
double longestInterval(const FileElement &element);

} // namespace lab
