// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ExpNode.h"
#include "link/FirmwareErrorCode.h"

#include <QByteArray>
#include <QVector>

/**
 * The node list of one channel, as it comes in: announced with its length, sent node by node, closed.
 *
 * Only a list that was closed at its announced length can be started. A new announcement throws the old list away.
 */
class NodeStore
{
public:
    void begin(int count);
    /// FW_NODE_NOT_APPENDED without an announcement, beyond its length or for a type that the instrument does not know;
    /// FW_BAD_PARAMETERS for a record that has not 64 bytes.
    FirmwareErrorCode append(const QByteArray &record);
    void end();

    bool isComplete() const { return _isComplete; }
    const QVector<ExpNode_t> &nodes() const { return _nodes; }

private:
    QVector<ExpNode_t> _nodes;
    int _announced = 0;
    bool _isOpen = false;
    bool _isComplete = false;
};
