// SPDX-License-Identifier: MIT
#include "SvgPicture.h"
#include "lab/records/RunData.h"
#include "lab/records/RunRecorder.h"
#include "plots/AxisScale.h"
#include "plots/Cycling.h"
#include "plots/Decimation.h"
#include "plots/Fonts.h"
#include "plots/HalfCycles.h"
#include "plots/Panel.h"
#include "plots/RunPlots.h"
#include "plots/Voltammogram.h"
#include "support/MadeUpRun.h"

#include "support/TestMain.h"

#include <QApplication>
#include <QFile>
#include <QImage>

#include <cmath>

using namespace lab;
using namespace plots;

namespace {

constexpr double pi = 3.14159265358979323846;

const QByteArray pulseElement = R"({"element": "DiffPulseVoltammetry", "startVoltage": 0, "endVoltage": 0.1,
    "vStep": 0.05, "pulseHeight": 0.025, "pulseWidth": 0.25, "pulsePeriod": 1})";
const QByteArray squareElement = R"({"element": "SquareWaveVoltammetry", "startVoltage": 0, "endVoltage": 0.1,
    "vStep": 0.05, "pulseAmp": 0.025, "pulseFreq": 1})";
const QByteArray normalElement = R"({"element": "NormalPulseVoltammetry", "startVoltage": 0, "endVoltage": 0.1,
    "vStep": 0.05, "pulseWidth": 0.25, "pulsePeriod": 1})";
const QByteArray loadElement = R"({"element": "ConstantCurrent", "current": 1, "samplingInterval": 1,
    "maxDuration": 1})";
const QByteArray restElement = R"({"element": "OpenCircuit", "maxDuration": 9, "samplingInterval": 1})";
const QByteArray impedanceElement = R"({"element": "EISPotentiostatic", "startFreq": 10000, "endFreq": 1,
    "stepsPerDecade": 1, "biasVoltage": 0, "amplitude": 0.01})";

/// Sweeps from 0 V to 1 V and to -1 V, and back to 0 V.
QByteArray cyclicElement(int cycles, const QByteArray &more = {})
{
    return R"({"element": "CyclicVoltammetry", "startVoltage": 0, "firstVoltageLimit": 1, "secondVoltageLimit": -1,
        "endVoltage": 0, "dEdt": 0.1, "samplingInterval": 1, "numberOfCycles": )" +
           QByteArray::number(cycles) + more + "}";
}

/// The picture's panels; it is an error when there are fewer than wanted.
std::vector<DrawnPanel> pictureOf(const QString &folder, const QString &name, std::size_t panels = 1)
{
    std::vector<DrawnPanel> picture = readPicture(QStringLiteral("%1/%2.svg").arg(folder, name));
    if (picture.size() != panels)
        qFatal("%s: %d panels", qPrintable(name), int(picture.size()));
    return picture;
}

/// Whether two points lie within a two-hundredth of each other's size, which no picture resolves.
bool isThere(const QPointF &drawn, const QPointF &expected, double size)
{
    return std::hypot(drawn.x() - expected.x(), drawn.y() - expected.y()) <= size / 200.0;
}

/// Empty when the drawn points are the expected ones; else what is wrong with them.
QString differenceOf(const QVector<QPointF> &drawn, const QVector<QPointF> &expected, double size)
{
    if (drawn.size() != expected.size())
        return QStringLiteral("%1 points instead of %2").arg(drawn.size()).arg(expected.size());
    for (int index = 0; index < drawn.size(); ++index) {
        if (!isThere(drawn[index], expected[index], size))
            return QStringLiteral("point %1: (%2, %3)").arg(index).arg(drawn[index].x()).arg(drawn[index].y());
    }
    return {};
}

std::vector<Sample> courseThrough(const QVector<double> &turns)
{
    std::vector<Sample> course;
    for (int turn = 0; turn + 1 < turns.size(); ++turn) {
        const int rows = int(std::lround(std::abs(turns[turn + 1] - turns[turn]) / 0.01));
        for (int row = 0; row < rows; ++row) {
            const double voltage = turns[turn] + (turns[turn + 1] - turns[turn]) * row / rows;
            course.push_back({double(course.size()), voltage + 1e-4 * std::sin(double(course.size())), 0.0, 0.0, 0.0});
        }
    }
    return course;
}

void addSweep(MadeUpRun &folder, const QVector<double> &voltages, double current)
{
    for (const double voltage : voltages)
        folder.add(voltage, current);
}

} // namespace

