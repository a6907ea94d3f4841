// SPDX-License-Identifier: MIT
#include "hardware_models/HardwareModelFactory.h"
#include "support/TestMain.h"

#include <cmath>
#include <functional>
#include <limits>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// What a model has, in the table's writing.

QString shown(const QString &text)
{
    return text.isEmpty() ? QStringLiteral("-") : text;
}

QString shown(const QStringList &list)
{
    return shown(list.join(' '));
}

QString shown(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QString shown(double value)
{
    return QString::number(value, 'g', 17);
}

QString shown(qint32 value)
{
    return QString::number(value);
}

QString shown(quint8 value)
{
    return QString::number(value);
}

template <typename Index>
QString shown(const QList<Index> &indices)
{
    QStringList numbers;
    for (const Index item : indices)
        numbers.append(QString::number(index(item)));
    return shown(numbers);
}

QString shown(const QMap<voltageRange_t, ACgain_t> &gains)
{
    QStringList pairs;
    for (auto gain = gains.begin(); gain != gains.end(); ++gain)
        pairs.append(QStringLiteral("%1:%2").arg(index(gain.key())).arg(index(gain.value())));
    return shown(pairs);
}

QString shown(const QList<VekCompRange> &presets)
{
    QStringList pairs;
    for (const VekCompRange &preset : presets)
        pairs.append(QStringLiteral("%1/%2").arg(preset.getBandwidthIndex()).arg(preset.getStabilityFactor()));
    return shown(pairs);
}

/// How many names there are; a dash unless they count up from 0.
QString countOf(const QStringList &names)
{
    for (int i = 0; i < names.size(); ++i)
        if (names.at(i) != QString::number(i))
            return shown(QString());
    return QString::number(names.size());
}

using Reader = std::function<QString(const HardwareModel &)>;

template <typename Value>
Reader member(Value HardwareModel::*value)
{
    return [value](const HardwareModel &model) { return shown(model.*value); };
}

Reader nameCount(QStringList HardwareModel::*names)
{
    return [names](const HardwareModel &model) { return countOf(model.*names); };
}

template <typename Value>
Reader answer(Value (HardwareModel::*question)() const)
{
    return [question](const HardwareModel &model) { return shown((model.*question)()); };
}

/// The door to what a model keeps for itself.
struct OpenModel : HardwareModel {
    static QMap<QString, Reader> readers();
};
using Open = OpenModel;

/// By the table's heading.
QMap<QString, Reader> OpenModel::readers()
{
    return {
        {"vanityName", member(&Open::_vanityName)},
        {"hexSignatureText", member(&Open::_hexSignatureText)},
        {"hexFileName", answer(&HardwareModel::hexFileName)},
        {"suitableFirmware", answer(&HardwareModel::suitableFirmware)},
        {"category", member(&Open::_category)},
        {"modelClass", member(&Open::_modelClass)},

        {"vMin", member(&Open::_vMin)},
        {"vMax", member(&Open::_vMax)},
        {"vMinOpenCircuit", member(&Open::_vMinOpenCircuit)},
        {"vMaxOpenCircuit", member(&Open::_vMaxOpenCircuit)},
        {"vAmpMin", member(&Open::_vAmpMin)},
        {"vAmpMax", member(&Open::_vAmpMax)},
        {"vAndVAmpMax", member(&Open::_vAndVAmpMax)},
        {"vStepMin", member(&Open::_vStepMin)},
        {"minVoltInterval", member(&Open::_minVoltInterval)},
        {"scanRateMin", member(&Open::_scanRateMin)},
        {"scanRateMax", member(&Open::_scanRateMax)},

        {"iMin", member(&Open::_iMin)},
        {"iMax", member(&Open::_iMax)},
        {"iLoadMin", member(&Open::_iLoadMin)},
        {"iAmpMin", member(&Open::_iAmpMin)},
        {"iAmpMax", member(&Open::_iAmpMax)},
        {"iAndIAmpMax", member(&Open::_iAndIAmpMax)},

        {"frequencyMin", member(&Open::_frequencyMin)},
        {"frequencyMax", member(&Open::_frequencyMax)},
        {"squareWaveFrequencyLimit", member(&Open::_squareWaveFrequencyLimit)},
        {"minSamplingPeriod", member(&Open::_minSamplingPeriod)},
        {"stepsPerDecadeMin", member(&Open::_stepsPerDecadeMin)},
        {"stepsPerDecadeMax", member(&Open::_stepsPerDecadeMax)},
        {"minCyclesMin", member(&Open::_minCyclesMin)},
        {"minCyclesMax", member(&Open::_minCyclesMax)},

        {"numBaseCurrentRanges", member(&Open::_numBaseCurrentRanges)},
        {"numDCcurrentRanges", member(&Open::_numDCcurrentRanges)},
        {"totalNumCurrentRanges", member(&Open::_totalNumCurrentRanges)},
        {"numHighSideRanges", member(&Open::_numHighSideRanges)},
        {"defaultCurrentGains", member(&Open::_defaultCurrentGains)},
        {"WEgainMap", member(&Open::_WEgainMap)},
        {"upperBinaryCurrentLimit", member(&Open::_upperBinaryCurrentLimit)},
        {"upperBinaryVSetpointLimit", member(&Open::_upperBinaryVSetpointLimit)},
        {"lowerBinaryVSetpointLimit", member(&Open::_lowerBinaryVSetpointLimit)},
        {"reservedBinaryLimit", member(&Open::_reservedBinaryLimit)},

        {"IsEIScapable", member(&Open::_IsEIScapable)},
        {"hasTemperature", member(&Open::_hasTemperature)},
        {"fanModeSupported", member(&Open::_fanModeSupported)},
        {"sdCardHasCalData", answer(&HardwareModel::sdCardHasCalData)},
        {"compRanges", member(&Open::_compRanges)},
        {"defaultStabilityRangeIndex",
         [](const HardwareModel &model) { return QString::number(model.getDefaultStabilityRangeIndex()); }},
        {"bandwidthNames", nameCount(&Open::_bandwidthNames)},
        {"stabilityNames", nameCount(&Open::_stabilityNames)},
        {"offsetDriftRanges", answer(&HardwareModel::getCurrentRangeListForOffsetDriftCalibration)},

        {"rateConstantA", member(&Open::_rateConstantA)},
        {"blockConstant", member(&Open::_blockConstant)},
        {"rateConstantB", member(&Open::_rateConstantB)},
        {"rateConstantC", member(&Open::_rateConstantC)},
        {"flagA", member(&Open::_flagA)},
        {"flagB", member(&Open::_flagB)},
        {"modeFlag", member(&Open::_modeFlag)},
        {"checkFlag", member(&Open::_checkFlag)},
        {"boardCode", member(&Open::_boardCode)},
        {"revisionCode", member(&Open::_revisionCode)},
        {"reservedLimit", member(&Open::_reservedLimit)},
    };
}

const QString acRanges = QStringLiteral("EIScurrentRangeLimit"); // a function of the frequency has no reader

/// The same text, or two writings of one number.
bool isSame(const QString &one, const QString &other)
{
    bool isNumber = false;
    const double value = one.toDouble(&isNumber);
    bool isOtherNumber = false;
    const double otherValue = other.toDouble(&isOtherNumber);
    return isNumber && isOtherNumber ? value == otherValue : one == other;
}

QStringList cellsOf(const QString &line)
{
    QStringList cells = line.split('|');
    for (QString &cell : cells)
        cell = cell.trimmed();
    return cells;
}

/// What the table says of one model, by heading.
struct ModelRow {
    QString name;
    QMap<QString, QString> fields;
};

/// The rows of all tables of the file, put together by number.
QMap<int, ModelRow> readTable(const QString &path)
{
    QMap<int, ModelRow> models;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        qFatal("cannot read %s", qPrintable(path));
    QStringList headings;
    for (const QString &line : QString::fromUtf8(file.readAll()).split('\n')) {
        const QStringList cells = cellsOf(line);
        if (line.isEmpty() || line.startsWith('#')) {
            headings.clear();
        } else if (headings.isEmpty()) {
            headings = cells;
        } else {
            ModelRow &model = models[cells.at(0).toInt()];
            model.name = cells.at(1);
            for (int i = 2; i < cells.size(); ++i)
                model.fields.insert(headings.at(i), cells.at(i));
        }
    }
    return models;
}

/// A range for AC, and the frequency up to which it is the answer.
struct AcStep {
    int range;
    bool includesLimit;
    double limit;

    double lastInside() const { return includesLimit ? limit : std::nextafter(limit, 0.0); }
    double firstBeyond() const { return std::nextafter(lastInside(), infinity); }
};

QList<AcStep> stepsOf(const QString &text)
{
    QList<AcStep> steps;
    const QStringList words = text.split(' ', Qt::SkipEmptyParts);
    for (int i = 0; i + 2 < words.size(); i += 3)
        steps.append({words.at(i).toInt(), words.at(i + 1) == QLatin1String("<="), words.at(i + 2).toDouble()});
    return steps;
}

} // namespace

