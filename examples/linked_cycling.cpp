// The same with a battery of about 4 Ah, whose current four channels of a battery cycler carry in parallel. What is
// measured is that of the whole battery: the channels' currents and charges are added up.

#include "BatteryCycling.h"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    return runCycling(2.0, {0, 1, 2, 3});
}