class TestPlots : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thinningKeepsPeaksAndEnds();
    void axesTakeThePrefixOfTheirNumbers_data();
    void axesTakeThePrefixOfTheirNumbers();
    void whatTheRecorderWritesIsDrawn();
    void timeIsDrawnToScale_data();
    void timeIsDrawnToScale();
    void labelsOfAnAxisDiffer_data();
    void labelsOfAnAxisDiffer();
    void noLineCrossesAGap();
    void loopsBeginAtTheStartPotential_data();
    void loopsBeginAtTheStartPotential();
    void eachRepeatAndCycleIsACurve();
    void pulsesBecomePoints_data();
    void pulsesBecomePoints();
    void aStepOfAStaircaseIsOnePoint();
    void impedanceIsDrawnWithItsSigns_data();
    void impedanceIsDrawnWithItsSigns();
    void sweepsAreNotJoinedAndNamedOnce();
    void aShortLogarithmicAxisCanBeRead();
    void capacitanceOfMottSchottky_data();
    void capacitanceOfMottSchottky();
    void cyclesShowChargeAndEfficiency_data();
    void cyclesShowChargeAndEfficiency();
    void anOutlierDoesNotFlattenTheOthers();
    void voltageIsDrawnAgainstTheChargeOfItsHalfCycle();
    void differentialCapacityIsChargeByVoltage();
    void namesInAnyScriptAreDrawn();
    void aFolderWithoutDataGivesNone();
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

void TestPlots::whatTheRecorderWritesIsDrawn()
{
    QTemporaryDir home;
    RunSetup setup;
    setup.experimentName = "Test";
    setup.experimentText = "{\"schemaVersion\": 1, \"elements\": [" + loadElement + "]}";
    RunRecorder recorder;
    QVERIFY(recorder.create(home.filePath("run"), setup));
    recorder.beginElement({"Constant Current", 1, 1, 0});
    for (int row = 0; row < 50; ++row) {
        VekDCData data;
        data.timestamp = row;
        data.workingElectrodeVoltage = 1.0 + row * 0.01;
        data.current = 0.25;
        recorder.addDc(data);
    }
    QVERIFY(recorder.finish(RunState::Completed, "Experiment completed"));
    QVERIFY(drawRun(home.filePath("run")).isDone);
    const std::vector<DrawnPanel> panels = pictureOf(home.filePath("run"), "time", 2);
    QVERIFY(isThere(panels[0].linePoints().last(), {49.0, 1.49}, 1.0));
    QVERIFY(isThere(panels[1].linePoints().last(), {49.0, 250.0}, 10.0));
    QVERIFY(QImage(home.filePath("run/time.png")).width() > 1000);
}

void TestPlots::timeIsDrawnToScale_data()
{
    QTest::addColumn<int>("version");
    QTest::newRow("version 1") << 1;
    QTest::newRow("version 2") << 2;
}

void TestPlots::timeIsDrawnToScale()
{
    QFETCH(int, version);
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), loadElement + "," + restElement, version);
    for (const int step : {1, 2, 1, 2}) {
        folder.begin("Step", step);
        for (int row = 0; row < 30; ++row)
            folder.add(-0.2, step == 1 ? 2e-6 : 0.0, 60.0);
    }
    QVERIFY(drawRun(folder.finish()).isDone);
    const std::vector<DrawnPanel> panels = pictureOf(home.filePath("run"), "time", 2);
    QCOMPARE(panels[0].verticalTitle, QString("Voltage / mV"));
    QCOMPARE(panels[1].verticalTitle, QString::fromUtf8("Current / µA"));
    QCOMPARE(panels[1].horizontalTitle, QString("Time / h"));
    QCOMPARE(panels[0].legend, (QStringList{"1 ConstantCurrent", "2 OpenCircuit"}));
    QVERIFY(std::abs(panels[0].area.left() - panels[1].area.left()) < 0.5);
    QVERIFY(std::abs(panels[0].area.right() - panels[1].area.right()) < 0.5);
    const QVector<QPointF> current = panels[1].linePoints("#c83c14"); // beside the lines that begin the steps
    QCOMPARE(current.size(), 120);
    QVERIFY(isThere(current.first(), {1.0 / 60.0, 2.0}, 2.0));
    QVERIFY(isThere(current[29], {0.5, 2.0}, 2.0));
    QVERIFY(isThere(current[30], {31.0 / 60.0, 0.0}, 2.0));
    for (const QPointF &point : panels[0].linePoints("#005aa0"))
        QVERIFY(std::abs(point.y() + 200.0) < 1.0);
}

