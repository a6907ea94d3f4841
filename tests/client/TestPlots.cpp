#include "RunRecorder.h"
#include "plots/AxisScale.h"
#include "plots/Decimation.h"
#include "plots/RunData.h"
#include "plots/RunPlots.h"

#include "support/TestMain.h"

#include <QApplication>
#include <QImage>

using namespace client;

class TestPlots : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thinningKeepsPeaksAndEnds();
    void axesTakeThePrefixOfTheirNumbers_data();
    void axesTakeThePrefixOfTheirNumbers();
    void aTornLastLineIsLeftOut();
    void aRunBecomesPictures();
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
    QTemporaryDir folder;
    RunSetup setup;
    setup.experimentName = "Two steps";
    setup.experimentText = "{\"elements\": [{\"element\": \"ConstantCurrent\"}, {\"element\": \"OpenCircuit\"}]}";
    RunRecorder recorder;
    QVERIFY(recorder.create(folder.filePath("run"), setup));
    for (int row = 0; row < 200; ++row) {
        if (row % 100 == 0)
            recorder.beginElement({"Step", 1 + row / 100, 1, 0});
        VekDCData data;
        data.timestamp = row * 0.1;
        data.workingElectrodeVoltage = row < 100 ? 1.0 + row * 0.001 : 1.05;
        data.current = row < 100 ? 0.01 : 0.0;
        recorder.addDc(data);
    }
    QVERIFY(recorder.finish(RunState::Completed, "Experiment completed"));
    QVERIFY(drawRun(recorder.folder()));

    QVERIFY(QFile::exists(recorder.folder() + "/time.svg"));
    const QImage picture(recorder.folder() + "/time.png");
    QVERIFY(picture.width() > 1000);
    const QRgb curve = QColor(0, 90, 160).rgb(); // of the voltage
    int curvePixels = 0;
    for (int y = 0; y < picture.height() / 2; ++y) {
        for (int x = 0; x < picture.width(); ++x)
            curvePixels += picture.pixel(x, y) == curve ? 1 : 0;
    }
    QVERIFY2(curvePixels > picture.width() / 2, "the curve of the voltage runs across the upper half");
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
