// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/HardwareModel.h"

#include <memory>

/**
 * Turns the number that an instrument reports into the description of that instrument.
 *
 * @thread Any thread, at any time.
 */
class HardwareModelFactory
{
public:
    /**
     * The one object of this number, made on first request and kept until the process ends.
     *
     * Never null: a number above 35 gives an object named "Invalid" with the default limits.
     */
    static std::shared_ptr<const HardwareModel> getHardwareModel(HardwareModel_t model);
};
