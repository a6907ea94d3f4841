// SPDX-License-Identifier: MIT
#pragma once

#include "client/commands/Command.h"

class VekErrorCode;
class VekInstrumentHandler;
struct VekInstrumentDescription;

namespace client {

class Connection;

/// Holds a channel at one set point by hand and prints its samples.
class ManualCommand : public Command
{
public:
    explicit ManualCommand(CLI::App &parent);
    int run() override;

private:
    VekErrorCode check(const Connection &connection) const;
    QStringList faultsOfSetPoint(const VekInstrumentDescription &instrument) const;
    VekErrorCode start(const VekInstrumentHandler &handler, unsigned char channel) const;
    VekErrorCode adjust(const VekInstrumentHandler &handler, unsigned char channel) const;
    VekErrorCode setRanges(const VekInstrumentHandler &handler, unsigned char channel) const;
    VekErrorCode setPoint(const VekInstrumentHandler &handler, unsigned char channel) const;

    std::string _port;
    int _channel = 0;
    std::optional<double> _voltage;
    std::optional<double> _current;
    bool _isOpenCircuit = false;
    std::optional<double> _interval;
    std::optional<double> _duration;
    std::optional<int> _currentRange;
    std::optional<int> _voltageRange;
    lab::SafetyLimits _limits;
};

} // namespace client
