#include "engine/reports/explanationjson.h"

#include <nlohmann/json.hpp>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/explainedtables.h"
#include "engine/scoring/explanationlines.h"

namespace MCVelscore_850 {

namespace {

using Json = nlohmann::ordered_json;
using Kind = ExplanationOutline::Term::Kind;

const char* KindName(const ExplanationOutline::Term* term)
{
    if (term == nullptr) return "others";
    switch (term->kind) {
        case Kind::Parameter: return "parameter";
        case Kind::Offset: return "offset";
        case Kind::Threshold: return "threshold";
        case Kind::LinearPredictor: return "linear predictor";
    }
    return "";
}

Json LineJson(const ExplanationLine& line)
{
    Json json{{"term", line.term}, {"kind", KindName(line.outlined)}};
    const bool isParameter = line.outlined != nullptr && line.outlined->kind == Kind::Parameter;
    if (isParameter) json["beta"] = line.outlined->beta;
    if (isParameter && line.outlined->referencePoint) {
        json["referencePoint"] = *line.outlined->referencePoint;
    }
    if (line.outlined != nullptr) json["value"] = line.value;
    json["contribution"] = line.contribution;
    return json;
}

Json SumJson(const CaseExplanation::Sum& sum, ExplanationLines& lines)
{
    const auto& equation = lines.Outline().equations[sum.equation];
    Json json = Json::object();
    if (!equation.category.empty()) json["category"] = equation.category;
    if (equation.isCumulative) json["cumulative"] = true;
    json["linearPredictor"] = lines.LinearPredictor(sum);
    Json terms = Json::array();
    for (const ExplanationLine& line : lines.Of(sum)) terms.push_back(LineJson(line));
    json["terms"] = std::move(terms);
    return json;
}

Json ResultJson(const ExplainedCase& each, size_t column)
{
    const ResultBlock::Column& values = each.results.columns[column];
    if (!HasRow(values.present, each.place)) return {};
    if (values.codes.empty()) return values.numbers[each.place];
    const ResultCategory& category =
        each.results.categories[static_cast<size_t>(values.codes[each.place])];
    return category.number ? Json(*category.number) : Json(category.text);
}

std::string TextOf(const Json& json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string ExplanationBegin(const LoadedModel& model, const std::string& baseline)
{
    const ModelDescription& about = model.Description();
    Json json{{"document", model.File()}, {"family", about.family}, {"target", about.target},
              {"link", about.link},       {"mean", about.mean},     {"baseline", baseline}};
    std::string text = TextOf(json);
    text.back() = ',';
    return text + "\n\"cases\":[";
}

std::string ExplanationEnd(bool hasCases) { return hasCases ? "\n]}\n" : "]}\n"; }

std::string ExplanationJson(const ExplainedCase& each, ExplanationLines& lines, bool isFirst)
{
    Json json{{"row", each.row}, {"status", each.status.code}};
    if (!each.status.IsOK()) {
        json["statusField"] = std::string(each.status.FieldName());
        if (each.status.text) json["statusText"] = std::string(*each.status.text);
    }
    Json equations = Json::array();
    for (const CaseExplanation::Sum& sum : each.explanation.Sums()) {
        equations.push_back(SumJson(sum, lines));
    }
    json["equations"] = std::move(equations);
    Json results = Json::object();
    const auto columns = each.schema.ValueColumns();
    for (size_t i = 0; i < columns.size(); ++i) results[columns[i].name] = ResultJson(each, i);
    json["results"] = std::move(results);
    return (isFirst ? "\n" : ",\n") + TextOf(json);
}

}  // namespace MCVelscore_850
