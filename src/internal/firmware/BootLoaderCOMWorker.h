// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>

class QIODevice;
class QSerialPort;

/**
 * One update of a battery cycler over its serial port: every board has two channels, all boards are flashed at once and
 * each of them replies to every record.
 *
 * @thread  Lives on a thread that is its own for the update; process() blocks it, in calls of the serial port alone.
 * @failure Every failure ends with Finished(false), leaves the instrument in its bootloader and closes the port: a port
 *          that cannot be opened for 10 s, a wrong reply, none within 5 s, or an image that cannot be read to its end.
 *          There are no retries.
 */
class BootLoaderCOMWorker : public QObject
{
    Q_OBJECT

public:
    BootLoaderCOMWorker(const QString &portName, const QString &hexFile, const QString &deviceName);

    /// Runs the update from end to end.
    void process();

Q_SIGNALS:
    void ShowDialog();
    void Found(QString hardware);
    void Started(QString deviceName);
    void Progress(QString deviceName, int percent);
    void Finished(QString deviceName, bool success);
    /// The thread may end, after success. See compatibility.md, threads of failed updates.
    void finished();

private:
    bool update();
    /// Keeps some records in flight, and tells the progress, until all boards have acknowledged all of them.
    bool sendImage(QSerialPort &port, QIODevice &file, int boards);

    QString _portName;
    QString _hexFile;
    QString _deviceName;
};
