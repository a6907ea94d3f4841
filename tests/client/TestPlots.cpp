#include "RunRecorder.h"
#include "plots/AxisScale.h"
#include "plots/Cycling.h"
#include "plots/Decimation.h"
#include "plots/RunData.h"
#include "plots/RunPlots.h"

#include "support/TestMain.h"

#include <QApplication>
#include <QImage>

using namespace client;

namespace {

/// A record under construction, with one row each second unless told otherwise.
class Record
{
public:
    Record(const QString &folder, const QByteArray &elements)
    {
        RunSetup setup;
        setup.experimentName = "Test";
        setup.experimentText = "{\"schemaVersion\": 1, \"elements\": [" + elements + "]}";
        _isGood = _recorder.create(folder, setup);
    }

    void begin(const QString &name, int step, int cycle = 1, int substep = 0)
    {
        _recorder.beginElement({name, step, cycle, substep});
    }
    void add(double voltage, double current, double netCharge = 0.0, double seconds = 1.0)
    {
        VekDCData data;
        data.timestamp = _time += seconds;
        data.workingElectrodeVoltage = voltage;
        data.current = current;
        data.cumulativeChargeNet = netCharge;
        _recorder.addDc(data);
    }
    void addImpedance(double frequency)
    {
        VekACData point;
        point.frequency = frequency;
        point.absoluteImpedance = point.realImpedance = 100.0;
        _recorder.addAc(point);
    }
    void leaveCutOff() { _recorder.flush(); }
    QString finish()
    {
        _isGood = _recorder.finish(RunState::Completed, "Experiment completed") && _isGood;
        return _isGood ? _recorder.folder() : QString();
    }

private:
    RunRecorder _recorder;
    double _time = 0.0;
    bool _isGood = false;
};

const QByteArray pulseElement = "{\"element\": \"DiffPulseVoltammetry\", \"startVoltage\": 0, \"endVoltage\": 0.1, "
                                "\"vStep\": 0.05, \"pulseHeight\": 0.025, \"pulseWidth\": 0.25, \"pulsePeriod\": 1}";
const QByteArray sweepElement = "{\"element\": \"DCPotentialSweep\", \"startingPot\": 0, \"endingPot\": 1, "
                                "\"scanRate\": 1, \"samplingInterval\": 1}";
const QByteArray loadElement = "{\"element\": \"ConstantCurrent\", \"current\": 1, \"samplingInterval\": 1, "
                               "\"maxDuration\": 1}";

} // namespace

class TestPlots : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thinningKeepsPeaksAndEnds();
    void axesTakeThePrefixOfTheirNumbers_data();
    void axesTakeThePrefixOfTheirNumbers();
    void aTornLastLineIsLeftOut();
    void aRunBecomesPictures();
    void eachTechniqueHasItsPicture();
    void aCutOffRecordIsStillDrawn();
    void chargeIsCountedByCycleAndDirection();
    void aFolderWithoutARunGivesNone();
};

void TestPlots::thinningKeepsPeaksAndEnds()
{
    QVector<QPointF> points;
    for (int index = 0; index < 100000; ++index)
        points.append({double(index), index == 51234 ? 7.0 : index == 333 ? -7.0 : 0.0});
    const QVector<QPointF> thinned = decimate(points, 1000);
    QVERIFY(thinned.size() <= 1000);
    QVERIFY(thinned.contains({51234.0, 7.0}));
    QVERIFY(thinned.contains({333.0, -7.0}));
    QCOMPARE(thinned.first(), points.first());
    QCOMPARE(thinned.last(), points.last());
    QVERIFY(std::is_sorted(thinned.begin(), thinned.end(),
                           [](const QPointF &left, const QPointF &right) { return left.x() < right.x(); }));
    QCOMPARE(decimate(points.mid(0, 1000), 1000).size(), 1000);
}

void TestPlots::axesTakeThePrefixOfTheirNumbers_data()
{
    QTest::addColumn<double>("largest");
    QTest::addColumn<QString>("title");
    QTest::newRow("milli") << 0.02 << "Current / mA";
    QTest::newRow("one") << -3.0 << "Current / A";
    QTest::newRow("micro") << 999e-6 << QString::fromUtf8("Current / µA");
    QTest::newRow("nothing") << 0.0 << "Current / A";
}

void TestPlots::axesTakeThePrefixOfTheirNumbers()
{
    QFETCH(double, largest);
    QFETCH(QString, title);
    QCOMPARE(prefixedScale("Current", "A", largest).title, title);
}

void TestPlots::aTornLastLineIsLeftOut()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write("a,b,c\n1,2,3\n4,NaN,6\n7,8");
    file.close();
    const std::optional<Table> table = readTable(file.fileName(), {"a", "c"});
    QCOMPARE(table->column("a"), (Column{1.0, 4.0}));
    QCOMPARE(table->column("c"), (Column{3.0, 6.0}));
    QVERIFY(table->column("b").empty());
}

