// SPDX-License-Identifier: MIT
#include "elements/NodeExpansion.h"

#include "calibration/CalibrationData.h"
#include "elements/BuilderElement.h"
#include "elements/CustomExperimentRunner.h"
#include "elements/NodeMakers.h"
#include "hardware_models/HardwareVersion.h"
#include "logging/ErrorStringList.h"
#include "support/TestMain.h"

#include <random>
#include <set>

namespace {

using VekInternalContainer::BuilderContainer;

/// Makes a number of rests, each of which would open a step of its own, and complains as often.
class Rests : public BuilderElement<Rests, measuresDc>
{
public:
    explicit Rests(int count) : _count(count) {}
    QString GetFullName() const override { return QStringLiteral("Rests"); }
    QStringList GetCategory() const override { return {}; }
    NodeList GetNodesData(const CalibrationData &, const HardwareVersion &) const override
    {
        NodeList list;
        for (int i = 0; i < _count; ++i) {
            Node node;
            node.hwNode = Vek_Node_Open_Circuit(float(10 * _count + i), 0);
            node.setNewSubStep(true);
            list.addNode(node);
        }
        return list;
    }
    ErrorStringList validateInput(const HardwareVersion &) const override
    {
        ErrorStringList errors;
        for (int i = 0; i < _count; ++i)
            errors.addError(QString::number(i) + QStringLiteral(" %1"));
        return errors;
    }

private:
    int _count;
};

std::shared_ptr<CustomExperimentRunner> experiment()
{
    return std::make_shared<CustomExperimentRunner>();
}

void add(CustomExperimentRunner &runner, int count, quint32 repeats)
{
    QVERIFY(runner.addElement(std::make_shared<Rests>(count), repeats));
}

NodeList nodesOf(const CustomExperimentRunner &runner)
{
    return runner.GetNodesData(CalibrationData(), HardwareVersion());
}

/// One word for each node but the end: type/step number, with repeats and jump where they say something.
QString outline(const CustomExperimentRunner &runner)
{
    QStringList words;
    const NodeList list = nodesOf(runner);
    for (int i = 0; i < list.size() - 1; ++i) {
        const ExpNode_t &node = list[i]->hwNode;
        QString word = QStringLiteral("%1/%2").arg(node.type).arg(list[i]->stepNumber);
        if (node.jump != 0)
            word += QStringLiteral(" to %1").arg(node.jump);
        if (node.repeats != 1)
            word += QStringLiteral(" x%1").arg(node.repeats);
        words += word;
    }
    return words.join(QStringLiteral(", "));
}

QByteArray bytesOf(const Node &node)
{
    return QByteArray(reinterpret_cast<const char *>(&node.hwNode), sizeof node.hwNode);
}

/// The rules written down one by one, each list of the tree for itself.
NodeList plainExpansion(const BuilderContainer &vertex)
{
    NodeList list;
    if (!vertex.isList)
        list = vertex.element.pointer->GetNodesData(CalibrationData(), HardwareVersion());
    for (const auto &node : list.getNodeList())
        node->stepNumber = 1;
    for (const BuilderContainer &child : vertex.children) {
        const int steps = list.isEmpty() ? 0 : list[list.size() - 1]->stepNumber;
        const NodeList next = plainExpansion(child);
        for (const auto &node : next.getNodeList())
            node->stepNumber += steps;
        list.append(next);
    }
    if (vertex.repeats < 2 || list.isEmpty())
        return list;
    if (list.size() == 1 && list[0]->hwNode.repeats == 1) {
        list[0]->hwNode.repeats = quint16(vertex.repeats);
        return list;
    }
    Node loop;
    loop.hwNode = Vek_Node_Loop(qint16(-list.size()), quint16(vertex.repeats));
    list.addNode(loop);
    return list;
}

/// Elements and groups at random; most groups stand in several places, themselves included.
std::shared_ptr<CustomExperimentRunner> randomExperiment(std::mt19937 &random)
{
    std::vector<std::shared_ptr<CustomExperimentRunner>> groups(4);
    for (auto &group : groups)
        group = experiment();
    for (int growth = 0; growth < 24; ++growth) {
        const auto &group = groups[random() % groups.size()];
        const auto &other = groups[random() % groups.size()];
        const quint32 repeats = 1 + random() % 3;
        if (random() % 2)
            add(*group, int(random() % 4), repeats);
        else if (group->root().elementCount + other->root().elementCount < 500)
            group->addLoop(other, repeats);
    }
    return groups.back();
}

} // namespace

