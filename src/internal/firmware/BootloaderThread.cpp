// SPDX-License-Identifier: MIT
#include "firmware/BootloaderThread.h"

#include "firmware/BootloaderOperator.h"
#include "firmware/FirmwareImages.h"
#include "firmware/HidCommunicator.h"
#include "images/HexLoader.h"
#include "waiting/BoundedWait.h"

namespace {

constexpr int replyTimeoutMs = 5000;
constexpr int searchPauseMs = 100;
constexpr int recordsPerBatch = 10;

} // namespace

BootloaderThread *BootloaderThread::Instance()
{
    return ApplicationSingleton<BootloaderThread>::instance();
}

BootloaderThread::BootloaderThread()
{
    moveToThread(this);
}

BootloaderThread::~BootloaderThread()
{
    requestInterruption();
    quit(); // leaves the local event loops
    wait();
}

void BootloaderThread::SetHexFile(QString const &path)
{
    _records = FirmwareImages::recordsToWrite(path);
}

void BootloaderThread::SetHIDPath(QString const &path)
{
    _hidPath = path;
}

void BootloaderThread::SetDeviceName(QString const &name)
{
    _deviceName = name;
}

void BootloaderThread::upLoading()
{
    wait(); // the last run may still be on its way out behind its Finished()
    start(QThread::InheritPriority);
}

void BootloaderThread::run()
{
    Q_EMIT Started(_deviceName);
    const bool success = !_records.isEmpty() && flash();
    _hidPath.clear();
    Q_EMIT Finished(_deviceName, success); // last: whoever hears it may prepare the next run
}

bool BootloaderThread::flash()
{
    if (_hidPath.isEmpty())
        SearchForHidPath();
    Q_EMIT BootloaderFound(_deviceName);
    _operator = new BootloaderOperator(_hidPath, this, _clock);
    Q_EMIT ProgressChanged(_deviceName, 0);
    const bool success = EraseFlash() && ProgramFlash() && CheckCrc();
    if (success)
        _operator->JumpToApplication();
    _operator->deleteLater();
    _operator = nullptr;
    return success;
}

void BootloaderThread::SearchForHidPath()
{
    QMap<QString, int> found = HidCommunicator::SearchForBootloaderHidPath();
    while (found.isEmpty() && !isInterruptionRequested()) {
        _clock.sleep(searchPauseMs);
        found = HidCommunicator::SearchForBootloaderHidPath();
    }
    if (!found.isEmpty())
        _hidPath = found.firstKey();
}

template <typename Signal, typename Action>
bool BootloaderThread::isAnswered(Signal reply, Action action)
{
    BoundedWait wait(replyTimeoutMs, _clock);
    wait.endOn(_operator, reply, WaitEnd::Answered);
    action();
    return wait.exec() == WaitEnd::Answered && !isInterruptionRequested();
}

bool BootloaderThread::EraseFlash()
{
    return isAnswered(&BootloaderOperator::FlashErased, [this] { _operator->EraseFlash(); });
}

bool BootloaderThread::ProgramFlash()
{
    int lastPercent = 0;
    for (int sent = 0; sent < _records.size();) {
        const QList<QByteArray> batch = _records.mid(sent, recordsPerBatch);
        if (!isAnswered(&BootloaderOperator::FlashProgramed,
                        [&] { _operator->ProgramFlash(QByteArrayList(batch).join()); }))
            return false;
        sent += batch.size();
        const int percent = sent * 100 / _records.size();
        if (percent != lastPercent)
            Q_EMIT ProgressChanged(_deviceName, percent);
        lastPercent = percent;
    }
    return true;
}

bool BootloaderThread::CheckCrc()
{
    const HexCrc image = HexLoader::CalculateCrc(_records);
    quint16 received = 0;
    QObject context; // undoes the connection
    connect(_operator, &BootloaderOperator::FirmwareCrcReceived, &context,
            [&received](unsigned short crc) { received = crc; });
    const bool hasReply =
        isAnswered(&BootloaderOperator::FirmwareCrcReceived, [&] { _operator->RequestFirmwareCrc(image); });
    return hasReply && received == image.crc;
}
