#include "VekConstantCurrentElement.h"
#include "VekDeviceTracker.h"
#include "VekExperiment.h"
#include "VekInstrumentHandler.h"
#include "session/AdmittedInstrument.h"
#include "support/TestMain.h"

#include <cstdio>

namespace {

/// Names of all threads, the main one included.
QStringList threadsOfProcess()
{
    QStringList names;
    for (const QString &task : QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name("/proc/self/task/" + task + "/comm");
        if (name.open(QIODevice::ReadOnly))
            names << QString::fromUtf8(name.readAll()).trimmed();
    }
    return names;
}

/// When to quit: soon after this command of the host.
struct Moment {
    const char *name;
    PCcommand_t command;
};

constexpr Moment moments[] = {
    {"handshake", PC_READ_CHANNEL_COUNT},
    {"start-up", PC_READ_DEVICE_STATUS},
    {"upload", PC_NODE_APPEND},
    {"run", PC_EXPERIMENT_START},
};

void stream(AdmittedInstrument &instrument)
{
    auto *timer = new QTimer(&instrument);
    QObject::connect(timer, &QTimer::timeout, &instrument,
                     [&instrument] { instrument.send(NT_DC_DATA, 0, QByteArray(44, '\0')); });
    timer->start(1);
}

void quitAt(const Moment &moment, AdmittedInstrument &instrument)
{
    instrument.on(moment.command, [&instrument](const FakeInstrument::Command &) {
        stream(instrument);
        QTimer::singleShot(50, qApp, &QCoreApplication::quit);
    });
}

void useInstrument(const QString &name)
{
    VekExperiment experiment;
    VekConstantCurrentElement element(0.001, 1.0, 10.0);
    experiment.appendElement(element, 1);
    const VekInstrumentHandler &handler = VekDeviceTracker::Instance()->getInstrumentHandler(name);
    if (handler.uploadExperimentToChannel(0, experiment) == VekErrorCode::Success)
        handler.startUploadedExperiment(0);
}

/// One that has been waited for may still be on its way out of the kernel.
QStringList threadsThatStay()
{
    for (int wait = 0; wait < 100 && threadsOfProcess().size() > 1; ++wait)
        QThread::msleep(10);
    return threadsOfProcess();
}

/// @return what runs when the application object has gone and the instrument is still plugged in
QStringList runClient(int argc, char **argv, const Moment &moment)
{
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    AdmittedInstrument instrument(HardwareModel_t::Cedar_2_0, "Cedar-1");
    instrument.reply(PC_NODE_APPEND, NT_NODE_APPENDED, QByteArray(1, '\0'));
    quitAt(moment, instrument);
    VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    QObject::connect(tracker, &VekDeviceTracker::newDeviceConnected, application.get(), &useInstrument,
                     Qt::QueuedConnection);
    QTimer::singleShot(0, tracker, [&] { tracker->connectToDeviceOnComPort(instrument.portName()); });
    QCoreApplication::exec();
    application.reset();
    return threadsThatStay();
}

} // namespace

/**
 * A client that quits in the middle of something: `QuittingClient MOMENT`. It fails if a thread outlives the application
 * object; a hang or a crash shows by itself.
 */
int main(int argc, char **argv)
{
    const IsolatedHome home;
    for (const Moment &moment : moments) {
        if (argc != 2 || qstrcmp(argv[1], moment.name) != 0)
            continue;
        const QStringList threadsBefore = threadsOfProcess();
        const QStringList threadsAfter = runClient(argc, argv, moment);
        std::printf("threads afterwards: %s\n", qPrintable(threadsAfter.join(", ")));
        return threadsAfter == threadsBefore ? 0 : 1;
    }
    return 2;
}
