// SPDX-License-Identifier: MIT
#include "lab/notation/JsonOutput.h"
#include "lab/records/RunRecorder.h"
#include "lab/records/TableWriter.h"

#include "support/TestMain.h"

#include <clocale>
#include <limits>

using namespace lab;

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

Q_DECLARE_METATYPE(lab::Precision)

class TestRunRecorder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void numbersAreAsFineAsTheirSource_data();
    void numbersAreAsFineAsTheirSource();
    void rowsSayWhatTheyAre();
    void noTwoRowsShareATime();
    void energyFollowsTheSignOfTheCurrent();
    void rowsAreOnTheDiskAfterAFlush();
    void summaryTellsTheRun();
    void summaryKeepsUpWithTheElements();
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

void TestRunRecorder::numbersAreAsFineAsTheirSource_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<Precision>("precision");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("reading") << double(0.1f) << Precision::Reading << QByteArray("0.1");
    QTest::newRow("reading of every digit") << double(1.0f / 3.0f) << Precision::Reading << QByteArray("0.33333334");
    QTest::newRow("small reading") << double(-1.5e-9f) << Precision::Reading << QByteArray("-1.5e-09");
    QTest::newRow("no reading") << -std::numeric_limits<double>::quiet_NaN() << Precision::Reading << QByteArray("NaN");
    QTest::newRow("no current") << std::numeric_limits<double>::infinity() << Precision::Reading << QByteArray("inf");
    QTest::newRow("time") << 0.0099999999999997868 << Precision::Tick << QByteArray("0.01");
    // 25,000,000 s are ten months: 87,500,001 ticks of the cycler's clock are still told from 87,500,002
    QTest::newRow("late tick") << 25000001.0 + 1.0 / 8.75e7 << Precision::Tick << QByteArray("25000001.00000001");
    QTest::newRow("late tick, the next") << 25000001.0 + 2.0 / 8.75e7 << Precision::Tick
                                         << QByteArray("25000001.00000002");
    QTest::newRow("host time") << 1795620000.1234567 << Precision::Microsecond << QByteArray("1795620000.123457");
    QTest::newRow("host time of a full second") << 1800000000.0 << Precision::Microsecond << QByteArray("1800000000");
    QTest::newRow("total") << 5.0 / 3600.0 << Precision::Total << QByteArray("0.00138888888889");
    QTest::newRow("count") << 100000.0 << Precision::Count << QByteArray("100000");
}

void TestRunRecorder::numbersAreAsFineAsTheirSource()
{
    QFETCH(double, value);
    QFETCH(Precision, precision);
    QFETCH(QByteArray, text);
    QCOMPARE(csvNumber(value, precision), text);
}

void TestRunRecorder::rowsSayWhatTheyAre()
{
    const QString folder = _home.filePath("rows");
    RunRecorder recorder;
    QVERIFY(recorder.create(folder, setupOf()));
    recorder.setStart(QDateTime::fromMSecsSinceEpoch(1000250, Qt::UTC));
    recorder.beginElement({"Open Circuit Potential", 1, 1, 0});
    recorder.beginElement({"Constant Current", 2, 1, 0});
    VekDCData data = sampleOf(1.5, 3.25, -0.5);
    data.temperature = qQNaN();
    data.counterElectrodeVoltage = -0.75;
    data.cumulativeChargeAbs = 7200.0; // 1.5 Ah in, 0.5 Ah out
    data.cumulativeChargeNet = 3600.0;
    recorder.addDc(data);
    QVERIFY(recorder.finish(RunState::Completed, "Experiment completed"));
    QCOMPARE(contentOf(folder + "/dc.csv"),
             QByteArray("Test Time / s,Unix Time / s,Voltage / V,Current / A,Cycle Count / 1,Step Count / 1,Step / 1,"
                        "Charging Capacity / Ah,Discharging Capacity / Ah,Net Capacity / Ah,Charging Energy / Wh,"
                        "Discharging Energy / Wh,Temperature T1 / degC,Counter Electrode Voltage / V\n"
                        "1.5,1001.75,3.25,-0.5,1,2,2,1.5,0.5,1,0,0.000677083333,NaN,-0.75\n"));
    QVERIFY(!QFile::exists(folder + "/ac.csv"));
}

// The end of a step and the beginning of the next may be one moment; only the end tells by what the step ended.
void TestRunRecorder::noTwoRowsShareATime()
{
    const QString folder = _home.filePath("moments");
    RunRecorder recorder;
    QVERIFY(recorder.create(folder, setupOf()));
    recorder.beginElement({"Constant Current", 1, 1, 0});
    recorder.addDc(sampleOf(1.0, 4.2, 1.0));
    recorder.beginElement({"Constant Potential", 2, 1, 0});
    recorder.addDc(sampleOf(1.0 + 1e-9, 4.1, -1.0)); // the same tick, subtracted from another start
    recorder.addDc(sampleOf(1.0 + 2e-8, 4.0, -1.0));
    VekACData point;
    point.timestamp = 2.0;
    for (const double frequency : {1.0, 3.0, 5.0}) { // tones of one record
        point.frequency = frequency;
        recorder.addAc(point);
    }
    point.timestamp = 2.5;
    recorder.addAc(point);
    QVERIFY(recorder.finish(RunState::Completed, "Experiment completed"));
    const auto columnOf = [&folder](const char *file, int column) {
        QByteArrayList values;
        for (const QByteArray &line : contentOf(folder + file).trimmed().split('\n').mid(1))
            values.append(line.split(',')[column]);
        return values.join(' ');
    };
    QCOMPARE(columnOf("/dc.csv", 0), QByteArray("1 1.00000002"));
    QCOMPARE(columnOf("/dc.csv", 2), QByteArray("4.2 4"));
    QCOMPARE(columnOf("/ac.csv", 0), QByteArray("2 2.00000001 2.00000002 2.5"));
    QCOMPARE(columnOf("/ac.csv", 7), QByteArray("1 3 5 5"));
}