void TestPlots::labelsOfAnAxisDiffer_data()
{
    QTest::addColumn<double>("level");
    QTest::addColumn<double>("spread");
    QTest::newRow("constant") << 25.0 << 0.0;
    QTest::newRow("all but constant") << 25.0 << 1e-7;
    QTest::newRow("microvolts on a cell") << 4.1 << 2e-6;
    QTest::newRow("zero") << 0.0 << 0.0;
    QTest::newRow("wide") << 0.0 << 900.0;
}

void TestPlots::labelsOfAnAxisDiffer()
{
    QFETCH(double, level);
    QFETCH(double, spread);
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), loadElement);
    folder.begin("Step", 1);
    for (int row = 0; row < 20; ++row)
        folder.add(level + spread * std::sin(double(row)), 1.0);
    QVERIFY(drawRun(folder.finish()).isDone);
    const DrawnPanel panel = pictureOf(home.filePath("run"), "time", 2)[0];
    QVERIFY(panel.verticalLabels.size() > 2);
    for (int index = 1; index < panel.verticalLabels.size(); ++index)
        QVERIFY2(panel.verticalLabels[index].toDouble() > panel.verticalLabels[index - 1].toDouble(),
                 qPrintable(panel.verticalLabels.join(' ')));
}

// An hour without rows in a load, and a row alone between two gaps.
void TestPlots::noLineCrossesAGap()
{
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), loadElement);
    folder.begin("Step", 1);
    for (const int rows : {5, 1, 5}) {
        for (int row = 0; row < rows; ++row)
            folder.add(1.0 + row, 1.0);
        folder.wait(3600.0);
    }
    QVERIFY(drawRun(folder.finish()).isDone);
    const DrawnPanel panel = pictureOf(home.filePath("run"), "time", 2)[0];
    int lines = 0;
    for (const DrawnLine &line : panel.lines) {
        if (line.colour != "#005aa0")
            continue;
        ++lines;
        QCOMPARE(line.points.size(), 5);
        QVERIFY(line.points.last().x() - line.points.first().x() < 0.1); // hours
    }
    QCOMPARE(lines, 2);
    QCOMPARE(int(panel.dots.size()), 1);
    QVERIFY(isThere(panel.dots[0].points[0], {3606.0 / 3600.0, 1.0}, 1.0));
}

void TestPlots::loopsBeginAtTheStartPotential_data()
{
    QTest::addColumn<QVector<double>>("turns");
    QTest::addColumn<int>("cycles");
    QTest::addColumn<QVector<double>>("begins"); // volts
    QTest::newRow("at the second vertex")
        << QVector<double>{-0.5, 0.5, -0.5, 0.5, -0.5, 0.5, -0.5} << 3 << QVector<double>{-0.5, -0.5, -0.5};
    QTest::newRow("between the vertices")
        << QVector<double>{0.1, 0.5, -0.5, 0.5, -0.5, 0.2} << 2 << QVector<double>{0.1, 0.1};
    QTest::newRow("downwards") << QVector<double>{0.1, -0.5, 0.5, -0.5, 0.5, 0.2} << 2 << QVector<double>{0.1, 0.1};
    QTest::newRow("at the first vertex") << QVector<double>{0.5, -0.5, 0.5, -0.5, 0.5} << 2
                                         << QVector<double>{0.5, 0.5};
    QTest::newRow("beyond the first vertex")
        << QVector<double>{1.5, -0.5, 0.5, -0.5, 0.5} << 2 << QVector<double>{1.5, 0.5};
    QTest::newRow("short of the second vertex")
        << QVector<double>{-1.5, 0.5, -0.5, 0.5, -0.5} << 2 << QVector<double>{-1.5, -0.5};
    QTest::newRow("stopped on the way") << QVector<double>{0, 0.5, -0.5, 0.5, 0.3} << 9 << QVector<double>{0, 0};
    QTest::newRow("stopped before the start") << QVector<double>{0, 0.5, -0.5, -0.2} << 9 << QVector<double>{0};
    QTest::newRow("one") << QVector<double>{0, 0.5, -0.5, 0.5} << 1 << QVector<double>{0};
    QTest::newRow("without movement") << QVector<double>{0, 0.02} << 3 << QVector<double>{0};
}

