// SPDX-License-Identifier: MIT
#include "VekCompRange.h"

struct VekCompRange::Data {
    QString name;
    quint8 bandwidthIndex;
    quint8 stabilityFactor;
};

VekCompRange::VekCompRange(const QString &name, unsigned char bandwidthIndex, unsigned char stabilityFactor)
    : _data(std::make_shared<Data>(Data{name, bandwidthIndex, stabilityFactor}))
{
}

VekCompRange::VekCompRange(const VekCompRange &other) : _data(std::make_shared<Data>(*other._data))
{
}

VekCompRange &VekCompRange::operator=(const VekCompRange &other)
{
    *_data = *other._data;
    return *this;
}

VekCompRange::~VekCompRange() = default;

unsigned char VekCompRange::getBandwidthIndex() const
{
    return _data->bandwidthIndex;
}

void VekCompRange::setBandwidthIndex(unsigned char index)
{
    _data->bandwidthIndex = index;
}

unsigned char VekCompRange::getStabilityFactor() const
{
    return _data->stabilityFactor;
}

void VekCompRange::setStabilityFactor(unsigned char factor)
{
    _data->stabilityFactor = factor;
}

const QString &VekCompRange::getCompRangeName() const
{
    return _data->name;
}

void VekCompRange::setCompRangeName(const QString &name)
{
    _data->name = name;
}
