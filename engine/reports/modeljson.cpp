#include "engine/reports/modeljson.h"

#include <nlohmann/json.hpp>

#include "engine/documents/loadedmodel.h"
#include "engine/reports/coefficients.h"
#include "engine/reports/jsontext.h"
#include "engine/scoring/resultschema.h"
#include "host/model/scoremodel.h"

namespace MCVelscore_850 {

namespace {

using Json = nlohmann::ordered_json;

Json EquationJson(const ModelDescription::Equation& equation)
{
    Json terms = Json::array();
    for (const ModelDescription::Term& term : equation.terms) {
        Json factors = Json::array();
        for (const ModelDescription::Factor& factor : term.factors) {
            Json entry{{"predictor", factor.predictor}};
            if (factor.isCategory) {
                entry["category"] = factor.category;
            } else {
                entry["exponent"] = factor.exponent;
            }
            factors.push_back(std::move(entry));
        }
        Json entry{{"parameter", term.parameter}, {"label", term.label}, {"beta", term.beta}};
        if (term.referencePoint) entry["referencePoint"] = *term.referencePoint;
        entry["factors"] = std::move(factors);
        terms.push_back(std::move(entry));
    }
    Json json = Json::object();
    if (!equation.category.empty()) json["category"] = equation.category;
    if (equation.isCumulative) json["cumulative"] = true;
    json["terms"] = std::move(terms);
    return json;
}

}  // namespace

std::string ModelJson(const LoadedModel& model)
{
    const ModelDescription& about = model.Description();
    Json json{{"document", model.File()},
              {"version", model.Version()},
              {"family", about.family},
              {"class", about.className},
              {"target", about.target},
              {"targetCategories", about.targetCategories},
              {"referenceCategory", about.referenceCategory},
              {"factors", about.factors},
              {"covariates", about.covariates},
              {"offset", about.offset},
              {"trials", about.trials},
              {"endTime", about.endTimeVariable},
              {"eventValues", about.eventValues},
              {"strata", about.stratumVariable},
              {"reads", model.Columns()},
              {"distribution", about.distribution},
              {"link", about.link}};
    json["linkParameter"] = about.hasLinkParameter ? Json(about.linkParameter) : Json();
    json["mean"] = about.mean;
    json["cutoff"] = about.hasCutoff ? Json(about.cutoff) : Json();
    json["cutoffCategory"] = about.cutoffCategory;
    json["df"] = about.degreesOfFreedom;
    json["hasCovariances"] = about.hasCovariances;
    Json equations = Json::array();
    for (const ModelDescription::Equation& equation : about.equations) {
        equations.push_back(EquationJson(equation));
    }
    json["equations"] = std::move(equations);
    json["coefficients"] =
        CoefficientsJson(CoefficientsOf(about, ScoreModel::kDefaultConfidenceLevel));
    Json contrasts = Json::array();
    for (const ModelDescription::Contrast& contrast : about.contrasts) {
        contrasts.push_back({{"predictor", contrast.predictor},
                             {"categories", contrast.categories},
                             {"rows", contrast.rows}});
    }
    json["contrasts"] = std::move(contrasts);
    Json strata = Json::array();
    for (const ModelDescription::Stratum& stratum : about.strata) {
        strata.push_back({{"value", stratum.value},
                          {"cells", stratum.cells},
                          {"minTime", stratum.minTime},
                          {"maxTime", stratum.maxTime}});
    }
    json["baseline"] = std::move(strata);
    Json columns = Json::array();
    const ResultSchema schema(about);
    for (const ResultColumn& column : schema.ValueColumns()) {
        columns.push_back({{"column", column.name},
                           {"meaning", column.meaning},
                           {"empty", column.lacksCovariances}});
    }
    json["columns"] = std::move(columns);
    Json onRequest = Json::array();
    for (const ResultColumn& column : ColumnsOnRequest(about)) {
        onRequest.push_back({{"column", column.name}, {"meaning", column.meaning}});
    }
    json["columnsOnRequest"] = std::move(onRequest);
    json["adapted"] = model.Adaptations();
    json["notices"] = model.Notices();
    return JsonText(json);
}

}  // namespace MCVelscore_850
