// SPDX-License-Identifier: MIT
#include "waiting/Clock.h"

#include <QTimer>

#include <atomic>
#include <chrono>

namespace {

std::atomic<const Clock *> replacement{nullptr};

class SystemAlarm : public Alarm
{
public:
    explicit SystemAlarm(std::function<void()> ring) : Alarm(std::move(ring)), _timer(this)
    {
        _timer.setSingleShot(true);
        _timer.setTimerType(Qt::PreciseTimer); // a coarse one may cut the time short
        connect(&_timer, &QTimer::timeout, this, [this] { queueRing(setting()); });
    }

private:
    void arm(int milliseconds) override { _timer.start(milliseconds); }
    void disarm() override { _timer.stop(); }

    QTimer _timer;
};

class SystemClock : public Clock
{
public:
    qint64 now() const override
    {
        using namespace std::chrono;
        return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
    }
    std::unique_ptr<Alarm> makeAlarm(std::function<void()> ring) const override
    {
        return std::make_unique<SystemAlarm>(std::move(ring));
    }
    bool block(std::unique_lock<std::mutex> &lock, std::condition_variable &change, int milliseconds,
               const std::function<bool()> &isOver) const override
    {
        return change.wait_for(lock, std::chrono::milliseconds(milliseconds), isOver);
    }
};

} // namespace

void Alarm::start(int milliseconds)
{
    stop();
    arm(milliseconds);
}

void Alarm::stop()
{
    ++_setting;
    disarm();
}

void Alarm::queueRing(int setting)
{
    const auto ring = [this, setting] {
        if (setting == _setting)
            _ring();
    };
    QMetaObject::invokeMethod(this, ring, Qt::QueuedConnection);
}

void Clock::sleep(int milliseconds) const
{
    std::mutex mutex;
    std::condition_variable nobody;
    std::unique_lock<std::mutex> lock(mutex);
    block(lock, nobody, milliseconds, [] { return false; });
}

const Clock &Clock::host()
{
    static const SystemClock system;
    const Clock *const other = replacement;
    return other ? *other : system;
}

void Clock::replaceHost(const Clock *clock)
{
    replacement = clock;
}
