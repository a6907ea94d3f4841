// SPDX-License-Identifier: MIT
#include "lab/notation/JsonOutput.h"

#include "lab/notation/PrintableText.h"

#include <cmath>

namespace lab {

namespace {

constexpr char deleteCharacter = 0x7f;

/// Bytes of the character that begins with this one, in valid UTF-8.
std::size_t lengthOfCharacter(char first)
{
    const auto byte = static_cast<unsigned char>(first);
    return byte < 0x80 ? 1 : byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
}

std::string escape(const QString &character)
{
    QString units;
    for (const QChar unit : character)
        units += QStringLiteral("\\u%1").arg(unit.unicode(), 4, 16, QLatin1Char('0'));
    return units.toStdString();
}

/// What a terminal would act on, in place of showing it, as JSON escapes; beyond the controls that JSON escapes itself.
std::string escaped(const std::string &json)
{
    std::string shown;
    shown.reserve(json.size());
    for (std::size_t at = 0; at < json.size();) {
        const std::size_t length = lengthOfCharacter(json[at]);
        if (length == 1 && json[at] != deleteCharacter) {
            shown += json[at++]; // most of a long record
            continue;
        }
        const QString character = QString::fromUtf8(json.data() + at, int(length));
        shown += isHarmless(character.toUcs4().value(0)) ? json.substr(at, length) : escape(character);
        at += length;
    }
    return shown;
}

} // namespace

Json number(double value)
{
    return std::isfinite(value) ? Json(value) : Json();
}

Json descriptionJson(const VekInstrumentDescription &description)
{
    return {{"name", text(description.deviceName)},
            {"model", text(description.vanityName)},
            {"modelName", text(description.modelName)},
            {"modelNumber", description.modelNumber},
            {"firmwareVersion", text(description.firmwareVersion)},
            {"firmwareChecksum", text(description.firmwareChecksum)},
            {"port", text(description.portName)},
            {"channels", description.channelCount}};
}

std::string dump(const Json &json)
{
    return escaped(json.dump(2, ' ', false, Json::error_handler_t::replace));
}

} // namespace lab
