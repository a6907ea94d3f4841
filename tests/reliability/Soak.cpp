// SPDX-License-Identifier: MIT
#include "StreamCount.h"

#include "support/ProcessFigures.h"
#include "support/TestMain.h"

#include <QCommandLineParser>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int instrumentCount = 4;
constexpr int channelsEach = 16;
constexpr double interval = 0.01; // seconds of instrument time
constexpr int sampleMs = 2000;    // between two looks at the memory
constexpr int drainMs = 300000;   // for what is on its way when the channels are stopped
/// Megabytes of the heap. The 12 MB that may be on their way from each instrument are not on their way at rest;
/// half an hour at the preset speed brings 46 million samples, so that one byte for each would show.
constexpr double mostGrowth = 32.0;

struct Source {
    std::unique_ptr<ConnectedInstrument> instrument;
    std::unique_ptr<StreamCount> streams;
};

std::vector<Source> startSources(const QString &speed)
{
    std::vector<Source> sources;
    for (int i = 0; i < instrumentCount; ++i) {
        auto instrument = std::make_unique<ConnectedInstrument>(
            QStringLiteral("Soak-%1").arg(i + 1), QStringList{"--channels", QString::number(channelsEach), "--speed",
                                                              speed, "--cell", "resistor:R=1000", "--stats"});
        if (!instrument->isReady())
            return {};
        auto streams = std::make_unique<StreamCount>(*instrument, channelsEach, interval);
        sources.push_back({std::move(instrument), std::move(streams)});
    }
    return sources;
}

qint64 deliveredBy(const std::vector<Source> &sources)
{
    qint64 sum = 0;
    for (const Source &source : sources)
        sum += source.streams->delivered();
    return sum;
}

/// Streams for so long and prints a line each minute. @return the most resident memory that was seen, in megabytes
double soak(const std::vector<Source> &sources, double minutes)
{
    double peak = 0.0;
    std::printf("%8s %14s %12s %8s\n", "minute", "samples", "resident MB", "threads");
    QElapsedTimer clock;
    clock.start();
    for (int minute = 0; clock.elapsed() < minutes * 60000.0;) {
        QTest::qWait(sampleMs);
        const double memory = ProcessFigures::residentMegabytes();
        peak = std::max(peak, memory);
        if (clock.elapsed() < (minute + 1) * 60000)
            continue;
        std::printf("%8d %14lld %12.1f %8d\n", ++minute, deliveredBy(sources), memory, ProcessFigures::threads());
        std::fflush(stdout);
    }
    return peak;
}

/// The heap in use, in megabytes, when the handlers are there and no sample is on its way.
double heapAtRest()
{
    return double(ProcessFigures::heapBytes()) / 1e6;
}

/// Ends everything and prints what each side has counted. @return whether the counts agree
bool settle(const std::vector<Source> &sources)
{
    bool isGood = true;
    std::printf("\n%-12s %8s %14s %14s %8s\n", "instrument", "channels", "sent", "delivered", "faults");
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const StreamCount &streams = *sources[i].streams;
        const bool hasFinished = sources[i].streams->finish(drainMs);
        isGood &= hasFinished && streams.faults() == 0 && streams.delivered() > 0;
        std::printf("Soak-%-7zu %8d %14lld %14lld %8lld%s\n", i + 1, channelsEach, streams.sent(), streams.delivered(),
                    streams.faults(), hasFinished ? "" : "  (did not end)");
    }
    return isGood;
}

int run(const QString &speed, double minutes)
{
    const std::vector<Source> sources = startSources(speed);
    if (sources.empty())
        return 2;
    const double heapBefore = heapAtRest();
    for (const Source &source : sources) {
        if (!source.streams->start(StreamCount::steadyCurrent(interval)))
            return 2;
    }
    const double peak = soak(sources, minutes);
    bool isComplete = true;
    for (const Source &source : sources)
        isComplete &= source.streams->stop(drainMs);
    const double growth = heapAtRest() - heapBefore; // what queues held on the way is not growth
    isComplete &= settle(sources);
    const bool isFlat = growth < mostGrowth;
    std::printf("\n%s; heap at rest %s (%+.2f MB), at most %.0f MB were resident\n",
                isComplete ? "nothing was lost" : "SAMPLES WERE LOST", isFlat ? "as before" : "GREW", growth, peak);
    return isComplete && isFlat ? 0 : 1;
}

} // namespace

/// Four simulated instruments with sixteen channels each, for a long time. Exit code 0 when nothing was lost and memory
/// was given back, 1 when not, 2 when it could not be started.
int main(int argc, char **argv)
{
    const IsolatedHome home;
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({"minutes", "How long to stream.", "N", "30"});
    parser.addOption({"speed", "Instrument time against wall time, 1 to 1000, or max.", "SPEED", "4"});
    parser.process(application);
    bool isNumber = false;
    const double minutes = parser.value("minutes").toDouble(&isNumber);
    if (!isNumber || minutes <= 0.0)
        parser.showHelp(2);
    return run(parser.value("speed"), minutes);
}
