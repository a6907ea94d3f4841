// SPDX-License-Identifier: MIT
#include "VekAbstractElement.h"

#include "elements/AbstractBuilderElement.h"

#include <utility>

VekAbstractElement::VekAbstractElement(std::shared_ptr<AbstractBuilderElement> builder)
    : _abstractBuilder(std::move(builder))
{
}

VekAbstractElement::~VekAbstractElement() = default;

QString VekAbstractElement::getName() const
{
    return _abstractBuilder ? _abstractBuilder->GetFullName() : QString();
}

QStringList VekAbstractElement::getCategory() const
{
    return _abstractBuilder ? _abstractBuilder->GetCategory() : QStringList();
}

void VekAbstractElement::setBuilder(std::shared_ptr<AbstractBuilderElement> builder)
{
    _abstractBuilder = std::move(builder);
}
