// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

/// Opens the transfer of calibration tables from the SD card: 256 bytes, little-endian; payload of NT_SD_CAL_HEADER.
struct csvDataHeader_t {
    static constexpr quint32 expectedMagic = 0x30303031; ///< "1000"

    quint32 magic = 0;
    qint32 payloadSize = 0;     ///< bytes to come, at least 1
    quint8 reserved8[248] = {}; ///< not read
};
static_assert(sizeof(csvDataHeader_t) == 256, "the record as it travels");

/**
 * Takes the calibration tables of an SD card packet by packet, cuts them into files, cleans these and writes them.
 *
 * The stream is a row of files, each its name, a comma, its contents, and the byte 0x1C. The card pads short rows with
 * empty fields, which the cleaning removes. A transfer replaces all files of its folder.
 *
 * A new header does not drop what has arrived: make a new importer for a new transfer.
 *
 * @thread  A value without lock, for one thread at a time.
 * @failure A name that is no plain file name, or an importer without a folder: a warning, nothing is written or deleted,
 *          and the file counts as failed.
 */
class CSVdataImporter
{
public:
    /// How one file of the last transfer came out.
    struct ImportedFiles {
        QString name;
        int headerColumns = 0; ///< 0 when the heading is blank
        int rowColumns = 0;    ///< the same in all rows, else -1; 0 when a row is blank
    };

    CSVdataImporter() = default;
    explicit CSVdataImporter(const QString &directory);

    void setCSVDataHeader(const csvDataHeader_t &dataHeader);
    /// Adds a packet; the last one, cut at the announced size, writes the files. False: wrong magic, or already full.
    bool appendCSVRawData(const QByteArray &bytes);
    bool isCSVDataPayloadFull() const { return payloadFull; }
    /// Whether every file of the last transfer has a heading and rows, all of the same width.
    bool validateCSVFiles() const;
    /// Writes what has arrived; appendCSVRawData() calls it at the end.
    void WriteCSVs();

    const QList<ImportedFiles> &files() const { return importedFiles; }

private:
    QString pathOf(const QString &name) const;
    void prepareDirectory() const;
    ImportedFiles writeFile(const QString &name, const QByteArray &contents) const;

    QList<ImportedFiles> importedFiles;
    QString directory;
    csvDataHeader_t header;
    QByteArray payload;
    bool payloadFull = false;
};
