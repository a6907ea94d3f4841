// SPDX-License-Identifier: MIT
// Streams of calibration tables from the SD card, cut anywhere, with file names that lead anywhere.

#include "FuzzTarget.h"
#include "WriteGuard.h"
#include "calibration/CalibrationData.h"

#include <QDir>

namespace {

csvDataHeader_t headerFrom(FuzzInput &input)
{
    csvDataHeader_t header;
    header.magic = input.flag() ? input.take<quint32>() : csvDataHeader_t::expectedMagic;
    header.payloadSize = input.take<qint32>();
    return header;
}

/// Said here once more, as a check that the library has lost would not miss itself.
bool leadsElsewhere(const QString &name)
{
    static const QStringList folders{QString(), QStringLiteral("."), QStringLiteral("..")};
    return folders.contains(name) || name.contains(QLatin1Char('/')) || name.contains(QChar(QChar::Null));
}

void transfer(CSVdataImporter &importer, FuzzInput &input)
{
    importer.setCSVDataHeader(headerFrom(input));
    while (!input.isEmpty())
        importer.appendCSVRawData(input.text());
    importer.validateCSVFiles();
    for (const CSVdataImporter::ImportedFiles &file : importer.files()) {
        if (leadsElsewhere(file.name))
            mustHold(file.headerColumns == 0, "a name that leads elsewhere names no table");
    }
}

void mustHoldAtMost(int files, const QString &folder)
{
    mustHold(QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System).size() <= files,
             "a transfer replaces the files of its folder");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString base = FuzzProcess::instance().documents() + QStringLiteral("/Brenmoor Apparatus");
    const QString tables = base + QStringLiteral("/Calibration files");
    QDir().mkpath(tables);
    FuzzInput input(data, size);
    if (input.below(8) == 0) { // an instrument's name may be as hostile; reading its 150 tables takes a while
        const WriteGuard guard(base);
        CalibrationData calibration;
        calibration.importCalData(base, QString::fromUtf8(input.text()));
        transfer(*calibration.getDataImporter(), input);
    } else {
        const QString folder = tables + QStringLiteral("/Alder-0042");
        const WriteGuard guard(folder);
        CSVdataImporter importer(folder);
        transfer(importer, input);
        if (importer.isCSVDataPayloadFull())
            mustHoldAtMost(importer.files().size(), folder);
    }
    return 0;
}
