// SPDX-License-Identifier: MIT
#pragma once

#include <QEventLoop>
#include <QObject>

namespace lab {

/**
 * One wait of the program: lets events run until end(), or until time is up. For one use.
 *
 * It ends wherever end() was called from: before it has begun, and in a slot that goes on into a loop of its own, as many
 * calls of the library do, after which Qt's own event dispatcher would sleep on until another event came.
 *
 * @thread The main thread.
 */
class EventWait : public QObject
{
    Q_OBJECT

public:
    static constexpr int untilTheEnd = -1;

    /// @return whether end() was called; false when the time was up
    bool exec(int milliseconds = untilTheEnd);

public Q_SLOTS:
    void end();

private:
    QEventLoop _loop;
    bool _hasEnded = false;
};

} // namespace lab
