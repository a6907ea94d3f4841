// SPDX-License-Identifier: MIT
#include "VekConstantCurrentElement.h"
#include "VekConstantPotElement.h"
#include "VekExperimentPlan.h"
#include "lab/experiments/ExperimentFile.h"
#include "lab/notation/JsonText.h"

#include "support/TestMain.h"

#include <QDir>

#include <limits>

using namespace lab;

namespace {

/// A file with these lines between its head and its end; the first of them is line 2.
QByteArray fileOf(const QByteArray &elements)
{
    return "{\"schemaVersion\": 1, \"elements\": [\n" + elements + "\n]}\n";
}

template <typename Element>
const Element &elementAt(const ExperimentFile &file, std::size_t index)
{
    return dynamic_cast<const Element &>(*file.elements.at(index).element);
}

} // namespace

class TestExperimentFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void setsTheValuesOfElements();
    void keepsTheFilterThatAnIntervalWouldReset();
    void numbersElementsAsTheRunWill();
    void refusesWithLineAndSuggestion_data();
    void refusesWithLineAndSuggestion();
    void readsCommentsAndTrailingCommas();
    void collectsEveryComplaint();
    void tellsWhyAFileCannotBeRead();
    void readsTheExamples_data();
    void readsTheExamples();
};

void TestExperimentFile::setsTheValuesOfElements()
{
    const ExperimentFile file =
        parseExperiment(fileOf("{\"element\": \"ConstantCurrent\", \"current\": \"-9 mA\", \"samplingInterval\": 0.1,\n"
                               " \"maxDuration\": \"none\", \"minVoltage\": \"2.5 V\", \"maxCapacity\": \"1 Ah\"},\n"
                               "{\"element\": \"ConstantPot\", \"potential\": \"250 mV\", \"voltageVsOCP\": true, "
                               "\"samplingInterval\": 1,\n"
                               " \"maxDuration\": \"2 min\", \"voltageRange\": 3, \"approxMaxCurrent\": \"1 mA\"}"),
                        "memory");
    QVERIFY(file.isUsable());
    const auto &current = elementAt<VekConstantCurrentElement>(file, 0);
    QCOMPARE(current.getCurrent(), -0.009);
    QCOMPARE(current.getMaxDuration(), std::numeric_limits<double>::infinity());
    QCOMPARE(current.getMinVoltage(), 2.5);
    QCOMPARE(current.getMaxCapacity(), 3600.0);
    const auto &potential = elementAt<VekConstantPotElement>(file, 1);
    QCOMPARE(potential.getPotential(), 0.25);
    QVERIFY(potential.isVoltageVsOCP());
    QCOMPARE(potential.getMaxDuration(), 120.0);
    QCOMPARE(potential.getVoltageRange(), 3);
    QVERIFY(!potential.isAutoRange()); // a range was asked for
}

void TestExperimentFile::keepsTheFilterThatAnIntervalWouldReset()
{
    const ExperimentFile file = parseExperiment(
        fileOf("{\"element\": \"ConstantCurrent\", \"minSamplingVoltageDifference\": \"1 mV\", \"current\": 1,\n"
               " \"samplingInterval\": 1, \"maxDuration\": 1}"),
        "memory");
    QCOMPARE(elementAt<VekConstantCurrentElement>(file, 0).getMinSamplingVoltageDifference(), 0.001);
}

void TestExperimentFile::numbersElementsAsTheRunWill()
{
    const QByteArray rest = "{\"element\": \"OpenCircuit\", \"maxDuration\": 1, \"samplingInterval\": 1}";
    const ExperimentFile file = parseExperiment(
        fileOf(rest + ",\n{\"group\": [\n" + rest + ",\n" + rest + "], \"repeats\": 3},\n" + rest), "memory");
    QVERIFY(file.isUsable());
    QCOMPARE(file.elements.at(1).line, 4);
    const auto nodes = VekExperimentPlan::forModel(file.experiment, "Alder_2_5").nodes();
    QVector<int> numbers;
    for (const VekPlannedNode &node : nodes)
        numbers.append(node.stepNumber());
    QCOMPARE(numbers, (QVector<int>{1, 2, 3, 3, 4, 4})); // the loop and the end share the number before them
    QCOMPARE(file.elements.size(), std::size_t(4));
}