/// Every number of every model, laid beside a table that is kept apart from the code.
class TestModelTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tableHasEveryModelAndField();
    void fieldsAreThoseOfTheTable_data();
    void fieldsAreThoseOfTheTable();
    void acRangesChangeWhereTheTableSays_data() { fieldsAreThoseOfTheTable_data(); }
    void acRangesChangeWhereTheTableSays();

private:
    const QMap<QString, Reader> _readers = OpenModel::readers();
    const QMap<int, ModelRow> _models = readTable(QFINDTESTDATA("models.txt"));
};

void TestModelTable::tableHasEveryModelAndField()
{
    QCOMPARE(_models.size(), 37);
    QStringList headings = _readers.keys();
    headings.append(acRanges);
    headings.sort();
    for (const ModelRow &model : _models)
        QCOMPARE(QStringList(model.fields.keys()), headings);
}

void TestModelTable::fieldsAreThoseOfTheTable_data()
{
    QTest::addColumn<int>("number");
    for (auto model = _models.begin(); model != _models.end(); ++model)
        QTest::newRow(qPrintable(model->name)) << model.key();
}

void TestModelTable::fieldsAreThoseOfTheTable()
{
    QFETCH(int, number);
    const auto model = HardwareModelFactory::getHardwareModel(HardwareModel_t(number));
    const QMap<QString, QString> expected = _models.value(number).fields;
    QStringList differences;
    for (auto reader = _readers.begin(); reader != _readers.end(); ++reader) {
        const QString actual = reader.value()(*model);
        if (!isSame(actual, expected.value(reader.key())))
            differences.append(
                QStringLiteral("%1 is %2, not %3").arg(reader.key(), actual, expected.value(reader.key())));
    }
    QVERIFY2(differences.isEmpty(), qPrintable(_models.value(number).name + ": " + differences.join("; ")));
}

void TestModelTable::acRangesChangeWhereTheTableSays()
{
    QFETCH(int, number);
    const auto model = HardwareModelFactory::getHardwareModel(HardwareModel_t(number));
    const QList<AcStep> steps = stepsOf(_models.value(number).fields.value(acRanges));
    if (steps.isEmpty())
        QCOMPARE(model->getEIScurrentRangeLimit(0.0), currentRange_t::OFF);
    double lowest = 0.0;
    for (const AcStep &step : steps) {
        QCOMPARE(index(model->getEIScurrentRangeLimit(lowest)), step.range);
        QCOMPARE(index(model->getEIScurrentRangeLimit(step.lastInside())), step.range);
        lowest = step.firstBeyond();
    }
}

NIMBRELLE_TEST_MAIN(TestModelTable)
#include "TestModelTable.moc"
