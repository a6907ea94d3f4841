// SPDX-License-Identifier: MIT
#pragma once

#include <QThread>

/**
 * The worker thread of one instrument handler.
 *
 * It deletes itself on the thread that made it once it has finished. A handler that is destroyed on this very thread
 * cannot wait for it: the destructor waits then, and if the maker's event loop is over already, whatever is left ends
 * with the application object. So no thread outlives the application, is lost, or is destroyed while it runs.
 */
class HandlerThread : public QThread
{
    Q_OBJECT

public:
    HandlerThread();
    /// Ends the thread if it still runs, and waits for it.
    ~HandlerThread() override;

    /// Leaves the event loop, and waits until the thread is over unless it is the calling one.
    void end();
};
