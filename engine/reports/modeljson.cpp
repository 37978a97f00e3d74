#include "engine/reports/modeljson.h"

#include "engine/documents/loadedmodel.h"
#include "engine/reports/coefficients.h"
#include "engine/reports/jsontext.h"
#include "engine/scoring/resultschema.h"
#include "host/model/scoremodel.h"

namespace MCVelscore_850 {

namespace {

using Json = JsonValue;

Json EquationJson(const ModelDescription::Equation& equation)
{
    Json terms = Json::Array();
    for (const ModelDescription::Term& term : equation.terms) {
        Json factors = Json::Array();
        for (const ModelDescription::Factor& factor : term.factors) {
            Json entry{{"predictor", factor.predictor}};
            if (factor.isCategory) {
                entry["category"] = factor.category;
            } else {
                entry["exponent"] = factor.exponent;
            }
            factors.Add(std::move(entry));
        }
        Json entry{{"parameter", term.parameter}, {"label", term.label}, {"beta", term.beta}};
        if (term.referencePoint) entry["referencePoint"] = *term.referencePoint;
        entry["factors"] = std::move(factors);
        terms.Add(std::move(entry));
    }
    Json json = Json::Object();
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
    Json equations = Json::Array();
    for (const ModelDescription::Equation& equation : about.equations) {
        equations.Add(EquationJson(equation));
    }
    json["equations"] = std::move(equations);
    json["coefficients"] =
        CoefficientsJson(CoefficientsOf(about, ScoreModel::kDefaultConfidenceLevel));
    Json contrasts = Json::Array();
    for (const ModelDescription::Contrast& contrast : about.contrasts) {
        contrasts.Add({{"predictor", contrast.predictor},
                       {"categories", contrast.categories},
                       {"rows", contrast.rows}});
    }
    json["contrasts"] = std::move(contrasts);
    Json strata = Json::Array();
    for (const ModelDescription::Stratum& stratum : about.strata) {
        strata.Add({{"value", stratum.value},
                    {"cells", stratum.cells},
                    {"minTime", stratum.minTime},
                    {"maxTime", stratum.maxTime}});
    }
    json["baseline"] = std::move(strata);
    Json columns = Json::Array();
    const ResultSchema schema(about);
    for (const ResultColumn& column : schema.ValueColumns()) {
        columns.Add({{"column", column.name},
                     {"meaning", column.meaning},
                     {"empty", column.lacksCovariances}});
    }
    json["columns"] = std::move(columns);
    Json onRequest = Json::Array();
    for (const ResultColumn& column : ColumnsOnRequest(about)) {
        onRequest.Add({{"column", column.name}, {"meaning", column.meaning}});
    }
    json["columnsOnRequest"] = std::move(onRequest);
    json["adapted"] = model.Adaptations();
    json["notices"] = model.Notices();
    return JsonText(json);
}

}  // namespace MCVelscore_850
