#include "CsvFile.h"
#include "JsonOutput.h"
#include "RunRecorder.h"

#include "support/TestMain.h"

#include <clocale>
#include <limits>

using namespace client;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Json summaryOf(const QString &folder)
{
    return Json::parse(contentOf(folder + "/run.json").toStdString());
}

RunSetup setupOf()
{
    RunSetup setup;
    setup.instrument.deviceName = "Alder-0042";
    setup.channel = 3;
    setup.experimentPath = "cycle.json";
    setup.experimentText = "{\"schemaVersion\": 1}";
    return setup;
}

VekDCData sampleOf(double time, double voltage, double current)
{
    VekDCData data;
    data.timestamp = time;
    data.workingElectrodeVoltage = voltage;
    data.current = current;
    return data;
}

} // namespace

class TestRunRecorder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void numbersKeepEveryDigitInACommaLocale_data();
    void numbersKeepEveryDigitInACommaLocale();
    void rowsCarryStepAndCycle();
    void rowsAreOnTheDiskAfterAFlush();
    void summaryTellsTheRun();
    void impedanceMakesItsOwnFile();
    void aFolderWithARunIsNotOverwritten();

private:
    QTemporaryDir _home;
};

void TestRunRecorder::initTestCase()
{
    // Where the machine has no such locale the numbers are checked all the same.
    for (const char *name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE"}) {
        if (std::setlocale(LC_ALL, name))
            break;
    }
    QLocale::setDefault(QLocale(QLocale::German));
}

void TestRunRecorder::numbersKeepEveryDigitInACommaLocale_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("tenth") << 0.1 << QByteArray("0.10000000000000001");
    QTest::newRow("third") << 1.0 / 3.0 << QByteArray("0.33333333333333331");
    QTest::newRow("small") << -1e-9 << QByteArray("-1.0000000000000001e-09");
    QTest::newRow("whole") << 12.0 << QByteArray("12");
    QTest::newRow("unknown") << -std::numeric_limits<double>::quiet_NaN() << QByteArray("NaN");
}

void TestRunRecorder::numbersKeepEveryDigitInACommaLocale()
{
    QFETCH(double, value);
    QFETCH(QByteArray, text);
    QCOMPARE(csvNumber(value), text);
}

void TestRunRecorder::rowsCarryStepAndCycle()
{
    const QString folder = _home.filePath("rows");
    RunRecorder recorder;
    QVERIFY(recorder.create(folder, setupOf()));
    recorder.beginElement({"Constant Current", 2, 5, 0});
    recorder.addDc(sampleOf(1.5, 3.25, -0.5));
    QVERIFY(recorder.finish(RunState::Completed, "Experiment completed"));
    QCOMPARE(contentOf(folder + "/dc.csv"),
             QByteArray("Test Time / s,Voltage / V,Current / A,Counter Electrode Voltage / V,Temperature / degC,"
                        "Charge / C,Net Charge / C,Step Count / 1,Cycle Count / 1\n"
                        "1.5,3.25,-0.5,0,0,0,0,2,5\n"));
    QVERIFY(!QFile::exists(folder + "/ac.csv"));
}

void TestRunRecorder::rowsAreOnTheDiskAfterAFlush()
{
    const QString folder = _home.filePath("flush");
    RunRecorder recorder;
    QVERIFY(recorder.create(folder, setupOf()));
    recorder.addDc(sampleOf(1.0, 2.0, 3.0));
    recorder.flush();
    QVERIFY(contentOf(folder + "/dc.csv").endsWith("\n1,2,3,0,0,0,0,0,0\n"));
    QCOMPARE(summaryOf(folder)["state"], Json("running"));
}

void TestRunRecorder::summaryTellsTheRun()
{
    const QString folder = _home.filePath("summary");
    RunRecorder recorder;
    QVERIFY(recorder.create(folder, setupOf()));
    recorder.setStart(QDateTime::fromSecsSinceEpoch(0, Qt::UTC));
    recorder.beginElement({"Open Circuit Potential", 1, 1, 0});
    recorder.addDc(sampleOf(0.0, 1.0, 0.0));
    recorder.addDc(sampleOf(1.0, 1.0, 0.0));
    recorder.beginElement({"Constant Current", 2, 1, 0});
    QVERIFY(recorder.finish(RunState::DeviceLost, "gone"));

    const Json summary = summaryOf(folder);
    QCOMPARE(summary["state"], Json("device lost"));
    QCOMPARE(summary["endMessage"], Json("gone"));
    QCOMPARE(summary["startUtc"], Json("1970-01-01T00:00:00.000Z"));
    QCOMPARE(summary["channel"], Json(3));
    QCOMPARE(summary["instrument"]["name"], Json("Alder-0042"));
    QCOMPARE(summary["counts"]["dcRows"], Json(2));
    QCOMPARE(summary["elements"].size(), std::size_t(2));
    QCOMPARE(summary["elements"][1]["firstDcRow"], Json(2));
    QCOMPARE(summary["experiment"]["content"]["schemaVersion"], Json(1));
    // sha256sum of the text
    QCOMPARE(summary["experiment"]["sha256"].get<std::string>().size(), std::size_t(64));
}

void TestRunRecorder::impedanceMakesItsOwnFile()
{
    const QString folder = _home.filePath("impedance");
    RunRecorder recorder;
    QVERIFY(recorder.create(folder, setupOf()));
    VekACData point;
    point.frequency = 1000.0;
    point.realImpedance = 50.0;
    point.imagImpedance = -25.0;
    recorder.addAc(point);
    QVERIFY(recorder.finish(RunState::Completed, "Experiment completed"));
    QVERIFY(contentOf(folder + "/ac.csv").endsWith("\n0,1000,0,50,-25,0,0,0,0,0,0,0,0,0\n"));
}

void TestRunRecorder::aFolderWithARunIsNotOverwritten()
{
    const QString folder = _home.filePath("twice");
    RunRecorder first;
    QVERIFY(first.create(folder, setupOf()));
    first.addDc(sampleOf(1.0, 2.0, 3.0));
    first.flush();
    RunRecorder second;
    QVERIFY(!second.create(folder, setupOf()));
    QVERIFY(second.error().contains("dc.csv"));
    QVERIFY(contentOf(folder + "/dc.csv").contains("\n1,2,3"));
}

NIMBRELLE_TEST_MAIN(TestRunRecorder)
#include "TestRunRecorder.moc"
