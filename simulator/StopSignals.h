// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>

#include <atomic>
#include <csignal>
#include <thread>

/**
 * Ends the program when it is asked to, by SIGTERM or SIGINT.
 *
 * The application quits, and what it has still to write is written. A main thread that does not come to that, because it
 * is in the middle of a computation or writes to a pipe that nobody reads, is given a second, or until the program is asked
 * again: then the links and sockets that it has made go, and the process with them.
 *
 * @thread Made and destroyed on the main thread; it waits on a thread of its own.
 */
class StopSignals
{
public:
    /// Keeps the signals for an object of this class. To be called before there is a second thread to take them.
    static bool hold();

    explicit StopSignals(QCoreApplication &application);
    /// The program has come to its end by itself.
    ~StopSignals();

private:
    void wait();

    QCoreApplication &_application;
    std::atomic<bool> _isOver{false};
    std::thread _thread;
};
