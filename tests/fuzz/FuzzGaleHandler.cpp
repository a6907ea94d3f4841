// SPDX-License-Identifier: MIT
// Notifications to the operator and the handler of the battery cyclers.

#include "HandlerTarget.h"
#include "handlers/GaleInstrumentHandler.h"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzProcess::instance();
    static HandlerTarget<GaleInstrumentHandler> target(HardwareModel_t::Gale, roundGaleRecord());
    FuzzInput input(data, size);
    target.run(input);
    return 0;
}
