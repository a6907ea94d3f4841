#include "JsonOutput.h"

#include <cmath>
#include <cstdio>

namespace client {

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
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

void printJson(const Json &json)
{
    std::printf("%s\n", dump(json).c_str());
}

} // namespace client
