// SPDX-License-Identifier: MIT
#include "UpdateBench.h"
#include "support/TestMain.h"

#include <functional>
#include <map>

namespace {

constexpr int refused = 4;  // exit code of the program
constexpr int batches = 26; // of ten records each, in the image of an Alder 2.5
constexpr int longestMs = 45000;
constexpr int handshakesAtOnce = 8; // more would miss each other's time-outs on a busy machine

/// One instrument with one fault, the client that meets it, and what became of it.
struct Attempt {
    UpdateBench bench;
    QString port;
    bool isGale = false;
    std::unique_ptr<ClientProcess> client; ///< of the first update, then of the second
    int exitCode = -1;
    QString told;
    int nextExitCode = -1;
    QString nextTold;
    int connectionExitCode = -1;

    /// The bootloader of a Gale is on its port; any other is searched for.
    QStringList nextTarget() const { return isGale ? QStringList{port} : QStringList{"--all"}; }
};

const QStringList alder{"--model", "Alder_2_5"};
const QStringList gale{"--model", "Gale", "--channels", "4"};

using Row = std::pair<QStringList, QString>; // model, fault

/// What can go wrong behind the reset.
QList<Row> everyFailure()
{
    QList<Row> rows;
    for (const char *fault : {"boot-crc", "boot-refuse:1", "boot-refuse:130", "boot-silence:erase",
                              "boot-silence:program", "boot-silence:crc", "boot-deaf:20000"})
        rows.append({alder, fault});
    for (int batch = 1; batch <= batches; ++batch)
        rows.append({alder, QString("boot-power:%1").arg(batch)});
    for (const char *step : {"ping", "hardware", "channels", "unlock", "prepare", "record"})
        rows.append({gale, QString("boot-silence:%1").arg(step)});
    for (const char *fault : {"boot-refuse:1", "boot-refuse:200", "boot-power:1", "boot-power:8", "boot-power:9",
                              "boot-power:386"}) // eight records are in flight, and there are 386
        rows.append({gale, fault});
    return rows;
}

} // namespace
Q_DECLARE_METATYPE(Attempt *)

/**
 * Updates that fail behind the reset: the text, the exit code, an end within the time-outs, and success on the next try.
 * All of them wait side by side before the first row; each row looks at what became of one.
 */
class TestFirmwareUpdateFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void failureIsToldAndTheNextTrySucceeds_data();
    void failureIsToldAndTheNextTrySucceeds();

private:
    void startUpdates(const std::function<QStringList(const Attempt &)> &target);

    std::map<QString, Attempt> _attempts; // by the row's name
};

static QString nameOf(const Row &row)
{
    return row.first.at(1) + ' ' + row.second;
}

static bool isUnderWay(ClientProcess &client)
{
    return !client.isRunning() || client.errors().contains("has initialized");
}

void TestFirmwareUpdateFailures::startUpdates(const std::function<QStringList(const Attempt &)> &target)
{
    QList<ClientProcess *> shakingHands;
    for (auto &[name, attempt] : _attempts) {
        attempt.client = attempt.bench.client(QStringList{"update"} + target(attempt));
        shakingHands.append(attempt.client.get());
        if (shakingHands.size() < handshakesAtOnce)
            continue;
        for (ClientProcess *client : qAsConst(shakingHands))
            QVERIFY(QTest::qWaitFor([client] { return isUnderWay(*client); }, longestMs));
        shakingHands.clear();
    }
}

void TestFirmwareUpdateFailures::initTestCase()
{
    for (const Row &row : everyFailure()) {
        Attempt &attempt = _attempts[nameOf(row)];
        attempt.isGale = row.first == gale;
        attempt.port =
            attempt.bench.plug(QStringList{"--name", "Bench", "--firmware", "old", "--fault", row.second} + row.first);
    }
    startUpdates([](const Attempt &attempt) { return QStringList{attempt.port}; });
    for (auto &[name, attempt] : _attempts) {
        attempt.exitCode = attempt.client->finish(longestMs);
        attempt.told = attempt.client->errors();
        if (attempt.isGale)
            UpdateBench::hasCome(attempt.port);
    }
    startUpdates(&Attempt::nextTarget);
    for (auto &[name, attempt] : _attempts) {
        attempt.nextExitCode = attempt.client->finish();
        attempt.nextTold = attempt.client->errors();
        if (UpdateBench::hasCome(attempt.port))
            attempt.connectionExitCode = attempt.bench.run({"info", attempt.port});
    }
}

void TestFirmwareUpdateFailures::failureIsToldAndTheNextTrySucceeds_data()
{
    QTest::addColumn<Attempt *>("attempt");
    for (auto &[name, attempt] : _attempts)
        QTest::newRow(qPrintable(name)) << &attempt;
}

void TestFirmwareUpdateFailures::failureIsToldAndTheNextTrySucceeds()
{
    QFETCH(Attempt *, attempt);
    QVERIFY2(attempt->told.endsWith("\nnimbrelle: Bench: Firmware update failed.\n"), qPrintable(attempt->told));
    QCOMPARE(attempt->exitCode, refused);
    QVERIFY2(attempt->nextTold.endsWith(": Firmware updated successfully.\n"), qPrintable(attempt->nextTold));
    QCOMPARE(attempt->nextExitCode, 0);
    QCOMPARE(attempt->connectionExitCode, 0);
}

NIMBRELLE_TEST_MAIN(TestFirmwareUpdateFailures)
#include "TestFirmwareUpdateFailures.moc"
