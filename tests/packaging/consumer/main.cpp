// SPDX-License-Identifier: MIT
// A client outside the tree: touches each public class that a first program needs, and no port.
#include <VekConstantCurrentElement.h>
#include <VekDeviceTracker.h>
#include <VekExperiment.h>
#include <VekInstrumentHandler.h>

#include <QCoreApplication>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    VekConstantCurrentElement element(1e-3, 0.1, 10.0);
    VekExperiment experiment;
    if (!experiment.appendElement(element, 1))
        return 1;
    const VekInstrumentHandler &nobody = VekDeviceTracker::Instance()->getInstrumentHandler(QStringLiteral("nobody"));
    const VekErrorCode result = nobody.uploadExperimentToChannel(0, experiment);
    return result == VekErrorCode::DeviceNotFound ? 0 : 1;
}
