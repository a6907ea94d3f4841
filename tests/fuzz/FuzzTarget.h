// SPDX-License-Identifier: MIT
#pragma once

#include "FuzzInput.h"

#include <QString>

class IsolatedHome;

/// What the fuzzer calls, and the seed runner: one run of a target on one input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/// Ends the process, which is how a fuzzer learns of a finding, when a promise does not hold.
void mustHold(bool holds, const char *promise);

/// Equal, or both not a number.
bool isSameNumber(double one, double other);

/**
 * What all runs of a target share: an application object, a home folder of its own, silence on standard error and in
 * the log. The first run makes it.
 */
class FuzzProcess
{
public:
    static const FuzzProcess &instance();
    /// The documents folder of this process, without a closing separator.
    QString documents() const;

    FuzzProcess(const FuzzProcess &) = delete;
    FuzzProcess &operator=(const FuzzProcess &) = delete;

private:
    FuzzProcess();
    ~FuzzProcess();
};
