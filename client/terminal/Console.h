// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <functional>

namespace client {

/**
 * The messages of this program, all of them to standard error; standard output belongs to data.
 *
 * @thread The main thread.
 */
class Console
{
public:
    enum class Verbosity {
        Quiet,   ///< errors alone
        Normal,  ///< and what is going on; a line of progress when standard error is a terminal
        Verbose, ///< and the library's diagnostic lines
    };

    static Console &instance();

    /// Also decides what becomes of the library's diagnostic lines. Call it once, at the start.
    void setVerbosity(Verbosity verbosity);

    /// What went wrong. Always shown.
    void error(const QString &text);
    /// The same without the program's name in front, for lines that begin with a place in a file.
    void complaint(const QString &text);
    /// What a user wants to know; silent when quiet.
    void note(const QString &text);
    /**
     * Replaces the lines of progress, at most five times a second; nothing without a terminal or when quiet.
     *
     * No line gets wider than the terminal, however it is resized.
     * @param makeLines only called when they will be shown, with how many lines the terminal has room for, at least one
     */
    void progress(const std::function<QStringList(int room)> &makeLines);
    /// Leaves the last lines of progress standing and goes on below them.
    void endProgress();

private:
    Console();

    void write(const QString &text);
    void showProgress(const QStringList &lines);
    void clearProgress();

    Verbosity _verbosity = Verbosity::Normal;
    bool _isTerminal;
    QStringList _progress; // what stands on the last lines now
    QElapsedTimer _sinceProgress;
};

} // namespace client
