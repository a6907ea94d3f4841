// SPDX-License-Identifier: MIT
#include "client/terminal/Console.h"
#include "client/terminal/TerminalText.h"
#include "lab/experiments/ExperimentFile.h"
#include "lab/notation/JsonOutput.h"
#include "lab/notation/PrintableText.h"
#include "lab/runs/RunProgress.h"

#include "support/TestMain.h"

#include <cmath>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace client;
using namespace lab;

namespace {

constexpr int hangMs = 20000; // what is written reaches the other end of a terminal in its own time

QByteArray withElements(const QByteArray &elements)
{
    return "{\"schemaVersion\": 1, \"elements\": [" + elements + "]}";
}

const QByteArray current = R"({"element": "ConstantCurrent", "current": 1e-3, "samplingInterval": 1)";
const QByteArray program = withElements(
    R"({"element": "OpenCircuit", "maxDuration": 5, "samplingInterval": 1}, {"repeats": 3, "group": [)" + current +
    R"(, "maxDuration": 10}, {"element": "ConstantPot", "potential": 0.5, "samplingInterval": 1, "maxDuration": 10}]})");

/// A terminal that is shown what a program writes to standard error, and knows as much of its art as the program uses.
class Screen
{
public:
    Screen(int rows, int columns) : _columns(columns)
    {
        winsize size{};
        size.ws_row = static_cast<unsigned short>(rows);
        size.ws_col = static_cast<unsigned short>(columns);
        int slave;
        _isOpen = openpty(&_master, &slave, nullptr, nullptr, &size) == 0 && dup2(slave, STDERR_FILENO) >= 0;
        close(slave);
    }
    ~Screen() { close(_master); }
    bool isOpen() const { return _isOpen; }

    /// As terminals do that break their lines anew.
    void narrowTo(int columns)
    {
        read();
        QStringList broken;
        for (const QString &line : qAsConst(_lines)) {
            for (int begin = 0; begin == 0 || begin < line.size(); begin += columns)
                broken.append(line.mid(begin, columns));
        }
        _lines = broken;
        _row = _lines.size() - 1;
        _column = _lines.last().size();
        _columns = columns;
        winsize size{};
        size.ws_row = 20;
        size.ws_col = static_cast<unsigned short>(columns);
        ioctl(_master, TIOCSWINSZ, &size);
    }

    QStringList lines()
    {
        read();
        return _lines;
    }

private:
    void read()
    {
        std::fflush(stderr);
        int waiting = 0;
        while (ioctl(_master, FIONREAD, &waiting) == 0 && waiting > 0) {
            QByteArray bytes(waiting, '\0');
            const ssize_t count = ::read(_master, bytes.data(), std::size_t(waiting));
            _unread += bytes.left(int(count));
        }
        const QString text = QString::fromLocal8Bit(_unread);
        _unread.clear();
        for (int at = 0; at < text.size(); ++at) {
            if (text.mid(at, 2) == "\033[") {
                obey(text[at + 2]);
                at += 2;
            } else {
                put(text[at]);
            }
        }
    }
    void obey(QChar command)
    {
        if (command == 'K')
            _lines[_row].truncate(_column);
        if (command == 'A')
            _row = qMax(0, _row - 1);
    }
    void put(QChar character)
    {
        if (character == '\r') {
            _column = 0;
        } else if (character == '\n') {
            _column = 0; // the line discipline adds the return
            if (++_row == _lines.size())
                _lines.append(QString());
        } else {
            if (_column == _columns)
                put('\n');
            _lines[_row] =
                _lines[_row].leftJustified(_column).left(_column) + character + _lines[_row].mid(_column + 1);
            ++_column;
        }
    }

    int _master = -1;
    int _columns;
    bool _isOpen = false;
    QByteArray _unread;
    QStringList _lines{QString()};
    int _row = 0;
    int _column = 0;
};

} // namespace

class TestProgress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void saysWhatThePlanKnows();
    void saysNothingThatThePlanDoesNotKnow_data();
    void saysNothingThatThePlanDoesNotKnow();
    void cutsByColumns_data();
    void cutsByColumns();
    void showsNoControlCharacters();
    void escapesControlCharactersInJson();
    void keepsItsLinesOnTheTerminal();

private:
    static VekExperimentPlan planOf(const QByteArray &text);
};

void TestProgress::initTestCase()
{
    QVERIFY(setlocale(LC_ALL, "C.UTF-8"));
}

VekExperimentPlan TestProgress::planOf(const QByteArray &text)
{
    return VekExperimentPlan::forModel(parseExperiment(text, "experiment.json").experiment, "Alder_2_5");
}

void TestProgress::saysWhatThePlanKnows()
{
    RunProgress progress(planOf(program));
    progress.begin({"Open Circuit", 1, 1, 0}, 0.0);
    QCOMPARE(progress.secondsLeft(2.0).value_or(-1.0), 63.0);
    QCOMPARE(progress.cycleCount(), 1);
    progress.begin({"Constant Current", 2, 1, 0}, 5.0);
    QCOMPARE(progress.shareDone(10.0).value_or(-1.0), 10.0 / 65.0);
    QCOMPARE(progress.cycleCount(), 3);
    progress.begin({"Constant Current", 2, 1, 1}, 7.0); // a part of it is no further execution
    QCOMPARE(progress.secondsLeft(8.0).value_or(-1.0), 57.0);
    progress.begin({"Constant Potential", 3, 1, 0}, 8.0); // a limit has cut the current short: seven seconds are saved
    QCOMPARE(progress.secondsLeft(8.0).value_or(-1.0), 50.0);
    QCOMPARE(progress.secondsLeft(30.0).value_or(-1.0), 40.0); // no more than the plan has for it
    progress.begin({"Constant Current", 2, 2, 0}, 30.0);
    progress.begin({"Constant Potential", 3, 2, 0}, 40.0);
    progress.begin({"Constant Current", 2, 3, 0}, 50.0);
    progress.begin({"Constant Potential", 3, 3, 0}, 60.0);
    QCOMPARE(progress.secondsLeft(99.0).value_or(-1.0), 0.0);
    QCOMPARE(progress.shareDone(99.0).value_or(-1.0), 1.0);
}

