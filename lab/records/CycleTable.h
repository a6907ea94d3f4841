// SPDX-License-Identifier: MIT
#pragma once

#include "lab/records/TableWriter.h"

#include <QString>

#include <limits>

namespace lab {

/// What a row of samples tells of the cycle that it belongs to. Totals are since the start of the test.
struct CycleMoment {
    double time = 0.0;     ///< seconds since the start of the test
    double unixTime = 0.0; ///< seconds
    double voltage = 0.0;
    double current = 0.0;
    int cycle = 1;
    bool isDriven = false;         ///< the row belongs to a step that does more than watch the cell
    double chargingCapacity = 0.0; ///< Ah; NaN where it is not known
    double dischargingCapacity = 0.0;
    double chargingEnergy = 0.0; ///< Wh
    double dischargingEnergy = 0.0;
};

/**
 * cycles.csv: a row for each cycle of a battery, written when the cycle is over.
 *
 * The last cycle of a run has its row too. Was the run ended before its program was, its efficiencies are not defined,
 * as they are not for a cycle that moved charge in one direction alone.
 *
 * @failure As TableWriter.
 */
class CycleTable
{
public:
    /// From then on rows are written, to this path. Without it there is no file.
    void open(const QString &path, double startUnixTime);
    void add(CycleMoment now);
    /// Writes the cycle that is under way.
    void finish(bool isProgramOver);
    void flush() { _file.flush(); }
    QString error() const { return _file.error(); }

private:
    void noteDirection(const CycleMoment &now);
    void write(bool isWhole);
    void beginCycle();

    /// How one direction of a cycle has gone.
    struct Half {
        double endVoltage = std::numeric_limits<double>::quiet_NaN();
        double duration = 0.0;
    };

    QString _path;
    TableWriter _file;
    CycleMoment _begin; // the last moment of the cycle before
    CycleMoment _last;
    Half _charge;
    Half _discharge;
    bool _hasRows = false;
};

} // namespace lab
