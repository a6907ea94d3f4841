// SPDX-License-Identifier: MIT
#pragma once

#include "elements/AbstractBuilderElement.h"

/// Values of AbstractBuilderElement::GetTypes().
constexpr quint8 measuresAc = 0;
constexpr quint8 measuresDc = 1;

/// What a builder's class alone decides: how it is copied and what it measures.
template <class Element, quint8... types>
class BuilderElement : public AbstractBuilderElement
{
public:
    QList<quint8> GetTypes() const override { return {types...}; }
    std::shared_ptr<AbstractBuilderElement> clone() const override
    {
        return std::make_shared<Element>(static_cast<const Element &>(*this));
    }
};