void TestPlots::aRunBecomesPictures()
{
    QTemporaryDir home;
    Record record(home.filePath("run"), loadElement + "," + loadElement);
    for (int row = 0; row < 200; ++row) {
        if (row % 100 == 0)
            record.begin("Constant Current", 1 + row / 100);
        record.add(row < 100 ? 1.0 + row * 0.001 : 1.05, row < 100 ? 0.01 : 0.0);
    }
    const QString folder = record.finish();
    QVERIFY(drawRun(folder));
    QVERIFY(QFile::exists(folder + "/time.svg"));
    const QImage picture(folder + "/time.png");
    QVERIFY(picture.width() > 1000);
    int curvePixels = 0;
    for (int y = 0; y < picture.height() / 2; ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QColor pixel = picture.pixelColor(x, y);
            curvePixels += pixel.blue() > 120 && pixel.red() < 60 ? 1 : 0;
        }
    }
    QVERIFY2(curvePixels > picture.width() / 2, "the curve of the voltage runs across the upper half");
}

void TestPlots::eachTechniqueHasItsPicture()
{
    QTemporaryDir home;
    Record sweeps(home.filePath("sweeps"), sweepElement + "," + pulseElement);
    sweeps.begin("Potential Linear Sweep", 1);
    for (int row = 0; row < 10; ++row)
        sweeps.add(row * 0.1, row * 1e-3);
    sweeps.begin("DP Potential Voltammetry", 2);
    for (int pulse = 0; pulse < 3; ++pulse) {
        sweeps.add(pulse * 0.05, 1e-6, 0.0, 0.75);
        sweeps.add(pulse * 0.05 + 0.025, 3e-6, 0.0, 0.25);
    }
    for (int point = 0; point < 5; ++point)
        sweeps.addImpedance(std::pow(10.0, point));
    const QString folder = sweeps.finish();
    QVERIFY(drawRun(folder));
    for (const char *name : {"time", "voltammogram-1", "voltammogram-2", "nyquist", "bode"}) {
        QVERIFY2(QFile::exists(QString("%1/%2.svg").arg(folder, name)), name);
        QVERIFY2(!QImage(QString("%1/%2.png").arg(folder, name)).isNull(), name);
    }
    QVERIFY(!QFile::exists(folder + "/cycling.svg"));
}

void TestPlots::aCutOffRecordIsStillDrawn()
{
    QTemporaryDir home;
    Record record(home.filePath("cut"), sweepElement);
    record.begin("Potential Linear Sweep", 1);
    record.add(0.0, 1e-3);
    record.add(0.5, 2e-3);
    record.leaveCutOff();
    const std::optional<RunData> run = readRun(home.filePath("cut"));
    QCOMPARE(run->segments.size(), std::size_t(1)); // from the column: the summary has no elements yet
    QCOMPARE(run->segments.front().end, std::size_t(2));
    QVERIFY(drawRun(home.filePath("cut")));
    QVERIFY(QFile::exists(home.filePath("cut/voltammogram.svg")));
}

// Two cycles: 10 C in and 9 C out, 10 C in and 8 C out.
void TestPlots::chargeIsCountedByCycleAndDirection()
{
    QTemporaryDir home;
    Record record(home.filePath("cycles"), loadElement + "," + loadElement);
    const double net[] = {5.0, 10.0, 6.0, 1.0, 6.0, 11.0, 7.0, 3.0};
    for (int row = 0; row < 8; ++row) {
        if (row % 2 == 0)
            record.begin("Constant Current", 1 + row / 2 % 2, 1 + row / 4);
        record.add(3.7, row / 2 % 2 == 0 ? 1.0 : -1.0, net[row]);
    }
    const QString folder = record.finish();
    const std::map<int, CycleCharge> cycles = chargeByCycle(*readRun(folder));
    QCOMPARE(cycles.size(), std::size_t(2));
    QCOMPARE(cycles.at(1).charged, 10.0);
    QCOMPARE(cycles.at(1).discharged, 9.0);
    QCOMPARE(cycles.at(2).discharged, 8.0);
    QVERIFY(drawRun(folder));
    QVERIFY(QFile::exists(folder + "/cycling.svg"));
}

void TestPlots::aFolderWithoutARunGivesNone()
{
    QTemporaryDir folder;
    QVERIFY(!drawRun(folder.path()));
}

int main(int argc, char **argv)
{
    const IsolatedHome home;
    QApplication application(argc, argv);
    TestPlots test;
    return QTest::qExec(&test, argc, argv);
}
#include "TestPlots.moc"
