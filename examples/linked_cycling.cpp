// SPDX-License-Identifier: MIT
// The same with a battery of about 4 Ah, whose current four channels of a battery cycler carry in parallel. What is
// measured is that of the whole battery: the channels' currents and charges are added up. A cycler counts the charge of
// the samples that it reports; with two of them a second none is left out.

#include "BatteryCycling.h"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    return runCycling(4.0, 0.5, {0, 1, 2, 3});
}
