#pragma once

#include "client/terminal/ExitCode.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace client {

/// The percentage in a text such as "Alder-0042: Progress 17"; -1 in any other.
int progressIn(const QString &notification);

/// "[########            ]  40 % Alder-0042"
QString progressBar(const QString &deviceName, int percent);

/**
 * Shows the course of firmware updates and waits for their ends. Make it before the update is started.
 *
 * The ends are read from the library's texts, which come for every kind of bootloader.
 *
 * @thread The main thread.
 */
class UpdateWatch : public QObject
{
    Q_OBJECT

public:
    UpdateWatch();

    /**
     * Runs the event loop until so many updates have ended, or nothing was heard of any for a minute.
     *
     * A signal of the user is answered with a warning; the second one ends the program.
     *
     * @return Done when all succeeded, else Refused
     */
    ExitCode waitForEnds(int count);
    /// The names of the instruments that have been updated; empty for each that was met in its bootloader, without one.
    QStringList updated() const { return _updated; }
    /// Whether an instrument was left alone since this build has a stand-in in the place of its image.
    bool hasMetStandIn() const { return _hasMetStandIn; }

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void onNotification(const QString &notification);
    void onInterrupted();
    void onSilence();

private:
    QStringList _updated;
    int _failed = 0;
    bool _isSilent = false;
    bool _hasMetStandIn = false;
    QTimer _silence;
};

} // namespace client
