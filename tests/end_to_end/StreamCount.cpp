// SPDX-License-Identifier: MIT
#include "StreamCount.h"

#include <VekConstantCurrentElement.h>

#include <QRegularExpression>

#include <cmath>

namespace {

constexpr double clockResolution = 1e-7; // seconds, of the coarser line

} // namespace

StreamCount::StreamCount(ConnectedInstrument &instrument, int channelCount, double interval)
    : _instrument(instrument), _interval(interval), _channels(std::size_t(channelCount))
{
    listen();
}

void StreamCount::listen()
{
    const VekInstrumentHandler *handler = &_instrument.handler();
    disconnect(handler, &VekInstrumentHandler::activeDCDataReady, &_instrument, nullptr);
    disconnect(handler, &VekInstrumentHandler::experimentNewElementStarting, &_instrument, nullptr);
    connect(handler, &VekInstrumentHandler::activeDCDataReady, this,
            [this](unsigned char channel, const VekDCData &data) { count(_channels.at(channel), data.timestamp); });
    connect(handler, &VekInstrumentHandler::experimentNewElementStarting, this,
            [this](unsigned char channel, const VekExperimentNode &node) {
                _channels.at(channel).cycles = node.cycleNumber;
            });
}

VekExperiment StreamCount::steadyCurrent(double interval)
{
    VekConstantCurrentElement element(1e-3, interval, 1e9);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    return experiment;
}

bool StreamCount::start(const VekExperiment &experiment)
{
    const VekInstrumentHandler &handler = _instrument.handler();
    bool isGood = true;
    for (std::size_t channel = 0; channel < _channels.size(); ++channel)
        isGood &= handler.uploadExperimentToChannel(quint8(channel), experiment) == VekErrorCode::Success;
    for (std::size_t channel = 0; channel < _channels.size(); ++channel)
        isGood &= handler.startUploadedExperiment(quint8(channel)) == VekErrorCode::Success;
    return isGood;
}

bool StreamCount::stop(int timeoutMs)
{
    for (std::size_t channel = 0; channel < _channels.size(); ++channel)
        _instrument.handler().stopExperiment(quint8(channel));
    return _instrument.waitForEnds(int(_channels.size()), timeoutMs);
}

bool StreamCount::finish(int timeoutMs)
{
    const bool haveEnded = stop(timeoutMs);
    return readStatistics(_instrument.simulator().finish()) && haveEnded;
}

void StreamCount::count(Channel &channel, double time) const
{
    ++channel.delivered;
    channel.gaps += time - channel.lastTime > _interval + clockResolution;
    channel.repeats += time <= channel.lastTime;
    channel.lastTime = time;
}

bool StreamCount::readStatistics(const QString &statistics)
{
    bool isComplete = true;
    for (std::size_t i = 0; i < _channels.size(); ++i) {
        const QRegularExpression row(QStringLiteral("channel %1: (\\d+)").arg(i));
        const QRegularExpressionMatch match = row.match(statistics);
        isComplete &= match.hasMatch();
        if (match.hasMatch())
            _channels[i].sent = match.captured(1).toLongLong();
    }
    return isComplete;
}

qint64 StreamCount::delivered() const
{
    qint64 sum = 0;
    for (const Channel &channel : _channels)
        sum += channel.delivered;
    return sum;
}

qint64 StreamCount::sent() const
{
    qint64 sum = 0;
    for (const Channel &channel : _channels)
        sum += channel.sent;
    return sum;
}

qint64 StreamCount::faults() const
{
    qint64 sum = 0;
    for (const Channel &channel : _channels)
        sum += std::abs(channel.sent - channel.delivered) + channel.gaps + channel.repeats;
    return sum;
}

QString StreamCount::text() const
{
    QString lines;
    for (std::size_t i = 0; i < _channels.size(); ++i) {
        const Channel &channel = _channels[i];
        lines += QStringLiteral("channel %1: %2 sent, %3 delivered, %4 gaps, %5 repeats\n")
                     .arg(i)
                     .arg(channel.sent)
                     .arg(channel.delivered)
                     .arg(channel.gaps)
                     .arg(channel.repeats);
    }
    return lines;
}
