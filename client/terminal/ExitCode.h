// SPDX-License-Identifier: MIT
#pragma once

namespace client {

/// What the program tells the shell; the numbers are documented in the manual page.
enum ExitCode {
    Done = 0,
    LocalFailure = 1, ///< a file of this machine could not be written
    BadInput = 2,     ///< usage, or an experiment file that cannot run
    NoConnection = 3, ///< never made, or lost
    Refused = 4,      ///< the instrument refused or stopped what it was asked for
    Interrupted = 130,
};

} // namespace client
