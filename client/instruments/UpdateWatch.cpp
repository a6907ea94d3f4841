// SPDX-License-Identifier: MIT
#include "client/instruments/UpdateWatch.h"

#include "VekDeviceTracker.h"
#include "client/terminal/Console.h"
#include "client/terminal/SignalWatcher.h"
#include "lab/notation/PrintableText.h"
#include "lab/runs/EventWait.h"

namespace client {

using namespace lab;

namespace {

constexpr int silenceMs = 60000; ///< a bootloader that takes nothing is given up by the library long before
constexpr int barLength = 20;

/// Without the line end that may still be in the name that an instrument has.
QString inOneLine(QString text)
{
    return printable(text.remove(QLatin1Char('\n')));
}

} // namespace

QString progressBar(const QString &deviceName, int percent)
{
    const int filled = qBound(0, percent * barLength / 100, barLength);
    const QString bar = QString(filled, QLatin1Char('#')).leftJustified(barLength);
    return QStringLiteral("[%1] %2 % %3").arg(bar, QString::number(percent).rightJustified(3), deviceName);
}

UpdateWatch::UpdateWatch()
{
    const VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    connect(tracker, &VekDeviceTracker::firmwareUpdateStageReached, this, &UpdateWatch::onStage);
    connect(SignalWatcher::instance(), &SignalWatcher::interrupted, this, &UpdateWatch::onInterrupted);
    _silence.setSingleShot(true);
    _silence.setInterval(silenceMs);
    connect(&_silence, &QTimer::timeout, this, &UpdateWatch::onSilence);
}

ExitCode UpdateWatch::waitForEnds(int count)
{
    const auto isOver = [this, count] { return _isSilent || _updated.size() + _failed >= count; };
    EventWait wait;
    connect(this, &UpdateWatch::changed, &wait, [&] {
        if (isOver())
            wait.end();
    });
    _silence.start();
    if (!isOver())
        wait.exec();
    Console::instance().endProgress();
    return !_isSilent && _failed == 0 ? Done : Refused;
}

void UpdateWatch::onStage(const QString &deviceName, VekFirmwareUpdateStage stage, int percent, const QString &message)
{
    using Stage = VekFirmwareUpdateStage;
    _silence.start();
    if (stage == Stage::Writing)
        return Console::instance().progress(
            [&](int) { return QStringList(progressBar(inOneLine(deviceName), percent)); });
    const bool hasFailed = stage == Stage::Failed || stage == Stage::UnknownModel;
    if (hasFailed || stage == Stage::StandInFirmware)
        Console::instance().error(inOneLine(message));
    else
        Console::instance().note(inOneLine(message));
    _failed += hasFailed ? 1 : 0;
    _hasMetStandIn = _hasMetStandIn || stage == Stage::StandInFirmware;
    if (stage == Stage::Succeeded)
        _updated.append(inOneLine(deviceName));
    Q_EMIT changed();
}

void UpdateWatch::onInterrupted()
{
    Console::instance().note(QStringLiteral("The update goes on, since the instrument could not be used without its "
                                            "firmware; Ctrl-C once more, a second or more later, ends the program all "
                                            "the same."));
}

void UpdateWatch::onSilence()
{
    Console::instance().error(QStringLiteral("Nothing was heard of the update for %1 s.").arg(silenceMs / 1000));
    _isSilent = true;
    Q_EMIT changed();
}

} // namespace client