void TestRunRecorder::energyFollowsTheSignOfTheCurrent()
{
    EnergyMeter meter;
    meter.add(3600.0, 2.0, 1.0, 1);   // since the start of the step: 2 Wh
    meter.add(7200.0, 4.0, 1.0, 1);   // 3 Wh
    meter.add(10800.0, 4.0, -1.0, 1); // passes zero half-way: 1 Wh in, 1 Wh out
    meter.add(14400.0, 3.0, 2.0, 2);  // another step: 6 Wh, and nothing of the discharge before
    meter.add(18000.0, qQNaN(), 2.0, 2);
    meter.add(21600.0, 3.0, 2.0, 2); // nothing is known of the power before
    meter.add(25200.0, 3.0, 2.0, 2); // 6 Wh
    QCOMPARE(meter.charging(), 18.0);
    QCOMPARE(meter.discharging(), 1.0);
}

void TestRunRecorder::rowsAreOnTheDiskAfterAFlush()
{
    const QString folder = _home.filePath("flush");
    RunRecorder recorder;
    QVERIFY(recorder.create(folder, setupOf()));
    recorder.addDc(sampleOf(1.0, 2.0, 3.0));
    recorder.flush();
    QVERIFY(contentOf(folder + "/dc.csv").contains("\n1,NaN,2,3,1,0,0,"));
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

// A sudden end leaves what is on the disk; many elements must not fill it with records.
void TestRunRecorder::summaryKeepsUpWithTheElements()
{
    const QString folder = _home.filePath("elements");
    RunRecorder recorder;
    QVERIFY(recorder.create(folder, setupOf()));
    QCOMPARE(summaryOf(folder)["recordVersion"], Json(2));
    recorder.setStart(QDateTime::fromSecsSinceEpoch(0, Qt::UTC));
    recorder.beginElement({"Constant Current", 1, 1, 0});
    QCOMPARE(summaryOf(folder)["startUtc"], Json("1970-01-01T00:00:00.000Z"));
    QCOMPARE(summaryOf(folder)["elements"].size(), std::size_t(1));

    recorder.addDc(sampleOf(1.0, 1.0, 0.0));
    recorder.beginElement({"Constant Current", 1, 2, 0});
    recorder.flush();
    QCOMPARE(summaryOf(folder)["elements"].size(), std::size_t(1)); // not a second has gone by
    const auto secondMark = [&] {
        recorder.flush();
        const Json elements = summaryOf(folder)["elements"];
        return elements.size() > 1 ? elements[1] : Json();
    };
    QTRY_VERIFY(!secondMark().is_null());
    QCOMPARE(secondMark(), Json::parse(R"({"stepName": "Constant Current", "stepNumber": 1, "cycleNumber": 2,
        "substepNumber": 0, "stepCount": 2, "cycleCount": 2, "firstDcRow": 1, "firstAcRow": 0})"));

    for (int cycle = 3; cycle <= 20000; ++cycle)
        recorder.beginElement({"Constant Current", 1, cycle, 0});
    QVERIFY(recorder.finish(RunState::Completed, "Experiment completed"));
    QCOMPARE(summaryOf(folder)["elements"].size(), std::size_t(10000));
    QCOMPARE(summaryOf(folder)["elementCount"], Json(20000));
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
    point.absoluteImpedance = 55.9;
    point.phaseAngle = -26.5;
    point.dcVoltageBias = 0.5;
    point.dcCurrentBias = 0.25;
    point.voltageAmplitude = 0.01;
    point.currentAmplitude = 0.02;
    point.totalHarmonicDistortion = 1.5;
    point.numberOfCycles = 8.0;
    recorder.beginElement({"Potentiostatic EIS", 1, 1, 0});
    recorder.addAc(point);
    QVERIFY(recorder.finish(RunState::Completed, "Experiment completed"));
    QCOMPARE(contentOf(folder + "/ac.csv"),
             QByteArray("Test Time / s,Unix Time / s,Voltage / V,Current / A,Cycle Count / 1,Step Count / 1,Step / 1,"
                        "Frequency / Hz,Real Impedance / ohm,Imaginary Impedance / ohm,Absolute Impedance / ohm,"
                        "Phase / deg,Voltage Amplitude / V,Current Amplitude / A,Total Harmonic Distortion / %,"
                        "Number of Periods / 1\n"
                        "0,NaN,0.5,0.25,1,1,1,1000,50,-25,55.9,-26.5,0.01,0.02,1.5,8\n"));
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
    QVERIFY(contentOf(folder + "/dc.csv").contains("\n1,NaN,2,3"));
}

NIMBRELLE_TEST_MAIN(TestRunRecorder)
#include "TestRunRecorder.moc"
