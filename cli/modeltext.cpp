#include "cli/modeltext.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <span>

#include <fmt/format.h>

#include "cli/texttable.h"
#include "engine/documents/loadedmodel.h"
#include "engine/messages/visibletext.h"
#include "engine/reports/coefficients.h"
#include "engine/scoring/resultschema.h"

namespace MCVelscore_850 {

namespace {

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
    if (!text.empty()) out += fmt::format("{:<{}}{}\n", label, kLabelWidth, VisibleText(text));
}

// The factors that enter a term by their contrast, not as 0 or 1.
using Contrasted = std::set<std::string>;

std::string FactorText(const ModelDescription::Factor& factor, const Contrasted& contrasted)
{
    if (factor.isCategory) {
        return fmt::format("{}[{} = {}]", contrasted.contains(factor.predictor) ? "contrast" : "",
                           VisibleText(factor.predictor), VisibleText(factor.category));
    }
    if (factor.exponent == 1.0)
        return VisibleText(factor.predictor);  // exact: as the document writes it
    return fmt::format("{}^{}", VisibleText(factor.predictor), Number(factor.exponent));
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
        out += fmt::format("  {:<{}} {}\n", VisibleText(name), kLabelWidth - 3,
                           Number(term.referencePoint.value_or(0.0)));
    }
}

void AddEquation(std::string& out, const ModelDescription::Equation& equation,
                 const Contrasted& contrasted)
{
    if (equation.category.empty()) {
        out += "equation\n";
    } else {
        out += fmt::format("equation for {}{}\n", VisibleText(equation.category),
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
    out += fmt::format("contrasts of {}\n", VisibleText(contrast.predictor));
    for (size_t row = 0; row < contrast.rows.size(); ++row) {
        out += fmt::format(
            "  {:<{}}",
            row < contrast.categories.size() ? VisibleText(contrast.categories[row]) : "",
            kLabelWidth - 2);
        for (const double value : contrast.rows[row]) out += fmt::format(" {}", value);
        out += '\n';
    }
}

bool HasErrors(const ResultSchema& schema)
{
    const auto columns = schema.ValueColumns();
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

void AddColumns(std::string& out, std::string_view heading, std::span<const ResultColumn> columns)
{
    if (columns.empty()) return;
    out += fmt::format("{}\n", heading);
    size_t width = kLabelWidth - 2;
    for (const ResultColumn& column : columns)
        width = std::max(width, VisibleText(column.name).size() + 2);
    for (const ResultColumn& column : columns) {
        out += fmt::format("  {:<{}}{}\n", VisibleText(column.name), width,
                           column.lacksCovariances ? "empty: the document has no covariances"
                                                   : VisibleText(column.meaning));
    }
}

// What stands above the numbers of the coefficients.
std::vector<std::string> CoefficientHeads(const CoefficientTable& table)
{
    const std::string level = fmt::format("{:.15g}%", 100.0 * table.level);
    std::vector<std::string> heads{
        "term",    "estimate",       "std. error",    table.isStudent ? "t value" : "z value",
        "p value", "lower " + level, "upper " + level};
    if (!table.ratio.empty()) {
        for (const char* which : {"", " lower", " upper"}) heads.push_back(table.ratio + which);
    }
    return heads;
}

}  // namespace

std::string CoefficientsText(const CoefficientTable& table)
{
    std::vector<std::vector<std::string>> rows{CoefficientHeads(table)};
    std::set<size_t> filled{0};
    for (const CoefficientRow& row : table.rows) {
        const std::string& name = row.label.empty() ? row.parameter : row.label;
        std::vector<std::string>& texts = rows.emplace_back();
        texts.push_back(
            VisibleText(row.category.empty() ? name : fmt::format("{}: {}", row.category, name)));
        for (const double number : table.NumbersOf(row)) {
            if (!std::isnan(number)) filled.insert(texts.size());
            texts.push_back(std::isnan(number) ? "" : fmt::format("{:.6g}", number));
        }
    }
    // A column without a number is left out.
    for (size_t i = 0; i < rows.front().size(); ++i) {
        if (!filled.contains(i)) rows.front()[i].clear();
    }
    const std::string head =
        !table.hasCovariances
            ? "the document has no covariances: no standard errors, tests and limits"
        : table.isStudent ? fmt::format("t with {} degrees of freedom", table.degreesOfFreedom)
                          : "z, the normal distribution";
    return head + "\n" + AlignedText(rows);
}

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
    AddColumns(out, "columns of the output", schema.ValueColumns());
    AddColumns(out, "columns on request (--columns)", ColumnsOnRequest(about));
    for (const std::string& adaptation : model.Adaptations()) AddLine(out, "adapted", adaptation);
    for (const std::string& notice : model.Notices()) AddLine(out, "notice", notice);
    return out;
}

}  // namespace MCVelscore_850
