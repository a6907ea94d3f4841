// SPDX-License-Identifier: MIT
// Three cycles at 100 mV/s around the potential of a couple in solution; prints the voltammogram as CSV.

#include "ExperimentRun.h"

#include <VekCyclicVoltammetryElement.h>
#include <VekExperiment.h>

#include <QCoreApplication>

#include <iostream>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);

    VekCyclicVoltammetryElement element(-0.1, 0.5, -0.1, -0.1, 0.1, 0.01); // four volts, V/s, s
    element.setNumberOfCycles(3);
    element.setQuietTime(2.0);
    VekExperiment experiment;
    experiment.appendElement(element, 1);

    int cycle = 0;
    RunObservers observers;
    observers.onStep = [&cycle](const VekExperimentNode &node) {
        cycle = node.substepNumber; // 0 until the first vertex; each return to it begins another
    };
    observers.onSample = [&cycle](const VekDCData &data) {
        std::cout << data.timestamp << ',' << data.workingElectrodeVoltage << ',' << data.current << ',' << cycle
                  << '\n';
    };
    return runExperiment(experiment, "Test Time / s,Voltage / V,Current / A,Cycle Count / 1", observers);
}
