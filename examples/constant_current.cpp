// SPDX-License-Identifier: MIT
// Drives 1 mA through the cell on channel 0 for ten seconds and prints the samples as CSV.
// usage: constant_current PORT; exit codes: 0 done, 2 usage, 3 no connection, 4 refused or stopped by the instrument

#include <VekConstantCurrentElement.h>
#include <VekDeviceTracker.h>
#include <VekExperiment.h>
#include <VekInstrumentHandler.h>

#include <QCoreApplication>

#include <iostream>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2)
        return std::cerr << "usage: constant_current PORT\n", 2;
    VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    const auto start = [&](const QString &name) {
        const VekInstrumentHandler *handler = &tracker->getInstrumentHandler(name);
        QObject::connect(
            handler, &VekInstrumentHandler::activeDCDataReady, &application, [](unsigned char, const VekDCData &data) {
                std::cout << data.timestamp << ',' << data.workingElectrodeVoltage << ',' << data.current << '\n';
            });
        QObject::connect(handler, &VekInstrumentHandler::experimentStopped, &application,
                         [](unsigned char, const QString &reason) {
                             std::cerr << qPrintable(reason) << '\n';
                             QCoreApplication::exit(reason == "Experiment completed" ? 0 : 4);
                         });

        std::cout << "Test Time / s,Voltage / V,Current / A\n";
        VekExperiment experiment;
        VekConstantCurrentElement element(0.001, 0.1, 10.0); // amperes, seconds between samples, seconds
        experiment.appendElement(element, 1);
        VekErrorCode error = handler->uploadExperimentToChannel(0, experiment);
        if (error == VekErrorCode::Success)
            error = handler->startUploadedExperiment(0);
        if (error != VekErrorCode::Success) {
            std::cerr << qPrintable(error.message()) << '\n';
            QCoreApplication::exit(4);
        }
    };
    // Queued, so that the experiment starts in the event loop below.
    QObject::connect(tracker, &VekDeviceTracker::newDeviceConnected, &application, start, Qt::QueuedConnection);
    QObject::connect(tracker, &VekDeviceTracker::deviceDisconnected, &application, [] { QCoreApplication::exit(3); });

    const VekErrorCode error = tracker->connectToDeviceOnComPort(argv[1]);
    if (error != VekErrorCode::Success)
        return std::cerr << qPrintable(error.message()) << '\n', 3;
    return application.exec();
}
