// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/CatalogueModel.h"

// The Lowland series, with its predecessors that are no longer supported or were never released. A class is a line;
// its numbers are rows of ModelTables.

// clang-format off
class Cedar            : public CatalogueModel { public: Cedar()            : CatalogueModel(HardwareModel_t::Cedar) {} };
class Fjord            : public CatalogueModel { public: Fjord()            : CatalogueModel(HardwareModel_t::Fjord) {} };
class Ember            : public CatalogueModel { public: Ember()            : CatalogueModel(HardwareModel_t::Ember) {} };
class Dune             : public CatalogueModel { public: Dune()             : CatalogueModel(HardwareModel_t::Dune) {} };
class Alder            : public CatalogueModel { public: Alder()            : CatalogueModel(HardwareModel_t::Alder) {} };
class Alder_2_0        : public CatalogueModel { public: Alder_2_0()        : CatalogueModel(HardwareModel_t::Alder_2_0) {} };
class Alder_2_1        : public CatalogueModel { public: Alder_2_1()        : CatalogueModel(HardwareModel_t::Alder_2_1) {} };
class Alder_2_2        : public CatalogueModel { public: Alder_2_2()        : CatalogueModel(HardwareModel_t::Alder_2_2) {} };
class Birch_2_2        : public CatalogueModel { public: Birch_2_2()        : CatalogueModel(HardwareModel_t::Birch_2_2) {} };
class Cedar_2_0        : public CatalogueModel { public: Cedar_2_0()        : CatalogueModel(HardwareModel_t::Cedar_2_0) {} };
class Dune_2_0         : public CatalogueModel { public: Dune_2_0()         : CatalogueModel(HardwareModel_t::Dune_2_0) {} };
class Alder_2_3        : public CatalogueModel { public: Alder_2_3()        : CatalogueModel(HardwareModel_t::Alder_2_3) {} };
class Alder_2_3b       : public CatalogueModel { public: Alder_2_3b()       : CatalogueModel(HardwareModel_t::Alder_2_3b) {} };
class Birch_2_3b       : public CatalogueModel { public: Birch_2_3b()       : CatalogueModel(HardwareModel_t::Birch_2_3b) {} };
class Marsh_protoboard : public CatalogueModel { public: Marsh_protoboard() : CatalogueModel(HardwareModel_t::Marsh_protoboard) {} };

class Alder_2_4 : public CatalogueModel
{
public:
    Alder_2_4() : Alder_2_4(HardwareModel_t::Alder_2_4) {}

protected:
    explicit Alder_2_4(HardwareModel_t identity) : CatalogueModel(identity, HardwareModel_t::Alder_2_4) {}
};
class Alder_2_5        : public Alder_2_4      { public: Alder_2_5()        : Alder_2_4(HardwareModel_t::Alder_2_5) {} };
// clang-format on
