// SPDX-License-Identifier: MIT
// An impedance spectrum at the open-circuit potential, from 100 kHz to 0.1 Hz; prints the points as CSV.

#include "ExperimentRun.h"

#include <VekEISPotentiostaticElement.h>
#include <VekExperiment.h>

#include <QCoreApplication>

#include <iostream>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);

    VekEISPotentiostaticElement element(1e5, 0.1, 10, 0.0, 0.01); // two hertz, points per decade, two volts
    element.setBiasVoltageVsOCP(true);
    VekExperiment experiment;
    experiment.appendElement(element, 1);

    RunObservers observers;
    observers.onImpedancePoint = [](const VekACData &point) {
        std::cout << point.frequency << ',' << point.realImpedance << ',' << point.imagImpedance << ','
                  << point.absoluteImpedance << ',' << point.phaseAngle << '\n';
    };
    return runExperiment(
        experiment,
        "Frequency / Hz,Real Impedance / ohm,Imaginary Impedance / ohm,Absolute Impedance / ohm,Phase / deg",
        observers);
}
