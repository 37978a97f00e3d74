#ifndef VELSCORE_ENGINE_REPORTS_JSONTEXT_H
#define VELSCORE_ENGINE_REPORTS_JSONTEXT_H

#include <string>

#include <nlohmann/json.hpp>

#include "engine/messages/visibletext.h"

namespace MCVelscore_850 {

/// A report as it is written: indented by two, with a line end. Bytes of texts that aren't UTF-8
/// are replaced; characters that a terminal would obey or hide are escaped.
inline std::string JsonText(const nlohmann::ordered_json& json)
{
    using Json = nlohmann::ordered_json;
    return EscapedJson(json.dump(2, ' ', false, Json::error_handler_t::replace)) + "\n";
}

}  // namespace MCVelscore_850

#endif