/// How a tree of elements with repeats becomes the flat list that the instrument runs.
class TestNodeExpansion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void repeatsALoneNodeByItself();
    void loopsOverSeveralNodes();
    void numbersStepsThroughTheTree();
    void nestsLoops();
    void loopsOverARepeatedNode();
    void expandsByThePlainRules();
    void skipsElementsWithoutNodes();
    void endsWithAnEmptyRecord();
    void namesNodesThatGotNoName();
    void prefixesComplaintsInOrder();
    void refusesAnEmptyExperiment();
    void makesFreshNodesEachTime();
    void sharesNodesBetweenCopiesOfAList();
    void tellsAcNodesFromDcNodes();
};

void TestNodeExpansion::repeatsALoneNodeByItself()
{
    CustomExperimentRunner runner;
    add(runner, 1, 5);
    QCOMPARE(outline(runner), QStringLiteral("1/1 x5"));
}

void TestNodeExpansion::loopsOverSeveralNodes()
{
    CustomExperimentRunner runner;
    add(runner, 3, 5);
    QCOMPARE(outline(runner), QStringLiteral("1/1, 1/1, 1/1, 20/1 to -3 x5"));
}

void TestNodeExpansion::numbersStepsThroughTheTree()
{
    CustomExperimentRunner runner;
    add(runner, 2, 1);
    const auto pair = experiment();
    add(*pair, 1, 1);
    add(*pair, 1, 1);
    QVERIFY(runner.addLoop(pair, 3));
    add(runner, 1, 1);
    QCOMPARE(outline(runner), QStringLiteral("1/1, 1/1, 1/2, 1/3, 20/3 to -2 x3, 1/4"));
}

void TestNodeExpansion::nestsLoops()
{
    const auto inner = experiment();
    add(*inner, 2, 2);
    const auto outer = experiment();
    QVERIFY(outer->addLoop(inner, 3));
    add(*outer, 1, 1);
    CustomExperimentRunner runner;
    QVERIFY(runner.addLoop(outer, 4));
    QCOMPARE(outline(runner), QStringLiteral("1/1, 1/1, 20/1 to -2 x2, 20/1 to -3 x3, 1/2, 20/2 to -5 x4"));
}

void TestNodeExpansion::loopsOverARepeatedNode()
{
    const auto repeated = experiment();
    add(*repeated, 1, 5);
    CustomExperimentRunner runner;
    QVERIFY(runner.addLoop(repeated, 2));
    QCOMPARE(outline(runner), QStringLiteral("1/1 x5, 20/1 to -1 x2"));
}

void TestNodeExpansion::expandsByThePlainRules()
{
    std::mt19937 random(1);
    for (int i = 0; i < 500; ++i) {
        const auto runner = randomExperiment(random);
        const NodeList list = FillNodeData(runner->root(), CalibrationData(), HardwareVersion());
        const NodeList plain = plainExpansion(runner->root());
        QCOMPARE(list.size(), plain.size());
        std::set<const Node *> places;
        for (int position = 0; position < list.size(); ++position) {
            const Node &node = *list[position];
            QCOMPARE(bytesOf(node), bytesOf(*plain[position]));
            QCOMPARE(node.stepNumber, plain[position]->stepNumber);
            QCOMPARE(node.stepName, plain[position]->stepName);
            places.insert(&node);
        }
        QCOMPARE(places.size(), std::size_t(list.size())); // no two share a node
    }
}

