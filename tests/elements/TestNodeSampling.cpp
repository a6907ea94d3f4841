// SPDX-License-Identifier: MIT
#include "elements/Node.h"
#include "elements/NodeMakers.h"
#include "nimbrellelibrary/NimbrelleLib.h"
#include "support/TestMain.h"

#include <algorithm>
#include <cstring>

/// How a wanted interval is shared between the instrument and the host.
class TestNodeSampling : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void splitsTheInterval_data();
    void splitsTheInterval();
    void readsTheIntervalOfSampledTypesOnly();
};

void TestNodeSampling::splitsTheInterval_data()
{
    QTest::addColumn<float>("wanted");
    QTest::addColumn<float>("longest");
    QTest::addColumn<float>("interval");
    QTest::addColumn<unsigned>("factor");
    QTest::newRow("ten times the longest") << 10.0f << 1.0f << 1.0f << 10u;
    QTest::newRow("as it is") << 0.3f << 1.0f << 0.3f << 1u;
    QTest::newRow("the longest itself") << 1.0f << 1.0f << 1.0f << 1u;
    QTest::newRow("not a multiple") << 2.5f << 1.0f << 2.5f / 3.0f << 3u;
    QTest::newRow("never zero") << 0.0f << 0.5f << 1e-5f << 1u;
    QTest::newRow("factor beyond 32 bits") << 1e10f << 1.0f << 1e10f / 4294967295.0f << 4294967295u;
}

void TestNodeSampling::splitsTheInterval()
{
    QFETCH(const float, wanted);
    QFETCH(const float, longest);
    Node node;
    node.hwNode = Vek_Node_Constant_Current(wanted, 0, 0);
    NimbrelleLib::NUI_Node_set_downsampling(node, longest);
    QTEST(NimbrelleLib::get_hwNode_sampling_interval(node.hwNode), "interval");
    QTEST(node.downsampleFactor, "factor");
    QCOMPARE(NimbrelleLib::NUI_Node_get_original_sampling(node), std::max(wanted, 1e-5f));
}

void TestNodeSampling::readsTheIntervalOfSampledTypesOnly()
{
    QList<int> sampled;
    for (int type = 0; type < 256; ++type) {
        Node node;
        node.hwNode = Vek_Node_MPPT(10);
        node.hwNode.type = static_cast<quint8>(type);
        node.downsampleFactor = 7;
        const ExpNode_t before = node.hwNode;
        NimbrelleLib::NUI_Node_set_downsampling(node, 1);
        if (node.downsampleFactor == 10)
            sampled.append(type);
        else
            QVERIFY(node.downsampleFactor == 1 && std::memcmp(&before, &node.hwNode, sizeof before) == 0 &&
                    NimbrelleLib::NUI_Node_get_original_sampling(node) == 0.0f);
    }
    QCOMPARE(sampled, QList<int>({1, 2, 3, 4, 5, 13, 14, 15, 34, 35}));
}

NIMBRELLE_TEST_MAIN(TestNodeSampling)
#include "TestNodeSampling.moc"
