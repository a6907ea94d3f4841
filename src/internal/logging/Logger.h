// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QReadWriteLock>
#include <QString>
#include <QTextStream>

/**
 * The log file: one line per message, on the disk when the call returns.
 *
 * The file is appended to across runs and never rotated. By default it is "Brenmoor Apparatus/API/NimbrelleAPI.log" in
 * the documents folder, and the log is on. Control characters in a message become spaces, so that a text which came
 * from an instrument can neither forge a line nor command a terminal.
 *
 * @thread  The four level functions and setSaveLogToFile() may be called on any thread. Lines stay whole; those of two
 *          threads may stand out of the order of their times by a moment. setLogFilePath() is for the start of a
 *          program: it takes no lock.
 * @failure A folder that cannot be made gives a Qt warning, a file that cannot be opened gives none. The message is
 *          lost then, and the next one tries again. What a full disk did not take follows when there is room again.
 */
class Logger
{
public:
    /// Made, and its file opened, on first use; closed at the end of the program.
    static Logger &getInstance();

    Logger(const Logger &) = delete;
    Logger &operator=(const Logger &) = delete;

    void setLogFilePath(const QString &path);
    void setSaveLogToFile(bool save);

    void logInformation(const QString &message);
    void logWarning(const QString &message);
    void logCritical(const QString &message);
    void logFatal(const QString &message);

private:
    Logger();
    ~Logger() = default;

    void log(const QString &level, const QString &message);
    void logToFile(const QString &line);
    void openLogFile();
    void closeLogFile();

    QFile _file;
    QTextStream _stream;  // has a device only while _file is open
    QReadWriteLock _lock; // guards _saveToFile and the writing
    bool _saveToFile = true;
};
