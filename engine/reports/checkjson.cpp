#include "engine/reports/checkjson.h"

#include "engine/documents/loadedmodel.h"

namespace MCVelscore_850 {

namespace {

using Json = JsonValue;

Json NumberOrNull(unsigned long number) { return number == 0 ? Json() : Json(number); }

Json TextOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

// An array with an object for each finding, by place.
Json FindingsJson(const Findings& findings)
{
    Json all = Json::Array();
    for (const Finding& finding : findings.Kept()) {
        all.Add({{"rule", finding.rule->name},
                 {"code", nullptr},
                 {"severity", WordOf(finding.answer)},
                 {"strict", finding.answer != Answer::Fault && finding.CountsWhenStrict()},
                 {"line", NumberOrNull(finding.place.line)},
                 {"column", NumberOrNull(finding.place.column)},
                 {"path", TextOrNull(finding.place.path)},
                 {"element", TextOrNull(finding.element)},
                 {"attribute", TextOrNull(finding.attribute)},
                 {"found", finding.hasFound ? Json(finding.found) : Json()},
                 {"expected", TextOrNull(finding.expected)},
                 {"near", TextOrNull(finding.nearWord)},
                 {"message", finding.text},
                 {"remedy", TextOrNull(finding.remedy)},
                 {"fixable", finding.canBeFixed}});
    }
    return all;
}

// What the reader refused, as one of these objects.
Json RefusalJson(const Failure& failure)
{
    const auto* refusal = dynamic_cast<const DocumentFailure*>(&failure);
    return {{"rule", nullptr},
            {"code", failure.Code()},
            {"severity", WordOf(Answer::Fault)},
            {"strict", false},
            {"line", refusal == nullptr ? Json() : NumberOrNull(refusal->Line())},
            {"column", refusal == nullptr ? Json() : NumberOrNull(refusal->Column())},
            {"path", refusal == nullptr ? Json() : TextOrNull(refusal->ElementPath())},
            {"element", nullptr},
            {"attribute", nullptr},
            {"found", nullptr},
            {"expected", nullptr},
            {"near", nullptr},
            {"message", failure.what()},
            {"remedy", TextOrNull(failure.Remedy())},
            {"fixable", false}};
}

// How many of each rule are left out, by the rule's name.
Json LeftOutJson(const Findings& findings)
{
    Json leftOut = Json::Object();
    for (const Findings::Unkept& more : findings.NotKept()) {
        leftOut[std::string(more.rule->name)] = more.number;
    }
    return leftOut;
}

void AddFindings(const Findings& findings, Json& json)
{
    json["findings"] = FindingsJson(findings);
    json["leftOut"] = LeftOutJson(findings);
}

}  // namespace

Json AcceptedJson(const std::string& file, const LoadedModel& model)
{
    Json json{{"document", file},
              {"ok", true},
              {"family", model.Description().family},
              {"target", model.Description().target},
              {"adapted", model.Adaptations()}};
    AddFindings(model.DocumentFindings(), json);
    return json;
}

Json RefusedJson(const std::string& file, const Failure& failure)
{
    Json json{{"document", file}, {"ok", false}};
    const auto* refusal = dynamic_cast<const DocumentFailure*>(&failure);
    if (refusal != nullptr) {
        if (refusal->Line() > 0) {
            json["line"] = refusal->Line();
            json["column"] = refusal->Column();
        }
        if (!refusal->ElementPath().empty()) json["element"] = refusal->ElementPath();
    }
    json["code"] = failure.Code();
    json["message"] = failure.what();
    json["remedy"] = failure.Remedy();
    AddFindings(refusal == nullptr ? Findings() : refusal->Found(), json);
    // Faults of the audit are findings already.
    if (dynamic_cast<const DocumentFaults*>(&failure) == nullptr) {
        json["findings"].Add(RefusalJson(failure));
    }
    return json;
}

}  // namespace MCVelscore_850
