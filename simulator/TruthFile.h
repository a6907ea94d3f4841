// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/FrontEnd.h"

#include <QFile>
#include <QString>

/**
 * A file of comma-separated rows below a header line, by which a later run knows that it may write it anew.
 *
 * Any other file that is there already is left alone. A pipe or a character device is written to as it is.
 */
class RecordFile
{
public:
    explicit RecordFile(const QByteArray &header) : _header(header + '\n') {}

    /// What stands at the path and must not be replaced; an empty text if nothing does.
    QString obstacleAt(const QString &path) const;
    /// Begins the file. @return false if it cannot be written; errorText() then says why
    bool open(const QString &path);
    QString errorText() const { return _errorText; }
    void flush();
    void close() { _file.close(); }

protected:
    /// Does nothing before open().
    void append(const QByteArray &row);

private:
    QByteArray _header;
    QString _errorText;
    QFile _file;
};

/**
 * Every DC record that was sent, in physical units, as comma-separated rows with 17 significant digits.
 *
 * Columns: channel, node index (-1 outside of an experiment), time in seconds of the instrument's clock, voltage, current,
 * counter electrode voltage, charge, temperature; SI units, degrees Celsius. "nan" where there is no value.
 */
class TruthFile : public RecordFile
{
public:
    TruthFile();
    void append(int channel, int nodeIndex, const DcSample &sample);
};

/**
 * The charge of every pass of every node, as the cell took it, in the order in which the passes ended.
 *
 * Columns: channel, node index, end in seconds of the instrument's clock, charge in coulombs with its sign.
 */
class PassFile : public RecordFile
{
public:
    PassFile();
    void append(int channel, int nodeIndex, quint64 tick, double charge);
};
