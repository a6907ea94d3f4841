// SPDX-License-Identifier: MIT
#include "VekConstantCurrentElement.h"
#include "VekCyclicVoltammetryElement.h"
#include "VekExperiment.h"
#include "VekExperimentPlan.h"
#include "VekOpenCircuitElement.h"
#include "support/TestMain.h"

#include <pthread.h>

namespace {

VekExperimentPlan planOf(const VekExperiment &experiment)
{
    return VekExperimentPlan::forModel(experiment, QStringLiteral("Alder_2_5"));
}

/// As many elements of one step, in one group.
VekExperiment rests(int count)
{
    VekOpenCircuitElement rest(1, 1);
    VekExperiment experiment;
    for (int i = 0; i < count; ++i)
        experiment.appendElement(rest, 1);
    return experiment;
}

/// As many elements of seven steps.
VekExperiment voltammograms(int count)
{
    VekCyclicVoltammetryElement element(0, 0.5, -0.5, 0.1, 0.1, 0.01);
    element.setNumberOfCycles(2);
    element.setQuietTime(1);
    VekExperiment experiment;
    for (int i = 0; i < count; ++i)
        experiment.appendElement(element, 1);
    return experiment;
}

VekExperiment repeated(const VekExperiment &group, unsigned int repeats)
{
    VekExperiment experiment;
    experiment.appendSubExperiment(group, repeats);
    return experiment;
}

/// Groups inside groups.
VekExperiment nested(int depth)
{
    VekExperiment experiment = rests(1);
    for (int level = 0; level < depth; ++level)
        experiment = repeated(experiment, 2);
    return experiment;
}

/// An experiment that was appended to itself again and again: twice as many elements each time.
VekExperiment doubled(int times)
{
    VekExperiment experiment = rests(1);
    for (int i = 0; i < times; ++i)
        experiment.appendSubExperiment(experiment, 1);
    return experiment;
}

void *workWithADeepTree(void *planned)
{
    const VekExperiment deep = nested(100000);
    VekExperiment copy(deep);
    copy.appendSubExperiment(deep, 3);
    *static_cast<VekErrorCode *>(planned) = planOf(copy).result();
    return nullptr;
}

} // namespace

Q_DECLARE_METATYPE(VekExperiment)

/// Experiments that the instrument's 16-bit counts, or a stack, could not hold.
class TestExperimentSize : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void boundsAreExact_data();
    void boundsAreExact();
    void aSmallStackHoldsWhatIsAllowed();
    void aTreeOfAnyDepthIsHarmless();
    void sizeComesBeforeValues();
};

void TestExperimentSize::boundsAreExact_data()
{
    QTest::addColumn<VekExperiment>("experiment");
    QTest::addColumn<QStringList>("numbers"); // of the refusal; none where it fits
    QTest::newRow("as many steps as go, with the closing one") << rests(65534) << QStringList();
    QTest::newRow("one more") << rests(65535) << QStringList{"65535 elements", "65535 steps"};
    QTest::newRow("few elements of many steps") << voltammograms(9363) << QStringList{"65542 steps", "65535"};
    QTest::newRow("as long a loop as goes") << repeated(rests(32767), 2) << QStringList();
    QTest::newRow("a longer one") << repeated(rests(32768), 2) << QStringList{"32768 steps", "32767"};
    QTest::newRow("one whose jump would go forth") << repeated(rests(40000), 2) << QStringList{"40000 steps", "32767"};
    QTest::newRow("a longer one that runs once") << repeated(rests(32768), 1) << QStringList();
    QTest::newRow("a longer one inside another")
        << repeated(repeated(rests(32768), 2), 1) << QStringList{"32768 steps", "32767"};
    QTest::newRow("as deep as goes") << nested(1000) << QStringList();
    QTest::newRow("deeper") << nested(1001) << QStringList{"1001 deep", "1000"};
    QTest::newRow("many times itself") << doubled(40) << QStringList{"1099511627776 elements", "65535"};
    QTest::newRow("more often than a number counts") << doubled(100) << QStringList{"18446744073709551615", "65535"};
}

void TestExperimentSize::boundsAreExact()
{
    QFETCH(const VekExperiment, experiment);
    QFETCH(const QStringList, numbers);
    const VekExperimentPlan plan = planOf(experiment);
    QCOMPARE(plan.result(), numbers.isEmpty() ? VekErrorCode::Success : VekErrorCode::ExperimentTooLarge);
    QCOMPARE(plan.nodes().empty(), !numbers.isEmpty());
    for (const QString &number : numbers)
        QVERIFY2(plan.result().message().contains(number), qPrintable(plan.result().message()));
    if (!numbers.isEmpty())
        QCOMPARE(plan.complaints().at(0).stepNumber(), 0);
}

/// Runs on a thread with the least stack that a platform gives to one.
static VekErrorCode onASmallStack(void *(*work)(void *))
{
    VekErrorCode result;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 512 * 1024);
    pthread_t thread;
    if (pthread_create(&thread, &attributes, work, &result) == 0)
        pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    return result;
}

void TestExperimentSize::aSmallStackHoldsWhatIsAllowed()
{
    const VekErrorCode result = onASmallStack([](void *planned) -> void * {
        *static_cast<VekErrorCode *>(planned) = planOf(nested(1000)).result();
        return nullptr;
    });
    QCOMPARE(result, VekErrorCode::Success);
}

void TestExperimentSize::aTreeOfAnyDepthIsHarmless()
{
    const VekErrorCode result = onASmallStack(&workWithADeepTree);
    QCOMPARE(result, VekErrorCode::ExperimentTooLarge);
    QVERIFY2(result.message().contains(QStringLiteral("100001 deep")), qPrintable(result.message()));
}

// Nothing may walk through a tree before its size is known.
void TestExperimentSize::sizeComesBeforeValues()
{
    VekConstantCurrentElement tooStrong(100, 1, 1);
    VekExperiment experiment = doubled(40);
    experiment.appendElement(tooStrong, 1);
    QCOMPARE(planOf(experiment).result(), VekErrorCode::ExperimentTooLarge);
}

NIMBRELLE_TEST_MAIN(TestExperimentSize)
#include "TestExperimentSize.moc"
