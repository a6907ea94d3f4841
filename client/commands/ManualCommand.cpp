// SPDX-License-Identifier: MIT
#include "client/commands/ManualCommand.h"

#include "VekConstantCurrentElement.h"
#include "VekConstantPotElement.h"
#include "VekInstrumentHandler.h"
#include "client/instruments/Connection.h"
#include "client/instruments/SampleStream.h"
#include "client/terminal/Console.h"
#include "client/terminal/SignalWatcher.h"
#include "lab/experiments/ModelWords.h"
#include "lab/notation/Units.h"
#include "lab/runs/EventWait.h"
#include "lab/runs/StopChannel.h"

#include <cmath>

namespace client {

using namespace lab;

namespace {

using Ranges = std::vector<std::pair<double, double>>;

/// "0 (1 A), 1 (100 mA)": each index with its full scale.
QString rangesText(const Ranges &ranges, Dimension dimension)
{
    QStringList texts;
    for (const auto &[low, high] : ranges) {
        const double fullScale = std::max(std::abs(low), std::abs(high));
        texts.append(
            QStringLiteral("%1 (%2)").arg(QString::number(texts.size()), formatQuantity(fullScale, dimension)));
    }
    return texts.join(QLatin1String(", "));
}

QStringList faultsOfRange(const char *option, const std::optional<int> &index, const Ranges &ranges,
                          Dimension dimension)
{
    if (!index || (0 <= *index && std::size_t(*index) < ranges.size()))
        return {};
    return {QStringLiteral("%1 is %2; the ranges of this instrument are %3.")
                .arg(QLatin1String(option), QString::number(*index), rangesText(ranges, dimension))};
}

} // namespace

ManualCommand::ManualCommand(CLI::App &parent)
    : Command(parent, "manual", "Hold a voltage, a current or open circuit and print the samples, as CSV",
              "  nimbrelle manual ttyACM0 --voltage 1.5V --duration 10s\n"
              "  nimbrelle manual ttyACM0 --channel 3 --current \"-2 mA\" --max-voltage 4.2V\n"
              "The cell is disconnected at the end, also when interrupted.")
{
    addPort(_port);
    addChannel(_channel);
    CLI::Option_group *target = app().add_option_group("Set point", "What the channel holds");
    target->require_option(1);
    target->add_option(addQuantity("--voltage", Dimension::Voltage, _voltage, "Hold this voltage"));
    target->add_option(addQuantity("--current", Dimension::Current, _current, "Hold this current"));
    target->add_flag("--open-circuit", _isOpenCircuit, "Disconnect the cell and watch its voltage");
    addQuantity("--interval", Dimension::Time, _interval, "Time between two samples");
    addQuantity("--duration", Dimension::Time, _duration, "End after this time");
    app().add_option("--current-range", _currentRange, "Index of the current range; automatic without it");
    app().add_option("--voltage-range", _voltageRange, "Index of the voltage range; automatic without it");
    addSafetyLimits(_limits);
}

int ManualCommand::run()
{
    Connection connection(QString::fromStdString(_port));
    if (const ExitCode failure = connection.openToDrive({_channel}))
        return failure;
    const VekInstrumentHandler &handler = connection.handler();
    const auto channel = static_cast<unsigned char>(_channel);
    SampleStream stream(handler, channel, SampleStream::Source::Active, {_duration, std::nullopt});
    VekErrorCode refusal = check(connection);
    if (refusal == VekErrorCode::Success)
        refusal = start(handler, channel);
    if (refusal != VekErrorCode::Success) { // nothing of ours runs, so nothing is stopped
        Console::instance().error(refusalText(refusal));
        return Refused;
    }
    if (!SignalWatcher::wasInterrupted()) // else nothing is to be driven any more; the stream ends at once
        refusal = adjust(handler, channel);
    if (refusal != VekErrorCode::Success)
        Console::instance().error(refusalText(refusal));
    const ExitCode result = refusal == VekErrorCode::Success ? stream.run() : Refused;
    const bool isOver = result == NoConnection || stream.hasStopped() || stopChannel(handler, channel);
    if (!isOver)
        Console::instance().error(QStringLiteral("The instrument did not confirm that the cell is disconnected."));
    return isOver || result != Done ? result : Refused;
}

/// Before the start: what is refused must not have begun.
VekErrorCode ManualCommand::check(const Connection &connection) const
{
    const VekInstrumentHandler &handler = connection.handler();
    const auto channel = static_cast<unsigned char>(_channel);
    const QStringList faults = faultsOfSetPoint(connection.description()) +
                               faultsOfRange("--current-range", _currentRange,
                                             handler.getManualModeCurrentRangeList(channel), Dimension::Current) +
                               faultsOfRange("--voltage-range", _voltageRange,
                                             handler.getManualModeVoltageRangeList(channel), Dimension::Voltage);
    if (!faults.isEmpty())
        return VekErrorCode(VekErrorCode::ImplausibleParameters, faults.join(QLatin1Char('\n')));
    return _limits.check(connection.description());
}

/// A set point by hand has the range of one that an experiment holds.
QStringList ManualCommand::faultsOfSetPoint(const VekInstrumentDescription &instrument) const
{
    constexpr double any = 1.0; // an interval and a duration that every model takes
    VekConstantPotElement voltage(_voltage.value_or(0.0), any, any);
    VekConstantCurrentElement current(_current.value_or(0.0), any, any);
    return faultsOf(voltage, {{QStringLiteral("potential"), QStringLiteral("--voltage")}}, instrument) +
           faultsOf(current, {{QStringLiteral("current"), QStringLiteral("--current")}}, instrument);
}

/// Waits for the instrument's word on the start: its data begin, or an end comes, with the reason.
VekErrorCode ManualCommand::start(const VekInstrumentHandler &handler, unsigned char channel) const
{
    constexpr int answerTimeoutMs = 5000;
    VekErrorCode result(
        VekErrorCode::ManualExperimentNotRunning,
        QStringLiteral("The instrument did not answer the start within %1 s.").arg(answerTimeoutMs / 1000));
    EventWait wait;
    const auto decide = [&](unsigned char which, const VekErrorCode &verdict) {
        if (which != channel)
            return;
        result = verdict;
        wait.end();
    };
    using Handler = VekInstrumentHandler;
    QObject::connect(&handler, &Handler::experimentStarting, &wait,
                     [&](unsigned char which) { decide(which, VekErrorCode::Success); });
    QObject::connect(&handler, &Handler::experimentStopped, &wait, [&](unsigned char which, const QString &reason) {
        decide(which, VekErrorCode(VekErrorCode::ChannelBusy, reason));
    });
    QObject::connect(&handler, &Handler::deviceDisconnected, &wait,
                     [&] { decide(channel, VekErrorCode::DeviceNotFound); });
    const VekErrorCode refusal = handler.startManualExperiment(channel);
    if (refusal != VekErrorCode::Success)
        return refusal;
    wait.exec(answerTimeoutMs);
    if (result == VekErrorCode::ManualExperimentNotRunning)
        stopChannel(handler, channel);
    return result;
}

VekErrorCode ManualCommand::adjust(const VekInstrumentHandler &handler, unsigned char channel) const
{
    // Behind the start, which an instrument refuses that still drives the cell under the limits of before.
    VekErrorCode result = _limits.replace(handler, channel);
    if (result == VekErrorCode::Success && _interval)
        result = handler.setManualModeSamplingInterval(channel, *_interval);
    if (result == VekErrorCode::Success)
        result = setRanges(handler, channel);
    if (result == VekErrorCode::Success)
        result = setPoint(handler, channel);
    return result;
}

VekErrorCode ManualCommand::setRanges(const VekInstrumentHandler &handler, unsigned char channel) const
{
    const VekErrorCode result = _currentRange ? handler.setManualModeCurrentRange(channel, *_currentRange)
                                              : handler.setManualModeCurrentAutorange(channel);
    if (result != VekErrorCode::Success)
        return result;
    return _voltageRange ? handler.setManualModeVoltageRange(channel, *_voltageRange)
                         : handler.setManualModeVoltageAutorange(channel);
}

VekErrorCode ManualCommand::setPoint(const VekInstrumentHandler &handler, unsigned char channel) const
{
    if (_voltage)
        return handler.setManualModeConstantVoltage(channel, *_voltage);
    if (_current)
        return handler.setManualModeConstantCurrent(channel, *_current);
    return handler.setManualModeOCP(channel);
}

} // namespace client
