// SPDX-License-Identifier: MIT
#include <QCoreApplication>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <cstring>

/**
 * The canary of the thread sanitizer. A worker thread changes a plain number and the main thread reads it:
 * "race" reads without any order between the two, which must be reported; "handover" reads when a queued call has told
 * that the number is ready, which must not be. Where Qt is not instrumented, the second one is reported as well.
 */
class Counter : public QObject
{
public:
    void change() { ++_value; }
    int value() const { return _value; }

private:
    int _value = 0;
};

namespace {

void waitUnordered(const std::atomic<bool> &flag)
{
    while (!flag.load(std::memory_order_relaxed))
        QThread::msleep(1);
}

/// The worker is long done when the value is read, yet relaxed flags order nothing. It begins when the call has been
/// posted as a whole: what comes after the post in Qt may order the two by chance.
int readUnordered(Counter &counter)
{
    std::atomic<bool> isPosted{false};
    std::atomic<bool> isChanged{false};
    QMetaObject::invokeMethod(
        &counter,
        [&] {
            waitUnordered(isPosted);
            counter.change();
            isChanged.store(true, std::memory_order_relaxed);
        },
        Qt::QueuedConnection);
    isPosted.store(true, std::memory_order_relaxed);
    waitUnordered(isChanged);
    return counter.value();
}

int readHandedOver(Counter &counter)
{
    int value = 0;
    QMetaObject::invokeMethod(
        &counter,
        [&] {
            counter.change();
            QMetaObject::invokeMethod(
                qApp,
                [&] {
                    value = counter.value();
                    QCoreApplication::quit();
                },
                Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
    QCoreApplication::exec();
    return value;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const bool isRace = argc > 1 && std::strcmp(argv[1], "race") == 0;
    Counter counter;
    QThread worker;
    counter.moveToThread(&worker);
    worker.start();
    const int value = isRace ? readUnordered(counter) : readHandedOver(counter);
    worker.quit();
    worker.wait();
    std::printf("%d\n", value);
    return value == 1 ? 0 : 1;
}
