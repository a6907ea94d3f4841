#pragma once

#include <QObject>

#include <functional>

/**
 * Marks that this thread waits for an instrument in a local event loop, for as long as the object lives.
 *
 * Such a loop delivers whatever comes, so any slot may run while methods of a handler or an operator stand on the stack
 * below it. Whoever wants to delete one of those puts it off with runOutside().
 *
 * @thread Each thread has a count of its own.
 */
class NestedWait
{
public:
    NestedWait();
    ~NestedWait();
    Q_DISABLE_COPY_MOVE(NestedWait)

    /**
     * Runs a function when no wait is on the stack of this thread: at once, or from the event queue of @p context after
     * the outermost wait has ended. It is dropped if @p context, which must live on this thread, goes before.
     */
    static void runOutside(QObject *context, const std::function<void()> &function);
};
