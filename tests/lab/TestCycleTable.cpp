// SPDX-License-Identifier: MIT
#include "lab/records/RunRecorder.h"

#include "support/TestMain.h"

#include <QFile>

using namespace lab;

namespace {

const QByteArray charge = R"({"element": "ConstantCurrent", "current": "3.6 A"})";
const QByteArray discharge = R"({"element": "ConstantCurrent", "current": "-3.6 A"})";
const QByteArray rest = R"({"element": "OpenCircuit"})";

QByteArray twice(const QByteArray &content)
{
    return R"({"repeats": 2, "group": [)" + content + "]}";
}

/// The complete lines of a file behind its headings, as fields.
QVector<QByteArrayList> fieldsOf(const QString &path)
{
    QVector<QByteArrayList> table;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return table;
    file.readLine();
    for (QByteArray line = file.readLine(); line.endsWith('\n'); line = file.readLine())
        table.append(line.trimmed().split(','));
    return table;
}

/// A record that is made as the announcements and samples of a run come.
class Recording
{
public:
    Recording(const QString &folder, const QByteArray &elements) : _path(folder + "/cycles.csv")
    {
        RunSetup setup;
        setup.experimentText = "{\"elements\": [" + elements + "]}";
        recorder.create(folder, setup);
        recorder.setStart(QDateTime::fromSecsSinceEpoch(1000, Qt::UTC));
    }

    void begin(int step, int pass) { recorder.beginElement({"Any", step, pass, 0}); }
    /// Amperes over seconds, recorded at their middle and their end.
    void move(double current, double seconds, double middleVoltage, double endVoltage)
    {
        for (const double voltage : {middleVoltage, endVoltage}) {
            VekDCData data;
            data.timestamp = _time += seconds / 2.0;
            data.workingElectrodeVoltage = voltage;
            data.current = current;
            data.cumulativeChargeNet = _net += current * seconds / 2.0;
            data.cumulativeChargeAbs = _abs += qAbs(current) * seconds / 2.0;
            recorder.addDc(data);
        }
    }
    /// A row whose reading of the charge is no number.
    void rowWithoutCharge()
    {
        VekDCData data;
        data.timestamp = _time += 1e-7;
        data.cumulativeChargeNet = data.cumulativeChargeAbs = std::numeric_limits<double>::quiet_NaN();
        recorder.addDc(data);
    }
    QVector<QByteArrayList> table()
    {
        recorder.flush();
        return fieldsOf(_path);
    }

    RunRecorder recorder;

private:
    const QString _path;
    double _time = 0.0;
    double _net = 0.0;
    double _abs = 0.0;
};

} // namespace

class TestCycleTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsEachCycleAsItEnds();
    void anUnfinishedCycleHasNoEfficiency();
    void isMadeForBatteryCyclesAlone_data();
    void isMadeForBatteryCyclesAlone();

private:
    QTemporaryDir _home;
};

// 3.6 A for 1000 s are 1 Ah; at 4 V, of which the first half counts back to its beginning, 4 Wh.
void TestCycleTable::tellsEachCycleAsItEnds()
{
    Recording run(_home.filePath("each"), twice(charge + ',' + rest + ',' + discharge));
    run.begin(1, 1);
    run.move(3.6, 1000.0, 4.0, 4.0);
    run.begin(2, 1);
    run.move(1e-12, 100.0, 3.9, 3.8); // noise
    run.begin(3, 1);
    run.move(-3.6, 800.0, 3.0, 3.0);
    QCOMPARE(run.table().size(), 0); // it is not over
    run.begin(1, 2);
    run.move(3.6, 500.0, 3.5, 3.75);
    const auto table = run.table();
    QCOMPARE(table.size(), 1);
    QCOMPARE(table[0].join(','), QByteArray("1,0,1000,1,0.8,4,2.4,80,60,4,3,4,3,1000,800,1900"));

    run.begin(2, 2);
    run.begin(3, 2);
    run.move(-3.6, 250.0, 3.5, 3.25);
    QVERIFY(run.recorder.finish(RunState::Completed, "Experiment completed"));
    QCOMPARE(run.table().size(), 2);
    const QByteArrayList second = run.table()[1];
    QCOMPARE(second.mid(0, 5).join(','), QByteArray("2,1900,2900,0.5,0.25"));
    QCOMPARE(second[7], QByteArray("50"));
    QCOMPARE(second.mid(11, 5).join(','), QByteArray("3.75,3.25,500,250,750"));
}

void TestCycleTable::anUnfinishedCycleHasNoEfficiency()
{
    Recording run(_home.filePath("unfinished"), twice(charge + ',' + discharge));
    run.begin(1, 1);
    run.move(3.6, 1000.0, 4.0, 4.0);
    run.begin(2, 1);
    run.move(-3.6, 500.0, 3.0, 3.0);
    run.rowWithoutCharge();
    QVERIFY(run.recorder.finish(RunState::Interrupted, "Experiment stopped by user"));
    QCOMPARE(run.table().size(), 1);
    QCOMPARE(run.table()[0].mid(3, 8).join(','), QByteArray("1,0.5,4,1.5,NaN,NaN,4,3"));
}

void TestCycleTable::isMadeForBatteryCyclesAlone_data()
{
    QTest::addColumn<QByteArray>("elements");
    QTest::addColumn<bool>("isMade");
    QTest::newRow("cycles") << twice(charge + ',' + discharge) << true;
    QTest::newRow("a resistance discharges") << twice(charge + R"(,{"element": "ConstantResistance"})") << true;
    QTest::newRow("in a nested group") << twice(rest + ',' + twice(charge + ',' + discharge)) << true;
    QTest::newRow("once") << charge + ',' + discharge << false;
    QTest::newRow("one direction in each group") << twice(charge + ',' + rest) + ',' + twice(discharge) << false;
    QTest::newRow("potentials") << twice(R"({"element": "ConstantPot"},{"element": "CyclicVoltammetry"})") << false;
}

void TestCycleTable::isMadeForBatteryCyclesAlone()
{
    QFETCH(QByteArray, elements);
    Recording run(_home.filePath(QTest::currentDataTag()), elements);
    run.begin(1, 1);
    run.move(3.6, 1000.0, 4.0, 4.0);
    QVERIFY(run.recorder.finish(RunState::Completed, "Experiment completed"));
    const auto table = run.table();
    QTEST(!table.isEmpty(), "isMade");
    if (!table.isEmpty())
        QCOMPARE(table[0].mid(7, 2).join(','), QByteArray("NaN,NaN")); // nothing has come out
}

NIMBRELLE_TEST_MAIN(TestCycleTable)
#include "TestCycleTable.moc"
