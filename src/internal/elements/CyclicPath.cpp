// SPDX-License-Identifier: MIT
#include "elements/CyclicPath.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"

#include <algorithm>

namespace {

/// The loop over what was added from @p firstNode on; the last cycle runs behind it.
void addCycleLoop(NodeList &list, int firstNode, quint32 cycles)
{
    constexpr quint32 mostPasses = 65535; // the instrument counts in 16 bits
    Node loop;
    loop.hwNode = Vek_Node_Loop(static_cast<qint16>(firstNode - list.size()),
                                static_cast<quint16>(std::min(cycles - 1, mostPasses)));
    list.addNode(loop);
}

} // namespace

void addCyclicLegs(NodeList &list, const CyclicPath &path, const QString &name, const LegMaker &makeLeg)
{
    const auto leg = [&](Potential from, Potential to, bool opensStep, bool opensCycle) {
        Node node = openStep(makeLeg(from, to, !opensStep), name);
        node.setNewSubStep(opensStep);
        node.setNewCycle(opensCycle);
        return node;
    };
    const bool needFirstLeg = path.start != path.firstVertex;
    const bool firstLegOpensCycle = path.cycles == 1 && needFirstLeg;
    const Node forth = leg(path.firstVertex, path.secondVertex, false, !firstLegOpensCycle);

    if (needFirstLeg)
        list.addNode(leg(path.start, path.firstVertex, true, firstLegOpensCycle));
    if (path.cycles > 1) {
        const int loopStart = list.size();
        list.addNode(forth);
        list.addNode(leg(path.secondVertex, path.firstVertex, false, false));
        addCycleLoop(list, loopStart, path.cycles);
    }
    list.addNode(forth);
    if (path.end != path.secondVertex)
        list.addNode(leg(path.secondVertex, path.end, false, false));
}

void checkCyclicPath(InputCheck &check, const CyclicPath &path)
{
    for (const Potential &potential : {path.start, path.firstVertex, path.secondVertex, path.end})
        check.voltageLimit(potential.volts, potential.vsOCP);
}
