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
const QString unknownModel = QStringLiteral("Unknow HID model connections. "); ///< an update that cannot go on
const QString successMark = QStringLiteral(": Firmware updated successfully.");
const QString progressMark = QStringLiteral(": Progress ");

} // namespace

int progressIn(const QString &notification)
{
    const int at = notification.lastIndexOf(progressMark);
    bool isNumber = false;
    const int percent = at < 0 ? -1 : notification.mid(at + progressMark.size()).toInt(&isNumber);
    return isNumber ? percent : -1;
}

QString progressBar(const QString &deviceName, int percent)
{
    const int filled = qBound(0, percent * barLength / 100, barLength);
    const QString bar = QString(filled, QLatin1Char('#')).leftJustified(barLength);
    return QStringLiteral("[%1] %2 % %3").arg(bar, QString::number(percent).rightJustified(3), deviceName);
}

UpdateWatch::UpdateWatch()
{
    const VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    connect(tracker, &VekDeviceTracker::firmwareUpdateNotification, this, &UpdateWatch::onNotification);
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

void UpdateWatch::onNotification(const QString &notification)
{
    // Begins with the name that the instrument has, where a line end may still be.
    const QString text = printable(QString(notification).remove(QLatin1Char('\n')));
    _silence.start();
    const int percent = progressIn(text);
    if (percent >= 0)
        return Console::instance().progress(
            [&](int) { return QStringList(progressBar(text.left(text.lastIndexOf(progressMark)), percent)); });
    const bool hasFailed = text == unknownModel || text.endsWith(QLatin1String(": Firmware update failed."));
    const bool isStandIn = text.endsWith(VekErrorCode(VekErrorCode::StandInFirmware).message());
    if (hasFailed || isStandIn)
        Console::instance().error(text);
    else
        Console::instance().note(text);
    _failed += hasFailed ? 1 : 0;
    _hasMetStandIn = _hasMetStandIn || isStandIn;
    if (text.endsWith(successMark))
        _updated.append(text.chopped(successMark.size()));
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
