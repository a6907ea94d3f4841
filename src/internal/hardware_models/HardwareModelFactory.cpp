// SPDX-License-Identifier: MIT
#include "hardware_models/HardwareModelFactory.h"

#include "hardware_models/GaleModels.h"
#include "hardware_models/KestrelModels.h"
#include "hardware_models/LowlandModels.h"

#include <QHash>
#include <QMutex>
#include <QMutexLocker>

#include <iterator>

namespace {

using ModelPointer = std::shared_ptr<const HardwareModel>;

/// The class of the objects themselves: a final one may do without a virtual destructor.
template <class Model>
struct Made final : Model {
    using Model::Model;
};

template <class Model>
ModelPointer make()
{
    return std::make_shared<const Made<Model>>();
}

// clang-format off
constexpr ModelPointer (*makers[])() = { // by model number
    make<Cedar>,            make<Fjord>,     make<Ember>,      make<Dune>,       make<Alder>,
    make<Alder_2_0>,        make<Alder_2_1>, make<Alder_2_2>,  make<Birch_2_2>,  make<Cedar_2_0>,
    make<Dune_2_0>,         make<Alder_2_3>, make<Alder_2_3b>, make<Birch_2_3b>, make<Marsh_protoboard>,
    make<Ibis_1_0>,         make<Jay_1_0>,   make<Heron_1_0>,  make<Gale>,       make<Alder_2_4>,
    make<Ibis_2_0>,         make<Jay_2_0>,   make<Heron_2_0>,
    make<Ibis_2_1>,         make<Jay_2_1>,   make<Heron_2_1>,
    make<Ibis_2_2>,         make<Jay_2_2>,   make<Heron_2_2>,
    make<Ibis_2_3>,         make<Jay_2_3>,   make<Heron_2_3>,
    make<Ibis_2_4>,         make<Jay_2_4>,   make<Heron_2_4>,
    make<Alder_2_5>,
};
// clang-format on
static_assert(std::size(makers) == 36, "one maker per model number");

ModelPointer makeModel(HardwareModel_t model)
{
    const auto number = static_cast<std::size_t>(model);
    return number < std::size(makers) ? makers[number]() : std::make_shared<const Made<HardwareModel>>(model);
}

struct ModelCache {
    QMutex mutex; // guards models
    QHash<HardwareModel_t, ModelPointer> models;
};

} // namespace

std::shared_ptr<const HardwareModel> HardwareModelFactory::getHardwareModel(HardwareModel_t model)
{
    static ModelCache cache;
    const QMutexLocker locker(&cache.mutex);
    ModelPointer &slot = cache.models[model];
    if (!slot)
        slot = makeModel(model);
    return slot;
}
