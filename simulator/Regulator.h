#pragma once

#include "simulator/Control.h"
#include "simulator/cells/Cell.h"

#include <memory>

/**
 * The analogue side of a channel: imposes a control on the cell and lets time pass.
 *
 * Current and voltage are imposed exactly. Power, resistance and the capped voltage follow the cell's answer: the current
 * that satisfies the law is found at both ends of a short step and runs as a ramp between them, so that at each reading
 * the law holds exactly and the charge is the exact integral of the current that ran.
 *
 * A value: a copy has a cell of its own.
 */
class Regulator
{
public:
    explicit Regulator(std::unique_ptr<Cell> cell) : _cell(std::move(cell)) {}
    Regulator(const Regulator &other) : _cell(other._cell->clone()) {}
    Regulator(Regulator &&) = default;
    Regulator &operator=(Regulator other) noexcept
    {
        _cell.swap(other._cell);
        return *this;
    }

    /// Lets time pass under a control. @return the charge that went into the cell, in coulombs
    double hold(const Control &control, double seconds);
    CellReading read(const Control &control) const;
    const Cell &cell() const { return *_cell; }

private:
    double holdCapped(const Control &control, double seconds);
    double timeAtCap(const Control &control, double seconds) const;
    double followCell(const Control &control, double seconds);
    double followOnce(const Control &control, double seconds);
    double currentUnder(const Control &control) const;
    double currentAtPower(double watts) const;
    double currentAtLoad(double ohms) const;
    double currentOfMaximumPower(double cap) const;

    std::unique_ptr<Cell> _cell;
};
