// SPDX-License-Identifier: MIT
#include "VekExperiment.h"

#include "VekAbstractElement.h"
#include "experiments/VekExperimentPrivate.h"

namespace {

/// A private half around a runner of its own.
std::shared_ptr<VekExperimentPrivate> privateWith(const CustomExperimentRunner &runner)
{
    return std::make_shared<VekExperimentPrivate>(std::make_shared<CustomExperimentRunner>(runner));
}

} // namespace

VekExperiment::VekExperiment() : _private(privateWith(CustomExperimentRunner()))
{
}

VekExperiment::VekExperiment(const VekExperiment &other) : _private(privateWith(*other._private->getRunner()))
{
}

VekExperiment &VekExperiment::operator=(const VekExperiment &other)
{
    _private = privateWith(*other._private->getRunner());
    return *this;
}

VekExperiment::~VekExperiment() = default;

QString VekExperiment::getExperimentName() const
{
    return _private->getRunner()->GetShortName();
}

QString VekExperiment::getDescription() const
{
    return _private->getRunner()->GetDescription();
}

QStringList VekExperiment::getCategory() const
{
    return _private->getRunner()->GetCategory();
}

void VekExperiment::setExperimentName(QString name)
{
    _private->getRunner()->setName(name);
}

void VekExperiment::setDescription(QString description)
{
    _private->getRunner()->setDescription(description);
}

bool VekExperiment::appendElement(VekAbstractElement &element, unsigned int repeats)
{
    return element._abstractBuilder && _private->getRunner()->addElement(element._abstractBuilder, repeats);
}

bool VekExperiment::appendSubExperiment(const VekExperiment &sub, unsigned int repeats)
{
    return sub._private && _private->getRunner()->addLoop(sub._private->getRunner(), repeats);
}
