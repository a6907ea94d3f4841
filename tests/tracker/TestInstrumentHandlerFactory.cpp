// SPDX-License-Identifier: MIT
#include "tracker/VekInstrumentHandlerFactoryPrivate.h"

#include "handlers/GaleInstrumentHandler.h"
#include "handlers/MainInstrumentHandler.h"
#include "session/AdmittedInstrument.h"
#include "session/InstrumentInfo.h"
#include "support/TestMain.h"

#include <QPointer>

namespace {

InstrumentInfo infoOf(HardwareModel_t model, const QString &port)
{
    InstrumentInfo info;
    info.channelCount = 2;
    info.hardware.hwModel = model;
    info.comPort = port;
    info.deviceName = "X";
    for (int channel = 0; channel < info.channelCount; ++channel)
        info.calibration.append(CalibrationData());
    return info;
}

/// Handlers live on threads of their own.
void discard(VekInstrumentHandlerPrivate *handler)
{
    const QPointer<QObject> alive(handler);
    handler->deleteLater();
    QTRY_VERIFY(!alive);
}

} // namespace

class TestInstrumentHandlerFactory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theModelDecides_data();
    void theModelDecides();
    void aMainLineHandlerIsStartedUp();
    void aGaleHandlerIsReturnedAtOnce();
    void aHandlerWithoutPortIsReturned();

private:
    VekInstrumentHandlerFactoryPrivate _factory;
};

void TestInstrumentHandlerFactory::theModelDecides_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<bool>("isGale");
    QTest::newRow("obsolete") << 0 << false;
    QTest::newRow("one before the Gale") << 17 << false;
    QTest::newRow("Gale") << 18 << true;
    QTest::newRow("one behind it") << 19 << false;
    QTest::newRow("unknown") << 200 << false;
}

void TestInstrumentHandlerFactory::theModelDecides()
{
    QFETCH(int, model);
    QFETCH(bool, isGale);
    AdmittedInstrument instrument;
    VekInstrumentHandlerPrivate *handler = makeInstrumentHandler(infoOf(HardwareModel_t(model), instrument.portName()));
    QCOMPARE(qobject_cast<GaleInstrumentHandler *>(handler) != nullptr, isGale);
    QCOMPARE(qobject_cast<MainInstrumentHandler *>(handler) != nullptr, !isGale);
    discard(handler);
}

void TestInstrumentHandlerFactory::aMainLineHandlerIsStartedUp()
{
    AdmittedInstrument instrument;
    VekInstrumentHandlerPrivate *handler =
        _factory.createInstrumentHandler(infoOf(HardwareModel_t::Cedar_2_0, instrument.portName()));
    QVERIFY(handler->isConnected());
    QCOMPARE(instrument.count(PC_CHANNEL_LIMITS), 2); // part of the start-up
    discard(handler);
}

void TestInstrumentHandlerFactory::aGaleHandlerIsReturnedAtOnce()
{
    AdmittedInstrument instrument;
    VekInstrumentHandlerPrivate *handler =
        _factory.createInstrumentHandler(infoOf(HardwareModel_t::Gale, instrument.portName()));
    QVERIFY(handler->isConnected());
    QTRY_COMPARE(instrument.count(PC_PING), 1);
    QCOMPARE(instrument.count(PC_CHANNEL_LIMITS), 0);
    discard(handler);
}

void TestInstrumentHandlerFactory::aHandlerWithoutPortIsReturned()
{
    VekInstrumentHandlerPrivate *handler =
        _factory.createInstrumentHandler(infoOf(HardwareModel_t::Cedar_2_0, "/dev/pts/no-such-port"));
    QTRY_VERIFY(!handler->isConnected());
    discard(handler);
}

NIMBRELLE_TEST_MAIN(TestInstrumentHandlerFactory)
#include "TestInstrumentHandlerFactory.moc"
