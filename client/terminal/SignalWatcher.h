// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace client {

/**
 * Turns SIGINT, SIGTERM and SIGHUP into a Qt signal, which comes once. Only a second SIGINT, more than a second after the
 * first signal, ends the program at once, with exit code 130.
 *
 * A SIGHUP that is ignored when the object is made stays ignored. SIGPIPE and SIGXFSZ are ignored from then on, so that
 * what cannot be written shows as a failed write. One object may exist at a time; it restores nothing.
 *
 * @thread The main thread.
 */
class SignalWatcher : public QObject
{
    Q_OBJECT

public:
    SignalWatcher();
    ~SignalWatcher() override;

    /// The one object; null before it is made.
    static SignalWatcher *instance();

    /// Whether a signal has come, delivered or not.
    static bool wasInterrupted();

Q_SIGNALS:
    void interrupted();

private Q_SLOTS:
    void onPipeReadable();

private:
    QSocketNotifier _notifier;
};

} // namespace client
