// SPDX-License-Identifier: MIT
#pragma once

#include "elements/NodeList.h"

#include <functional>

class InputCheck;

/// A potential in volts, against the reference electrode or the open-circuit potential.
struct Potential {
    double volts;
    bool vsOCP;

    bool operator!=(const Potential &other) const { return volts != other.volts || vsOCP != other.vsOCP; }
};

/// The way of a voltammogram: from a start to a first vertex, forth and back between two vertices, and to an end.
struct CyclicPath {
    Potential start;
    Potential firstVertex;
    Potential secondVertex;
    Potential end;
    quint32 cycles; ///< how many times the way runs from the first vertex to the second
};

/// The way that an element describes; both voltammetry elements name their fields alike.
template <class Element>
CyclicPath pathOf(const Element &element)
{
    return {{element.startVoltage, element.startVoltageVsOCP},
            {element.firstVoltageLimit, element.firstVoltageLimitVsOCP},
            {element.secondVoltageLimit, element.secondVoltageLimitVsOCP},
            {element.endVoltage, element.endVoltageVsOCP},
            element.numberOfCycles};
}

/// Makes the record of one leg; @p continues tells the legs that follow another one.
using LegMaker = std::function<ExpNode_t(Potential from, Potential to, bool continues)>;

/// Adds the legs of a path, with a loop for all cycles but the last. A leg without length is left out.
void addCyclicLegs(NodeList &list, const CyclicPath &path, const QString &name, const LegMaker &makeLeg);

/// Complains about each potential of the path that is out of bounds.
void checkCyclicPath(InputCheck &check, const CyclicPath &path);
