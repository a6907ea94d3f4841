// SPDX-License-Identifier: MIT
// Replies of a serial bootloader to every question of an update, in any number, of any size, cut anywhere.

#include "FuzzTarget.h"
#include "firmware/SerialBootloader.h"

#include <QBuffer>
#include <QSerialPort>
#include <QThread>

namespace {

/// A port with given bytes behind it, in pieces. When they are used up the update is asked to end, as by its owner.
class ScriptedPort : public QSerialPort
{
public:
    explicit ScriptedPort(FuzzInput &input) : _input(input) { QIODevice::open(QIODevice::ReadWrite | Unbuffered); }

    qint64 bytesAvailable() const override { return _ready.size(); }
    bool waitForReadyRead(int) override
    {
        if (_ready.isEmpty())
            _ready = _input.bytes(1 + _input.below(16));
        endWhenUsedUp();
        return !_ready.isEmpty();
    }

    QByteArray written;

protected:
    qint64 readData(char *bytes, qint64 size) override
    {
        const auto count = int(std::min(size, qint64(_ready.size())));
        std::copy_n(_ready.constData(), count, bytes);
        _ready.remove(0, count);
        endWhenUsedUp(); // before the update waits in vain, as it sleeps then
        return count;
    }
    qint64 writeData(const char *bytes, qint64 size) override
    {
        written.append(bytes, int(size));
        return size;
    }

private:
    void endWhenUsedUp() const
    {
        if (_input.isEmpty() && _ready.isEmpty())
            QThread::currentThread()->requestInterruption();
    }

    FuzzInput &_input;
    QByteArray _ready;
};

QByteArray image()
{
    return QByteArray(":020000000102FB\n").repeated(12) + ":00000001FF\n;12ab\n;GALE\n";
}

bool sendRecords(QSerialPort &port, int boards)
{
    QBuffer file;
    file.setData(image());
    file.open(QIODevice::ReadOnly);
    int records = 0;
    while (!file.atEnd()) {
        records += SerialBootloader::writeRecords(port, file, 8);
        if (!SerialBootloader::checkResponses(port, QByteArray::fromHex("eeff14000000"), boards))
            return false;
    }
    mustHold(records == 13, "every record is sent once");
    return true;
}

void update(FuzzInput &input)
{
    using namespace SerialBootloader;
    ScriptedPort port(input);
    QString hardware;
    int boards = 0;
    if (!answersPing(port) || !readHardware(port, hardware))
        return;
    mustHold(hardware.size() <= 64, "the hardware's text has at most 64 bytes");
    if (!answersPing(port) || !countBoards(port, boards))
        return;
    mustHold(-64 <= boards && boards <= 63, "a board has two channels");
    if (unlocksFlash(port, boards))
        sendRecords(port, boards);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzProcess::instance();
    FuzzInput input(data, size);
    // A thread for each run: an interruption stays requested until its thread ends.
    const std::unique_ptr<QThread> thread(QThread::create([&input] { update(input); }));
    thread->start();
    thread->wait();
    return 0;
}
