// SPDX-License-Identifier: MIT
#include "RecordingRun.h"

#include "calibration/Records.h"
#include "hardware_models/HardwareModelFactory.h"
#include "simulator/Payload.h"
#include "simulator/SdCard.h"
#include "simulator/cells/CellFactory.h"
#include "simulator/cells/RandlesWarburgCell.h"
#include "simulator/cells/RedoxCell.h"
#include "simulator/cells/SemiconductorCell.h"

#include "support/TestMain.h"

#include <cmath>

namespace {

using Complex = std::complex<double>;

constexpr double degrees = 180.0 / M_PI;

bool isNear(double value, double expected, double relative)
{
    return std::abs(value - expected) <= relative * std::abs(expected);
}

/// The channel's front end and, beside it, a host that has read its calibration and its tables.
class Chain
{
public:
    explicit Chain(const AcFrontEnd::Harmonics &harmonics = {})
        : model(HardwareModelFactory::getHardwareModel(HardwareModel_t::Alder_2_5)), calibration(model, 5, 1),
          response(std::make_shared<const AnalogResponse>(*model, 5)), frontEnd(model, response, harmonics, 0.0)
    {
        host = calibrated(HardwareModel_t::Alder_2_5, calibration.recordBytes());
        host.importCalData(folder.path(), QStringLiteral("Bench"));
        transferTables();
    }

    QByteArray record(const AcMeasurement &measurement) { return frontEnd.record(measurement, calibration, random); }
    /// What a host makes of a record: Fourier's sums over whole periods, then the corrections of the chain.
    Complex impedance(const QByteArray &bytes) const
    {
        const auto header = readAt<P24ExperimentalAcData>(bytes, 0);
        const double frequency = double(header.frequency);
        const Complex current = host.getACCurrent_main(coefficient(bytes, 0, 1), header.iGain, header.currentRange,
                                                       frequency, 0.0, header.adcSource());
        const Complex voltage = host.getACVoltage_main(coefficient(bytes, 1, 1), header.weGain, header.iGain, frequency,
                                                       0.0, header.adcSource());
        return host.adjustZforCableCapacitance(frequency, std::conj(voltage / current), header.currentRange);
    }
    double mean(const QByteArray &bytes, int signal) const { return coefficient(bytes, signal, 0).real() / 2.0; }
    /// Twice the mean of x exp(j k w t) over all samples but the last one; the first sample is taken off beforehand, as a
    /// large mean would leak out of a period that is whole but for rounding.
    Complex coefficient(const QByteArray &bytes, int signal, int k) const
    {
        const auto header = readAt<P24ExperimentalAcData>(bytes, 0);
        const int count = header.samplesPerSignal;
        const double cycles = double(header.frequency) * double(header.samplePeriod);
        const double first = sample(bytes, header, signal * count);
        Complex sum;
        for (int n = 0; n + 1 < count; ++n) {
            const double angle = 2.0 * M_PI * std::fmod(k * cycles * n, 1.0);
            sum += (sample(bytes, header, signal * count + n) - first) * std::polar(1.0, angle);
        }
        return 2.0 * sum / double(count - 1) + (k == 0 ? 2.0 * first : 0.0);
    }

    std::shared_ptr<const HardwareModel> model;
    SimulatedCalibration calibration;
    std::shared_ptr<const AnalogResponse> response;
    AcFrontEnd frontEnd;
    CalibrationData host;

private:
    static double sample(const QByteArray &bytes, const P24ExperimentalAcData &header, int index)
    {
        constexpr int start = int(sizeof(P24ExperimentalAcData));
        return header.hasFloatSamples() ? double(readAt<float>(bytes, start + 4 * index))
                                        : double(readAt<qint16>(bytes, start + 2 * index));
    }
    void transferTables()
    {
        SdCard card(1);
        card.setContents(response->tables(), SdCardFaults());
        host.getDataImporter()->setCSVDataHeader(readAt<csvDataHeader_t>(card.nextHeader().bytes, 0));
        while (card.hasData())
            QVERIFY(host.getDataImporter()->appendCSVRawData(card.nextData().bytes));
        QVERIFY(host.getDataImporter()->isCSVDataPayloadFull());
        QVERIFY(host.getDataImporter()->validateCSVFiles());
        host.importCalData(folder.path(), QStringLiteral("Bench"));
    }

    QTemporaryDir folder;
    Random random{1};
};

AcMeasurement measured(double frequency, Complex impedance, double amplitude = 0.01)
{
    const auto plans = planImpedance(
        Vek_Node_EIS_Voltage(0.0f, false, float(amplitude), float(frequency), float(frequency), 1.0f, 0.5f, 2));
    return {plans.front(), 12345678900, {0.0, 0.0}, {impedance}, 1.0, 1.0};
}

} // namespace

