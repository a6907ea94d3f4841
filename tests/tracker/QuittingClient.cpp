// SPDX-License-Identifier: MIT
#include "VekConstantCurrentElement.h"
#include "VekDeviceTracker.h"
#include "VekExperiment.h"
#include "VekInstrumentHandler.h"
#include "session/AdmittedInstrument.h"
#include "support/TestMain.h"

#include <cstdio>
#include <thread>

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
    bool isInUpdate = false;
};

constexpr Moment moments[] = {
    {"ping", PC_PING},
    {"echo-test", PC_ECHO_TEST},
    {"handshake", PC_READ_CHANNEL_COUNT},
    {"calibration", PC_READ_FLASH_CAL},
    {"start-up", PC_READ_DEVICE_STATUS},
    {"upload", PC_NODE_APPEND},
    {"run", PC_EXPERIMENT_START},
    {"update-question", PC_READ_FIRMWARE_CHECKSUM, true},
    {"update-reset", PC_SOFT_RESET, true},
    {"update-unlock", PC_BOOT_UNLOCK, true},
    {"update-records", PC_BOOT_RECORD, true},
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
    instrument.on(moment.command, [&instrument, moment](const FakeInstrument::Command &) {
        if (!moment.isInUpdate)
            stream(instrument);
        QTimer::singleShot(50, qApp, &QCoreApplication::quit);
    });
    constexpr int longestMs = 20000;
    QTimer::singleShot(longestMs, qApp, [] { QCoreApplication::exit(1); }); // it did not come to that
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

/// Its firmware wants an update, which goes over its port.
void becomeOld(AdmittedInstrument &instrument)
{
    instrument.reply(PC_READ_FIRMWARE_CHECKSUM, NT_FIRMWARE_CHECKSUM, "old");
    for (const PCcommand_t command : {PC_BOOT_UNLOCK, PC_BOOT_PREPARE, PC_BOOT_RECORD})
        instrument.reply(command, Notifications_t(command));
}

/// One that has been waited for may still be on its way out of the kernel.
QStringList threadsThatStay()
{
    for (int wait = 0; wait < 100 && threadsOfProcess().size() > 1; ++wait)
        QThread::msleep(10);
    return threadsOfProcess();
}

/// What runs when an application object has gone and the instrument is still plugged in, and whether the moment had
/// come.
struct Outcome {
    QStringList threads;
    bool cameToMoment;
};

Outcome runClient(int argc, char **argv, const Moment &moment)
{
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    AdmittedInstrument instrument(moment.isInUpdate ? HardwareModel_t::Gale : HardwareModel_t::Cedar_2_0, "Quit-1");
    instrument.reply(PC_NODE_APPEND, NT_NODE_APPENDED, QByteArray(1, '\0'));
    if (moment.isInUpdate)
        becomeOld(instrument);
    quitAt(moment, instrument);
    VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    QObject::connect(tracker, &VekDeviceTracker::newDeviceConnected, application.get(), &useInstrument,
                     Qt::QueuedConnection);
    QTimer::singleShot(0, tracker, [&] {
        if (moment.isInUpdate)
            tracker->updateFirmwareOnComPort(instrument.portName());
        else
            tracker->connectToDeviceOnComPort(instrument.portName());
    });
    int updateNews = 0;
    QObject::connect(tracker, &VekDeviceTracker::firmwareUpdateNotification, application.get(), [&] { ++updateNews; });
    const bool cameToMoment = QCoreApplication::exec() == 0;
    application.reset();
    const bool isFlashing = moment.command == PC_BOOT_RECORD; // which is told
    return {threadsThatStay(), cameToMoment && (!isFlashing || updateNews > 0)};
}

} // namespace

/**
 * A client that quits in the middle of something: `QuittingClient MOMENT`. It fails if a thread outlives the application
 * object; a hang or a crash shows by itself. Then it does all of it again, under another application object.
 */
int main(int argc, char **argv)
{
    const IsolatedHome home;
    qputenv("NIMBRELLE_ALLOW_STAND_IN", "1");
    for (const Moment &moment : moments) {
        if (argc != 2 || qstrcmp(argv[1], moment.name) != 0)
            continue;
        std::thread([] {}).join(); // with the first one a sanitizer begins a thread of its own
        const QStringList threadsBefore = threadsOfProcess();
        for (int life = 1; life <= 2; ++life) {
            const Outcome outcome = runClient(argc, argv, moment);
            std::printf("life %d %s; threads afterwards: %s\n", life,
                        outcome.cameToMoment ? "came to its moment" : "did not come to its moment",
                        qPrintable(outcome.threads.join(", ")));
            if (!outcome.cameToMoment || outcome.threads != threadsBefore)
                return 1;
        }
        return 0;
    }
    return 2;
}
