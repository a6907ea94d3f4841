// SPDX-License-Identifier: MIT
#include "elements/NodeText.h"

#include <cmath>
#include <cstring>

namespace {

QString hex(quint32 word)
{
    return QString::number(word, 16);
}

/// As many digits as a float has.
QString shown(double value)
{
    return QString::number(value, 'g', 7);
}

QString parameter(const ExpNode_t &node, int index)
{
    quint32 word;
    float value;
    std::memcpy(&word, node.parameters + 4 * index, sizeof word);
    std::memcpy(&value, node.parameters + 4 * index, sizeof value);
    const bool isNumber = word == 0 || std::fabs(value) > 1e-30f;
    return isNumber ? shown(value) : '#' + hex(word);
}

QString parameters(const ExpNode_t &node)
{
    QStringList words;
    for (int i = 0; i < 8; ++i)
        words += parameter(node, i);
    while (!words.isEmpty() && words.last() == QLatin1String("0"))
        words.removeLast();
    return words.join(' ');
}

} // namespace

QString textOf(const ExpNode_t &node)
{
    const ExpNode_t plain;
    QStringList words{QStringLiteral("%1(%2)").arg(node.type).arg(parameters(node))};
    const auto add = [&words](bool differs, const QString &text) {
        if (differs)
            words += text;
    };
    add(node.ranges != plain.ranges, QStringLiteral("ranges ") + hex(node.ranges));
    add(node.jump != plain.jump, QStringLiteral("to %1").arg(node.jump));
    add(node.repeats != plain.repeats, QStringLiteral("x%1").arg(node.repeats));
    add(node.flags != plain.flags, QStringLiteral("flags ") + hex(node.flags));
    add(node.flags2 != plain.flags2, QStringLiteral("flags2 ") + hex(node.flags2));
    add(node.iLimitMin != plain.iLimitMin || node.iLimitMax != plain.iLimitMax,
        shown(node.iLimitMin) + QStringLiteral("..") + shown(node.iLimitMax) + QStringLiteral(" A"));
    add(node.vLimitMin != plain.vLimitMin || node.vLimitMax != plain.vLimitMax,
        shown(node.vLimitMin) + QStringLiteral("..") + shown(node.vLimitMax) + QStringLiteral(" V"));
    add(node.timeLimit != plain.timeLimit, shown(node.timeLimit) + QStringLiteral(" s"));
    add(node.chargeLimit != plain.chargeLimit, shown(node.chargeLimit) + QStringLiteral(" C"));
    return words.join(QStringLiteral(", "));
}

QStringList textOf(const NodeList &list)
{
    QStringList texts;
    for (const auto &node : list.getNodeList()) {
        QString text = QString::number(node->stepNumber);
        text += QLatin1String(node->newSubStep ? "s" : "") + QLatin1String(node->newCycle ? "c" : "");
        text += QLatin1String(node->restPeriod ? "r" : "") + QLatin1String(node->timeSeriesData ? "t" : "");
        text += ' ' + node->stepName + QStringLiteral(": ") + textOf(node->hwNode);
        if (node->downsampleFactor != 1)
            text += QStringLiteral(", every %1").arg(node->downsampleFactor);
        if (node->voltageDifferent != 0.0)
            text += QStringLiteral(", filter ") + shown(node->voltageDifferent);
        texts += text;
    }
    return texts;
}
