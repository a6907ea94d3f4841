// SPDX-License-Identifier: MIT
#include "LinkedGroups.h"

#include "elements/NodeMakers.h"
#include "handlers/GaleInstrumentHandler.h"
#include "handlers/ListExperiment.h"
#include "session/InitialInformation.h"
#include "support/SimulatorProcess.h"
#include "support/TestMain.h"

#include <VekInstrumentHandler.h>

#include <cmath>
#include <complex>

namespace {

/// Both multi-sine nodes step their base from 0.5 Hz by factors of 5.5, to 457.5 Hz.
const std::vector<double> bases = {0.5, 2.75, 15.125, 83.1875, 457.53125};
const std::vector<int> tones = {2, 3, 4, 5, 6, 8};

std::shared_ptr<ListExperiment> oneNode(const ExpNode_t &hardwareNode)
{
    Node node = makeNode(int(hardwareNode.nodeType()), QStringLiteral("Multi-sine"), 1);
    node.hwNode = hardwareNode;
    return std::make_shared<ListExperiment>(ListExperiment{node});
}

} // namespace

/// Several tones at once, on a group of channels. No element of the public catalogue makes such a node.
class TestMultiTone : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void impedanceIsThatOfTheCell_data();
    void impedanceIsThatOfTheCell();
};

void TestMultiTone::impedanceIsThatOfTheCell_data()
{
    addLinkedGroups();
}

// A charge transfer of 10 ohms beside a double layer of 100 uF, behind 2 ohms.
void TestMultiTone::impedanceIsThatOfTheCell()
{
    QFETCH(Channels, channels);
    QFETCH(bool, bipolar);
    QFETCH(bool, galvanostatic);
    const SimulatorProcess simulator(
        {"--model", "Gale", "--channels", "4", "--speed", "max", "--cell", "randles:Rs=2,Rct=10,C=1e-4"});
    InstrumentInfo info;
    const auto shakesHands = [&] { // again, on a machine that is too busy to answer within the handshake's second
        info = InstrumentInfo();
        return InitialInformation::getBasicInfoSuccessfully(simulator.portName(), info) == VekErrorCode::Success;
    };
    QVERIFY(QTest::qWaitFor(shakesHands, 20000));
    GaleInstrumentHandler handler(info);
    VekInstrumentHandler device(&handler);
    QSignalSpy points(&device, &VekInstrumentHandler::activeACDataReady);
    QSignalSpy ends(&device, &VekInstrumentHandler::experimentStopped);
    QCOMPARE(bipolar ? device.setBipolarLinkedChannels(channels) : device.setLinkedChannels(channels), 0);
    const ExpNode_t node = galvanostatic ? Vek_Node_MultiSine_Current(0.0f, 1e-3f, 2, 0.0f)
                                         : Vek_Node_MultiSine_Voltage(0.0f, false, 5e-3f, 2, 0.0f);
    QCOMPARE(handler.uploadExperimentToChannel(channels.back(), oneNode(node)), VekErrorCode::Success);
    QCOMPARE(handler.startUploadedExperiment(channels.back()), VekErrorCode::Success);
    QVERIFY(ends.wait(60000));
    QCOMPARE(ends.at(0).at(1).toString(), QStringLiteral("Experiment completed"));

    QCOMPARE(points.size(), int(bases.size() * tones.size()));
    for (int i = 0; i < points.size(); ++i) {
        QCOMPARE(points.at(i).at(0).toInt(), int(channels.back()));
        const auto point = points.at(i).at(1).value<VekACData>();
        const double frequency = bases[std::size_t(i) / tones.size()] * tones[std::size_t(i) % tones.size()];
        QVERIFY(std::abs(point.frequency / frequency - 1.0) < 1e-6);
        const std::complex<double> expected = 2.0 + 1.0 / std::complex<double>(0.1, 2.0 * M_PI * frequency * 1e-4);
        const double error = std::abs(std::complex<double>(point.realImpedance, point.imagImpedance) - expected);
        QVERIFY2(error < 0.005 * std::abs(expected),
                 qPrintable(QStringLiteral("%1 Hz: %2 ohms off %3").arg(frequency).arg(error).arg(std::abs(expected))));
    }
}

NIMBRELLE_TEST_MAIN(TestMultiTone)
#include "TestMultiTone.moc"
