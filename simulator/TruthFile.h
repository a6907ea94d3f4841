#pragma once

#include "simulator/FrontEnd.h"

#include <QFile>
#include <QString>

/**
 * Every DC record that was sent, in physical units, as comma-separated rows with 17 significant digits.
 *
 * Columns: channel, node index (-1 outside of an experiment), time in seconds of the instrument's clock, voltage, current,
 * counter electrode voltage, charge, temperature; SI units, degrees Celsius. "nan" where there is no value.
 */
class TruthFile
{
public:
    /// @return false if the file cannot be written
    bool open(const QString &path);
    QString errorText() const { return _file.errorString(); }
    void append(int channel, int nodeIndex, const DcSample &sample);
    void close() { _file.close(); }

private:
    QFile _file;
};

/**
 * The charge of every pass of every node, as the cell took it, in the order in which the passes ended.
 *
 * Columns: channel, node index, end in seconds of the instrument's clock, charge in coulombs with its sign.
 */
class PassFile
{
public:
    /// @return false if the file cannot be written
    bool open(const QString &path);
    QString errorText() const { return _file.errorString(); }
    void append(int channel, int nodeIndex, quint64 tick, double charge);
    void close() { _file.close(); }

private:
    QFile _file;
};