void TestProgress::saysNothingThatThePlanDoesNotKnow_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("without an end") << withElements(current + "}");
    QTest::newRow("no experiment") << QByteArray("{}");
}

void TestProgress::saysNothingThatThePlanDoesNotKnow()
{
    QFETCH(QByteArray, text);
    RunProgress progress(planOf(text));
    progress.begin({"Constant Current", 1, 1, 0}, 0.0);
    QVERIFY(!progress.secondsLeft(1.0));
    QVERIFY(!progress.shareDone(1.0));
}

void TestProgress::cutsByColumns_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("columns");
    QTest::addColumn<QString>("cut");
    QTest::newRow("fits") << "12 mA" << 5 << "12 mA";
    QTest::newRow("too long") << "12 mA" << 4 << "12 m";
    QTest::newRow("wide") << QString::fromUtf8("電池 1") << 3 << QString::fromUtf8("電");
    QTest::newRow("beyond 16 bits") << QString::fromUtf8("\xF0\x9F\x94\x8B"
                                                         "ab")
                                    << 3
                                    << QString::fromUtf8("\xF0\x9F\x94\x8B"
                                                         "a");
    QTest::newRow("combining") << QString::fromUtf8("e\xCC\x81x") << 1 << QString::fromUtf8("e\xCC\x81");
}

void TestProgress::cutsByColumns()
{
    QFETCH(QString, text);
    QFETCH(int, columns);
    QTEST(cutToColumns(text, columns), "cut");
}

void TestProgress::showsNoControlCharacters()
{
    const QString name = QString::fromUtf8("A\033[2J\x07\r\nB\u202eC\u009b1mé");
    QCOMPARE(printable(name), QString::fromUtf8("A?[2J?? B?C?1mé"));
    QCOMPARE(printable(QString::fromUtf8("電池 µΩ")), QString::fromUtf8("電池 µΩ"));
}

/// Every control character and each that turns the direction of writing: escaped, and still the same text.
void TestProgress::escapesControlCharactersInJson()
{
    QString name = QString::fromUtf8("電池 µΩ \xF0\x9F\x94\x8B");
    for (const auto &[first, last] : {std::pair(1, 0x1f), std::pair(0x7f, 0x9f), std::pair(0x200e, 0x200f),
                                      std::pair(0x2028, 0x202e), std::pair(0x2066, 0x2069)}) {
        for (int unit = first; unit <= last; ++unit)
            name += QChar(unit);
    }
    const uint tag = 0xe0041; // formats beyond 16 bits
    name += QString::fromUcs4(&tag, 1);
    const QString shown = QString::fromStdString(dump({{"name", text(name)}}));
    QCOMPARE(printable(shown), QString(shown).replace('\n', ' '));
    QVERIFY(shown.contains(QString::fromUtf8("電池 µΩ \xF0\x9F\x94\x8B")));
    QCOMPARE(QString::fromStdString(Json::parse(shown.toStdString())["name"]), name);
}

void TestProgress::keepsItsLinesOnTheTerminal()
{
    Screen screen(20, 40);
    QVERIFY(screen.isOpen());
    Console &console = Console::instance();
    int room = 0;
    const auto show = [&](const QStringList &lines) {
        QTest::qWait(250); // lines are replaced five times a second at most
        console.progress([&](int lineCount) {
            room = lineCount;
            return lines;
        });
    };
    const QString longLine(60, 'x');
    show({"channel 0: a", longLine});
    QCOMPARE(room, 18);
    QTRY_COMPARE_WITH_TIMEOUT(screen.lines(), QStringList({"channel 0: a", QString(39, 'x')}), hangMs);
    show({"channel 0: b", "channel 1: b"});
    QTRY_COMPARE_WITH_TIMEOUT(screen.lines(), QStringList({"channel 0: b", "channel 1: b"}), hangMs);
    console.note("a message");
    QTRY_COMPARE_WITH_TIMEOUT(screen.lines(), QStringList({"a message", "channel 0: b", "channel 1: b"}), hangMs);
    show({longLine, longLine});
    QTRY_COMPARE_WITH_TIMEOUT(screen.lines(), QStringList({"a message", longLine.left(39), longLine.left(39)}), hangMs);
    screen.narrowTo(20); // each line takes two rows now
    show({"channel 0: c", "channel 1: c"});
    QTRY_COMPARE_WITH_TIMEOUT(screen.lines().filter(QRegularExpression("^.")),
                              QStringList({"a message", "channel 0: c", "channel 1: c"}), hangMs);
    console.note("from it: \033[2J");
    console.endProgress();
    console.note("behind");
    QTRY_COMPARE_WITH_TIMEOUT(screen.lines().filter(QRegularExpression("^.")),
                              QStringList({"a message", "from it: ?[2J", "channel 0: c", "channel 1: c", "behind"}),
                              hangMs);
}

NIMBRELLE_TEST_MAIN(TestProgress)
#include "TestProgress.moc"
