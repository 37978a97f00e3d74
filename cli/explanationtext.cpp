#include "cli/explanationtext.h"

#include <cmath>
#include <optional>
#include <vector>

#include <fmt/format.h>

#include "cli/texttable.h"
#include "engine/documents/loadedmodel.h"
#include "engine/messages/explanation.h"
#include "engine/scoring/explainedtables.h"
#include "engine/scoring/explanationlines.h"

namespace MCVelscore_850 {

namespace {

using Rows = std::vector<std::vector<std::string>>;
using Kind = ExplanationOutline::Term::Kind;

std::string Number(double number, int digits)
{
    return std::isnan(number) ? "" : fmt::format("{:.{}g}", number, digits);
}

std::vector<std::string> RowOf(const ExplanationLine& line, int digits)
{
    std::string beta;
    std::string reference;
    std::string value = Number(line.value, digits);
    if (line.outlined != nullptr && line.outlined->kind == Kind::Parameter) {
        beta = Number(line.outlined->beta, digits);
        if (line.outlined->referencePoint) {
            reference = Number(*line.outlined->referencePoint, digits);
        }
    }
    return {std::string(line.term), std::move(value), std::move(reference), std::move(beta),
            Number(line.contribution, digits)};
}

std::string SumText(const CaseExplanation::Sum& sum, ExplanationLines& lines, int digits)
{
    const ExplanationOutline::Equation& equation = lines.Outline().equations[sum.equation];
    std::string text;
    if (!equation.category.empty()) {
        text = fmt::format("  equation for {}{}\n", equation.category,
                           equation.isCumulative ? " and below" : "");
    }
    Rows rows{{"term", "value", "base point", "beta", "contribution"}};
    bool isCentred = false;
    for (const ExplanationLine& line : lines.Of(sum)) {
        rows.push_back(RowOf(line, digits));
        isCentred = isCentred || !rows.back()[2].empty();
    }
    if (!isCentred) rows.front()[2].clear();
    rows.push_back({"linear predictor", "", "", "", Number(lines.LinearPredictor(sum), digits)});
    return text + AlignedText(rows);
}

std::string WhyNoScore(const CaseStatus& status)
{
    std::optional<std::string> found;
    if (status.text) found = std::string(*status.text);
    const std::string fault = FaultText(std::string(status.FieldName()), found);
    std::string text = fmt::format("  no score, and so no explanation: status {}", status.code);
    if (!fault.empty()) text += ", " + fault;
    const auto explained = Explain(static_cast<int>(status.code));
    if (explained && !TellsTheCase(static_cast<int>(status.code))) {
        text += "\n  " + explained->text;
    }
    return text + "\n";
}

}  // namespace

std::string ExplanationHead(const LoadedModel& model, const std::string& baseline)
{
    const ModelDescription& about = model.Description();
    std::string text;
    const auto add = [&](std::string_view label, const std::string& line) {
        if (!line.empty()) text += fmt::format("{:<14}{}\n", label, line);
    };
    add("document", model.File());
    add("family", fmt::format("{} ({})", about.family, about.className));
    add("target", about.target);
    add("link", about.link);
    add("mean", about.mean);
    add("baseline", baseline);
    return text;
}

std::string ExplanationText(const ExplainedCase& each, ExplanationLines& lines, int digits)
{
    std::string text = fmt::format("\nrow {}\n", each.row);
    if (!each.status.IsOK()) return text + WhyNoScore(each.status);
    for (const CaseExplanation::Sum& sum : each.explanation.Sums()) {
        text += SumText(sum, lines, digits);
    }
    Rows rows;
    const auto columns = each.schema.ValueColumns();
    for (size_t i = 0; i < columns.size(); ++i) {
        std::string value =
            ResultText(each, i, [&](double number) { return Number(number, digits); });
        if (!value.empty()) rows.push_back({columns[i].name, std::move(value)});
    }
    return text + AlignedText(rows);
}

}  // namespace MCVelscore_850
