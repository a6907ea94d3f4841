#include "RunRecorder.h"

#include "JsonOutput.h"
#include "JsonText.h"
#include "VekVersion.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace client {

namespace {

constexpr int recordVersion = 1;

// Names of the Battery Data Format where it has them.
const QStringList dcHeadings{
    QStringLiteral("Test Time / s"),      QStringLiteral("Voltage / V"),
    QStringLiteral("Current / A"),        QStringLiteral("Counter Electrode Voltage / V"),
    QStringLiteral("Temperature / degC"), QStringLiteral("Charge / C"),
    QStringLiteral("Net Charge / C"),     QStringLiteral("Step Count / 1"),
    QStringLiteral("Cycle Count / 1"),
};

const QStringList acHeadings{
    QStringLiteral("Test Time / s"),
    QStringLiteral("Frequency / Hz"),
    QStringLiteral("Absolute Impedance / Ohm"),
    QStringLiteral("Real Impedance / Ohm"),
    QStringLiteral("Imaginary Impedance / Ohm"),
    QStringLiteral("Phase / deg"),
    QStringLiteral("Total Harmonic Distortion / %"),
    QStringLiteral("Number of Periods / 1"),
    QStringLiteral("Voltage Bias / V"),
    QStringLiteral("Current Bias / A"),
    QStringLiteral("Current Amplitude / A"),
    QStringLiteral("Voltage Amplitude / V"),
    QStringLiteral("Step Count / 1"),
    QStringLiteral("Cycle Count / 1"),
};

Json experimentJson(const RunSetup &setup)
{
    const QByteArray content = plainJson(setup.experimentText);
    const QByteArray digest = QCryptographicHash::hash(setup.experimentText, QCryptographicHash::Sha256).toHex();
    return {{"file", text(setup.experimentPath)},
            {"name", text(setup.experimentName)},
            {"description", text(setup.experimentDescription)},
            {"sha256", digest.toStdString()},
            {"content", Json::parse(content.begin(), content.end(), nullptr, false)}};
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
    if (!QDir().mkpath(_folder)) {
        _error = QStringLiteral("%1: cannot be made").arg(_folder);
        return false;
    }
    if (!_dc.create(QDir(_folder).filePath(QStringLiteral("dc.csv")), dcHeadings))
        return false;
    writeSummary(RunState::Running, {});
    return error().isEmpty();
}

void RunRecorder::beginElement(const VekExperimentNode &node)
{
    _node = node;
    _marks.push_back({node, _dc.rowCount(), _ac.rowCount()});
}

void RunRecorder::addDc(const VekDCData &data)
{
    _dc.append({data.timestamp, data.workingElectrodeVoltage, data.current, data.counterElectrodeVoltage,
                data.temperature, data.cumulativeChargeAbs, data.cumulativeChargeNet,
                static_cast<double>(_node.stepNumber), static_cast<double>(_node.cycleNumber)});
}

void RunRecorder::addAc(const VekACData &data)
{
    if (!_ac.isOpen() && !_ac.create(QDir(_folder).filePath(QStringLiteral("ac.csv")), acHeadings))
        return;
    _ac.append({data.timestamp, data.frequency, data.absoluteImpedance, data.realImpedance, data.imagImpedance,
                data.phaseAngle, data.totalHarmonicDistortion, data.numberOfCycles, data.dcVoltageBias,
                data.dcCurrentBias, data.currentAmplitude, data.voltageAmplitude, static_cast<double>(_node.stepNumber),
                static_cast<double>(_node.cycleNumber)});
}

void RunRecorder::flush()
{
    _dc.flush();
    _ac.flush();
}

bool RunRecorder::finish(RunState state, const QString &endMessage)
{
    flush();
    writeSummary(state, endMessage);
    return error().isEmpty();
}

QString RunRecorder::error() const
{
    for (const QString &each : {_error, _dc.error(), _ac.error()}) {
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
        {"counts", {{"dcRows", _dc.rowCount()}, {"acRows", _ac.rowCount()}}},
        {"signConvention", "A positive current is anodic at the working electrode; it charges a battery."},
    };
    return QByteArray::fromStdString(dump(record)) + '\n';
}

void RunRecorder::writeSummary(RunState state, const QString &endMessage)
{
    QSaveFile file(QDir(_folder).filePath(QStringLiteral("run.json")));
    const QByteArray record = summary(state, endMessage);
    // Flushed before it replaces the record that stands: what does not fit on the disk must not take its place.
    if (file.open(QIODevice::WriteOnly) && file.write(record) == record.size() && file.flush() && file.commit())
        return;
    if (_error.isEmpty())
        _error = QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
}

} // namespace client
