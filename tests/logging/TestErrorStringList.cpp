// SPDX-License-Identifier: MIT
#include "logging/ErrorStringList.h"
#include "support/TestMain.h"

class TestErrorStringList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textsAreJoinedWithTheNameFilledIn_data();
    void textsAreJoinedWithTheNameFilledIn();
    void appendedTextsKeepTheirOrder();
    void aListMayBeAppendedToItself();
};

void TestErrorStringList::textsAreJoinedWithTheNameFilledIn_data()
{
    QTest::addColumn<QStringList>("errors");
    QTest::addColumn<QString>("joined");
    QTest::newRow("none") << QStringList() << QString();
    QTest::newRow("one has no line feed") << QStringList{"The %1 is small."} << "The Alder is small.";
    QTest::newRow("several") << QStringList{"The %1 is small.", "Time is short.", "%1 and %1"}
                             << "The Alder is small.\nTime is short.\nAlder and Alder";
    QTest::newRow("percent sign alone") << QStringList{"0%-100% of %1"} << "0%-100% of Alder";
}

void TestErrorStringList::textsAreJoinedWithTheNameFilledIn()
{
    QFETCH(QStringList, errors);
    ErrorStringList list;
    for (const QString &error : errors)
        list.addError(error);
    QTEST(list.getErrorListSingleString("Alder"), "joined");
    QCOMPARE(list.getErrorList(), std::vector<QString>(errors.begin(), errors.end())); // the placeholders stay
}

void TestErrorStringList::appendedTextsKeepTheirOrder()
{
    ErrorStringList list;
    list.addError("a");
    ErrorStringList other;
    other.addError("b");
    other.addError("c");
    list.appendErrorList(other);
    list.appendErrorList(ErrorStringList());
    QCOMPARE(list.getErrorListSingleString(QString()), QString("a\nb\nc"));
}

void TestErrorStringList::aListMayBeAppendedToItself()
{
    ErrorStringList list;
    list.addError("a");
    list.addError("b");
    list.appendErrorList(list);
    QCOMPARE(list.getErrorListSingleString(QString()), QString("a\nb\na\nb"));
}

NIMBRELLE_TEST_MAIN(TestErrorStringList)
#include "TestErrorStringList.moc"
