#include "simulator/TruthFile.h"

#include "simulator/NodeRunner.h"

namespace {

QByteArray number(double value)
{
    return QByteArray::number(value, 'g', 17);
}

} // namespace

bool TruthFile::open(const QString &path)
{
    _file.setFileName(path);
    if (!_file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return _file.write("channel,node,time,voltage,current,counter_electrode,charge,temperature\n") > 0;
}

void TruthFile::append(int channel, int nodeIndex, const DcSample &sample)
{
    if (!_file.isOpen())
        return;
    QByteArray row = QByteArray::number(channel) + ',' + QByteArray::number(nodeIndex);
    for (const double value : {double(sample.tick) / ticksPerSecond, sample.voltage, sample.current,
                               sample.counterElectrode, sample.charge, sample.temperature})
        row += ',' + number(value);
    _file.write(row + '\n');
}

bool PassFile::open(const QString &path)
{
    _file.setFileName(path);
    if (!_file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return _file.write("channel,node,end,charge\n") > 0;
}

void PassFile::append(int channel, int nodeIndex, quint64 tick, double charge)
{
    if (!_file.isOpen())
        return;
    _file.write(QByteArray::number(channel) + ',' + QByteArray::number(nodeIndex) + ',' +
                number(double(tick) / ticksPerSecond) + ',' + number(charge) + '\n');
}
