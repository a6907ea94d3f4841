// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/CatalogueModel.h"

/// The battery cycler: without finite limits here, since each channel's own come from the instrument's configuration.
class Gale : public CatalogueModel
{
public:
    Gale() : CatalogueModel(HardwareModel_t::Gale) {}
};
