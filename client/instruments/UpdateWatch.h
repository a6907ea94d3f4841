// SPDX-License-Identifier: MIT
#pragma once

#include "VekFirmwareUpdateStage.h"
#include "client/terminal/ExitCode.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace client {

/// "[########            ]  40 % Alder-0042"
QString progressBar(const QString &deviceName, int percent);

/**
 * Shows the course of firmware updates and waits for their ends. Make it before the update is started.
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
    void onStage(const QString &deviceName, VekFirmwareUpdateStage stage, int percent, const QString &message);
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
