// SPDX-License-Identifier: MIT
#include "lab/records/RunData.h"
#include "lab/records/SampleThinner.h"
#include "lab/records/TableReader.h"
#include "support/MadeUpRun.h"

#include "support/TestMain.h"

#include <QCoreApplication>
#include <QFile>

using namespace lab;

namespace {

const QByteArray sweep = R"({"element": "CyclicVoltammetry", "startVoltage": 0, "firstVoltageLimit": 1,
    "secondVoltageLimit": -1, "endVoltage": 0, "dEdt": 1, "samplingInterval": 1, "quietTime": 2})";

void replace(const QString &path, const QByteArray &before, const QByteArray &after)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    QVERIFY(bytes.contains(before));
    file.resize(0);
    file.seek(0);
    file.write(bytes.replace(before, after));
}

} // namespace

class TestRunData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thinningKeepsWhatCounts();
    void damageCostsRowsButNoOthers_data();
    void damageCostsRowsButNoOthers();
    void aLineOfMegabytesIsDamage();
    void repeatsAndQuietTimesAreTold_data();
    void repeatsAndQuietTimesAreTold();
    void whereTimeDoesNotJoin_data();
    void whereTimeDoesNotJoin();
    void oddRecordsAreToldAndRead_data();
    void oddRecordsAreToldAndRead();
    void sweepsAreToldApart_data();
    void sweepsAreToldApart();
};

void TestRunData::thinningKeepsWhatCounts()
{
    SampleThinner thinner(3000);
    const int count = 200000, pulses = 5000;
    for (int row = 0; row < count; ++row) {
        Sample sample{double(row), 0.0, 0.0, 0.0, 0.0};
        sample.opensSegment = row == 0 || row == 70001;
        sample.voltage = row == 12345 ? 9.0 : row == 170007 ? -9.0 : std::nan("");
        sample.current = row == 23456 ? 9.0 : row == 180008 ? -9.0 : 0.0;
        sample.isPulse = row >= count - pulses;
        thinner.add(sample);
    }
    const std::vector<Sample> kept = thinner.take();
    QVERIFY(kept.size() < 3000 + pulses + 100);
    QVERIFY(std::is_sorted(kept.begin(), kept.end(),
                           [](const Sample &left, const Sample &right) { return left.time < right.time; }));
    for (const double time : {0.0, 12345.0, 23456.0, 70000.0, 70001.0, 170007.0, 180008.0})
        QVERIFY2(std::any_of(kept.begin(), kept.end(), [&](const Sample &each) { return each.time == time; }),
                 qPrintable(QString::number(time)));
    QCOMPARE(std::count_if(kept.begin(), kept.end(), [](const Sample &each) { return each.isPulse; }), pulses);
    QCOMPARE(std::count_if(kept.begin(), kept.end(), [](const Sample &each) { return each.opensSegment; }), 2);
}

void TestRunData::damageCostsRowsButNoOthers_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QVector<double>>("numbers");
    QTest::addColumn<int>("damaged");
    const double none = std::nan("");
    QTest::newRow("torn last line") << QByteArray("1,2,3\n4,5,6\n7,8") << QVector<double>{3, 6} << 0;
    QTest::newRow("last line without end") << QByteArray("1,2,3\n4,5,6") << QVector<double>{3} << 0;
    QTest::newRow("torn, then gone on") << QByteArray("1,2,3\n4,51,2,6\n7,8,9\n") << QVector<double>{3, 9} << 1;
    QTest::newRow("too few fields") << QByteArray("1,2,3\n4,5\n7,8,9\n") << QVector<double>{3, 9} << 1;
    QTest::newRow("no number") << QByteArray("1,2,NaN\n1,2,x\n1,2,3x\n1,2,\n")
                               << QVector<double>{none, none, none, none} << 0;
    QTest::newRow("lines of another system") << QByteArray("1,2,3\r\n4,5,6\r\n") << QVector<double>{3, 6} << 0;
    QTest::newRow("nothing") << QByteArray() << QVector<double>{} << 0;
}

void TestRunData::damageCostsRowsButNoOthers()
{
    QFETCH(QByteArray, text);
    QFETCH(QVector<double>, numbers);
    QFETCH(int, damaged);
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write("a,b,c\n" + text);
    file.close();
    TableReader table(file.fileName(), {{0, "old c"}, {0, "c"}, {1, "missing"}});
    for (const double expected : numbers) {
        QVERIFY(table.next());
        QCOMPARE(table.number(0), expected);
        QVERIFY(std::isnan(table.number(1)));
    }
    QVERIFY(!table.next());
    QCOMPARE(int(table.damagedRows()), damaged);
    QVERIFY(table.has(0) && !table.has(1));
}

// As a hole of zeros that a crash has left in the file.
void TestRunData::aLineOfMegabytesIsDamage()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write("a,b\n1,2\n" + QByteArray(3000000, '\0') + "3,4\n5,6\n");
    file.close();
    TableReader table(file.fileName(), {{0, "b"}});
    QVERIFY(table.next() && table.number(0) == 2.0);
    QVERIFY(table.next() && table.number(0) == 6.0);
    QCOMPARE(int(table.row()), 2);
    QVERIFY(!table.next());
}

