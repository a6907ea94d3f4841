// SPDX-License-Identifier: MIT
#pragma once

#include "Nodes.h"

#include "simulator/AcFrontEnd.h"
#include "simulator/NodeRunner.h"

#include <QList>
#include <QPair>

/// Runs a node list on a cell to its end and keeps all that is reported.
class RecordingRun : public RunObserver
{
public:
    RecordingRun(std::unique_ptr<Cell> cell, const QVector<ExpNode_t> &nodes)
        : regulator(std::move(cell)), runner(regulator, *this, nodes)
    {
    }

    void run()
    {
        runner.start(0);
        while (!runner.isOver() && !runner.isPaused())
            runner.step();
    }
    void stepUntil(double seconds)
    {
        while (!runner.isOver() && double(runner.nextTick()) <= seconds * ticksPerSecond)
            runner.step();
    }
    QList<double> sampleTimes() const
    {
        QList<double> times;
        for (const RunSample &sample : samples)
            times += double(sample.tick) / ticksPerSecond;
        return times;
    }

    void onNodeBegin(quint64, int index) override { begun += index; }
    void onSample(const RunSample &sample) override { samples += sample; }
    void onAcRecord(const RunSample &sample, const AcPlan &plan,
                    const std::vector<std::complex<double>> &impedances) override
    {
        records += AcMeasurement{plan, sample.tick, sample.reading, impedances, 1.0, 1.0};
    }
    void onNodeDone(quint64, int index) override { done += index; }
    void onNodeSkipped() override { ++skipped; }
    void onRunDone(quint64 tick, ExpStopType_t reason) override
    {
        endTick = tick;
        stopType = reason;
        ++ends;
    }

    Regulator regulator;
    NodeRunner runner;
    QList<int> begun;
    QList<int> done;
    QVector<RunSample> samples;
    QVector<AcMeasurement> records;
    int skipped = 0;
    int ends = 0;
    quint64 endTick = 0;
    ExpStopType_t stopType = ExpStopType_t(0);
};