void TestNodeExpansion::skipsElementsWithoutNodes()
{
    CustomExperimentRunner runner;
    add(runner, 0, 7);
    add(runner, 1, 1);
    add(runner, 0, 2);
    add(runner, 1, 1);
    QCOMPARE(outline(runner), QStringLiteral("1/1, 1/2"));
}

void TestNodeExpansion::endsWithAnEmptyRecord()
{
    CustomExperimentRunner runner;
    add(runner, 1, 1);
    add(runner, 1, 1);
    const NodeList list = nodesOf(runner);
    const Node end = *list[2];
    QCOMPARE(bytesOf(end), QByteArray(64, '\0'));
    QCOMPARE(end.stepName, QStringLiteral("Experiment Complete"));
    QCOMPARE(end.stepNumber, 2);
    QCOMPARE(list.getHWNodeList().size(), 3);
}

void TestNodeExpansion::namesNodesThatGotNoName()
{
    CustomExperimentRunner runner;
    add(runner, 2, 2);
    const NodeList list = nodesOf(runner);
    QCOMPARE(list[0]->stepName, QStringLiteral("Open Circuit Potential"));
    QCOMPARE(list[2]->stepName, QString());
    QCOMPARE(NodeList::getDefaultNodeName(NodeType_t(33)), QString());
}

void TestNodeExpansion::prefixesComplaintsInOrder()
{
    CustomExperimentRunner runner;
    add(runner, 1, 1);
    const auto group = experiment();
    add(*group, 2, 1);
    QVERIFY(runner.addLoop(group, 2));
    QCOMPARE(runner.validateInput(HardwareVersion()).getErrorListSingleString(QStringLiteral("Alder")),
             QStringLiteral("Rests::0 Alder\nRests::0 Alder\nRests::1 Alder"));
}

void TestNodeExpansion::refusesAnEmptyExperiment()
{
    CustomExperimentRunner runner;
    QCOMPARE(runner.validateInput(HardwareVersion()).getErrorListSingleString(QStringLiteral("Alder")),
             QStringLiteral("Device: Alder did not start an empty experiment. "
                            "The experiment should have at least one element."));
    QCOMPARE(nodesOf(runner).size(), 1);
}

void TestNodeExpansion::makesFreshNodesEachTime()
{
    CustomExperimentRunner runner;
    add(runner, 1, 1);
    const NodeList first = nodesOf(runner);
    first[0]->stepNumber = 99;
    QCOMPARE(nodesOf(runner)[0]->stepNumber, 1);
}

void TestNodeExpansion::sharesNodesBetweenCopiesOfAList()
{
    NodeList list;
    list.addNode(Node());
    NodeList copy = list;
    copy[0]->setNewCycle(true);
    QVERIFY(list[0]->newCycle);
    copy.addNode(Node());
    QCOMPARE(list.size(), 1);

    Node inserted;
    inserted.setStepName(QStringLiteral("inserted"));
    copy.insert(1, inserted);
    QCOMPARE(copy[1]->stepName, QStringLiteral("inserted"));
    QCOMPARE(copy[1]->stepNumber, -1); // taken as it stands
    copy.append(copy);
    QCOMPARE(copy.size(), 6);
}

void TestNodeExpansion::tellsAcNodesFromDcNodes()
{
    QList<int> acTypes;
    for (int type = 0; type < 256; ++type)
        if (AbstractExperiment::getExperimentNodeType(NodeType_t(type)) == 0)
            acTypes.append(type);
    QCOMPARE(acTypes, QList<int>({16, 17, 18, 19, 23, 26, 28}));
}

NIMBRELLE_TEST_MAIN(TestNodeExpansion)
#include "TestNodeExpansion.moc"
