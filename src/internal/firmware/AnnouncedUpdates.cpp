// SPDX-License-Identifier: MIT
#include "firmware/AnnouncedUpdates.h"

#include "firmware/FirmwareImages.h"

#include <algorithm>

namespace {

bool isSameInstrument(const Announcement &one, const Announcement &other)
{
    return !one.port.isEmpty() && one.port == other.port && one.deviceName == other.deviceName &&
           one.model == other.model;
}

bool wantOneImage(const QList<Announcement> &waiting, const QList<int> &positions)
{
    return std::all_of(positions.begin(), positions.end(), [&](int position) {
        return FirmwareImages::pathFor(waiting.at(position).model) ==
               FirmwareImages::pathFor(waiting.at(positions.first()).model);
    });
}

/// Takes out all that meet a condition.
template <typename Condition>
QList<Announcement> takeIf(QList<Announcement> &waiting, Condition condition)
{
    const auto taken = std::stable_partition(waiting.begin(), waiting.end(),
                                             [&](const Announcement &each) { return !condition(each); });
    const QList<Announcement> result(taken, waiting.end());
    waiting.erase(taken, waiting.end());
    return result;
}

} // namespace

bool AnnouncedUpdates::takeSame(const Announcement &announcement)
{
    const auto isSame = [&](const Announcement &each) { return isSameInstrument(each, announcement); };
    return !takeIf(_waiting, isSame).isEmpty();
}

std::optional<Announcement> AnnouncedUpdates::takeFor(const AppearedDevice &device)
{
    const bool knowsModel = device.releaseNumber != unknownModel;
    QList<int> here;
    QList<int> elsewhere; // or nobody knows where
    for (int i = 0; i < _waiting.size(); ++i) {
        const Announcement &each = _waiting.at(i);
        if (each.olderOnes.contains(device.path) || (knowsModel && each.model != device.releaseNumber))
            continue;
        const bool isComparable = !each.usbPlace.isEmpty() && !device.usbPlace.isEmpty();
        if (isComparable && each.usbPlace == device.usbPlace)
            here.append(i);
        else if (knowsModel || !isComparable)
            elsewhere.append(i);
    }
    if (!knowsModel && !wantOneImage(_waiting, elsewhere))
        elsewhere.clear();
    const QList<int> fitting = here + elsewhere;
    return fitting.isEmpty() ? std::nullopt : std::make_optional(_waiting.takeAt(fitting.first()));
}

QStringList AnnouncedUpdates::takeExpired()
{
    QStringList names;
    const auto isExpired = [](const Announcement &each) { return each.deadline.hasCome(); };
    for (const Announcement &expired : takeIf(_waiting, isExpired))
        names.append(expired.deviceName);
    return names;
}

void AnnouncedUpdates::forgetPath(const QString &path)
{
    for (Announcement &each : _waiting)
        each.olderOnes.removeAll(path);
}

void AnnouncedUpdates::setDeadline(const Deadline &deadline)
{
    for (Announcement &each : _waiting)
        each.deadline = deadline;
}

int AnnouncedUpdates::remainingTime() const
{
    int shortest = -1;
    for (const Announcement &each : _waiting) {
        const int remaining = each.deadline.remaining();
        shortest = shortest < 0 ? remaining : qMin(shortest, remaining);
    }
    return shortest;
}
