// SPDX-License-Identifier: MIT
// The module that draws: loaded for pictures alone, found where the program stands, told of when it is not as it should be.
#include "plots/PlotModule.h"

#include "support/MadeUpRun.h"
#include "support/TestMain.h"

#include <QProcess>
#include <QTemporaryDir>

namespace {

const QString moduleName = QStringLiteral("nimbrelle-plots.so");

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

struct Ended {
    int exitCode = -1;
    QByteArray output;
    QString errors;
};

Ended run(const QString &program, const QStringList &arguments, const QProcessEnvironment &environment = {})
{
    QProcess process;
    if (!environment.isEmpty())
        process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

/// With a program of its own, in the folders of an installation.
class TestPictureModule : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void staysOutOfWhatDrawsNothing();
    void isFoundWithTheProgram_data();
    void isFoundWithTheProgram();
    void isToldOfWhenItIsNotRight_data();
    void isToldOfWhenItIsNotRight();
    void isMissedBeforeAnInstrumentIsAsked();
    void tellsWhatCannotBeDrawn();

private:
    QString path(const QString &name) const { return _home->filePath(name); }

    std::unique_ptr<QTemporaryDir> _home;
    QString _program;
    QByteArray _module;
    QString _run;
};

void TestPictureModule::init()
{
    const QString built = QStringLiteral(NIMBRELLE_CLIENT_PROGRAM);
    _home = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(_home->path()).mkpath("bin"));
    _program = path("bin/nimbrelle");
    QVERIFY(QFile::copy(built, _program));
    _module = contentOf(QFileInfo(built).dir().filePath(moduleName));
    QVERIFY(!_module.isEmpty());
    MadeUpRun made(path("run"), R"({"element": "OpenCircuit", "maxDuration": 3, "samplingInterval": 1})");
    made.begin("Open circuit", 1);
    for (const double voltage : {1.0, 1.1, 1.2})
        made.add(voltage, 0.0);
    _run = made.finish();
}

void TestPictureModule::staysOutOfWhatDrawsNothing()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_TRACE_LOADED_OBJECTS", "1"); // the loader names what it would load
    const QByteArray libraries = run(_program, {}, environment).output;
    QVERIFY2(libraries.contains("libQt5Core"), libraries);
    for (const char *ofPictures : {"Qt5Gui", "Qt5Widgets", "Qt5Svg", "qwt"})
        QVERIFY2(!libraries.contains(ofPictures), ofPictures);
}

void TestPictureModule::isFoundWithTheProgram_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("beside it") << "bin";
    QTest::newRow("among the libraries") << "bin/" NIMBRELLE_MODULES;
}

void TestPictureModule::isFoundWithTheProgram()
{
    QFETCH(QString, folder);
    QVERIFY(QDir(_home->path()).mkpath(folder));
    QVERIFY(write(path(folder + '/' + moduleName), _module));
    const QString link = path("elsewhere");
    QVERIFY(QFile::link(_program, link));
    const Ended ended = run(link, {"plot", _run});
    QVERIFY2(ended.exitCode == 0, qPrintable(ended.errors));
    QVERIFY(contentOf(_run + "/time.svg").contains("<svg"));
}

void TestPictureModule::isToldOfWhenItIsNotRight_data()
{
    QTest::addColumn<QByteArray>("was");
    QTest::addColumn<QByteArray>("is");
    QTest::addColumn<QString>("told");
    const QByteArray version = NIMBRELLE_PLOT_MODULE;
    const QByteArray other = QByteArray(version).replace(version.size() - 1, 1, "x");
    QTest::newRow("not there") << QByteArray() << QByteArray() << "there is no nimbrelle-plots.so in %1/bin or %1/";
    QTest::newRow("of another version") << version << other
                                        << QString("is " + other + ", and this program needs " + version);
    QTest::newRow("without a library") << QByteArray("libqwt") << QByteArray("libno_") << "libno_";
    QTest::newRow("no module") << QByteArray("\177ELF") << QByteArray("text") << "%1/bin/nimbrelle-plots.so";
}

void TestPictureModule::isToldOfWhenItIsNotRight()
{
    QFETCH(QByteArray, was);
    QFETCH(QByteArray, is);
    QFETCH(QString, told);
    if (!was.isEmpty())
        QVERIFY(_module.contains(was) && write(path("bin/" + moduleName), _module.replace(was, is)));
    const Ended ended = run(_program, {"plot", _run});
    QCOMPARE(ended.exitCode, 1);
    QVERIFY2(ended.errors.startsWith("nimbrelle: pictures cannot be drawn: "), qPrintable(ended.errors));
    QVERIFY2(ended.errors.contains(told.replace("%1", _home->path())), qPrintable(ended.errors));
    QCOMPARE(ended.errors.count('\n'), 1);
}

/// Not hours later, when the run is over.
void TestPictureModule::isMissedBeforeAnInstrumentIsAsked()
{
    QVERIFY(write(path("rest.json"), R"({"schemaVersion": 1, "elements": [
        {"element": "OpenCircuit", "maxDuration": 1, "samplingInterval": 1}]})"));
    const QStringList arguments{"run", path("rest.json"), "--port", "/dev/nowhere"};
    QCOMPARE(run(_program, arguments).exitCode, 3);
    const Ended ended = run(_program, arguments + QStringList{"--plot"});
    QCOMPARE(ended.exitCode, 1);
    QVERIFY2(ended.errors.contains("nimbrelle-plots.so") && !ended.errors.contains("/dev/nowhere"),
             qPrintable(ended.errors));
}

void TestPictureModule::tellsWhatCannotBeDrawn()
{
    const Ended nowhere = run(_program, {"plot", path("nowhere")}); // which takes no module
    QCOMPARE(nowhere.exitCode, 1);
    QCOMPARE(nowhere.errors, QString("nimbrelle: %1: there is no such folder\n").arg(path("nowhere")));

    QVERIFY(write(path("bin/" + moduleName), _module));
    QVERIFY(write(_run + "/dc.csv", contentOf(_run + "/dc.csv") + "1,2\n"));
    const Ended ended = run(_program, {"plot", path("bin"), _run});
    QCOMPARE(ended.exitCode, 1);
    QVERIFY2(ended.errors.contains(path("bin") + ": no run with data"), qPrintable(ended.errors));
    QVERIFY2(ended.errors.contains(_run + ": dc.csv: "), qPrintable(ended.errors));
    QVERIFY(contentOf(_run + "/time.svg").contains("<svg"));
}

NIMBRELLE_TEST_MAIN(TestPictureModule)
#include "TestPictureModule.moc"