void TestPlots::loopsBeginAtTheStartPotential()
{
    QFETCH(QVector<double>, turns);
    QFETCH(int, cycles);
    QFETCH(QVector<double>, begins);
    const std::vector<Sample> course = courseThrough(turns);
    const std::vector<std::size_t> found = loopBegins(course, 1.0, std::size_t(cycles));
    QCOMPARE(int(found.size()), begins.size());
    QVERIFY(std::is_sorted(found.begin(), found.end()));
    for (int loop = 0; loop < begins.size(); ++loop)
        QVERIFY2(std::abs(course[found[std::size_t(loop)]].voltage - begins[loop]) < 0.025,
                 qPrintable(QString::number(course[found[std::size_t(loop)]].voltage)));
    for (std::size_t loop = 1; loop < found.size(); ++loop) { // whole: both vertices lie in between
        const auto [lowest, highest] =
            std::minmax_element(course.begin() + int(found[loop - 1]), course.begin() + int(found[loop]),
                                [](const Sample &left, const Sample &right) { return left.voltage < right.voltage; });
        QVERIFY(lowest->voltage < -0.45 && highest->voltage > 0.45);
    }
}

// A rest and two cycles with a quiet time, twice. Each leg of a voltammetry has one announcement, none at -1 V.
void TestPlots::eachRepeatAndCycleIsACurve()
{
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), restElement + "," + cyclicElement(2, R"(, "quietTime": 2)"));
    for (int repeat = 0; repeat < 2; ++repeat) {
        folder.begin("Open Circuit Potential", 1, 1 + repeat);
        addSweep(folder, {0.3, 0.3}, 50.0);
        folder.begin("Quiet Time", 2, 1 + 2 * repeat);
        addSweep(folder, {0.0, 0.0}, 50.0);
        folder.begin("Cyclic Voltammetry", 2, 2 + 2 * repeat);
        addSweep(folder, {0.0, 0.5}, 1.0 + 2 * repeat);
        folder.begin("Cyclic Voltammetry", 2, 2 + 2 * repeat);
        addSweep(folder, {1.0, 0.5, 0.0, -0.5, -1.0, -0.5}, 1.0 + 2 * repeat);
        addSweep(folder, {0.0, 0.5}, 2.0 + 2 * repeat);
        folder.begin("Cyclic Voltammetry", 2, 2 + 2 * repeat);
        addSweep(folder, {1.0, 0.5, 0.0, -0.5, -1.0, -0.5, 0.0}, 2.0 + 2 * repeat);
    }
    QVERIFY(drawRun(folder.finish()).isDone);
    const DrawnPanel panel = pictureOf(home.filePath("run"), "voltammogram")[0];
    QCOMPARE(panel.horizontalTitle, QString("Potential / V"));
    QCOMPARE(panel.legend,
             (QStringList{"Repeat 1, cycle 1", "Repeat 1, cycle 2", "Repeat 2, cycle 1", "Repeat 2, cycle 2"}));
    QCOMPARE(int(panel.lines.size()), 4);
    const QVector<double> voltages{0.0, 0.5, 1.0, 0.5, 0.0, -0.5, -1.0, -0.5, 0.0};
    for (int curve = 0; curve < 4; ++curve) {
        QVector<QPointF> expected;
        for (const double voltage : voltages)
            expected.append({voltage, 1.0 + curve});
        if (curve % 2 == 0)
            expected.last().ry() += 1.0; // which begins the next one
        // A loop begins within one interval of the start potential.
        QVector<QPointF> drawn = panel.lines[std::size_t(curve)].points;
        QVERIFY(std::abs(drawn.first().x()) <= 0.51 && std::abs(drawn.last().x()) <= 0.51);
        QVERIFY(drawn.size() >= 8 && drawn.size() <= 10);
        for (const double vertex : {1.0, -1.0})
            QVERIFY(std::any_of(drawn.begin(), drawn.end(), [&](const QPointF &point) {
                return isThere(point, {vertex, 1.0 + curve}, 2.0);
            }));
        for (const QPointF &point : drawn)
            QVERIFY(point.y() < 5.0 && point.y() > 0.5); // no quiet time, no rest
    }
}

void TestPlots::pulsesBecomePoints_data()
{
    QTest::addColumn<QByteArray>("element");
    QTest::addColumn<double>("width");
    QTest::addColumn<int>("missing"); // row, -1 for none
    QTest::addColumn<double>("lastWidth");
    QTest::addColumn<QVector<QPointF>>("points"); // mV, µA
    QTest::addColumn<QString>("title");
    const QVector<QPointF> differences{{0, 2}, {50, 3}, {100, 4}};
    const QString difference = QString::fromUtf8("Current difference / µA"),
                  current = QString::fromUtf8("Current / µA");
    QTest::newRow("differential") << pulseElement << 0.25 << -1 << 0.25 << differences << difference;
    QTest::newRow("differential, last pulse not finished")
        << pulseElement << 0.25 << -1 << 0.05 << differences.mid(0, 2) << difference;
    QTest::newRow("differential, last pulse nearly finished")
        << pulseElement << 0.25 << -1 << 0.15 << differences.mid(0, 2) << difference;
    QTest::newRow("differential, without its first level")
        << pulseElement << 0.25 << 2 << 0.25 << QVector<QPointF>{{0, 2}, {100, 4}} << difference;
    QTest::newRow("differential, without its second level")
        << pulseElement << 0.25 << 3 << 0.25 << QVector<QPointF>{{0, 2}, {100, 4}} << difference;
    QTest::newRow("normal") << normalElement << 0.25 << -1 << 0.25 << QVector<QPointF>{{25, 3}, {75, 4}, {125, 5}}
                            << current;
    QTest::newRow("square wave") << squareElement << 0.5 << -1 << 0.5
                                 << QVector<QPointF>{{12.5, -2}, {62.5, -3}, {112.5, -4}} << difference;
}