void TestRunData::repeatsAndQuietTimesAreTold_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<bool>("isCutOff");
    for (const int version : {1, 2}) {
        QTest::addRow("version %d", version) << version << false;
        QTest::addRow("version %d, cut off", version) << version << true;
    }
}

// A quiet time and a sweep of two legs, which are two cycles, twice: the sweep is the second entry of its step, then
// the fourth.
void TestRunData::repeatsAndQuietTimesAreTold()
{
    QFETCH(int, version);
    QFETCH(bool, isCutOff);
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), sweep, version);
    for (const int repeat : {0, 1}) {
        folder.begin("Quiet Time", 1, 1 + 2 * repeat, 1 + 2 * repeat);
        folder.add(0.0, 0.0);
        folder.add(0.0, 0.0);
        for (const int leg : {0, 1}) {
            folder.begin("Cyclic Voltammetry", 1, 2 + 2 * repeat, 1 + 2 * repeat + leg);
            for (int row = 0; row < 5; ++row)
                folder.add(0.1 * row, 1.0, 0.1);
        }
    }
    folder.finish();
    if (isCutOff)
        replace(home.filePath("run/run.json"), "\"elements\": [\n        {", "\"elements\": [], \"x\": [\n        {");
    const std::optional<RunData> run = readRun(home.filePath("run"));
    QVector<QPair<int, bool>> told;
    for (const Segment &segment : run->segments)
        told.append({segment.repeat, segment.isQuiet});
    const QPair<int, bool> quiet1(1, true), sweep1(1, false), quiet2(2, true), sweep2(2, false);
    if (isCutOff && version == 1) // which does not tell the legs apart
        QCOMPARE(told, (QVector<QPair<int, bool>>{quiet1, sweep1, quiet2, sweep2}));
    else
        QCOMPARE(told, (QVector<QPair<int, bool>>{quiet1, sweep1, sweep1, quiet2, sweep2, sweep2}));
    QCOMPARE(run->segments.front().end, std::size_t(2));
    QCOMPARE(run->segments.back().end, run->dc.size());
}

void TestRunData::whereTimeDoesNotJoin_data()
{
    QTest::addColumn<QByteArray>("element");
    QTest::addColumn<QVector<double>>("times");
    QTest::addColumn<QVector<int>>("opens"); // rows to which no line leads
    const QByteArray load = R"({"element": "ConstantCurrent", "current": 1, "samplingInterval": 1, "maxDuration": 9)";
    const QByteArray pulses = R"({"element": "DiffPulseVoltammetry", "startVoltage": 0, "endVoltage": 1, "vStep": 0.1,
        "pulseHeight": 0.05, "pulseWidth": 0.001, "pulsePeriod": 1})";
    QTest::newRow("even") << load + "}" << QVector<double>{1, 2, 3, 4} << QVector<int>{0};
    QTest::newRow("one row missing") << load + "}" << QVector<double>{1, 2, 4, 5} << QVector<int>{0};
    QTest::newRow("a minute missing") << load + "}" << QVector<double>{1, 2, 62, 63} << QVector<int>{0, 2};
    QTest::newRow("last row late") << load + "}" << QVector<double>{1, 2, 62} << QVector<int>{0, 2};
    QTest::newRow("slower than asked for") << load + "}" << QVector<double>{20, 40, 60, 80} << QVector<int>{0};
    QTest::newRow("time runs back") << load + "}" << QVector<double>{1, 2, 3, 1} << QVector<int>{0, 3};
    QTest::newRow("as the voltage changes")
        << load + R"(, "minSamplingVoltageDifference": 0.1})" << QVector<double>{1, 2, 62, 63} << QVector<int>{0};
    QTest::newRow("short pulses") << pulses << QVector<double>{0.999, 1, 1.999, 2} << QVector<int>{0};
}

void TestRunData::whereTimeDoesNotJoin()
{
    QFETCH(QByteArray, element);
    QFETCH(QVector<double>, times);
    QFETCH(QVector<int>, opens);
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), element);
    folder.begin("Step", 1);
    double before = 0.0;
    for (const double time : times)
        folder.add(1.0, 1.0, time - std::exchange(before, time));
    const std::optional<RunData> run = readRun(folder.finish());
    QVector<int> found;
    for (std::size_t row = 0; row < run->dc.size(); ++row) {
        if (run->dc[row].opensStretch)
            found.append(int(row));
    }
    QCOMPARE(found, opens);
    QVERIFY(run->oddities.isEmpty());
}

