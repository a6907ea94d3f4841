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
    /**
     * Plugs itself in; isOpen() tells whether that worked.
     *
     * @param linkPath where a symbolic link to the port is made; none if empty. It comes and goes with the port.
     */
    explicit PseudoTerminal(const QString &linkPath = QString(), QObject *parent = nullptr);
    ~PseudoTerminal() override;

    bool plug() override;
    void unplug() override;

private:
    bool open(int master);
    bool link();

    QString _wantedLink;
    QString _linkPath;   ///< while there is one
    int _keptSlave = -1; ///< held open so that the terminal outlives each program that opens and closes it
};