void TestExperimentFile::refusesWithLineAndSuggestion_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("complaint");

    const QByteArray head = "{\"element\": \"ConstantCurrent\", \"samplingInterval\": 1,\n";
    QTest::newRow("unknown property")
        << fileOf(head + "\"current\": 1,\n\"maxDuratoin\": 5, \"maxDuration\": 5}")
        << "file:4: ConstantCurrent has no \"maxDuratoin\"; did you mean \"maxDuration\"?";
    QTest::newRow("unknown element") << fileOf("{\"element\": \"ConstantCurent\"}")
                                     << "file:2: there is no element \"ConstantCurent\"; did you mean "
                                        "\"ConstantCurrent\"?";
    QTest::newRow("abbreviation") << fileOf("{\"element\": \"cv\"}")
                                  << "file:2: there is no element \"cv\"; did you mean \"CyclicVoltammetry\"?";
    QTest::newRow("abbreviation of two")
        << fileOf("{\"element\": \"EIS\"}")
        << "file:2: there is no element \"EIS\"; did you mean \"EISPotentiostatic\" or \"EISGalvanostatic\"?";
    QTest::newRow("abbreviation of a sequence")
        << fileOf("{\"element\": \"CCCV\"}")
        << "file:2: there is no element \"CCCV\"; write \"ConstantCurrent\" with \"maxVoltage\", and a "
           "\"ConstantPot\" behind it";
    QTest::newRow("voltage against the open circuit")
        << fileOf("{\"element\": \"ConstantPot\", \"samplingInterval\": 1, \"maxDuration\": 1,\n"
                  "\"potential\": \"0.1 V vs OCP\"}")
        << "file:3: \"potential\": write \"0.1 V\"; that it counts from the open circuit is said elsewhere: "
           "\"voltageVsOCP\"";
    QTest::newRow("limit against the open circuit")
        << fileOf(head + "\"current\": 1, \"maxDuration\": 1, \"maxVoltage\": \"4 V vs OCP\"}")
        << "file:3: \"maxVoltage\": \"4 V vs OCP\" counts from the open circuit, and this voltage of the element "
           "cannot";
    QTest::newRow("behind comments") << fileOf("// a comment with \"quotes\n/* and\n a long one */ {\"element\": 5}")
                                     << "file:4: \"element\" takes a text, not a number";
    QTest::newRow("comment without an end") << QByteArray("{\n/* {\"element\": 5}\n}")
                                            << "file:2: the comment that begins here with \"/*\" has no end: \"*/\"";
    QTest::newRow("comma without an item")
        << fileOf("{\"group\": [,]}") << "file:2: a comma with nothing in front of it: take it out";
    QTest::newRow("comma twice in a list") << fileOf("{\"element\": \"OpenCircuit\"}, // first\n,{}")
                                           << "file:3: two commas with nothing between them: take one out";
    QTest::newRow("comma twice in an object") << QByteArray("{\"schemaVersion\": 1,\n,\"elements\": []}")
                                              << "file:2: two commas with nothing between them: take one out";
    QTest::newRow("unknown unit")
        << fileOf(head + "\"current\":\n\"9 mV\", \"maxDuration\": 1}")
        << "file:4: \"current\": \"mV\" is not a unit of a current, whose base unit is A; did you mean \"mA\"?";
    QTest::newRow("one group too deep") << fileOf(QByteArray("{\"group\": [\n").repeated(99) + "{}" +
                                                  QByteArray("]}").repeated(99))
                                        << "file:101: more than 200 objects and lists stand within each other";
    QTest::newRow("wrong type") << fileOf(head + "\"current\": true, \"maxDuration\": 1}")
                                << "file:3: \"current\" takes a current, not true or false";
    QTest::newRow("flag as a number")
        << fileOf("{\"element\": \"ConstantPot\", \"potential\": 1, \"samplingInterval\": 1, \"maxDuration\": 1,\n"
                  "\"voltageVsOCP\": 1}")
        << "file:3: \"voltageVsOCP\" takes true or false, not a number";
    QTest::newRow("none where a value is needed") << fileOf(head + "\"current\": \"none\", \"maxDuration\": 1}")
                                                  << "file:3: \"current\": \"none\" does not begin with a number";
    QTest::newRow("missing property") << fileOf("\n" + head + "\"current\": 1}")
                                      << "file:3: ConstantCurrent needs \"maxDuration\"";
    QTest::newRow("doubled property") << fileOf(head + "\"current\": 1, \"maxDuration\": 1,\n\"current\": 2}")
                                      << "file:4: \"current\" stands twice, first on line 3";
    QTest::newRow("range without a size") << fileOf(head + "\"current\": 1, \"maxDuration\": 1, \"autoRange\": false}")
                                          << "file:3: without \"autoRange\" the element needs \"approxMaxCurrent\"";
    QTest::newRow("two names of one value")
        << fileOf("{\"element\": \"OpenCircuit\", \"maxDuration\": 1, \"samplingInterval\": 1,\n"
                  "\"maxVoltage\": 1, \"approxMaxVoltage\": 2}")
        << "file:3: \"approxMaxVoltage\" and \"maxVoltage\" are one value of this element: give one of them";
    QTest::newRow("range that does not exist")
        << fileOf("{\"element\": \"ConstantPot\", \"potential\": 1, \"samplingInterval\": 1, \"maxDuration\": 1,\n"
                  "\"voltageRange\": 4}")
        << "file:3: \"voltageRange\" takes 0, 1, 2, 3, or 5 for automatic";
    QTest::newRow("repeats of nothing") << fileOf(head + "\"current\": 1, \"maxDuration\": 1, \"repeats\": 0}")
                                        << "file:3: \"repeats\" takes a whole number from 1 to 65535";
    QTest::newRow("number at the end of its line")
        << fileOf(head + "\"current\": 1, \"maxDuration\": 1, \"repeats\": 1.5\n\n}")
        << "file:3: \"repeats\" takes a whole number from 1 to 65535";
    QTest::newRow("half a repeat") << fileOf(head + "\"current\": 1, \"maxDuration\": 1, \"repeats\": 1.5}")
                                   << "file:3: \"repeats\" takes a whole number from 1 to 65535";
    QTest::newRow("empty group") << fileOf("{\"group\": []}")
                                 << "file:2: the list is empty: it needs at least one element";
    QTest::newRow("neither element nor group")
        << fileOf("{\"repeats\": 2}") << "file:2: either \"element\" or \"group\" has to say what this is";
    QTest::newRow("later version") << QByteArray("{\"schemaVersion\": 2,\n\"elements\": [{}]}")
                                   << "file:1: this program reads schema version 1, not 2";
    QTest::newRow("no version") << QByteArray("{\n\"elements\": [{}]}")
                                << "file:1: an experiment needs \"schemaVersion\"";
    QTest::newRow("broken JSON")
        << QByteArray("{\n\"schemaVersion\": 1,\n\"elements\" []}")
        << "file:3: syntax error while parsing object separator - unexpected '['; expected ':'";
    QTest::newRow("no object") << QByteArray("[]") << "file:1: an experiment is an object, not a list";
}

