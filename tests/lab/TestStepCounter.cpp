// SPDX-License-Identifier: MIT
#include "lab/records/StepCounter.h"

#include "support/TestMain.h"

using namespace lab;

namespace {

const QString quiet = QStringLiteral("Quiet Time");
const QString sweep = QStringLiteral("Cyclic Voltammetry");

using Announcements = QVector<VekExperimentNode>;

/// Steps by their numbers, each entered once more than before.
Announcements entering(const QVector<int> &steps)
{
    QMap<int, int> entered;
    Announcements nodes;
    for (const int step : steps)
        nodes.append({QStringLiteral("Constant Current"), step, ++entered[step], 0});
    return nodes;
}

} // namespace

Q_DECLARE_METATYPE(Announcements)

class TestStepCounter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsExecutionsAndCycles_data();
    void countsExecutionsAndCycles();
};

void TestStepCounter::countsExecutionsAndCycles_data()
{
    QTest::addColumn<QByteArray>("elements");
    QTest::addColumn<Announcements>("announced");
    QTest::addColumn<QString>("counts"); // cycle/execution behind each announcement

    const QByteArray load = R"({"element": "ConstantCurrent"})";
    const QByteArray rest = R"({"element": "OpenCircuit"})";
    const auto repeated = [](const QByteArray &content) {
        return QByteArray(R"({"repeats": 2, "group": [)") + content + "]}";
    };
    const auto row = [](const char *name, const QByteArray &elements, const Announcements &announced,
                        const char *counts) {
        QTest::newRow(name) << elements << announced << QString::fromLatin1(counts);
    };

    row("one after the other", load + ',' + load, entering({1, 2}), "1/1 1/2");
    row("a group behind a rest", rest + ',' + repeated(load + ',' + load), entering({1, 2, 3, 2, 3}),
        "1/1 1/2 1/3 2/4 2/5");
    row("a group behind a load and a rest", load + ',' + rest + ',' + repeated(load + ',' + load),
        entering({1, 2, 3, 4, 3, 4}), "1/1 1/2 2/3 2/4 3/5 3/6");
    row("an element by itself", R"({"element": "ConstantCurrent", "repeats": 3})", entering({1, 1, 1}), "1/1 2/2 3/3");
    row("a rest behind a group, and a load behind that", repeated(load + ',' + load) + ',' + rest + ',' + load,
        entering({1, 2, 1, 2, 3, 4}), "1/1 1/2 2/3 2/4 2/5 3/6");
    row("two groups", repeated(load) + ',' + repeated(load), entering({1, 1, 2, 2}), "1/1 2/2 3/3 4/4");
    row("groups in a group", repeated(repeated(load) + ',' + load), entering({1, 1, 2, 1, 1, 2}),
        "1/1 2/2 3/3 4/4 5/5 6/6");
    row("a load, then a group in the same group", repeated(load + ',' + repeated(load)), entering({1, 2, 2, 1, 2, 2}),
        "1/1 1/2 2/3 3/4 3/5 4/6");
    const QByteArray charge = R"({"element": "ConstantCurrent", "current": "1 A"})";
    const QByteArray discharge = R"({"element": "ConstantCurrent", "current": "-1 A"})";
    row("pulses in the discharge of a cycle",
        charge + ',' + repeated(charge + ',' + repeated(discharge + ',' + rest) + ',' + discharge),
        entering({1, 2, 3, 4, 3, 4, 5, 2, 3, 4, 3, 4, 5}), "1/1 2/2 2/3 2/4 2/5 2/6 2/7 3/8 3/9 3/10 3/11 3/12 3/13");
    row("cycles of cycles", repeated(repeated(charge + ',' + discharge) + ',' + rest),
        entering({1, 2, 1, 2, 3, 1, 2, 1, 2, 3}), "1/1 1/2 2/3 2/4 2/5 3/6 3/7 4/8 4/9 4/10");
    row("cycles of a sweep behind a quiet time", R"({"element": "CyclicVoltammetry"})",
        {{quiet, 1, 1, 0}, {sweep, 1, 2, 0}, {sweep, 1, 2, 1}, {sweep, 1, 2, 2}, {sweep, 1, 2, 3}},
        "1/1 1/1 1/1 2/1 3/1");
    row("a sweep, repeated", R"({"element": "CyclicVoltammetry", "repeats": 2})",
        {{quiet, 1, 1, 0}, {sweep, 1, 2, 0}, {sweep, 1, 2, 2}, {quiet, 1, 3, 0}, {sweep, 1, 4, 0}, {sweep, 1, 4, 2}},
        "1/1 1/1 2/1 3/2 3/2 4/2");
    row("another sweep", R"({"element": "CyclicVoltammetry"}, {"element": "CyclicVoltammetry"})",
        {{sweep, 1, 1, 0}, {sweep, 1, 1, 2}, {sweep, 2, 1, 0}, {sweep, 2, 1, 1}, {sweep, 2, 1, 2}},
        "1/1 2/1 3/2 3/2 4/2");
    row("potentials of a Mott-Schottky measurement", R"({"element": "MottSchottky"})",
        {{"Mott Schottky", 1, 1, 0}, {quiet, 1, 2, 0}, {"Mott Schottky", 1, 3, 0}, {quiet, 1, 4, 0}},
        "1/1 1/2 1/2 1/3");
    row("no experiment known", QByteArray(), entering({1, 2, 1}), "1/1 1/2 2/3");
}

void TestStepCounter::countsExecutionsAndCycles()
{
    QFETCH(QByteArray, elements);
    QFETCH(Announcements, announced);
    QFETCH(QString, counts);
    const std::string text = ("{\"elements\": [" + elements + "]}").toStdString();
    StepCounter counter(programSteps(Json::parse(text)));
    QStringList found;
    for (const VekExperimentNode &node : announced) {
        counter.begin(node);
        found.append(QString("%1/%2").arg(counter.cycleCount()).arg(counter.stepCount()));
    }
    QCOMPARE(found.join(' '), counts);
}

NIMBRELLE_TEST_MAIN(TestStepCounter)
#include "TestStepCounter.moc"
