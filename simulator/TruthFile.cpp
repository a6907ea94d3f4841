// SPDX-License-Identifier: MIT
#include "simulator/TruthFile.h"

#include "simulator/NodeRunner.h"

#include <sys/stat.h>

namespace {

QByteArray number(double value)
{
    return QByteArray::number(value, 'g', 17);
}

bool isRegularFile(const QByteArray &name)
{
    struct stat found = {};
    return lstat(name.constData(), &found) == 0 && S_ISREG(found.st_mode);
}

/// What is written there replaces nothing.
bool isStream(const QByteArray &name)
{
    struct stat found = {};
    return stat(name.constData(), &found) == 0 && (S_ISFIFO(found.st_mode) || S_ISCHR(found.st_mode));
}

bool beginsWith(const QString &path, const QByteArray &header)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(header.size()) == header;
}

} // namespace

QString RecordFile::obstacleAt(const QString &path) const
{
    const QByteArray name = QFile::encodeName(path);
    struct stat found = {};
    if (lstat(name.constData(), &found) != 0 || isStream(name) || (isRegularFile(name) && beginsWith(path, _header)))
        return QString();
    return QStringLiteral("there is something already, and no earlier run has written it");
}

bool RecordFile::open(const QString &path)
{
    _errorText = obstacleAt(path);
    if (!_errorText.isEmpty())
        return false;
    _file.setFileName(path);
    const bool isNew = !QFile::exists(path);
    const QIODevice::OpenMode mode = isNew ? QIODevice::NewOnly : QIODevice::WriteOnly | QIODevice::Truncate;
    if (_file.open(mode) && _file.write(_header) == _header.size() && _file.flush())
        return true;
    _errorText = _file.errorString();
    return false;
}

void RecordFile::flush()
{
    if (_file.isOpen())
        _file.flush();
}

void RecordFile::append(const QByteArray &row)
{
    if (_file.isOpen())
        _file.write(row + '\n');
}

TruthFile::TruthFile() : RecordFile("channel,node,time,voltage,current,counter_electrode,charge,temperature")
{
}

void TruthFile::append(int channel, int nodeIndex, const DcSample &sample)
{
    QByteArray row = QByteArray::number(channel) + ',' + QByteArray::number(nodeIndex);
    for (const double value : {double(sample.tick) / ticksPerSecond, sample.voltage, sample.current,
                               sample.counterElectrode, sample.charge, sample.temperature})
        row += ',' + number(value);
    RecordFile::append(row);
}

PassFile::PassFile() : RecordFile("channel,node,end,charge")
{
}

void PassFile::append(int channel, int nodeIndex, quint64 tick, double charge)
{
    RecordFile::append(QByteArray::number(channel) + ',' + QByteArray::number(nodeIndex) + ',' +
                       number(double(tick) / ticksPerSecond) + ',' + number(charge));
}
