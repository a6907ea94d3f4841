// SPDX-License-Identifier: MIT
#pragma once

#include "Nodes.h"

#include "link/SerialCommunicator.h"
#include "simulator/Payload.h"
#include "simulator/SimulatedInstrument.h"
#include "simulator/cells/CellFactory.h"

#include <QtTest>

#include <algorithm>

/// An instrument and a host on the two ends of one terminal, both served by the test's event loop.
class Bench : public QObject
{
public:
    struct Packet {
        Notifications_t type;
        unsigned int channel;
        QByteArray payload;
    };

    explicit Bench(const QStringList &faults = {}, int channels = 1, double speed = 0.0,
                   HardwareModel_t model = HardwareModel_t::Alder_2_5,
                   const QString &cell = QStringLiteral("resistor:R=1000"))
    {
        SimulatedInstrument::Setup setup;
        setup.speed = speed;
        setup.model = model;
        setup.name = QStringLiteral("Bench");
        for (const QString &fault : faults)
            setup.faults.add(fault);
        std::vector<std::unique_ptr<Cell>> cells;
        for (int i = 0; i < channels; ++i)
            cells.push_back(makeCell(cell).cell);
        instrument = std::make_unique<SimulatedInstrument>(setup, std::move(cells));
        host = std::make_unique<SerialCommunicator>(instrument->portName());
        connect(host.get(), &SerialCommunicator::ResponseReceived, this,
                [this](Notifications_t type, unsigned int channel, const QByteArray &payload) {
                    packets.append({type, channel, payload});
                });
        connect(host.get(), &SerialCommunicator::deviceDisconnected, this, [this] { ++losses; });
        host->Start(true);
    }

    int count(Notifications_t type) const
    {
        return int(std::count_if(packets.begin(), packets.end(), [type](const Packet &p) { return p.type == type; }));
    }
    bool await(Notifications_t type, int number = 1, int patienceMs = 5000)
    {
        return QTest::qWaitFor([&] { return count(type) >= number; }, patienceMs);
    }
    QByteArray payload(Notifications_t type, int number = 0) const
    {
        for (const Packet &packet : packets)
            if (packet.type == type && number-- == 0)
                return packet.payload;
        return QByteArrayLiteral("nothing came");
    }
    /// Sends a command and returns the code of its acknowledgement; -2 if none comes.
    int acknowledged(PCcommand_t command, const QByteArray &data = QByteArray(), quint8 channel = 0)
    {
        const int before = count(NT_GENERAL_ACK);
        host->SendCommand(command, channel, data);
        if (!await(NT_GENERAL_ACK, before + 1) || quint8(payload(NT_GENERAL_ACK, before).at(0)) != quint8(command))
            return -2;
        return payload(NT_GENERAL_ACK, before).at(1);
    }
    void upload(const QVector<ExpNode_t> &nodes, quint8 channel = 0)
    {
        const int before = count(NT_NODE_APPENDED);
        host->SendCommand(PC_NODE_LIST_BEGIN, channel, packed(quint16(nodes.size())));
        for (const ExpNode_t &node : nodes)
            host->SendCommand(PC_NODE_APPEND, channel, packed(node));
        host->SendCommand(PC_NODE_LIST_END, channel);
        QVERIFY(await(NT_NODE_APPENDED, before + nodes.size()));
    }
    QVector<int> types() const
    {
        QVector<int> all;
        for (const Packet &packet : packets)
            all += packet.type;
        return all;
    }

    std::unique_ptr<SimulatedInstrument> instrument;
    std::unique_ptr<SerialCommunicator> host;
    QVector<Packet> packets;
    int losses = 0;
};
