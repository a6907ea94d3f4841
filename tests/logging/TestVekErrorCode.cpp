// SPDX-License-Identifier: MIT
#include "VekErrorCode.h"
#include "support/TestMain.h"

class TestVekErrorCode : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aMessageOfItsOwnComesFirst_data();
    void aMessageOfItsOwnComesFirst();
    void standardTextsTellCodesApart();
};

void TestVekErrorCode::aMessageOfItsOwnComesFirst_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("own");
    QTest::addColumn<QString>("message");
    QTest::newRow("standard text") << 55 << QString() << "No experiment is currently running.";
    QTest::newRow("own text") << 54 << "The Alder is small."
                              << "The Alder is small.";
    QTest::newRow("success with a text stays success") << 0 << "x"
                                                       << "x";
    QTest::newRow("unlisted") << 200 << QString() << "Unknown error occurred";
    QTest::newRow("unlisted with own text") << 200 << "x"
                                            << "x";
    QTest::newRow("echo") << 255 << QString() << "Unknown error occurred";
}

void TestVekErrorCode::aMessageOfItsOwnComesFirst()
{
    QFETCH(int, code);
    QFETCH(QString, own);
    const VekErrorCode result(VekErrorCode::ErrorCode(code), own);
    QCOMPARE(int(result), code);
    QCOMPARE(int(result.value()), code);
    QTEST(result.message(), "message");
}

void TestVekErrorCode::standardTextsTellCodesApart()
{
    QSet<QString> texts;
    int listed = 0;
    for (int code = 0; code < 256; ++code) {
        const QString text = VekErrorCode(VekErrorCode::ErrorCode(code)).message();
        if (text == QLatin1String("Unknown error occurred"))
            continue;
        ++listed;
        texts.insert(text);
    }
    QCOMPARE(listed, 40);
    QCOMPARE(texts.size(), listed);
}

NIMBRELLE_TEST_MAIN(TestVekErrorCode)
#include "TestVekErrorCode.moc"
