// SPDX-License-Identifier: MIT
#include "VekAbstractElement.h"
#include "lab/experiments/ElementCatalogue.h"
#include "lab/experiments/ExperimentFile.h"
#include "lab/experiments/Schema.h"
#include "lab/notation/Units.h"

#include "support/TestMain.h"

#include <QRegularExpression>

#include <set>

using namespace lab;

namespace {

/// A value that a fresh element does not have, different for each position.
double distinctValue(const PropertyRow &property, int position)
{
    switch (property.kind) {
    case PropertyKind::Flag:
    case PropertyKind::Automatic:
        return 1.0;
    case PropertyKind::VoltageRange:
        return 2.0;
    default:
        return 3.0 + position;
    }
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestElementCatalogue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachPropertyReachesItsOwnValue_data();
    void eachPropertyReachesItsOwnValue();
    void namesAreUnique();
    void partnersAreThere();
    void schemaTakesWhatIsRead_data();
    void schemaTakesWhatIsRead();
    void documentsAreUpToDate();
};

void TestElementCatalogue::eachPropertyReachesItsOwnValue_data()
{
    QTest::addColumn<QString>("element");
    for (const QString &name : elementNames())
        QTest::newRow(qPrintable(name)) << name;
    QCOMPARE(elementNames().size(), 17);
}

// A setter of one row that writes what another row reads would run an experiment with a wrong number.
void TestElementCatalogue::eachPropertyReachesItsOwnValue()
{
    QFETCH(QString, element);
    const ElementRow &row = *findElement(element);
    const std::unique_ptr<VekAbstractElement> made = row.make();
    for (std::size_t index = 0; index < row.properties.size(); ++index)
        row.properties[index].set(*made, distinctValue(row.properties[index], static_cast<int>(index)));
    for (std::size_t index = 0; index < row.properties.size(); ++index) {
        const PropertyRow &property = row.properties[index];
        const bool isShared = std::any_of(row.properties.begin(), row.properties.end(), [&](const PropertyRow &other) {
            return other.excludes && qstrcmp(other.excludes, property.name) == 0;
        });
        if (!isShared)
            QVERIFY2(qFuzzyCompare(property.get(*made), distinctValue(property, static_cast<int>(index))),
                     property.name);
    }
}

void TestElementCatalogue::namesAreUnique()
{
    for (const ElementRow &row : elementCatalogue()) {
        const QStringList names = row.propertyNames();
        const std::set<QString> distinct(names.begin(), names.end());
        QCOMPARE(static_cast<int>(distinct.size()), names.size());
        QVERIFY2(!names.contains("element") && !names.contains("repeats"), row.name);
    }
}

void TestElementCatalogue::partnersAreThere()
{
    for (const ElementRow &row : elementCatalogue()) {
        for (std::size_t index = 0; index < row.properties.size(); ++index) {
            const PropertyRow &property = row.properties[index];
            if (property.partner)
                QVERIFY2(row.find(property.partner) < row.find(property.name), property.name); // set before it
            if (property.excludes)
                QVERIFY2(row.find(property.excludes), property.name);
        }
    }
}

void TestElementCatalogue::schemaTakesWhatIsRead_data()
{
    QTest::addColumn<int>("dimension");
    for (const Dimension each : {Dimension::Number, Dimension::Percent, Dimension::Time, Dimension::Voltage,
                                 Dimension::Current, Dimension::Resistance, Dimension::Charge, Dimension::VoltageRate})
        QTest::newRow(qPrintable(dimensionName(each))) << int(each);
}

/// An editor that knows the schema marks the same texts as the program refuses.
void TestElementCatalogue::schemaTakesWhatIsRead()
{
    QFETCH(int, dimension);
    const auto kind = Dimension(dimension);
    const QRegularExpression pattern(quantityPattern(kind));
    QVERIFY2(pattern.isValid(), qPrintable(pattern.errorString()));
    for (const char *number : {"1", "-2.5", ".5", "3.", "1e-3", " 4E+2", "+1", "1,5", "", "e3", "inf", "nan", "0x1"}) {
        for (const char *unit :
             {"",           "s", " ms", "min", "mmin", "h ",     "V",  "uV", "mA",  "GOhm", u8"k\u03a9",
              u8"\u00b5Ah", "C", "%",   "m%",  "V/s",  "mV/min", "V/", "kg", "A/h", "Mh"}) {
            const QString text = QString::fromUtf8(number) + QString::fromUtf8(unit);
            QCOMPARE(qPrintable(text + ' ' + QString::number(pattern.match(text).hasMatch())),
                     qPrintable(text + ' ' + QString::number(parseQuantity(text, kind).isValid())));
        }
    }
}

void TestElementCatalogue::documentsAreUpToDate()
{
    const QString docs = QStringLiteral(NIMBRELLE_DOCS_DIR);
    const QByteArray schema = contentOf(docs + "/experiment.schema.json");
    QVERIFY2(Json::parse(schema.toStdString()) == experimentSchema(), "run: nimbrelle elements --schema");
    const QString page = QString::fromUtf8(contentOf(docs + "/experiments.md"));
    QVERIFY2(page.contains(elementTables()), "paste the output of: nimbrelle elements --markdown");
}

NIMBRELLE_TEST_MAIN(TestElementCatalogue)
#include "TestElementCatalogue.moc"
