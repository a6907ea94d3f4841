// SPDX-License-Identifier: MIT
#include "VekExperiment.h"

#include "VekExperimentPlan.h"
#include "VekOpenCircuitElement.h"
#include "support/TestMain.h"

namespace {

/// Time limit and repeats of each step but the closing one, loops by their passes.
QString outline(const VekExperiment &experiment)
{
    const auto nodes = VekExperimentPlan::forModel(experiment, QStringLiteral("Alder_2_5")).nodes();
    QStringList words;
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
        const QString what =
            nodes[i].loopTarget() >= 0 ? QStringLiteral("loop") : QString::number(nodes[i].timeLimit());
        words += what + QStringLiteral("x%1").arg(nodes[i].repeats());
    }
    return words.join(QLatin1Char(' '));
}

} // namespace

/// What an experiment takes in, and what it refuses.
class TestVekExperiment : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasDefaultTexts();
    void keepsAnElementAsItWas();
    void refusesAndCutsRepeats();
    void copiesGroupsAsTheyStand();
    void mayHoldItself();
    void copiesGrowApart();
    void refusesToRunEmpty();
};

void TestVekExperiment::hasDefaultTexts()
{
    VekExperiment experiment;
    QCOMPARE(experiment.getExperimentName(), QStringLiteral("Custom Experiment"));
    QCOMPARE(experiment.getDescription(), QStringLiteral("Not Defined"));
    QCOMPARE(experiment.getCategory(), QStringList(QStringLiteral("Custom")));
    experiment.setExperimentName(QStringLiteral("Formation"));
    experiment.setDescription(QStringLiteral("C/20"));
    const VekExperiment copy(experiment);
    QCOMPARE(copy.getExperimentName(), QStringLiteral("Formation"));
    QCOMPARE(copy.getDescription(), QStringLiteral("C/20"));
}

void TestVekExperiment::keepsAnElementAsItWas()
{
    VekExperiment experiment;
    VekOpenCircuitElement rest(10, 1);
    QVERIFY(experiment.appendElement(rest, 1));
    rest.setMaxDuration(20);
    QVERIFY(experiment.appendElement(rest, 3));
    rest.setMaxDuration(30);
    QCOMPARE(outline(experiment), QStringLiteral("10x1 20x3"));
}

void TestVekExperiment::refusesAndCutsRepeats()
{
    VekExperiment experiment;
    VekOpenCircuitElement rest(10, 1);
    QVERIFY(!experiment.appendElement(rest, 0));
    QCOMPARE(outline(experiment), QString());
    QVERIFY(experiment.appendElement(rest, 70000));
    QCOMPARE(outline(experiment), QStringLiteral("10x65535"));

    VekExperiment outer;
    QVERIFY(!outer.appendSubExperiment(experiment, 0));
    QVERIFY(!outer.appendSubExperiment(VekExperiment(), 2));
    QVERIFY(outer.appendSubExperiment(experiment, 70000));
    QCOMPARE(outline(outer), QStringLiteral("10x65535 loopx65535"));
}

void TestVekExperiment::copiesGroupsAsTheyStand()
{
    VekOpenCircuitElement rest(10, 1);
    VekExperiment group;
    QVERIFY(group.appendElement(rest, 1));
    VekExperiment experiment;
    QVERIFY(experiment.appendSubExperiment(group, 2));
    QVERIFY(group.appendElement(rest, 1));
    QCOMPARE(outline(experiment), QStringLiteral("10x2"));
    QVERIFY(experiment.appendSubExperiment(group, 2));
    QCOMPARE(outline(experiment), QStringLiteral("10x2 10x1 10x1 loopx2"));
}

void TestVekExperiment::mayHoldItself()
{
    VekOpenCircuitElement rest(10, 1);
    VekExperiment experiment;
    QVERIFY(experiment.appendElement(rest, 1));
    QVERIFY(experiment.appendSubExperiment(experiment, 4));
    QCOMPARE(outline(experiment), QStringLiteral("10x1 10x4"));
}

void TestVekExperiment::copiesGrowApart()
{
    VekOpenCircuitElement rest(10, 1);
    VekExperiment experiment;
    QVERIFY(experiment.appendElement(rest, 1));
    VekExperiment copy(experiment);
    QVERIFY(copy.appendElement(rest, 2));
    VekExperiment assigned;
    assigned = copy;
    QVERIFY(assigned.appendElement(rest, 3));
    QCOMPARE(outline(experiment), QStringLiteral("10x1"));
    QCOMPARE(outline(copy), QStringLiteral("10x1 10x2"));
    QCOMPARE(outline(assigned), QStringLiteral("10x1 10x2 10x3"));
}

void TestVekExperiment::refusesToRunEmpty()
{
    const VekErrorCode result = VekExperimentPlan::forModel(VekExperiment(), QStringLiteral("Alder_2_5")).result();
    QCOMPARE(result, VekErrorCode::InvalidParameters);
    QCOMPARE(result.message(), QStringLiteral("Device: Alder did not start an empty experiment. "
                                              "The experiment should have at least one element."));
}

NIMBRELLE_TEST_MAIN(TestVekExperiment)
#include "TestVekExperiment.moc"
