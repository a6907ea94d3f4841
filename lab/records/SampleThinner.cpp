// SPDX-License-Identifier: MIT
#include "lab/records/SampleThinner.h"

#include <algorithm>
#include <cmath>

namespace lab {

namespace {

constexpr std::size_t keptOfGroup = 6;
constexpr std::size_t reduction = 4; ///< of each thinning

using Iterator = std::vector<Sample>::const_iterator;

bool opensGroup(const Sample &sample)
{
    return sample.opensSegment || sample.opensStretch || sample.isPulse;
}

void takeExtremes(Iterator begin, Iterator end, double Sample::*value, Iterator *lowestAndHighest)
{
    Iterator lowest = begin, highest = begin;
    for (Iterator each = begin; each != end; ++each) {
        if ((*each).*value < (*lowest).*value || std::isnan((*lowest).*value))
            lowest = each;
        if ((*each).*value > (*highest).*value || std::isnan((*highest).*value))
            highest = each;
    }
    lowestAndHighest[0] = lowest;
    lowestAndHighest[1] = highest;
}

/// Copies what stays of a group to @p out, which may be its own beginning. @return the end of what was copied
std::vector<Sample>::iterator reduce(Iterator begin, Iterator end, std::vector<Sample>::iterator out)
{
    Iterator chosen[keptOfGroup] = {begin, end - 1, begin, begin, begin, begin};
    takeExtremes(begin, end, &Sample::voltage, chosen + 2);
    takeExtremes(begin, end, &Sample::current, chosen + 4);
    std::sort(chosen, chosen + keptOfGroup);
    const Iterator *last = std::unique(chosen, chosen + keptOfGroup);
    for (const Iterator *each = chosen; each != last; ++each)
        *out++ = **each;
    return out;
}

} // namespace

SampleThinner::SampleThinner(std::size_t mostKept) : _limit(mostKept)
{
}

void SampleThinner::add(const Sample &sample)
{
    if (opensGroup(sample))
        endGroup();
    _group.push_back(sample);
    if (_group.size() >= _groupSize || sample.isPulse)
        endGroup();
}

std::vector<Sample> SampleThinner::take()
{
    endGroup();
    return std::move(_kept);
}

void SampleThinner::endGroup()
{
    if (_group.empty())
        return;
    const auto end = reduce(_group.cbegin(), _group.cend(), _group.begin());
    _kept.insert(_kept.end(), _group.begin(), end);
    _group.clear();
    if (_kept.size() > _limit)
        thinAgain();
}

void SampleThinner::thinAgain()
{
    const std::size_t group = keptOfGroup * reduction;
    auto out = _kept.begin();
    for (auto begin = _kept.cbegin(); begin != _kept.cend();) {
        auto end = begin + 1;
        while (end != _kept.cend() && end - begin < static_cast<std::ptrdiff_t>(group) && !opensGroup(*end))
            ++end;
        out = reduce(begin, end, out);
        begin = end;
    }
    _kept.erase(out, _kept.end());
    _groupSize = _groupSize == 1 ? group : _groupSize * reduction;
    _limit = std::max(_limit, 2 * _kept.size()); // where little can go, not at every sample
}

} // namespace lab
