// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

/// What may be wrong with an SD card.
struct SdCardFaults {
    bool hasWrongMagic = false;
    bool isCutShort = false; ///< it falls silent half-way through
    bool hasBadFile = false; ///< one table among the good ones has a row too many columns wide
};

/**
 * The instrument's SD card: a stream of calibration tables, handed out in packets, the same for each channel.
 *
 * The host asks for each channel's header and next packet without naming the channel, so the card names it: headers go
 * round the channels in order, and packets answer the headers and packets in the order in which those went out.
 */
class SdCard
{
public:
    explicit SdCard(int channels) : _channels(channels) {}

    struct Packet {
        int channel;
        QByteArray bytes;
    };

    void setContents(const QByteArray &stream, const SdCardFaults &faults);
    /// A new conversation: the first header is that of channel 0 again.
    void rewind();
    Packet nextHeader();
    /// Whether a packet is waiting to be asked for.
    bool hasData() const { return !_waiting.isEmpty(); }
    /// The next packet of the channel whose turn it is.
    Packet nextData();

private:
    struct Transfer {
        int channel;
        int position;
    };

    int _channels;
    int _nextChannel = 0;
    QByteArray _stream;
    int _readable = 0; ///< bytes that the card gives before it falls silent
    bool _hasWrongMagic = false;
    QList<Transfer> _waiting;
};