void TestRunData::oddRecordsAreToldAndRead_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<QString>("told"); // a piece of one sentence
    QTest::addColumn<int>("segments");
    QTest::newRow("no JSON") << QByteArray("{") << QByteArray("[{") << "holds no JSON object" << 2;
    QTest::newRow("bytes that are no text")
        << QByteArray("Test") << QByteArray("\xff\xfe") << "holds no JSON object" << 2;
    QTest::newRow("negative row") << QByteArray("\"firstDcRow\": 3") << QByteArray("\"firstDcRow\": -3")
                                  << "element 2: \"firstDcRow\" is negative" << 2;
    QTest::newRow("row beyond the table") << QByteArray("\"firstDcRow\": 3") << QByteArray("\"firstDcRow\": 900")
                                          << "1 elements begin beyond the 6 rows" << 2;
    QTest::newRow("huge row") << QByteArray("\"firstDcRow\": 3") << QByteArray("\"firstDcRow\": 18446744073709551615")
                              << "\"firstDcRow\" is too large" << 2;
    QTest::newRow("row as text") << QByteArray("\"firstDcRow\": 3") << QByteArray("\"firstDcRow\": \"3\"")
                                 << "\"firstDcRow\" is no whole number" << 2;
    QTest::newRow("rows descend") << QByteArray("\"firstDcRow\": 0") << QByteArray("\"firstDcRow\": 5")
                                  << "before that of the element before it" << 3;
    QTest::newRow("no row") << QByteArray("\"firstDcRow\"") << QByteArray("\"otherRow\"") << "and 1 more" << 2;
    QTest::newRow("element is a number") << QByteArray("\"elements\": [\n        {")
                                         << QByteArray("\"elements\": [ 7, {") << "element 1: \"stepNumber\" is missing"
                                         << 2;
    QTest::newRow("elements are none") << QByteArray("\"elements\": [\n        {")
                                       << QByteArray("\"elements\": 4, \"x\": [ {") << "\"elements\" is no list" << 2;
    QTest::newRow("name is a number") << QByteArray("\"Test\"") << QByteArray("7") << "\"name\" is no text" << 2;
    QTest::newRow("no experiment") << QByteArray("\"experiment\"") << QByteArray("\"x\"")
                                   << "\"experiment\" is no object" << 2;
    QTest::newRow("other experiment") << QByteArray("\"ConstantCurrent\"") << QByteArray("\"Magic\"")
                                      << "there is no element \"Magic\"" << 2;
    QTest::newRow("deep") << QByteArray("\"Test\"")
                          << "\"Test\", \"deep\": " + QByteArray(100000, '[') + QByteArray(100000, ']')
                          << "holds no JSON object" << 2;
    QTest::newRow("brackets in a text") << QByteArray("\"Test\"")
                                        << '"' + QByteArray(600, '[') + "\\\"" + QByteArray(600, '{') + '"' << QString()
                                        << 2;
}

void TestRunData::oddRecordsAreToldAndRead()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    QFETCH(QString, told);
    QFETCH(int, segments);
    QTemporaryDir home;
    const QByteArray load = R"({"element": "ConstantCurrent", "current": 1, "samplingInterval": 1, "maxDuration": 9})";
    MadeUpRun folder(home.filePath("run"), load + "," + load);
    for (const int step : {1, 2}) {
        folder.begin("Constant Current", step);
        for (int row = 0; row < 3; ++row)
            folder.add(3.0, 1.0);
    }
    folder.finish();
    replace(home.filePath("run/run.json"), before, after);
    const std::optional<RunData> run = readRun(home.filePath("run"));
    QVERIFY(run);
    QCOMPARE(run->dc.size(), std::size_t(6));
    QCOMPARE(int(run->segments.size()), segments); // by the columns where the announcements are damaged
    QCOMPARE(run->segments.back().step, 2);
    QVERIFY2(run->oddities.join('\n').contains(told), qPrintable(run->oddities.join('\n')));
    QCOMPARE(run->oddities.isEmpty(), told.isEmpty());
    QVERIFY(run->oddities.size() <= 2);
}

void TestRunData::sweepsAreToldApart_data()
{
    QTest::addColumn<QVector<double>>("frequencies");
    QTest::addColumn<QVector<int>>("opens");
    QTest::newRow("down") << QVector<double>{1000, 100, 10} << QVector<int>{0};
    QTest::newRow("up") << QVector<double>{10, 100, 1000} << QVector<int>{0};
    QTest::newRow("down twice") << QVector<double>{100, 10, 100, 10} << QVector<int>{0, 2};
    QTest::newRow("one frequency") << QVector<double>{100, 100, 100} << QVector<int>{0, 1, 2};
}

void TestRunData::sweepsAreToldApart()
{
    QFETCH(QVector<double>, frequencies);
    QFETCH(QVector<int>, opens);
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), sweep);
    folder.begin("Potentiostatic EIS", 1);
    for (const double frequency : frequencies)
        folder.addImpedance(frequency, 1.0, -1.0);
    const std::optional<RunData> run = readRun(folder.finish());
    QVector<int> found;
    for (std::size_t row = 0; row < run->ac.size(); ++row) {
        if (run->ac[row].opensSweep)
            found.append(int(row));
    }
    QCOMPARE(found, opens);
}

int main(int argc, char **argv)
{
    const IsolatedHome home;
    QCoreApplication application(argc, argv);
    TestRunData test;
    return QTest::qExec(&test, argc, argv);
}
#include "TestRunData.moc"
