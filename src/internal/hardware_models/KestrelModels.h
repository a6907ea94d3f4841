// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/CatalogueModel.h"
#include "hardware_models/Kestrel.h"

// The Kestrel series. Up to 2.1 the numbers are rows of ModelTables, from 2.2 on Kestrel computes them.

// clang-format off
class Ibis_1_0  : public CatalogueModel { public: Ibis_1_0()  : CatalogueModel(HardwareModel_t::Ibis_1_0) {} };
class Jay_1_0   : public CatalogueModel { public: Jay_1_0()   : CatalogueModel(HardwareModel_t::Jay_1_0) {} };
class Heron_1_0 : public CatalogueModel { public: Heron_1_0() : CatalogueModel(HardwareModel_t::Heron_1_0) {} };

class Ibis_2_0 : public CatalogueModel
{
public:
    Ibis_2_0() : Ibis_2_0(HardwareModel_t::Ibis_2_0) {}

protected:
    explicit Ibis_2_0(HardwareModel_t identity) : CatalogueModel(identity, HardwareModel_t::Ibis_2_0) {}
};

class Jay_2_0 : public CatalogueModel
{
public:
    Jay_2_0() : Jay_2_0(HardwareModel_t::Jay_2_0) {}

protected:
    explicit Jay_2_0(HardwareModel_t identity) : CatalogueModel(identity, HardwareModel_t::Jay_2_0) {}
};

class Heron_2_0 : public CatalogueModel
{
public:
    Heron_2_0() : Heron_2_0(HardwareModel_t::Heron_2_0) {}

protected:
    explicit Heron_2_0(HardwareModel_t identity) : CatalogueModel(identity, HardwareModel_t::Heron_2_0) {}
};

class Ibis_2_1  : public Ibis_2_0  { public: Ibis_2_1()  : Ibis_2_0(HardwareModel_t::Ibis_2_1) {} };
class Jay_2_1   : public Jay_2_0   { public: Jay_2_1()   : Jay_2_0(HardwareModel_t::Jay_2_1) {} };
class Heron_2_1 : public Heron_2_0 { public: Heron_2_1() : Heron_2_0(HardwareModel_t::Heron_2_1) {} };

class Ibis_2_2  : public Kestrel { public: Ibis_2_2()  : Kestrel(HardwareModel_t::Ibis_2_2) {} };
class Jay_2_2   : public Kestrel { public: Jay_2_2()   : Kestrel(HardwareModel_t::Jay_2_2) {} };
class Heron_2_2 : public Kestrel { public: Heron_2_2() : Kestrel(HardwareModel_t::Heron_2_2) {} };
class Ibis_2_3  : public Kestrel { public: Ibis_2_3()  : Kestrel(HardwareModel_t::Ibis_2_3) {} };
class Jay_2_3   : public Kestrel { public: Jay_2_3()   : Kestrel(HardwareModel_t::Jay_2_3) {} };
class Heron_2_3 : public Kestrel { public: Heron_2_3() : Kestrel(HardwareModel_t::Heron_2_3) {} };
class Ibis_2_4  : public Kestrel { public: Ibis_2_4()  : Kestrel(HardwareModel_t::Ibis_2_4) {} };
class Jay_2_4   : public Kestrel { public: Jay_2_4()   : Kestrel(HardwareModel_t::Jay_2_4) {} };
class Heron_2_4 : public Kestrel { public: Heron_2_4() : Kestrel(HardwareModel_t::Heron_2_4) {} };
// clang-format on
