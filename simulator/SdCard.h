#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>

/**
 * The instrument's SD card: one stream of calibration tables per channel, handed out in packets.
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

    void setStream(int channel, const QByteArray &stream) { _streams[channel] = stream; }
    /// A new conversation: the first header is that of channel 0 again.
    void rewind();
    Packet nextHeader();
    /// The next packet of the channel whose turn it is; of channel 0 and empty when none is waiting.
    Packet nextData();

private:
    struct Transfer {
        int channel;
        int position;
    };

    int _channels;
    int _nextChannel = 0;
    QMap<int, QByteArray> _streams;
    QList<Transfer> _waiting;
};
