// SPDX-License-Identifier: MIT
#include "calibration/CSVdataImporter.h"

#include "calibration/CsvFile.h"

#include <QDir>
#include <QFile>
#include <QtDebug>

namespace {

constexpr char nameEnd = ',';
constexpr char fileEnd = 0x1C; // the ASCII file separator

/// The index of the first such byte, or the size when there is none.
int searchUntil(const QByteArray &bytes, char end)
{
    const int found = bytes.indexOf(end);
    return found < 0 ? bytes.size() : found;
}

/// Cuts the bytes up to an end byte off the front, and the end byte too.
QByteArray takeUntil(QByteArray &bytes, char end)
{
    const int length = searchUntil(bytes, end);
    const QByteArray taken = bytes.left(length);
    bytes.remove(0, length + 1);
    return taken;
}

/// Takes off the empty fields that the card pads rows with. Three commas in a row leave one.
QByteArray cleaned(QByteArray contents)
{
    contents.replace(",,", "");
    contents.replace(",\n", "\n");
    return contents;
}

int columnsOf(const QByteArray &line)
{
    const QByteArray trimmed = line.trimmed();
    return trimmed.isEmpty() ? 0 : trimmed.count(',') + 1;
}

/// The width that all rows share with the heading; 0 at a blank row, -1 at one of another width or without rows.
int columnsOfRows(const QList<QByteArray> &lines, int headerColumns)
{
    int columns = -1;
    for (const QByteArray &line : lines.mid(1)) {
        columns = columnsOf(line);
        if (columns == 0)
            return 0;
        if (columns != headerColumns)
            return -1;
    }
    return columns;
}

} // namespace

CSVdataImporter::CSVdataImporter(const QString &targetDirectory) : directory(targetDirectory)
{
}

void CSVdataImporter::setCSVDataHeader(const csvDataHeader_t &dataHeader)
{
    header = dataHeader;
    payloadFull = false;
}

bool CSVdataImporter::appendCSVRawData(const QByteArray &bytes)
{
    if (header.magic != csvDataHeader_t::expectedMagic || payload.size() >= header.payloadSize)
        return false;
    payload.append(bytes);
    if (payload.size() < header.payloadSize)
        return true;
    payload.truncate(header.payloadSize);
    payloadFull = true;
    WriteCSVs();
    return true;
}

bool CSVdataImporter::validateCSVFiles() const
{
    for (const ImportedFiles &file : importedFiles)
        if (file.headerColumns <= 0 || file.rowColumns != file.headerColumns)
            return false;
    return true;
}

void CSVdataImporter::WriteCSVs()
{
    importedFiles.clear();
    prepareDirectory();
    QByteArray rest = payload; // a copy: the full payload goes on refusing further packets
    while (!rest.isEmpty()) {
        const QByteArray nameBytes = takeUntil(rest, nameEnd);
        const QString name = QString::fromUtf8(nameBytes.constData(), nameBytes.size()); // past a NUL too
        importedFiles.append(writeFile(name, cleaned(takeUntil(rest, fileEnd))));
    }
}

QString CSVdataImporter::pathOf(const QString &name) const
{
    return directory + QDir::separator() + name;
}

void CSVdataImporter::prepareDirectory() const
{
    if (directory.isEmpty())
        return;
    QDir folder(directory);
    folder.mkpath(QStringLiteral("."));
    if (payload.isEmpty())
        return;
    const QStringList oldFiles = folder.entryList(QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &file : oldFiles)
        QFile::remove(pathOf(file)); // QDir would take a name with a colon in front for a resource
}

CSVdataImporter::ImportedFiles CSVdataImporter::writeFile(const QString &name, const QByteArray &contents) const
{
    ImportedFiles result;
    result.name = name;
    if (directory.isEmpty() || !isPlainFileName(name)) {
        qWarning("CSVdataImporter::WriteCSVs  csvFileName file name is empty.");
        return result;
    }
    // What could not be written does not stop the others: the instrument measures without its correction.
    QFile file(pathOf(name));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text) || file.write(contents) != contents.size() || !file.flush())
        qWarning("Calibration table %s: %s", qPrintable(file.fileName()), qPrintable(file.errorString()));
    if (contents.isEmpty())
        return result;
    const QList<QByteArray> lines = contents.split('\n');
    result.headerColumns = columnsOf(lines.first());
    result.rowColumns = columnsOfRows(lines, result.headerColumns);
    return result;
}
