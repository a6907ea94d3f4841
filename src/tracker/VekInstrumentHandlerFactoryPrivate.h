// SPDX-License-Identifier: MIT
#pragma once

#include "waiting/Clock.h"

#include <QObject>

struct InstrumentInfo;
class VekInstrumentHandlerPrivate;

/// Makes the handler that fits an instrument's model: a GaleInstrumentHandler or a MainInstrumentHandler. Opens the port.
VekInstrumentHandlerPrivate *makeInstrumentHandler(const InstrumentInfo &info, const Clock &clock = Clock::host());

/**
 * Makes handlers synchronously, for tools that link the inside of the library; the tracker does not use it.
 *
 * @thread Any thread with an event loop.
 */
class VekInstrumentHandlerFactoryPrivate : public QObject
{
    Q_OBJECT

public:
    explicit VekInstrumentHandlerFactoryPrivate(QObject *parent = nullptr, const Clock &clock = Clock::host());

    /**
     * A handler of the Gale line is returned at once. One of the main line is started up first: the call waits in a local
     * event loop until that is over, 5,000 ms at most, and returns the handler in either case.
     */
    VekInstrumentHandlerPrivate *createInstrumentHandler(const InstrumentInfo &info) const;

private:
    const Clock &_clock;
};
