// SPDX-License-Identifier: MIT
#include "firmware/FirmwareImages.h"

#include "hardware_models/HardwareModelFactory.h"
#include "images/HexLoader.h"

#include <QDirIterator>

namespace {

const QByteArray standInMark = QByteArrayLiteral("stand-in for Nimbrelle_");
constexpr int typePosition = 3;
constexpr char endOfFile = 1;

std::shared_ptr<const HardwareModel> modelOf(int number)
{
    const bool fits = number == static_cast<quint8>(number);
    return HardwareModelFactory::getHardwareModel(fits ? static_cast<HardwareModel_t>(number)
                                                       : HardwareModel_t::Invalid);
}

bool isStandIn(const QList<QByteArray> &records)
{
    return HexLoader::ImageBytes(records).startsWith(standInMark);
}

bool areStandInsAllowed()
{
    return qgetenv("NIMBRELLE_ALLOW_STAND_IN") == "1";
}

/// Whether there is a program, up to its end. A file that was cut off still has a sound record in its last line.
bool isWhole(const QList<QByteArray> &records)
{
    return !HexLoader::ImageBytes(records).isEmpty() && records.last().at(typePosition) == endOfFile;
}

bool isOfFamily(const QString &family, const QString &path)
{
    return HexLoader::ReadHexSignature(path).text.trimmed().compare(family, Qt::CaseInsensitive) == 0;
}

} // namespace

QString FirmwareImages::pathFor(int model)
{
    return HexLoader::getDefaultHexPath(modelOf(model)->hexFileName());
}

VekErrorCode FirmwareImages::verdictOn(int model)
{
    return verdictOn(pathFor(model), modelOf(model)->getHexFileSignatureText());
}

VekErrorCode FirmwareImages::verdictOn(const QString &path, const QString &family)
{
    const QList<QByteArray> records = HexLoader::ReadFile(path);
    if (!isWhole(records) || !isOfFamily(family, path))
        return VekErrorCode::FirmwareFileNotFound;
    return isRefusedStandIn(records) ? VekErrorCode::StandInFirmware : VekErrorCode::Success;
}

QList<QByteArray> FirmwareImages::recordsToWrite(const QString &path)
{
    const QList<QByteArray> records = HexLoader::ReadFile(path);
    return isRefusedStandIn(records) ? QList<QByteArray>() : records;
}

bool FirmwareImages::isRefusedStandIn(const QList<QByteArray> &records)
{
    return isStandIn(records) && !areStandInsAllowed();
}

bool FirmwareImages::includeStandIn()
{
    QDirIterator files(HexLoader::getDefaultHexPath(QString()));
    while (files.hasNext()) {
        if (isStandIn(HexLoader::ReadFile(files.next())))
            return true;
    }
    return false;
}
