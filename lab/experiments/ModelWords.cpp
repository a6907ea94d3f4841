// SPDX-License-Identifier: MIT
#include "lab/experiments/ModelWords.h"

#include "VekAbstractElement.h"
#include "VekExperiment.h"
#include "VekExperimentPlan.h"
#include "lab/notation/Units.h"

#include <QRegularExpression>

namespace lab {

namespace {

constexpr int digitsOfLibrary = 6;

/// Where the library's texts have a word for no limit: ", or minus infinity for no limit".
const QRegularExpression &noLimit()
{
    static const QRegularExpression words(QStringLiteral(", or [^,;]+ for no limit"));
    return words;
}

} // namespace

QString withPrefixes(const QString &complaint)
{
    static const QRegularExpression quantity(
        QStringLiteral("(?<![\\w.+-])(-?\\d+(?:\\.\\d+)?(?:e[-+]\\d+)?) (V/s|A/s|V|A|W|Ohm|C|Hz|s)(?![\\w/])"));
    QString shown;
    int behind = 0;
    for (auto matches = quantity.globalMatch(complaint); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        shown += complaint.mid(behind, match.capturedStart() - behind);
        shown += withPrefix(match.captured(1).toDouble(), match.captured(2), digitsOfLibrary);
        behind = match.capturedEnd();
    }
    return shown + complaint.mid(behind);
}

QString inWordsOfFiles(const QString &complaint)
{
    return withPrefixes(QString(complaint).replace(noLimit(), QStringLiteral(", or \"none\" for no limit")));
}

QStringList faultsOf(VekAbstractElement &element, const OptionNames &names, const VekInstrumentDescription &instrument)
{
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    QStringList faults;
    for (const VekPlanComplaint &complaint : VekExperimentPlan::forModel(experiment, instrument).complaints()) {
        if (names.count(complaint.property()) == 0)
            continue;
        QString text = complaint.text().section(QLatin1String("::"), 1).remove(noLimit());
        for (const auto &[property, name] : names)
            text.replace(QRegularExpression(QStringLiteral("\\b%1\\b").arg(property)), name);
        faults.append(withPrefixes(text));
    }
    faults.removeDuplicates();
    return faults;
}

} // namespace lab
