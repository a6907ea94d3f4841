// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/Control.h"
#include "simulator/cells/Cell.h"

#include <memory>
#include <utility>

/**
 * The analogue side of a channel: imposes a control on the cell and lets time pass.
 *
 * Current and voltage are imposed exactly. Power, resistance and the capped voltage follow the cell's answer: the current
 * that satisfies the law is found at both ends of a short step and runs as a ramp between them, so that at each reading
 * the law holds exactly and the charge is the exact integral of the current that ran.
 *
 * What is to be held stays within the spans that can be set: a set point beyond an end is held at that end, and a ramp
 * stands still there.
 *
 * A value: a copy has a cell of its own.
 */
class Regulator
{
public:
    explicit Regulator(std::unique_ptr<Cell> cell) : _cell(std::move(cell)) {}
    Regulator(const Regulator &other)
        : _cell(other._cell->clone()), _currents(other._currents), _voltages(other._voltages)
    {
    }
    Regulator(Regulator &&) = default;
    Regulator &operator=(Regulator other) noexcept
    {
        _cell.swap(other._cell);
        std::swap(_currents, other._currents);
        std::swap(_voltages, other._voltages);
        return *this;
    }

    /// The amperes and volts that can be set; all there are at first.
    void setSpans(const Span &currents, const Span &voltages)
    {
        _currents = currents;
        _voltages = voltages;
    }

    /// Lets time pass under a control. @return the charge that went into the cell, in coulombs
    double hold(const Control &control, double seconds);
    CellReading read(const Control &control) const;
    const Cell &cell() const { return *_cell; }

private:
    Control withinSpans(const Control &control) const;
    double holdRamp(const Control &control, double seconds);
    double holdSteadily(const Control &control, double seconds);
    double holdCapped(const Control &control, double seconds);
    double timeAtCap(const Control &control, double seconds) const;
    double followCell(const Control &control, double seconds);
    double followOnce(const Control &control, double seconds);
    double currentUnder(const Control &control) const;
    double currentAtPower(double watts) const;
    double currentAtLoad(double ohms) const;
    double currentOfMaximumPower(double cap) const;

    std::unique_ptr<Cell> _cell;
    Span _currents; ///< amperes
    Span _voltages; ///< volts
};