// Three pulses from bases at 0, 50 and 100 mV with 1 µA, 25 mV high, with 3, 4 and 5 µA.
void TestPlots::pulsesBecomePoints()
{
    QFETCH(QByteArray, element);
    QFETCH(double, width);
    QFETCH(int, missing);
    QFETCH(double, lastWidth);
    QFETCH(QVector<QPointF>, points);
    QFETCH(QString, title);
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), element);
    folder.begin("Pulses", 1);
    for (int row = 0; row < 6; ++row) {
        const bool isPulse = row % 2 == 1;
        const double seconds = row == 5 ? lastWidth : isPulse ? width : 1.0 - width;
        if (row == missing)
            folder.wait(seconds);
        else
            folder.add(0.05 * (row / 2) + 0.025 * isPulse, isPulse ? (3 + row / 2) * 1e-6 : 1e-6, seconds);
    }
    QVERIFY(drawRun(folder.finish()).isDone);
    const DrawnPanel panel = pictureOf(home.filePath("run"), "voltammogram")[0];
    QCOMPARE(panel.verticalTitle, title);
    QCOMPARE(int(panel.dots.size()), 1);
    QCOMPARE(differenceOf(panel.dots[0].points, points, 100.0), QString());
    QVERIFY(panel.area.contains(panel.dotBounds)); // the frame cuts none
}

void TestPlots::aStepOfAStaircaseIsOnePoint()
{
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), R"({"element": "StaircasePotentialVoltammetry", "startVoltage": 0,
        "firstVoltageLimit": 0.3, "secondVoltageLimit": 0, "endVoltage": 0, "stepSize": 0.1, "stepDuration": 3,
        "samplingInterval": 1})");
    folder.begin("Staircase Voltammetry", 1);
    QVector<QPointF> expected;
    for (const int step : {0, 1, 2, 3, 2, 1}) {
        for (const double current : {9.0, 6.0, 5.0}) // decays after the step
            folder.add(0.1 * step + 1e-5 * current, current + step);
        expected.append({100.0 * step, 5.0 + step});
    }
    QVERIFY(drawRun(folder.finish()).isDone);
    const DrawnPanel panel = pictureOf(home.filePath("run"), "voltammogram")[0];
    QCOMPARE(panel.horizontalTitle, QString("Potential / mV"));
    QVERIFY(panel.lines.empty());
    QCOMPARE(int(panel.dots.size()), 1);
    QCOMPARE(differenceOf(panel.dots[0].points, expected, 100.0), QString());
}

void TestPlots::impedanceIsDrawnWithItsSigns_data()
{
    timeIsDrawnToScale_data();
}

