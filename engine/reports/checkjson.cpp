#include "engine/reports/checkjson.h"

#include <nlohmann/json.hpp>

#include "engine/documents/loadedmodel.h"

namespace MCVelscore_850 {

using Json = nlohmann::ordered_json;

Json AcceptedJson(const std::string& file, const LoadedModel& model)
{
    return {{"document", file},
            {"ok", true},
            {"family", model.Description().family},
            {"target", model.Description().target},
            {"adapted", model.Adaptations()}};
}

Json RefusedJson(const std::string& file, const Failure& failure)
{
    Json json{{"document", file}, {"ok", false}};
    if (const auto* refusal = dynamic_cast<const DocumentFailure*>(&failure)) {
        if (refusal->Line() > 0) {
            json["line"] = refusal->Line();
            json["column"] = refusal->Column();
        }
        if (!refusal->ElementPath().empty()) json["element"] = refusal->ElementPath();
    }
    json["code"] = failure.Code();
    json["message"] = failure.what();
    json["remedy"] = failure.Remedy();
    return json;
}

}  // namespace MCVelscore_850
