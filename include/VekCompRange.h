// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"

#include <QtCore/QString>

#include <memory>

/**
 * A stability preset: how fast and how damped the control loop of a channel runs.
 *
 * A slow loop keeps a capacitive cell from oscillating; a fast one follows quick steps. A preset has a name and two
 * indices, 0 to 10 each; what an index does is the instrument's own affair. Indices out of range are kept here and
 * refused by VekInstrumentHandler::setCompRange().
 *
 * A value: every copy has data of its own. One object must not be changed while another thread uses it.
 */
class NIMBRELLE_EXPORT VekCompRange
{
public:
    /// A preset of this name; indices from 0 to 10 are valid.
    VekCompRange(const QString &name, unsigned char bandwidthIndex, unsigned char stabilityFactor);
    /// An independent copy.
    VekCompRange(const VekCompRange &other);
    /// Takes over the three values of the other one; the two stay independent.
    VekCompRange &operator=(const VekCompRange &other);
    ~VekCompRange();

    /// Index of the loop's bandwidth.
    unsigned char getBandwidthIndex() const;
    /// Sets the index of the loop's bandwidth; valid values are 0 to 10.
    void setBandwidthIndex(unsigned char index);
    /// Index of the loop's damping.
    unsigned char getStabilityFactor() const;
    /// Sets the index of the loop's damping; valid values are 0 to 10.
    void setStabilityFactor(unsigned char factor);
    /// The name shown to people.
    const QString &getCompRangeName() const;
    /// Sets the name shown to people.
    void setCompRangeName(const QString &name);

private:
    struct Data;
    std::shared_ptr<Data> _data; // never shared between two objects
};
