#pragma once

class QEventLoop;

/// The exit code of a loop whose time was up before anybody left it.
constexpr int timeIsUp = 1;

/**
 * Lets the events of this thread run until an event loop is left, at most for a time.
 *
 * The end of the time stands in line with the events of this thread, behind what has come by then: a slot that has held
 * the thread for longer does not cost what came meanwhile. Who leaves the loop before has decided its exit code.
 * @param milliseconds  at least; where events run loops of their own, until those are left
 * @return the exit code of the loop, `timeIsUp`, or -1 at once where the thread has been told to quit
 */
int execBounded(QEventLoop &loop, int milliseconds);
