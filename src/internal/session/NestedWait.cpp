#include "session/NestedWait.h"

#include <QPointer>

#include <utility>
#include <vector>

namespace {

struct Postponed {
    QPointer<QObject> context;
    std::function<void()> function;
};

thread_local int waitsOnStack = 0;
thread_local std::vector<Postponed> postponed;

void queue(const Postponed &each)
{
    if (!each.context)
        return;
    // Asks again on arrival: the caller of the wait that has just ended may have begun another one.
    QMetaObject::invokeMethod(
        each.context, [each] { NestedWait::runOutside(each.context, each.function); }, Qt::QueuedConnection);
}

} // namespace

NestedWait::NestedWait()
{
    ++waitsOnStack;
}

NestedWait::~NestedWait()
{
    if (--waitsOnStack > 0)
        return;
    for (const Postponed &each : std::exchange(postponed, {}))
        queue(each);
}

void NestedWait::runOutside(QObject *context, const std::function<void()> &function)
{
    if (waitsOnStack == 0)
        function();
    else
        postponed.push_back({context, function});
}
