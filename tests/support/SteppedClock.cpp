// SPDX-License-Identifier: MIT
#include "support/SteppedClock.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QPointer>
#include <QThread>
#include <QTimer>

#include <algorithm>

class SteppedClock::SteppedAlarm : public Alarm
{
public:
    SteppedAlarm(const SteppedClock &clock, const std::function<void()> &ring)
        : Alarm([this, ring] { ringAndTell(ring); }), _clock(clock)
    {
    }
    ~SteppedAlarm() override { disarm(); }

    void ring() { queueRing(_armedSetting); }

private:
    void arm(int milliseconds) override
    {
        _armedSetting = setting();
        _clock.begin({0, milliseconds, this, nullptr, nullptr});
    }
    void disarm() override
    {
        const std::lock_guard<std::mutex> lock(_clock._mutex);
        _clock._ringing.remove(this);
        _clock._waits.erase(std::remove_if(_clock._waits.begin(), _clock._waits.end(),
                                           [this](const Wait &wait) { return wait.alarm == this; }),
                            _clock._waits.end());
    }
    /// Told behind the ring: what is begun in it is there when time goes on.
    void ringAndTell(const std::function<void()> &ring)
    {
        const QPointer<QObject> alive(this);
        ring();
        if (!alive)
            return;
        const std::lock_guard<std::mutex> lock(_clock._mutex);
        _clock._ringing.remove(this);
    }

    const SteppedClock &_clock;
    int _armedSetting = 0;
};

SteppedClock::SteppedClock(Use use) : _isHost(use == Use::AsHost)
{
    if (_isHost)
        replaceHost(this);
}

SteppedClock::~SteppedClock()
{
    if (_isHost)
        replaceHost(nullptr);
}

std::unique_ptr<Alarm> SteppedClock::makeAlarm(std::function<void()> ring) const
{
    return std::make_unique<SteppedAlarm>(*this, ring);
}

bool SteppedClock::block(std::unique_lock<std::mutex> &lock, std::condition_variable &change, int milliseconds,
                         const std::function<bool()> &isOver) const
{
    lock.unlock(); // who steps holds the other one first
    const qint64 due = begin({0, milliseconds, nullptr, lock.mutex(), &change});
    lock.lock();
    change.wait(lock, [&] { return isOver() || _now >= due; });
    lock.unlock();
    {
        const std::lock_guard<std::mutex> own(_mutex);
        _waits.erase(std::remove_if(_waits.begin(), _waits.end(),
                                    [&lock](const Wait &wait) { return wait.mutex == lock.mutex(); }),
                     _waits.end());
    }
    lock.lock();
    return isOver();
}

/// @return when it ends
qint64 SteppedClock::begin(Wait wait) const
{
    const std::lock_guard<std::mutex> lock(_mutex);
    wait.due = _now + wait.length; // under the lock: nobody steps past it unseen
    _waits.append(wait);
    int &hurried = _hurried[wait.length];
    if (hurried > 0) {
        --hurried;
        _now = wait.due;
    }
    endDue();
    return wait.due;
}

void SteppedClock::step(int milliseconds)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _now += milliseconds;
    endDue();
}

void SteppedClock::hurry(int milliseconds, int waits)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _hurried[milliseconds] = waits;
}

/// Ends the waits whose time has come, in the order of their ends.
void SteppedClock::endDue() const
{
    std::stable_sort(_waits.begin(), _waits.end(),
                     [](const Wait &one, const Wait &other) { return one.due < other.due; });
    for (auto wait = _waits.begin(); wait != _waits.end() && wait->due <= _now;) {
        if (wait->alarm) {
            _ringing.insert(wait->alarm);
            wait->alarm->ring();
            wait = _waits.erase(wait);
        } else {
            const std::lock_guard<std::mutex> sleeper(*wait->mutex); // or it would miss the word on its way to sleep
            wait->change->notify_all();
            ++wait; // goes when it has woken
        }
    }
}

bool SteppedClock::stepUntil(const std::function<bool()> &condition, const QSet<int> &lengths)
{
    const QDeadlineTimer patience(60000);
    QTimer steps;
    QObject::connect(&steps, &QTimer::timeout, &steps, [&] {
        if (!stepToNext(lengths))
            QThread::usleep(100);
    });
    steps.start(0);
    while (!condition() && !patience.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return condition();
}

bool SteppedClock::stepToNext(const QSet<int> &lengths)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    return _ringing.isEmpty() && stepTo([&lengths](const Wait &wait) { return lengths.contains(wait.length); });
}

bool SteppedClock::wakeNext()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    return stepTo([](const Wait &wait) { return !wait.alarm; });
}

bool SteppedClock::stepTo(const std::function<bool(const Wait &)> &isMeant)
{
    const auto isWaking = [this](const Wait &wait) { return wait.due <= _now; };
    if (std::any_of(_waits.begin(), _waits.end(), isWaking))
        return false;
    const Wait *next = nullptr;
    for (const Wait &wait : qAsConst(_waits)) {
        if (isMeant(wait) && (!next || wait.due < next->due))
            next = &wait;
    }
    if (!next)
        return false;
    _now = next->due;
    endDue();
    return true;
}
