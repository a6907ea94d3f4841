// SPDX-License-Identifier: MIT
#include "lab/records/RunRecorder.h"

#include "VekVersion.h"
#include "lab/notation/JsonOutput.h"
#include "lab/notation/JsonText.h"
#include "lab/records/Sample.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>

namespace lab {

namespace {

constexpr int recordVersion = 2;
constexpr std::size_t mostMarks = 10000; // about 3 MB of record

// Names of the Battery Data Format where it has them.
const std::vector<CsvColumn> dcColumns{
    {"Test Time / s", Precision::Tick},
    {"Unix Time / s", Precision::Microsecond},
    {"Voltage / V", Precision::Reading},
    {"Current / A", Precision::Reading},
    {"Cycle Count / 1", Precision::Count},
    {"Step Count / 1", Precision::Count},
    {"Step / 1", Precision::Count},
    {"Charging Capacity / Ah", Precision::Total},
    {"Discharging Capacity / Ah", Precision::Total},
    {"Net Capacity / Ah", Precision::Total},
    {"Charging Energy / Wh", Precision::Estimate},
    {"Discharging Energy / Wh", Precision::Estimate},
    {"Temperature T1 / degC", Precision::Reading},
    {"Counter Electrode Voltage / V", Precision::Reading},
};

const std::vector<CsvColumn> acColumns{
    {"Test Time / s", Precision::Tick},
    {"Unix Time / s", Precision::Microsecond},
    {"Voltage / V", Precision::Reading},
    {"Current / A", Precision::Reading},
    {"Cycle Count / 1", Precision::Count},
    {"Step Count / 1", Precision::Count},
    {"Step / 1", Precision::Count},
    {"Frequency / Hz", Precision::Reading},
    {"Real Impedance / ohm", Precision::Reading},
    {"Imaginary Impedance / ohm", Precision::Reading},
    {"Absolute Impedance / ohm", Precision::Reading},
    {"Phase / deg", Precision::Reading},
    {"Voltage Amplitude / V", Precision::Reading},
    {"Current Amplitude / A", Precision::Reading},
    {"Total Harmonic Distortion / %", Precision::Reading},
    {"Number of Periods / 1", Precision::Reading},
};

/// Half of what the sum of magnitudes and the signed sum leave, free of what rounding leaves below zero.
double capacityOf(double coulombs)
{
    return coulombs < 0.0 ? 0.0 : coulombs / 2.0 / coulombsOfAmpereHour;
}

Json contentOf(const RunSetup &setup)
{
    const QByteArray plain = plainJson(setup.experimentText);
    return Json::parse(plain.begin(), plain.end(), nullptr, false);
}

Json experimentJson(const RunSetup &setup)
{
    const QByteArray digest = QCryptographicHash::hash(setup.experimentText, QCryptographicHash::Sha256).toHex();
    return {{"file", text(setup.experimentPath)},
            {"name", text(setup.experimentName)},
            {"description", text(setup.experimentDescription)},
            {"sha256", digest.toStdString()},
            {"content", contentOf(setup)}};
}

Json utcText(const QDateTime &utc)
{
    return utc.isValid() ? text(utc.toUTC().toString(Qt::ISODateWithMs)) : Json();
}

} // namespace

QString runStateName(RunState state)
{
    switch (state) {
    case RunState::Running:
        return QStringLiteral("running");
    case RunState::Completed:
        return QStringLiteral("completed");
    case RunState::Stopped:
        return QStringLiteral("stopped");
    case RunState::Interrupted:
        return QStringLiteral("interrupted");
    case RunState::DeviceLost:
        return QStringLiteral("device lost");
    }
    return {};
}

bool RunRecorder::create(const QString &folder, const RunSetup &setup)
{
    _folder = QFileInfo(folder).absoluteFilePath();
    _setup = setup;
    const std::vector<ProgramStep> program = programSteps(contentOf(setup));
    _steps = StepCounter(program);
    _isCycling = !cyclingGroups(program).empty();
    if (!QDir().mkpath(_folder)) {
        _error = QStringLiteral("%1: cannot be made").arg(_folder);
        return false;
    }
    if (!_dc.create(QDir(_folder).filePath(QStringLiteral("dc.csv")), dcColumns))
        return false;
    writeSummary(RunState::Running, {});
    return error().isEmpty();
}

void RunRecorder::setStart(const QDateTime &utc)
{
    _startUtc = utc;
    _startUnix = static_cast<double>(utc.toMSecsSinceEpoch()) / 1000.0;
    if (_isCycling)
        _cycles.open(QDir(_folder).filePath(QStringLiteral("cycles.csv")), _startUnix);
}

void RunRecorder::beginElement(const VekExperimentNode &node)
{
    _steps.begin(node);
    if (_marks.size() < mostMarks)
        _marks.push_back({node, _steps.stepCount(), _steps.cycleCount(), _dc.rowCount(), _ac.rowCount()});
    _isSummaryStale = true;
    if (++_elementCount == 1)
        flush(); // who looks in, or comes after a sudden end, finds the start
}

void RunRecorder::addDc(const VekDCData &data)
{
    const qint64 tick = csvTick(data.timestamp);
    if (tick == _lastDcTick)
        return;
    _lastDcTick = tick;
    const double voltage = data.workingElectrodeVoltage;
    _energy.add(data.timestamp, voltage, data.current, _steps.stepCount());
    _dc.append({data.timestamp, unixTime(data.timestamp), voltage, data.current, double(_steps.cycleCount()),
                double(_steps.stepCount()), double(_steps.node().stepNumber),
                capacityOf(data.cumulativeChargeAbs + data.cumulativeChargeNet),
                capacityOf(data.cumulativeChargeAbs - data.cumulativeChargeNet),
                data.cumulativeChargeNet / coulombsOfAmpereHour, _energy.charging(), _energy.discharging(),
                data.temperature, data.counterElectrodeVoltage});
    if (_isCycling)
        addToCycle(data);
}

void RunRecorder::addToCycle(const VekDCData &data)
{
    const ProgramStep *step = _steps.step();
    _cycles.add(
        {data.timestamp, unixTime(data.timestamp), data.workingElectrodeVoltage, data.current, _steps.cycleCount(),
         step && !onlyWatches(*step), capacityOf(data.cumulativeChargeAbs + data.cumulativeChargeNet),
         capacityOf(data.cumulativeChargeAbs - data.cumulativeChargeNet), _energy.charging(), _energy.discharging()});
}

void RunRecorder::addAc(const VekACData &data)
{
    if (!_ac.isOpen() && !_ac.create(QDir(_folder).filePath(QStringLiteral("ac.csv")), acColumns))
        return;
    const qint64 tick = csvTick(data.timestamp);
    const bool sharesRecord = tick <= _lastAcTick && tick >= _acRecordTick;
    _lastAcTick = sharesRecord ? _lastAcTick + 1 : tick;
    _acRecordTick = tick;
    const double time = csvSeconds(_lastAcTick);
    _ac.append({time, unixTime(time), data.dcVoltageBias, data.dcCurrentBias, double(_steps.cycleCount()),
                double(_steps.stepCount()), double(_steps.node().stepNumber), data.frequency, data.realImpedance,
                data.imagImpedance, data.absoluteImpedance, data.phaseAngle, data.voltageAmplitude,
                data.currentAmplitude, data.totalHarmonicDistortion, data.numberOfCycles});
}

/// Not a number while the start is not known.
double RunRecorder::unixTime(double testTime) const
{
    return _startUnix + testTime;
}

void RunRecorder::flush()
{
    _dc.flush();
    _ac.flush();
    _cycles.flush();
    if (isSummaryDue()) // behind the rows that it counts
        writeSummary(RunState::Running, {});
}

bool RunRecorder::finish(RunState state, const QString &endMessage)
{
    _isSummaryStale = false;
    _cycles.finish(state == RunState::Completed);
    flush();
    writeSummary(state, endMessage);
    return error().isEmpty();
}

QString RunRecorder::error() const
{
    for (const QString &each : {_error, _dc.error(), _ac.error(), _cycles.error()}) {
        if (!each.isEmpty())
            return each;
    }
    return {};
}

QByteArray RunRecorder::summary(RunState state, const QString &endMessage) const
{
    Json elements = Json::array();
    for (const ElementMark &mark : _marks) {
        elements.push_back({{"stepName", text(mark.node.stepName)},
                            {"stepNumber", mark.node.stepNumber},
                            {"cycleNumber", mark.node.cycleNumber},
                            {"substepNumber", mark.node.substepNumber},
                            {"stepCount", mark.stepCount},
                            {"cycleCount", mark.cycleCount},
                            {"firstDcRow", mark.dcRow},
                            {"firstAcRow", mark.acRow}});
    }
    const bool isOver = state != RunState::Running;
    const Json record = {
        {"recordVersion", recordVersion},
        {"state", text(runStateName(state))},
        {"endMessage", isOver ? text(endMessage) : Json()},
        {"startUtc", utcText(_startUtc)},
        {"endUtc", isOver ? utcText(QDateTime::currentDateTimeUtc()) : Json()},
        {"software", {{"client", NIMBRELLE_VERSION_STRING}, {"library", text(VekVersion::ofLibrary())}}},
        {"instrument", descriptionJson(_setup.instrument)},
        {"channel", _setup.channel},
        {"experiment", experimentJson(_setup)},
        {"elements", elements},
        {"elementCount", _elementCount},
        {"counts", {{"dcRows", _dc.rowCount()}, {"acRows", _ac.rowCount()}}},
        {"signConvention", "A positive current is anodic at the working electrode; it charges a battery."},
    };
    return QByteArray::fromStdString(dump(record)) + '\n';
}

/// At once with the first element; then the time between two records grows with them, by a second for each 1,000.
bool RunRecorder::isSummaryDue() const
{
    constexpr qint64 shortestPauseMs = 1000;
    const auto pauseMs = std::max(shortestPauseMs, static_cast<qint64>(_marks.size()));
    return _isSummaryStale && (_elementCount == 1 || _sinceSummary.hasExpired(pauseMs));
}

void RunRecorder::writeSummary(RunState state, const QString &endMessage)
{
    _isSummaryStale = false;
    _sinceSummary.start();
    QSaveFile file(QDir(_folder).filePath(QStringLiteral("run.json")));
    const QByteArray record = summary(state, endMessage);
    // Flushed before it replaces the record that stands: what does not fit on the disk must not take its place.
    if (file.open(QIODevice::WriteOnly) && file.write(record) == record.size() && file.flush() && file.commit())
        return;
    if (_error.isEmpty())
        _error = QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
}

} // namespace lab
