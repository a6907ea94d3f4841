// SPDX-License-Identifier: MIT
// Differential pulse voltammetry, reduced to the difference current of each pulse; prints potential and difference.

#include "ExperimentRun.h"

#include <VekDataManipulator.h>
#include <VekDiffPulseVoltammetryElement.h>
#include <VekExperiment.h>

#include <QCoreApplication>

#include <iostream>
#include <optional>

namespace {

/// Prints a row for each pulse, once the samples of its last level have all come.
class PulseTable
{
public:
    explicit PulseTable(const VekDiffPulseVoltammetryElement &element) : _manipulator(element) {}

    void add(const VekDCData &data)
    {
        _manipulator.loadPrimaryData(data);
        if (_manipulator.isPulseCompleted())
            _pulse =
                Pulse{_manipulator.getBaseVoltage(), _manipulator.getPulseCurrent() - _manipulator.getBaseCurrent()};
        else
            finish();
    }

    void finish()
    {
        if (_pulse)
            std::cout << _pulse->voltage << ',' << _pulse->difference << '\n';
        _pulse.reset();
    }

private:
    struct Pulse {
        double voltage;
        double difference;
    };

    VekDataManipulator _manipulator;
    std::optional<Pulse> _pulse;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);

    VekDiffPulseVoltammetryElement element(-0.1, 0.5, 0.005, 0.025, 0.05, 0.2); // four volts, then seconds
    VekExperiment experiment;
    experiment.appendElement(element, 1);

    PulseTable table(element);
    RunObservers observers;
    observers.onSample = [&table](const VekDCData &data) { table.add(data); };
    const int result = runExperiment(experiment, "Base Voltage / V,Difference Current / A", observers);
    table.finish();
    return result;
}
