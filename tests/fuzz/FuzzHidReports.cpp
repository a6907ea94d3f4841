// SPDX-License-Identifier: MIT
// Frames of the HID bootloader: what is encoded is decoded again, and any reports from a device are survived.

#include "FuzzTarget.h"
#include "firmware/BootloaderOperator.h"
#include "firmware/HidCommunicator.h"
#include "firmware/HidFrame.h"

namespace {

/// Reports as the device gets them, without their numbers and what fills up the last one.
QByteArray joined(const QList<QByteArray> &reports, int size)
{
    QByteArray bytes;
    for (const QByteArray &report : reports) {
        mustHold(report.size() == HidFrame::reportSize + 1 && report.at(0) == 0, "a report has 64 bytes and number 0");
        bytes += report.mid(1);
    }
    mustHold(bytes.size() - size < HidFrame::reportSize, "no report is empty");
    return bytes.left(size);
}

void roundTrip(const QByteArray &body)
{
    const QByteArray frame = HidFrame::make(body);
    const QByteArray sent = joined(HidFrame::reportsOf(frame), frame.size());
    QByteArray received = "left over";
    const QList<QByteArray> bodies = HidFrame::takeBodies(sent, received);
    mustHold(sent == frame, "reports carry the frame");
    mustHold(bodies == (body.isEmpty() ? QList<QByteArray>() : QList<QByteArray>{body}),
             "decode of encode is identity");
}

/// A bootloader without a device, which is given bodies as if one had sent them.
HidCommunicator &communicator()
{
    FuzzProcess::instance();
    static BootloaderOperator bootloader(QStringLiteral("/nowhere"));
    return *bootloader.findChild<HidCommunicator *>();
}

void receive(FuzzInput &input)
{
    QByteArray received;
    while (!input.isEmpty()) {
        const QList<QByteArray> bodies = HidFrame::takeBodies(input.bytes(HidFrame::reportSize), received);
        for (const QByteArray &body : bodies) {
            mustHold(!body.isEmpty(), "a body holds a command");
            roundTrip(body);
            Q_EMIT communicator().DataReceived(body);
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    if (input.flag()) {
        receive(input);
    } else {
        const QByteArray body = input.rest();
        roundTrip(body);
        if (!body.isEmpty())
            Q_EMIT communicator().DataReceived(body);
    }
    return 0;
}
