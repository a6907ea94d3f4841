// SPDX-License-Identifier: MIT
// The current at a constant potential, as it comes and smoothed; behind the last row the hum of the mains in it.

#include "ExperimentRun.h"

#include <VekConstantPotElement.h>
#include <VekExperiment.h>
#include <VekFourier.h>
#include <VekLowPass.h>

#include <QCoreApplication>

#include <complex>
#include <iostream>
#include <numeric>
#include <vector>

namespace {

constexpr double interval = 0.002; // seconds
constexpr double mains = 50.0;     // hertz
constexpr double corner = 5.0;     // hertz

/// Amperes.
double humIn(std::vector<double> currents)
{
    const double mean = std::accumulate(currents.begin(), currents.end(), 0.0) / double(currents.size());
    for (double &current : currents)
        current -= mean;
    return std::abs(VekFourier::amplitude(currents, 1.0 / (mains * interval)));
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);

    VekConstantPotElement element(0.1, interval, 2.0); // volts, seconds between samples, seconds
    VekExperiment experiment;
    experiment.appendElement(element, 1);

    VekLowPass lowPass;
    lowPass.setUp(4, 1.0 / interval, corner);
    std::vector<double> currents;
    RunObservers observers;
    observers.onSample = [&](const VekDCData &sample) {
        currents.push_back(sample.current);
        std::cout << sample.timestamp << ',' << sample.current << ',' << lowPass.filter(sample.current) << '\n';
    };
    const int code = runExperiment(experiment, "Test Time / s,Current / A,Smoothed Current / A", observers);
    if (!currents.empty())
        std::cerr << mains << " Hz: " << humIn(currents) << " A\n";
    return code;
}
