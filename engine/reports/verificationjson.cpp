#include "engine/reports/verificationjson.h"

#include "engine/documents/loadedmodel.h"
#include "engine/reports/jsontext.h"
#include "engine/scoring/verification.h"

namespace MCVelscore_850 {

using Json = JsonValue;

std::string VerificationJson(const LoadedModel& model, const VerificationReport& report)
{
    Json differences = Json::Array();
    for (const Difference& difference : report.differences) {
        differences.Add(
            {{"record", difference.record},
             {"field", difference.field},
             {"expected", difference.expected},
             {"found", difference.found},
             {"precision", difference.precision},
             {"status", difference.status},
             {"statusField", difference.faultyField},
             {"statusText", difference.faultyText ? Json(*difference.faultyText) : Json()}});
    }
    return JsonText({{"document", model.File()},
                     {"adapted", model.Adaptations()},
                     {"notices", model.Notices()},
                     {"records", report.records},
                     {"compared", report.compared},
                     {"differences", std::move(differences)}});
}

}  // namespace MCVelscore_850
