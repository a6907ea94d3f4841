// SPDX-License-Identifier: MIT
// Charges and discharges a battery of about 1 Ah three times, beginning with an empty one; prints capacities and
// coulombic efficiency of each cycle.

#include "BatteryCycling.h"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    return runCycling(0.5, 10.0);
}