void TestExperimentFile::refusesWithLineAndSuggestion()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, complaint);

    const ExperimentFile file = parseExperiment(text, "file");
    QVERIFY(!file.isUsable());
    QCOMPARE(withPlace(file.path, file.complaints.front()), complaint);
}

void TestExperimentFile::readsCommentsAndTrailingCommas()
{
    const QByteArray text = "{\"schemaVersion\": 1, // the only one\n\"name\": \"a // b, /* c */ \\\" ,]\",\n"
                            "\"elements\": [{\"element\": \"OpenCircuit\", \"maxDuration\": 1, /* , */ "
                            "\"samplingInterval\": 1, /* } */ },\n ],\n}\n// behind";
    const ExperimentFile file = parseExperiment(text, "file");
    QVERIFY2(file.isUsable(), file.isUsable() ? "" : qPrintable(withPlace("file", file.complaints.front())));
    QCOMPARE(file.name, QString("a // b, /* c */ \" ,]"));
    QCOMPARE(file.elements.size(), std::size_t(1));
    QCOMPARE(file.elements.front().line, 3);
    QCOMPARE(plainJson(text).size(), text.size());
    QCOMPARE(plainJson(text).count('\n'), text.count('\n'));
}

void TestExperimentFile::collectsEveryComplaint()
{
    const ExperimentFile file =
        parseExperiment(fileOf("{\"element\": \"OpenCircuit\", \"maxDuration\": \"1 V\"},\n{\"element\": 5}"), "file");
    QCOMPARE(file.complaints.size(), std::size_t(3)); // wrong unit, missing interval, wrong type
    QCOMPARE(file.complaints.back().line, 3);
}

void TestExperimentFile::tellsWhyAFileCannotBeRead()
{
    const ExperimentFile file = readExperimentFile("/nowhere/experiment.json");
    QVERIFY(!file.isUsable());
    QVERIFY(withPlace(file.path, file.complaints.front()).startsWith("/nowhere/experiment.json: cannot be read: "));
}

void TestExperimentFile::readsTheExamples_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("model");
    const QDir folder(NIMBRELLE_EXPERIMENTS_DIR);
    const QStringList names = folder.entryList({"*.json"});
    QVERIFY(!names.isEmpty());
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << folder.filePath(name) << (name.startsWith("linked") ? "Gale" : "Alder_2_5");
}

void TestExperimentFile::readsTheExamples()
{
    QFETCH(QString, path);
    QFETCH(QString, model);
    const ExperimentFile file = readExperimentFile(path);
    for (const Complaint &complaint : file.complaints)
        qWarning("%s", qPrintable(withPlace(path, complaint)));
    QVERIFY(file.isUsable());
    const VekErrorCode result = VekExperimentPlan::forModel(file.experiment, model).result();
    QVERIFY2(result == VekErrorCode::Success, qPrintable(result.message()));
}

NIMBRELLE_TEST_MAIN(TestExperimentFile)
#include "TestExperimentFile.moc"
