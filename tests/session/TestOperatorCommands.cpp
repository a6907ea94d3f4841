// SPDX-License-Identifier: MIT
#include "VekCompRange.h"
#include "session/InstrumentOperator.h"
#include "simulator/PseudoTerminal.h"
#include "support/TestMain.h"

#include <functional>

namespace {

using Call = std::function<void(InstrumentOperator &)>;

const QByteArray pingFrame = QByteArray::fromHex("eeff41000000");

} // namespace
Q_DECLARE_METATYPE(Call)

/// The bytes that each command method puts on the wire.
class TestOperatorCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void aNewOperatorPings();
    void aCommandIsThisFrame_data();
    void aCommandIsThisFrame();
    void aCommandIsThatFrameEvenIfNobodyAnswers_data();
    void aCommandIsThatFrameEvenIfNobodyAnswers();
    void anEmptyUploadIsPingBeginAndEnd();
    void commandsThatWaitForNothingSaySo();
    void cleanupTestCase();

private:
    void compareFrame();

    PseudoTerminal _terminal;
    QByteArray _received;
    std::unique_ptr<InstrumentOperator> _operator;
};

void TestOperatorCommands::initTestCase()
{
    connect(&_terminal, &PseudoTerminal::received, this, [this](const QByteArray &bytes) { _received += bytes; });
    _operator = std::make_unique<InstrumentOperator>(_terminal.portName());
    QVERIFY(_operator->isConnected());
}

void TestOperatorCommands::cleanupTestCase()
{
    _operator.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // its link, which must not outlive main()
}

void TestOperatorCommands::aNewOperatorPings()
{
    QTRY_COMPARE(_received, pingFrame);
}

void TestOperatorCommands::aCommandIsThisFrame_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("frame");
    const auto row = [](const char *name, const Call &call, const char *frame) {
        QTest::newRow(name) << call << QByteArray(frame);
    };
    using Op = InstrumentOperator;
    // clang-format off
    row("start",               [](Op &op) { op.startExperiment(3); },                        "eeff4d03 0000");
    row("stop",                [](Op &op) { op.stopExperiment(3); },                         "eeff4e03 0000");
    row("pause",               [](Op &op) { op.pauseExperiment(3); },                        "eeff4f03 0000");
    row("resume",              [](Op &op) { op.resumeExperiment(3); },                       "eeff5003 0000");
    row("skip",                [](Op &op) { op.skipExperimentStep(3); },                     "eeff5c03 0000");
    row("soft reset",          [](Op &op) { op.softReset(255); },                            "eeff58ff 0000");
    row("default sampling",    [](Op &op) { op.initDefaultSampling(3); },                    "eeff5103 0000");
    row("manual start",        [](Op &op) { op.startManualExperiment(3); },                  "eeff5203 0000");
    row("raw current",         [](Op &op) { op.setManualGalvanoSetpoint(2, -2, 9); },        "eeff5402 0500 feffffff 09");
    row("raw voltage",         [](Op &op) { op.setManualPotentioSetpoint(2, 0x01020304, 1); }, "eeff5502 0500 04030201 01");
    row("current",             [](Op &op) { op.setManualGalvanoSetpoint(2, -0.5f); },        "eeff7502 0400 000000bf");
    row("voltage",             [](Op &op) { op.setManualPotentioSetpoint(2, 2.5f); },        "eeff7602 0400 00002040");
    row("open circuit",        [](Op &op) { op.setManualOcp(2); },                           "eeff5602 0000");
    row("voltage range",       [](Op &op) { op.setVoltageRangingMode(2, voltageRange_t::Auto); }, "eeff6c02 0100 05");
    row("current range",       [](Op &op) { op.setCurrentRangingMode(2, currentRange_t::Auto); }, "eeff5702 0100 0a");
    row("current range record",[](Op &op) { op.setCurrentRangingMode(2, Manual::RangingMode{7}); }, "eeff5702 0100 07");
    row("compensation range",  [](Op &op) { op.setCompRange(1, VekCompRange("slow", 3, 8)); }, "eeff5901 0200 0308");
    row("IR compensation",     [](Op &op) { op.setIRCompSettings(1, 2.5f, 0.5f); },          "eeff5d01 0800 00002040 0000003f");
    row("load impedance",      [](Op &op) { op.setFFImpedance(1, 2.5f); },                   "eeff7c01 0400 00002040");
    row("link 1 and 3",        [](Op &op) { op.setChannelsLink({1, 3}, true); },             "eeff6dff 0500 0a000000 01");
    row("unlink 0, 33 and 31", [](Op &op) { op.setChannelsLink({0, 33, 31}, false); },       "eeff6dff 0500 03000080 00");
    row("fan mode",            [](Op &op) { op.SetFanMode(FAN_VARIABLE); },                  "eeff7e00 0100 01");
    row("fan speed",           [](Op &op) { op.SetFanSpeed(0.5f); },                         "eeff7700 0400 0000003f");
    row("meta data",           [](Op &op) { op.readMetaData(); },                            "eeff5f00 0000");
    row("first memory block",  [](Op &op) { op.readMemoryData(true); },                      "eeff6000 0100 01");
    row("next memory block",   [](Op &op) { op.readMemoryData(false); },                     "eeff6000 0100 00");
    row("erase memory",        [](Op &op) { op.eraseMemoryData(); },                         "eeff6100 0000");
    row("ground or float",     [](Op &op) { op.requestGroundFloatState(); },                 "eeff6a00 0000");
    row("SD card header",      [](Op &op) { op.requestSDcardCalibrationHeader(); },          "eeff6600 0000");
    row("SD card data",        [](Op &op) { op.requestNextCalibrationData(); },              "eeff6700 0000");
    row("flash calibration",   [](Op &op) { op.requesFlashCalibrationData(5); },             "eeff4305 0000");
    row("configuration",       [](Op &op) { op.readConfiguration(4); },                      "eeff7204 0000");
    row("ping",                [](Op &op) { op.pingToDevice(); },                            "eeff4100 0000");
    row("write SD header",     [](Op &op) { op.writeCalFileHeaderToSDCard(6, "\x11\x22"); }, "eeff6406 0200 1122");
    row("write SD data",       [](Op &op) { op.calFileDataAppendToSDCard(6, "\x33"); },      "eeff6506 0100 33");
    row("write hardware data", [](Op &op) { op.writeHardwareDataToDevice(0, "\x23" "A\n"); }, "eeff4600 0300 23410a");
    row("unframed bytes",      [](Op &op) { op.sendCommandToInstr("\x01\x02\x03"); },        "010203");
    // clang-format on
}