// 100 Ohm in series with 1 uF: the imaginary part and the phase are negative, the Nyquist plot shows minus the former.
void TestPlots::impedanceIsDrawnWithItsSigns()
{
    QFETCH(int, version);
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), impedanceElement, version);
    folder.begin("Potentiostatic EIS", 1);
    const QVector<double> frequencies{10000, 1000, 100, 10};
    QVector<QPointF> nyquist, magnitude, phase;
    for (const double frequency : frequencies) {
        const double imaginary = -1.0 / (2.0 * pi * frequency * 1e-6);
        folder.addImpedance(frequency, 100.0, imaginary);
        nyquist.append({0.1, -imaginary / 1000.0});
        magnitude.append({std::log10(frequency), std::log10(std::hypot(100.0, imaginary))});
        phase.append({std::log10(frequency), std::atan2(imaginary, 100.0) * 180.0 / pi});
    }
    QVERIFY(drawRun(folder.finish()).isDone);
    const DrawnPanel plane = pictureOf(home.filePath("run"), "nyquist")[0];
    QCOMPARE(plane.horizontalTitle, QString::fromUtf8("Re Z / kΩ"));
    QCOMPARE(plane.verticalTitle, QString::fromUtf8("−Im Z / kΩ"));
    QCOMPARE(differenceOf(plane.linePoints(), nyquist, 16.0), QString());
    QCOMPARE(differenceOf(plane.dots[0].points, nyquist, 16.0), QString());
    for (const char *label : {"100 Hz", "10 Hz"})
        QVERIFY2(plane.pointLabels.contains(label), qPrintable(plane.pointLabels.join(' ')));

    const std::vector<DrawnPanel> bode = pictureOf(home.filePath("run"), "bode", 2);
    QVector<QPointF> drawnMagnitude, drawnPhase;
    for (const QPointF &point : bode[0].dots[0].points)
        drawnMagnitude.append({std::log10(point.x()), std::log10(point.y())});
    for (const QPointF &point : bode[1].dots[0].points)
        drawnPhase.append({std::log10(point.x()), point.y()});
    QCOMPARE(differenceOf(drawnMagnitude, magnitude, 4.0), QString());
    QCOMPARE(differenceOf(drawnPhase, phase, 90.0), QString());
    QVERIFY(bode[1].verticalTitle.startsWith("Phase"));
    for (const DrawnPanel &panel : {plane, bode[0], bode[1]})
        QVERIFY(panel.area.contains(panel.dotBounds));
}

// Two sweeps at one potential in one element, and one at another.
void TestPlots::sweepsAreNotJoinedAndNamedOnce()
{
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), impedanceElement);
    folder.begin("Potentiostatic EIS", 1);
    for (const double bias : {0.0, 0.0, 0.5}) {
        for (const double frequency : {1000.0, 100.0, 10.0})
            folder.addImpedance(frequency, 10.0 + bias, -1000.0 / frequency, bias);
    }
    QVERIFY(drawRun(folder.finish()).isDone);
    const DrawnPanel panel = pictureOf(home.filePath("run"), "nyquist")[0];
    QCOMPARE(int(panel.lines.size()), 3);
    for (const DrawnLine &line : panel.lines)
        QCOMPARE(line.points.size(), 3);
    QCOMPARE(panel.legend, (QStringList{"0 V, sweep 1", "0 V, sweep 2", "0.5 V"}));

    Panel twice;
    twice.addCurve("Cycle 1", {{0, 0}, {1, 1}}, Qt::red);
    twice.addCurve("Cycle 1", {{1, 1}, {2, 0}}, Qt::red);
    const QwtPlotItemList items = twice.itemList();
    QCOMPARE(std::count_if(items.begin(), items.end(),
                           [](const QwtPlotItem *item) { return item->testItemAttribute(QwtPlotItem::Legend); }),
             1);
}

void TestPlots::aShortLogarithmicAxisCanBeRead()
{
    QTemporaryDir home;
    for (const double span : {0.01, 0.7, 4.0, 60.0}) {
        MadeUpRun folder(home.filePath(QString::number(span)), impedanceElement);
        folder.begin("Potentiostatic EIS", 1);
        for (const double frequency : {1000.0, 100.0, 10.0})
            folder.addImpedance(frequency, 120.0 * (1.0 + span / frequency * 10.0), 0.0);
        QVERIFY(drawRun(folder.finish()).isDone);
        const DrawnPanel panel = pictureOf(home.filePath(QString::number(span)), "bode", 2)[0];
        QVERIFY2(panel.verticalLabels.size() >= 2, qPrintable(QString::number(span)));
        const QVector<QPointF> points = panel.linePoints();
        for (int index = 0; index < 3; ++index) {
            const double expected = 120.0 * (1.0 + span * std::pow(10.0, index - 2));
            QVERIFY2(std::abs(points[index].y() / expected - 1.0) < 0.02,
                     qPrintable(QString::number(points[index].y())));
        }
    }
}

void TestPlots::capacitanceOfMottSchottky_data()
{
    timeIsDrawnToScale_data();
}

