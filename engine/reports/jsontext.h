#ifndef VELSCORE_ENGINE_REPORTS_JSONTEXT_H
#define VELSCORE_ENGINE_REPORTS_JSONTEXT_H

#include <string>

#include <nlohmann/json.hpp>

namespace MCVelscore_850 {

/// A report as it is written: indented by two, with a line end. Bytes of texts that aren't UTF-8
/// are replaced.
inline std::string JsonText(const nlohmann::ordered_json& json)
{
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace MCVelscore_850

#endif
