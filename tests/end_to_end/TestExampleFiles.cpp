#include "support/ClientProcess.h"
#include "support/RunFolder.h"
#include "support/SimulatorProcess.h"
#include "support/TestMain.h"

#include <QJsonDocument>

using namespace RunFolder;

/// The experiment files of the examples, planned and run through the client.
class TestExampleFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void giveTheRowsOfTheirPlan_data();
    void giveTheRowsOfTheirPlan();

private:
    QTemporaryDir _home;
};

void TestExampleFiles::giveTheRowsOfTheirPlan_data()
{
    const QString redox = QStringLiteral("redox:E0=0.2,n=1,cR=1,cO=0.0001,D=1e-9,A=1e-5,k0=0.01,Rs=5");
    QTest::addColumn<QString>("cell");
    QTest::newRow("first-light") << "resistor:R=1000";
    QTest::newRow("cyclic-voltammetry") << redox;
    QTest::newRow("differential-pulse") << redox;
    QTest::newRow("square-wave") << redox;
    QTest::newRow("impedance") << "randles";
    QTest::newRow("mott-schottky") << "semiconductor";
}

void TestExampleFiles::giveTheRowsOfTheirPlan()
{
    QFETCH(QString, cell);
    const QString name = QTest::currentDataTag();
    const QString file = QString("%1/%2.json").arg(NIMBRELLE_EXPERIMENTS_DIR, name);
    ClientProcess plan({"plan", file, "--model", "Alder_2_5", "--json"});
    QCOMPARE(plan.finish(), 0);
    const double expected = QJsonDocument::fromJson(plan.output()).object()["expectedRows"].toDouble();

    SimulatorProcess simulator({"--cell", cell, "--speed", "max"});
    const QString folder = _home.filePath(name);
    ClientProcess client({"run", file, "--port", simulator.portName(), "--out", folder});
    const int exitCode = client.finish(120000);
    QVERIFY2(exitCode == 0, qPrintable(client.errors()));
    const int acRows = QFile::exists(folder + "/ac.csv") ? rowCount(folder + "/ac.csv") : 0;
    QCOMPARE(double(rowCount(folder + "/dc.csv") + acRows), expected);
}

NIMBRELLE_TEST_MAIN(TestExampleFiles)
#include "TestExampleFiles.moc"