// 1 uF and 0.5 uF, whatever the frequency: 1e12 and 4e12 for each square farad.
void TestPlots::capacitanceOfMottSchottky()
{
    QFETCH(int, version);
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), R"({"element": "MottSchottky", "startingPotential": 0,
        "endingPotential": 1, "voltageStep": 1, "startFrequency": 1000, "endFrequency": 100, "stepsPerDecade": 1,
        "amplitude": 0.01, "minCycles": 1, "stepQuietTime": 1, "stepQuietSampInterval": 1})",
                     version);
    for (const double bias : {0.0, 1.0}) {
        folder.begin("Mott Schottky", 1, 1 + int(bias));
        for (const double frequency : {1000.0, 100.0})
            folder.addImpedance(frequency, 10.0, -1.0 / (2.0 * pi * frequency * 1e-6 / (1.0 + bias)), bias);
    }
    QVERIFY(drawRun(folder.finish()).isDone);
    const DrawnPanel panel = pictureOf(home.filePath("run"), "mott-schottky")[0];
    QVERIFY2(panel.verticalTitle.contains("12"), qPrintable(panel.verticalTitle)); // the power of ten
    QCOMPARE(panel.legend, (QStringList{"1 kHz", "100 Hz"}));
    QCOMPARE(int(panel.lines.size()), 2);
    for (const DrawnLine &line : panel.lines)
        QCOMPARE(differenceOf(line.points, (QVector<QPointF>{{0.0, 1.0}, {1.0, 4.0}}), 4.0), QString());
}

void TestPlots::cyclesShowChargeAndEfficiency_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("state");
    QTest::addColumn<QVector<QPointF>>("efficiency");
    const QVector<QPointF> all{{1, 90}, {2, 80}, {3, 50}};
    for (const int version : {1, 2}) {
        QTest::addRow("version %d", version) << version << "completed" << all;
        QTest::addRow("version %d, interrupted", version) << version << "interrupted" << all.mid(0, 2);
    }
}

// 20 Ah in; 18, 16 and 10 Ah out.
void TestPlots::cyclesShowChargeAndEfficiency()
{
    QFETCH(int, version);
    QFETCH(QString, state);
    QFETCH(QVector<QPointF>, efficiency);
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), loadElement + "," + loadElement, version);
    folder.setState(state);
    int cycle = 0;
    for (const double out : {1.8, 1.6, 1.0}) {
        folder.begin("Constant Current", 1, ++cycle);
        for (int row = 0; row < 10; ++row)
            folder.add(3.7, 2.0, 3600.0);
        folder.begin("Constant Current", 2, cycle);
        for (int row = 0; row < 10; ++row)
            folder.add(3.6, -out, 3600.0);
    }
    QVERIFY(drawRun(folder.finish()).isDone);
    const std::vector<DrawnPanel> panels = pictureOf(home.filePath("run"), "cycling", 2);
    QCOMPARE(panels[0].verticalTitle, QString("Capacity / Ah"));
    QCOMPARE(panels[0].legend, (QStringList{"Charge", "Discharge"}));
    QCOMPARE(differenceOf(panels[0].linePoints("#c83c14"), (QVector<QPointF>{{1, 20}, {2, 20}, {3, 20}}), 10.0),
             QString());
    QCOMPARE(differenceOf(panels[0].linePoints("#005aa0"), (QVector<QPointF>{{1, 18}, {2, 16}, {3, 10}}), 10.0),
             QString());
    QCOMPARE(differenceOf(panels[1].linePoints(), efficiency, 40.0), QString());
    QVERIFY(std::abs(panels[0].area.left() - panels[1].area.left()) < 0.5);
}

void TestPlots::anOutlierDoesNotFlattenTheOthers()
{
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), loadElement + "," + loadElement);
    for (int cycle = 1; cycle <= 8; ++cycle) {
        folder.begin("Constant Current", 1, cycle);
        for (int row = 0; row < 3; ++row)
            folder.add(3.7, 1.0);
        folder.begin("Constant Current", 2, cycle);
        for (int row = 0; row < 3; ++row)
            folder.add(3.6, cycle == 1 ? -0.6 : -0.999 + 0.0001 * cycle);
    }
    QVERIFY(drawRun(folder.finish()).isDone);
    const DrawnPanel panel = pictureOf(home.filePath("run"), "cycling", 2)[1];
    QVERIFY2(panel.verticalLabels.first().toDouble() > 99.0, qPrintable(panel.verticalLabels.join(' ')));
    QCOMPARE(panel.pointLabels, QStringList{"60"}); // its own value is not lost
    const QVector<QPointF> dots = panel.dots[0].points;
    QVERIFY(isThere(dots.last(), {8.0, 99.82}, 1.0));
}

