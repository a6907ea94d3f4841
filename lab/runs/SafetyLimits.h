// SPDX-License-Identifier: MIT
#pragma once

#include "VekErrorCode.h"

#include <optional>

class VekInstrumentHandler;
struct VekInstrumentDescription;

namespace lab {

/// The limits that an instrument itself watches on a channel; what is not set stays as it is.
struct SafetyLimits {
    std::optional<double> maxVoltage;     ///< volts
    std::optional<double> minVoltage;     ///< volts
    std::optional<double> maxCurrent;     ///< amperes
    std::optional<double> minCurrent;     ///< amperes
    std::optional<double> maxTemperature; ///< degrees Celsius

    bool isEmpty() const;
    /// Whether an instrument can reach them at all: one that never trips is worse than none. @return with the range
    VekErrorCode check(const VekInstrumentDescription &instrument) const;
    /// Checks them and sends them to the instrument. @return the first refusal
    VekErrorCode apply(const VekInstrumentHandler &handler, unsigned char channel) const;
    /// The same, and takes away what is not set.
    VekErrorCode replace(const VekInstrumentHandler &handler, unsigned char channel) const;
};

} // namespace lab