class TestImpedance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sweepsEveryFrequency_data();
    void sweepsEveryFrequency();
    void samplesSixtyFourTimesAPeriodOfTheAlias();
    void splitsManyCyclesIntoRecords();
    void hostFindsTheCell_data();
    void hostFindsTheCell();
    void recordsCarryTheirBias();
    void harmonicsAreThoseOfTheCurrentAlone();
    void nodeHoldsItsBiasAndReportsRecords();
    void warburgElementGrowsWithTheRootOfTime();
    void coatingSettlesAtItsResistance();
    void redoxCoupleIsARandlesCircuit();
    void semiconductorFollowsMottAndSchottky();
};

void TestImpedance::sweepsEveryFrequency_data()
{
    QTest::addColumn<float>("start");
    QTest::addColumn<float>("end");
    QTest::addColumn<float>("perDecade");
    QTest::addColumn<int>("count");
    QTest::newRow("eight decades down") << 1e6f << 0.01f << 10.0f << 81;
    QTest::newRow("up") << 1.0f << 1e4f << 7.0f << 29;
    QTest::newRow("end between two frequencies") << 1000.0f << 15.0f << 1.0f << 2;
    QTest::newRow("one frequency") << 1000.0f << 1000.0f << 10.0f << 1;
}

void TestImpedance::sweepsEveryFrequency()
{
    QFETCH(float, start);
    QFETCH(float, end);
    QFETCH(float, perDecade);
    const auto plans = planImpedance(Vek_Node_EIS_Voltage(0.0f, false, 0.01f, start, end, perDecade, 0.5f, 2));
    QTEST(int(plans.size()), "count");
    QCOMPARE(plans.front().frequency, start);
    const double steps = std::floor(std::abs(std::log10(double(end / start))) * double(perDecade) + 1e-3);
    const double last = double(start) * std::pow(10.0, (end < start ? -steps : steps) / double(perDecade));
    QVERIFY(isNear(double(plans.back().frequency), last, 1e-5));
}

void TestImpedance::samplesSixtyFourTimesAPeriodOfTheAlias()
{
    const auto plans = planImpedance(Vek_Node_EIS_Voltage(0.0f, false, 0.01f, 2e6f, 0.1f, 20.0f, 0.5f, 1));
    for (const AcPlan &plan : plans) {
        const double cycles = double(plan.frequency) * double(plan.samplePeriod);
        const double alias = cycles - std::round(cycles);
        QVERIFY(plan.samplePeriod >= 1e-5f);
        QVERIFY(isNear(alias, 1.0 / 64.0, 2e-4));
        QVERIFY(2 * plan.samples * 4 + 29 <= 65535);
        QCOMPARE(plan.samples, plan.frequency >= 1.0f ? 513 : 65);
    }
}

void TestImpedance::splitsManyCyclesIntoRecords()
{
    const auto plans = planImpedance(Vek_Node_EIS_Current(0.0f, 1e-3f, 10.0f, 10.0f, 1.0f, 0.5f, 250));
    QCOMPARE(plans.size(), std::size_t(3));
    int cycles = 0;
    for (const AcPlan &plan : plans)
        cycles += plan.samples / 64;
    QCOMPARE(cycles, 250);
    QVERIFY(!plans[0].isLast && !plans[1].isLast && plans[2].isLast);
    QVERIFY(plans[0].settling > 0.09 && plans[1].settling == 0.0);
}

void TestImpedance::hostFindsTheCell_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<bool>("isGalvanostatic");
    for (const char *description : {"resistor:R=150", "randles", "warburg", "coating"}) {
        QTest::addRow("%s, potentiostatic", description) << QString::fromLatin1(description) << false;
        QTest::addRow("%s, galvanostatic", description) << QString::fromLatin1(description) << true;
    }
}

void TestImpedance::hostFindsTheCell()
{
    QFETCH(QString, description);
    QFETCH(bool, isGalvanostatic);
    const bool isCoating = description == QLatin1String("coating");
    const ExpNode_t node = isGalvanostatic
                               ? Vek_Node_EIS_Current(0.0f, isCoating ? 1e-8f : 1e-4f, 1e6f, 0.01f, 5.0f, 0.5f, 2)
                               : Vek_Node_EIS_Voltage(0.0f, false, 0.01f, 1e6f, 0.01f, 5.0f, 0.5f, 2);
    Chain chain;
    RecordingRun run(makeCell(description).cell, {node, endNode()});
    run.run();
    QCOMPARE(run.records.size(), 41);
    for (const AcMeasurement &measurement : run.records) {
        const Complex expected = makeCell(description).cell->impedance(double(measurement.plan.frequency));
        const Complex found = chain.impedance(chain.record(measurement));
        const QByteArray where = QByteArray::number(double(measurement.plan.frequency));
        QVERIFY2(isNear(std::abs(found), std::abs(expected), 0.002), where);
        QVERIFY2(std::abs(std::arg(found / expected)) * degrees < 0.15, where);
    }
}

