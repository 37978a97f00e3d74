#include "cli/modeltext.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <span>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/resultschema.h"

namespace MCVelscore_850 {

namespace {

using Json = nlohmann::ordered_json;

constexpr size_t kLabelWidth = 14;

std::string Number(double number) { return fmt::format("{}", number); }

std::string Joined(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names) {
        if (!text.empty()) text += ", ";
        text += name;
    }
    return text;
}

// A line "label         text", left out when there is nothing to say.
void AddLine(std::string& out, std::string_view label, const std::string& text)
{
    if (!text.empty()) out += fmt::format("{:<{}}{}\n", label, kLabelWidth, text);
}

// The factors that enter a term by their contrast, not as 0 or 1.
using Contrasted = std::set<std::string>;

std::string FactorText(const ModelDescription::Factor& factor, const Contrasted& contrasted)
{
    if (factor.isCategory) {
        return fmt::format("{}[{} = {}]", contrasted.contains(factor.predictor) ? "contrast" : "",
                           factor.predictor, factor.category);
    }
    if (factor.exponent == 1.0) return factor.predictor;  // exact: as the document writes it
    return fmt::format("{}^{}", factor.predictor, Number(factor.exponent));
}

std::string TermText(const ModelDescription::Term& term, const Contrasted& contrasted)
{
    std::string text = Number(std::abs(term.beta));
    for (const ModelDescription::Factor& factor : term.factors) {
        text += fmt::format(" * {}", FactorText(factor, contrasted));
    }
    return text;
}

// What is taken off each parameter's product of factors, where the model is centred.
void AddBasePoint(std::string& out, const ModelDescription::Equation& equation)
{
    const auto& terms = equation.terms;
    if (terms.empty() || !terms.front().referencePoint) return;
    out += "base point, taken off before each beta multiplies\n";
    for (const ModelDescription::Term& term : terms) {
        const std::string& name = term.label.empty() ? term.parameter : term.label;
        out += fmt::format("  {:<{}} {}\n", name, kLabelWidth - 3,
                           Number(term.referencePoint.value_or(0.0)));
    }
}

void AddEquation(std::string& out, const ModelDescription::Equation& equation,
                 const Contrasted& contrasted)
{
    if (equation.category.empty()) {
        out += "equation\n";
    } else {
        out += fmt::format("equation for {}{}\n", equation.category,
                           equation.isCumulative ? " and below" : "");
    }
    out += "  linear predictor =\n";
    for (const ModelDescription::Term& term : equation.terms) {
        out += fmt::format("    {} {}\n", std::signbit(term.beta) ? '-' : '+',
                           TermText(term, contrasted));
    }
    if (equation.terms.empty()) out += "    0\n";
    AddBasePoint(out, equation);
}

void AddContrast(std::string& out, const ModelDescription::Contrast& contrast)
{
    out += fmt::format("contrasts of {}\n", contrast.predictor);
    for (size_t row = 0; row < contrast.rows.size(); ++row) {
        out += fmt::format("  {:<{}}",
                           row < contrast.categories.size() ? contrast.categories[row] : "",
                           kLabelWidth - 2);
        for (const double value : contrast.rows[row]) out += fmt::format(" {}", value);
        out += '\n';
    }
}

// The columns of values.
std::span<const ResultColumn> ValueColumns(const ResultSchema& schema)
{
    return std::span(schema.Columns()).first(schema.ValueCount());
}

bool HasErrors(const ResultSchema& schema)
{
    const auto columns = ValueColumns(schema);
    return std::any_of(columns.begin(), columns.end(), [](const ResultColumn& column) {
        return column.quantity == ResultQuantity::StdDev;
    });
}

void AddStrata(std::string& out, const ModelDescription& description)
{
    const auto time = [](double limit) { return std::isnan(limit) ? "none" : Number(limit); };
    for (const ModelDescription::Stratum& stratum : description.strata) {
        const std::string times = fmt::format("{} cells, times {} to {}", stratum.cells,
                                              time(stratum.minTime), time(stratum.maxTime));
        AddLine(out, "baseline",
                stratum.value.empty() ? times : fmt::format("{}: {}", stratum.value, times));
    }
}

// The columns that --columns alone brings.
std::vector<ResultColumn> ColumnsOnRequest(const ModelDescription& about)
{
    const ResultSchema schema(about, {.linearPredictor = true, .linearPredictorError = true});
    std::vector<ResultColumn> columns;
    for (const ResultColumn& column : ValueColumns(schema)) {
        if (column.quantity == ResultQuantity::LinearPredictor ||
            column.quantity == ResultQuantity::LinearPredictorError) {
            columns.push_back(column);
        }
    }
    return columns;
}

void AddColumns(std::string& out, std::string_view heading, std::span<const ResultColumn> columns)
{
    if (columns.empty()) return;
    out += fmt::format("{}\n", heading);
    size_t width = kLabelWidth - 2;
    for (const ResultColumn& column : columns) width = std::max(width, column.name.size() + 2);
    for (const ResultColumn& column : columns) {
        out += fmt::format(
            "  {:<{}}{}\n", column.name, width,
            column.lacksCovariances ? "empty: the document has no covariances" : column.meaning);
    }
}

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

std::string ModelText(const LoadedModel& model)
{
    const ModelDescription& about = model.Description();
    const ResultSchema schema(about);
    std::string out;
    AddLine(out, "document",
            model.Version().empty() ? model.File()
                                    : fmt::format("{}, version {}", model.File(), model.Version()));
    AddLine(out, "family", fmt::format("{} ({})", about.family, about.className));
    AddLine(out, "target", about.target);
    AddLine(out, "categories", Joined(about.targetCategories));
    AddLine(out, "reference", about.referenceCategory);
    if (about.hasCutoff) {
        AddLine(out, "cut-off", fmt::format("{} for {}", about.cutoff, about.cutoffCategory));
    }
    AddLine(out, "factors", Joined(about.factors));
    AddLine(out, "covariates", Joined(about.covariates));
    AddLine(out, "offset", about.offset);
    AddLine(out, "trials", about.trials);
    AddLine(out, "end time", about.endTimeVariable);
    AddLine(out, "events", Joined(about.eventValues));
    AddLine(out, "strata", about.stratumVariable);
    AddLine(out, "reads", Joined(model.Columns()));
    AddLine(out, "distribution", about.distribution);
    if (!about.link.empty()) {
        AddLine(out, "link",
                about.hasLinkParameter
                    ? fmt::format("{} with parameter {}", about.link, about.linkParameter)
                    : about.link);
    }
    if (HasErrors(schema)) {  // other families use neither
        AddLine(out, "df", Number(about.degreesOfFreedom));
        AddLine(out, "covariances",
                about.hasCovariances     ? "yes"
                : about.Lacks("std_dev") ? "none: no standard errors, no confidence limits"
                                         : "none");
    }
    AddStrata(out, about);
    Contrasted contrasted;
    for (const ModelDescription::Contrast& contrast : about.contrasts) {
        contrasted.insert(contrast.predictor);
    }
    for (const ModelDescription::Equation& equation : about.equations) {
        AddEquation(out, equation, contrasted);
    }
    AddLine(out, "mean", about.mean);
    for (const ModelDescription::Contrast& contrast : about.contrasts) AddContrast(out, contrast);
    AddColumns(out, "columns of the output", ValueColumns(schema));
    AddColumns(out, "columns on request (--columns)", ColumnsOnRequest(about));
    for (const std::string& adaptation : model.Adaptations()) AddLine(out, "adapted", adaptation);
    for (const std::string& notice : model.Notices()) AddLine(out, "notice", notice);
    return out;
}

Json ModelJson(const LoadedModel& model)
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
    for (const ResultColumn& column : ValueColumns(schema)) {
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
    return json;
}

}  // namespace MCVelscore_850
