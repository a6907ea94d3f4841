// SPDX-License-Identifier: MIT
#include "elements/NodeExpansion.h"

#include "elements/BuilderContainer.h"
#include "elements/NodeMakers.h"
#include "logging/ErrorStringList.h"

#include <unordered_map>
#include <utility>
#include <vector>

using VekInternalContainer::BuilderContainer;

namespace {

/// A list of the tree with the position of the child that comes next.
struct Place {
    const BuilderContainer *list;
    int child;
};

/**
 * Shows every vertex of a tree, depth first and without recursion: visitor.leaf(leaf) for an element, visitor.open(list)
 * and visitor.close(list) around what a list holds. What the list holds is left out if open() says so by false.
 */
template <typename Visitor>
void walk(const BuilderContainer &root, Visitor &visitor)
{
    std::vector<Place> path;
    const auto enter = [&](const BuilderContainer &vertex) {
        if (!vertex.isList)
            return visitor.leaf(vertex);
        path.push_back({&vertex, visitor.open(vertex) ? 0 : vertex.children.size()});
    };
    enter(root);
    while (!path.empty()) {
        Place &place = path.back();
        const BuilderContainer &list = *place.list;
        if (place.child < list.children.size()) {
            enter(list.children.at(place.child++));
        } else {
            path.pop_back();
            visitor.close(list);
        }
    }
}

/**
 * Makes the nodes of a tree, all of them in one list.
 *
 * An experiment that was appended several times shares its children between the places, so these are expanded once and
 * copied from then on.
 */
class Expansion
{
public:
    Expansion(const CalibrationData &calibration, const HardwareVersion &hardware)
        : _calibration(calibration), _hardware(hardware)
    {
    }

    bool open(const BuilderContainer &list);
    void close(const BuilderContainer &list);
    void leaf(const BuilderContainer &leaf);

    NodeList takeNodes() { return std::move(_nodes); }

private:
    /// Where something begins.
    struct Mark {
        int node;
        int step; ///< the last one before
    };
    /// Nodes of this list that were made of shared children.
    struct Known {
        Mark begin;
        Mark end;
    };

    Mark here() const { return {_nodes.size(), _steps}; }
    void copy(const Known &known);
    void repeatFrom(int first, quint32 repeats);

    const CalibrationData &_calibration;
    const HardwareVersion &_hardware;
    NodeList _nodes;
    int _steps = 0;
    std::vector<Mark> _openLists;
    std::unordered_map<const BuilderContainer *, Known> _known; ///< by the first of the children
};

bool Expansion::open(const BuilderContainer &list)
{
    _openLists.push_back(here());
    if (list.children.isEmpty())
        return true;
    const auto known = _known.find(&list.children.first());
    if (known == _known.end())
        return true;
    copy(known->second);
    return false;
}

void Expansion::close(const BuilderContainer &list)
{
    const Known made{_openLists.back(), here()};
    _openLists.pop_back();
    // A lone node is no pattern for others: its repeats depend on the lists around it.
    if (made.end.node - made.begin.node > 1 && !list.children.isDetached())
        _known.emplace(&list.children.first(), made);
    repeatFrom(made.begin.node, list.repeats);
}

void Expansion::copy(const Known &known)
{
    const int first = _nodes.size();
    _nodes.appendCopies(known.begin.node, known.end.node - known.begin.node);
    for (int i = first; i < _nodes.size(); ++i)
        _nodes[i]->stepNumber += _steps - known.begin.step;
    _steps += known.end.step - known.begin.step;
}

void Expansion::leaf(const BuilderContainer &leaf)
{
    const int first = _nodes.size();
    _nodes.append(leaf.element.pointer->GetNodesData(_calibration, _hardware));
    if (_nodes.size() == first)
        return;
    ++_steps;
    for (int i = first; i < _nodes.size(); ++i)
        _nodes[i]->stepNumber = _steps;
    repeatFrom(first, leaf.repeats);
}

/// Makes all nodes from a position on run several times.
void Expansion::repeatFrom(int first, quint32 repeats)
{
    const int length = _nodes.size() - first;
    if (repeats < 2 || length == 0)
        return;
    const auto count = static_cast<quint16>(repeats);
    if (length == 1 && _nodes[first]->hwNode.repeats == 1) {
        Vek_Node_SetRepeats(_nodes[first]->hwNode, count);
        return;
    }
    Node loop;
    loop.hwNode = Vek_Node_Loop(static_cast<qint16>(-length), count);
    _nodes.addNode(loop);
}

/// Tells the elements of a tree, with their step numbers.
struct ElementTeller {
    const ElementVisitor &visit;
    int stepNumber = 0;

    bool open(const BuilderContainer &) { return true; }
    void close(const BuilderContainer &) {}
    void leaf(const BuilderContainer &leaf) { visit(*leaf.element.pointer, ++stepNumber); }
};

} // namespace

void visitElements(const BuilderContainer &container, const ElementVisitor &visit)
{
    ElementTeller teller{visit};
    walk(container, teller);
}

NodeList FillNodeData(const BuilderContainer &container, const CalibrationData &calibration,
                      const HardwareVersion &hardware)
{
    Expansion expansion(calibration, hardware);
    walk(container, expansion);
    return expansion.takeNodes();
}

ErrorStringList getErrorList(const BuilderContainer &container, const HardwareVersion &hardware)
{
    ErrorStringList errors;
    visitElements(container, [&](const AbstractBuilderElement &element, int) {
        for (const QString &error : element.validateInput(hardware).getErrorList())
            errors.addError(element.GetFullName() + QStringLiteral("::") + error);
    });
    return errors;
}
