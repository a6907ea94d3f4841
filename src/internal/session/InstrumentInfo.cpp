// SPDX-License-Identifier: MIT
#include "session/InstrumentInfo.h"

bool isGale(const InstrumentInfo &info)
{
    return instrumentLineOf(info.hardware.hwModel) == InstrumentLine::Gale;
}

QString deviceNameIn(const HardwareVersion &hardware)
{
    const QByteArray text(hardware.rest, sizeof hardware.rest - 1); // the last byte ends the name in any case
    return textIn(text.mid(0, text.indexOf('\n')));                 // all of it if there is no line feed
}

QString textIn(const QByteArray &payload)
{
    return QString::fromUtf8(payload.constData(),
                             static_cast<int>(qstrnlen(payload.constData(), uint(payload.size()))));
}