void TestOperatorCommands::aCommandIsThisFrame()
{
    compareFrame();
}

void TestOperatorCommands::aCommandIsThatFrameEvenIfNobodyAnswers_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QByteArray>("frame");
    const auto row = [](const char *name, const Call &call, const char *frame) {
        QTest::newRow(name) << call << QByteArray(frame);
    };
    using Op = InstrumentOperator;
    // clang-format off
    row("manual sampling",  [](Op &op) { QVERIFY(!op.setManualSamplingParams(2, "\x01\x02\x03\x04")); }, "eeff5302 0400 01020304");
    row("limits",           [](Op &op) { QVERIFY(!op.setChannelLimits(2, -0.5, 0.5, -2.5, 2.5, 1.0)); },
                            "eeff7d02 1400 000000bf 0000003f 000020c0 00002040 0000803f");
    row("device status",    [](Op &op) { QVERIFY(!op.readDeviceStatus()); },                              "eeff4200 0000");
    row("write calibration",[](Op &op) { op.writeCalDataToDevice(1, "\x44\x55"); },                       "eeff4401 0200 4455");
    // clang-format on
}

void TestOperatorCommands::aCommandIsThatFrameEvenIfNobodyAnswers()
{
    compareFrame();
}

void TestOperatorCommands::compareFrame()
{
    QFETCH(Call, call);
    QFETCH(QByteArray, frame);
    _received.clear();
    call(*_operator);
    QTRY_COMPARE(_received.toHex(), QByteArray::fromHex(frame).toHex());
}

void TestOperatorCommands::anEmptyUploadIsPingBeginAndEnd()
{
    _received.clear();
    QVERIFY(_operator->uploadExperimentToInstrument(7, {}, HardwareModel_t::Alder_2_5));
    QTRY_COMPARE(_received.toHex(), QByteArray("eeff41000000" // ping
                                               "eeff4a0702000000"
                                               "eeff4b070000"));
}

void TestOperatorCommands::commandsThatWaitForNothingSaySo()
{
    QVERIFY(_operator->startExperiment(0));
    QVERIFY(_operator->stopExperiment(0));
    QVERIFY(_operator->setManualOcp(0));
    QVERIFY(_operator->SetFanMode(FAN_FIXED));
    QVERIFY(_operator->eraseMemoryData());
}

NIMBRELLE_TEST_MAIN(TestOperatorCommands)
#include "TestOperatorCommands.moc"
