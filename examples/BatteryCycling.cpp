// SPDX-License-Identifier: MIT
#include "BatteryCycling.h"

#include "ExperimentRun.h"

#include <VekConstantCurrentElement.h>
#include <VekConstantPotElement.h>
#include <VekExperiment.h>
#include <VekOpenCircuitElement.h>

#include <iostream>

namespace {

/// Sums what went into the cell and what came out of it, and prints a row for each cycle.
class CapacityTable
{
public:
    void beginStep(const VekExperimentNode &node)
    {
        if (node.cycleNumber != _cycle)
            finishCycle();
        _cycle = node.cycleNumber;
    }

    void add(const VekDCData &data)
    {
        const double moved = data.cumulativeChargeNet - _lastCharge;
        _lastCharge = data.cumulativeChargeNet;
        (moved > 0.0 ? _charged : _discharged) += moved;
    }

    void finishCycle()
    {
        if (_charged > 0.0)
            std::cout << _cycle << ',' << milliampereHours(_charged) << ',' << milliampereHours(-_discharged) << ','
                      << -100.0 * _discharged / _charged << '\n';
        _charged = _discharged = 0.0;
    }

private:
    static double milliampereHours(double coulombs) { return coulombs / 3.6; }

    int _cycle = 0;
    double _lastCharge = 0.0; // coulombs
    double _charged = 0.0;
    double _discharged = 0.0; // negative
};

VekExperiment cyclingExperiment(double current, double samplingInterval)
{
    VekConstantCurrentElement charge(current, samplingInterval, 3 * 3600.0);
    charge.setMaxVoltage(4.2);
    VekConstantPotElement hold(4.2, samplingInterval, 3600.0);
    hold.setMinAbsoluteCurrent(0.1 * current);
    VekOpenCircuitElement rest(600.0, 30.0);
    VekConstantCurrentElement discharge(-current, samplingInterval, 3 * 3600.0);
    discharge.setMinVoltage(3.0);

    VekExperiment cycle;
    cycle.appendElement(charge, 1);
    cycle.appendElement(hold, 1);
    cycle.appendElement(rest, 1);
    cycle.appendElement(discharge, 1);
    cycle.appendElement(rest, 1);
    VekExperiment experiment;
    experiment.appendSubExperiment(cycle, 3);
    return experiment;
}

} // namespace

int runCycling(double current, double samplingInterval, const std::vector<unsigned char> &linkedChannels)
{
    CapacityTable table;
    RunObservers observers;
    observers.onStep = [&table](const VekExperimentNode &node) { table.beginStep(node); };
    observers.onSample = [&table](const VekDCData &data) { table.add(data); };
    const int result =
        runExperiment(cyclingExperiment(current, samplingInterval),
                      "Cycle Count / 1,Charge Capacity / mAh,Discharge Capacity / mAh,Coulombic Efficiency / %",
                      observers, linkedChannels);
    table.finishCycle();
    return result;
}
