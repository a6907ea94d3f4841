// SPDX-License-Identifier: MIT
#include "client/instruments/RestartWait.h"

#include "client/terminal/SignalWatcher.h"
#include "lab/notation/PrintableText.h"
#include "lab/runs/EventWait.h"

#include <QElapsedTimer>

#include <utility>

namespace client {

using namespace lab;

namespace {

/// A name as messages have it: that of a bootloader may hold a line end.
QString plainName(const QString &name)
{
    return printable(QString(name).remove(QLatin1Char('\n')));
}

} // namespace

RestartWait::RestartWait(Machine machine) : _machine(std::move(machine)), _portsBefore(_machine.ports())
{
}

QStringList RestartWait::wait(QStringList names, int longestMs) const
{
    constexpr int pauseMs = 200;
    QStringList answered; // ports
    QElapsedTimer sinceAnswer;
    sinceAnswer.start();
    while (!names.isEmpty() && sinceAnswer.elapsed() < longestMs && !SignalWatcher::wasInterrupted()) {
        for (const QString &port : _machine.ports()) {
            const std::optional<QString> name = answered.contains(port) ? std::nullopt : _machine.ask(port);
            if (!name)
                continue;
            answered.append(port);
            const bool isAwaited =
                names.removeOne(plainName(*name)) || (!_portsBefore.contains(port) && names.removeOne(QString()));
            if (isAwaited)
                sinceAnswer.restart();
        }
        if (!names.isEmpty())
            EventWait().exec(pauseMs);
    }
    return names;
}

QString missingText(const QStringList &names)
{
    QStringList lines;
    for (const QString &name : names)
        lines.append(
            QStringLiteral("%1 has its new firmware, but has not answered since; it may have another port now, "
                           "or need to be switched off and on (nimbrelle list --ask).")
                .arg(name.isEmpty() ? QStringLiteral("An instrument") : name));
    return lines.join(QLatin1Char('\n'));
}

} // namespace client
