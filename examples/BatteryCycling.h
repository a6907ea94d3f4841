// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

/**
 * Charges a battery to 4.2 V and discharges it to 3 V three times, and prints capacities and coulombic efficiency of each
 * cycle. Needs a QCoreApplication.
 *
 * @param current          amperes
 * @param samplingInterval seconds, while a current flows
 * @param linkedChannels   as runExperiment() takes them
 * @return what main() should return
 */
int runCycling(double current, double samplingInterval, const std::vector<unsigned char> &linkedChannels = {});
