// SPDX-License-Identifier: MIT
// Notifications to the operator and the handler of the main line.

#include "HandlerTarget.h"
#include "handlers/MainInstrumentHandler.h"

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzProcess::instance();
    static HandlerTarget<MainInstrumentHandler> target(HardwareModel_t::Alder_2_5, roundMainRecord());
    FuzzInput input(data, size);
    target.run(input);
    return 0;
}
