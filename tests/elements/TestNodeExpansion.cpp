#include "elements/NodeExpansion.h"

#include "calibration/CalibrationData.h"
#include "elements/BuilderElement.h"
#include "elements/CustomExperimentRunner.h"
#include "elements/NodeMakers.h"
#include "hardware_models/HardwareVersion.h"
#include "logging/ErrorStringList.h"
#include "support/TestMain.h"

namespace {

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
            node.hwNode = Vek_Node_Open_Circuit(1, 0);
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
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(&end.hwNode), 64), QByteArray(64, '\0'));
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