// Up to 4 V, a rest, down to 3 V; the second time with half the charge.
void TestPlots::voltageIsDrawnAgainstTheChargeOfItsHalfCycle()
{
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), loadElement + "," + restElement + "," + loadElement);
    for (const int cycle : {1, 2}) {
        const double current = 2.0 / cycle;
        folder.begin("Constant Current", 1, cycle);
        for (int row = 1; row <= 100; ++row)
            folder.add(3.0 + 0.01 * row, current, 36.0);
        folder.begin("Open Circuit Potential", 2, cycle);
        for (int row = 1; row <= 3; ++row)
            folder.add(3.9, row == 1 ? current / 10.0 : 0.0, 36.0); // the first one counts what the load still moved
        folder.begin("Constant Current", 3, cycle);
        for (int row = 1; row <= 100; ++row)
            folder.add(4.0 - 0.01 * row, -current, 36.0);
    }
    QVERIFY(drawRun(folder.finish()).isDone);
    const DrawnPanel panel = pictureOf(home.filePath("run"), "voltage-capacity")[0];
    QCOMPARE(panel.horizontalTitle, QString("Capacity / Ah"));
    QCOMPARE(panel.legend, (QStringList{"Cycle 1", "Cycle 2"}));
    QCOMPARE(int(panel.lines.size()), 4);
    const double ends[] = {2.0, 2.0, 1.0, 1.0};
    for (std::size_t half = 0; half < 4; ++half) {
        const QVector<QPointF> &points = panel.lines[half].points;
        QCOMPARE(points.size(), 100);
        QVERIFY(isThere(points.first(), {ends[half] / 100.0, half % 2 == 0 ? 3.01 : 3.99}, 1.0));
        QVERIFY(isThere(points.last(), {ends[half], half % 2 == 0 ? 4.0 : 3.0}, 1.0));
    }
    const DrawnPanel differential = pictureOf(home.filePath("run"), "differential-capacity")[0];
    QVERIFY(differential.verticalTitle.startsWith("dQ/dV / Ah"));
    const double slopes[] = {2.0, -2.0, 1.0, -1.0}; // discharging downwards
    for (std::size_t half = 0; half < 4; ++half) {
        for (const QPointF &point : differential.lines[half].points)
            QVERIFY2(std::abs(point.y() - slopes[half]) < 0.03, qPrintable(QString::number(point.y())));
    }
}

// Whatever the noise of the voltage: what the bins hold is the charge that moved.
void TestPlots::differentialCapacityIsChargeByVoltage()
{
    QVector<QPointF> curve;
    for (int row = 0; row <= 1000; ++row) {
        const double share = row / 1000.0;
        const double plateau = share < 0.5 ? share : share < 0.9 ? 0.5 : share; // 0.4 C at 0.5 V
        curve.append({share, plateau + 0.002 * std::sin(37.0 * row)});
    }
    const QVector<QPointF> differential = differentialCapacity(curve, 50);
    double charge = 0.0;
    for (const QPointF &point : differential)
        charge += point.y() * (differential[1].x() - differential[0].x());
    QVERIFY2(std::abs(charge - 1.0) < 0.01, qPrintable(QString::number(charge)));
    const auto peak = std::max_element(differential.begin(), differential.end(),
                                       [](const QPointF &left, const QPointF &right) { return left.y() < right.y(); });
    QVERIFY(std::abs(peak->x() - 0.5) < 0.03);
    QVERIFY(std::isfinite(peak->y()));
    QVERIFY(differentialCapacity({{0.0, 1.0}, {1.0, 1.0}}, 10).isEmpty());
}

void TestPlots::namesInAnyScriptAreDrawn()
{
    const QString name = QString::fromUtf8("电池循环 Κύκλος Циклирование サイクル 순환 ቁጥር 🔋 <b>&\n");
    QCOMPARE(lettersWithoutGlyph(name), QString());
    const uint rare[] = {0x10ffff, 0x30010, 'a', 0x30010};
    QCOMPARE(lettersWithoutGlyph(QString::fromUcs4(rare, 4)), QString::fromUcs4(rare + 1, 1));
    QTemporaryDir home;
    MadeUpRun folder(home.filePath("run"), loadElement);
    folder.setTitle(name);
    folder.begin("Step", 1);
    folder.add(1.0, 1.0);
    folder.add(2.0, 1.0);
    QVERIFY(drawRun(folder.finish()).isDone);
    QFile svg(home.filePath("run/time.svg"));
    QVERIFY(svg.open(QIODevice::ReadOnly));
    const QByteArray text = svg.readAll();
    QVERIFY(text.contains("电池循环 Κύκλος"));
    QVERIFY(!readPicture(svg.fileName()).empty());
}

void TestPlots::aFolderWithoutDataGivesNone()
{
    QTemporaryDir home;
    QVERIFY(!drawRun(home.path()).isDone);
    QVERIFY(!drawRun(MadeUpRun(home.filePath("run"), loadElement).finish()).isDone);
}

int main(int argc, char **argv)
{
    const IsolatedHome home;
    QApplication application(argc, argv);
    TestPlots test;
    return QTest::qExec(&test, argc, argv);
}
#include "TestPlots.moc"
