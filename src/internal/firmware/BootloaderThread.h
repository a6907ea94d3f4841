// SPDX-License-Identifier: MIT
#pragma once

#include "firmware/ApplicationSingleton.h"
#include "waiting/Clock.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QThread>

class BootloaderOperator;

/**
 * Flashes one instrument over HID: erase, program, check the CRC, jump. One run at a time.
 *
 * @thread  The object lives on the thread that it runs. The setters and upLoading() are called from one other thread,
 *          between two runs; the signals come from the running thread.
 * @failure Every run ends with Finished(). No reply within 5 s, a missing image and a different CRC all end it with
 *          false; there are no retries. The end of the application ends a run.
 */
class BootloaderThread : public QThread
{
    Q_OBJECT

public:
    static BootloaderThread *Instance();
    /// Ends a run that is under way and waits for it, at most the 5 s of a write that blocks.
    ~BootloaderThread() override;

    /// Reads the image; one that cannot be read, or may not be written, makes the run fail.
    void SetHexFile(QString const &path);
    /// The device; without one the run looks for one itself, without limit.
    void SetHIDPath(QString const &path);
    void SetDeviceName(QString const &name);
    /// Starts a run.
    void upLoading();

Q_SIGNALS:
    void ProgressChanged(QString deviceName, int percent);
    void Finished(QString deviceName, bool success);
    void Started(QString deviceName);
    void BootloaderFound(QString deviceName);

protected:
    void run() override;

private:
    friend class ApplicationSingleton<BootloaderThread>;
    BootloaderThread();

    bool flash();
    void SearchForHidPath();
    bool EraseFlash();
    bool ProgramFlash();
    bool CheckCrc();
    /// Does something and waits for the reply to it. @return whether it came; false too when the thread is asked to end
    template <typename Signal, typename Action>
    bool isAnswered(Signal reply, Action action);

    const Clock &_clock = Clock::host();
    QList<QByteArray> _records;
    BootloaderOperator *_operator = nullptr; ///< during a run
    QString _hidPath;
    QString _deviceName;
};
