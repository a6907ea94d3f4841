// SPDX-License-Identifier: MIT
#include "firmware/UsbPlace.h"

#include <QDir>
#include <QFileInfo>

namespace {

/// "ttyACM0", from whatever leads there.
QString kernelName(const QString &node)
{
    const QFileInfo file(node.startsWith(QLatin1Char('/')) ? node : QStringLiteral("/dev/") + node);
    return QFileInfo(file.exists() ? file.canonicalFilePath() : file.filePath()).fileName();
}

} // namespace

QString usbPlaceOf(const QString &node, const QString &sysRoot)
{
    for (const char *kind : {"tty", "hidraw"}) {
        const QString link =
            QStringLiteral("%1/class/%2/%3/device").arg(sysRoot, QLatin1String(kind), kernelName(node));
        QDir place(QFileInfo(link).canonicalFilePath());
        // The interfaces of a USB device lie below it; it alone tells a vendor.
        for (bool hasParent = QFileInfo::exists(link); hasParent; hasParent = place.cdUp()) {
            if (place.exists(QStringLiteral("idVendor")))
                return place.path();
        }
    }
    return QString();
}
