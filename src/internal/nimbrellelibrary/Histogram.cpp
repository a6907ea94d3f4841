// SPDX-License-Identifier: MIT
#include "nimbrellelibrary/Histogram.h"

void Histogram::append(const short *samples, int count)
{
    for (int i = 0; i < count; ++i)
        ++_counts[samples[i]];
}

QString Histogram::CountNumbers(const QVector<short> &samples)
{
    Histogram own;
    own.append(samples.constData(), samples.size());
    return own.getTotalCount();
}

unsigned Histogram::getNumEntries() const
{
    return static_cast<unsigned>(_counts.size());
}

unsigned Histogram::getRange() const
{
    Q_ASSERT(!_counts.isEmpty());
    return static_cast<unsigned>(_counts.lastKey() - _counts.firstKey());
}

QString Histogram::getTotalCount() const
{
    QString text;
    for (auto entry = _counts.begin(); entry != _counts.end(); ++entry)
        text += QStringLiteral("%1,%2,").arg(entry.key()).arg(entry.value());
    return text;
}