void TestImpedance::recordsCarryTheirBias()
{
    Chain chain;
    AcMeasurement measurement = measured(1000.0, 500.0);
    measurement.mean = {0.75, 1.5e-3};
    const QByteArray bytes = chain.record(measurement);
    const auto header = readAt<P24ExperimentalAcData>(bytes, 0);
    QVERIFY(std::abs(chain.host.getEWE_DCbias(chain.mean(bytes, 1), &header) - 0.75) < 1e-4);
    QVERIFY(std::abs(chain.host.getCurrent_DCbias(chain.mean(bytes, 0), &header) - 1.5e-3) < 1e-6);
    QCOMPARE(header.tick, quint64(12345678900));
}

void TestImpedance::harmonicsAreThoseOfTheCurrentAlone()
{
    Chain chain({{2, 0.03}});
    for (const double frequency : {10.0, 50000.0}) {
        const QByteArray bytes = chain.record(measured(frequency, 200.0));
        const auto share = [&](int signal) {
            return std::abs(chain.coefficient(bytes, signal, 2) / chain.coefficient(bytes, signal, 1));
        };
        QVERIFY(isNear(share(0), 0.03, 0.005));
        QVERIFY(share(1) < 1e-3);
    }
}

void TestImpedance::nodeHoldsItsBiasAndReportsRecords()
{
    const ExpNode_t node = Vek_Node_EIS_Voltage(0.5f, false, 0.01f, 100.0f, 1.0f, 1.0f, 0.5f, 3);
    RecordingRun run(makeCell(QStringLiteral("resistor:R=100")).cell, {node, endNode()});
    run.run();
    QCOMPARE(run.records.size(), 3);
    QCOMPARE(run.samples.size(), 0);
    QCOMPARE(run.done, QList<int>{0});
    for (const AcMeasurement &measurement : run.records)
        QVERIFY(isNear(measurement.mean.current, 5e-3, 1e-9));
    // one period to settle, eight to measure and the record's last sample
    QVERIFY(isNear(double(run.records.first().tick) / ticksPerSecond, (9.0 + 1.0 / 64.0) / 100.0, 1e-6));
}

void TestImpedance::warburgElementGrowsWithTheRootOfTime()
{
    RandlesWarburgCell::Parameters parameters;
    RandlesWarburgCell cell(parameters);
    cell.passCurrent(1e-4, 0.0, 10.0);
    const double warburg = std::sqrt(2.0) * parameters.warburg * 2.0 * std::sqrt(10.0 / M_PI);
    QVERIFY(isNear(cell.voltageAt(1e-4), 1e-4 * (220.0 + warburg), 2e-3));
}

void TestImpedance::coatingSettlesAtItsResistance()
{
    const std::unique_ptr<Cell> cell = makeCell(QStringLiteral("coating")).cell;
    cell->holdVoltage(1.0, 0.0, 100.0);
    QVERIFY(isNear(cell->currentAt(1.0), 1.0 / (50.0 + 1e5 + 1e6), 1e-6));
    QVERIFY(isNear(std::abs(cell->impedance(1e-6)), 50.0 + 1e5 + 1e6, 1e-6));
}

void TestImpedance::redoxCoupleIsARandlesCircuit()
{
    RedoxCell::Parameters p;
    p.oxidised = p.reduced;
    p.rate = 1e-5;
    p.capacitance = 2e-6;
    const double volts = 8.314462618 * p.temperature / 96485.33212;
    const double transfer = volts / (96485.33212 * p.area * p.rate * p.reduced);
    const double warburg = volts / (96485.33212 * p.area * std::sqrt(2.0 * p.diffusivity)) * 2.0 / p.reduced;
    RandlesWarburgCell::Parameters circuit{p.series, transfer, p.capacitance, warburg};
    for (const double frequency : {0.01, 1.0, 100.0, 1e4}) {
        const Complex expected = RandlesWarburgCell(circuit).impedance(frequency);
        QVERIFY(std::abs(RedoxCell(p).impedance(frequency) - expected) < 1e-9 * std::abs(expected));
    }
}

/// The slope of 1/C^2 against the potential gives the donor density back; the charge is the capacitance's integral.
void TestImpedance::semiconductorFollowsMottAndSchottky()
{
    const SemiconductorCell::Parameters parameters;
    SemiconductorCell cell(parameters);
    QList<double> inverseSquares;
    double charge = 0.0;
    for (const double potential : {0.2, 0.8}) {
        charge = cell.holdVoltage(potential, 0.0, 10.0);
        const double reactance = cell.impedance(1000.0).imag();
        inverseSquares += std::pow(2.0 * M_PI * 1000.0 * reactance, 2);
    }
    const double slope = (inverseSquares.at(1) - inverseSquares.at(0)) / 0.6;
    const double donors = 2.0 / (1.602176634e-19 * 10.0 * 8.8541878128e-12 * 1e-10 * slope);
    QVERIFY(isNear(donors, 1e24, 1e-3));
    const double stored = charge - 0.8 / parameters.leak * 10.0;
    double integral = 0.0;
    for (int i = 0; i < 600; ++i)
        integral += cell.capacitance(0.2 + (i + 0.5) * 0.001) * 0.001;
    QVERIFY(isNear(stored, integral, 2e-3));
}

NIMBRELLE_TEST_MAIN(TestImpedance)
#include "TestImpedance.moc"
