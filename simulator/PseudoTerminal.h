// SPDX-License-Identifier: MIT
#pragma once

#include "SerialEnd.h"

/**
 * A line of its own: the instrument's end of a pseudo-terminal. A program under test opens the other end as a serial port.
 *
 * @thread As SerialEnd.
 */
class PseudoTerminal : public SerialEnd
{
    Q_OBJECT

public:
    /// Plugs itself in; isOpen() tells whether that worked.
    explicit PseudoTerminal(QObject *parent = nullptr);
    /**
     * Waits for plug(), since the link makes the port known.
     *
     * @param linkPath where a symbolic link to the port is made. It comes and goes with the port, and replaces nothing but
     *                 what a killed simulator has left.
     */
    explicit PseudoTerminal(const QString &linkPath, QObject *parent = nullptr);
    ~PseudoTerminal() override;

    bool plug() override;
    void unplug() override;

private:
    bool clearLink();
    bool open(int master);
    bool link();

    QString _linkPath;   ///< none if empty
    int _keptSlave = -1; ///< held open so that the terminal outlives each program that opens and closes it
};
