#include "engine/reports/coefficients.h"

#include <cmath>
#include <limits>
#include <string_view>

#include "engine/scoring/resultnumber.h"
#include "engine/tables/rowtext.h"
#include "host/model/modeldescription.h"
#include "stats/precise.h"

namespace MCVelscore_850 {

namespace {

namespace Precise = MCMath_850::Precise;
using Json = JsonValue;

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr size_t kRatioColumns = 3;

// What exp() of an estimate is, by the link.
constexpr struct {
    std::string_view link;
    const char* ratio;
} kRatios[] = {
    {"logit", "odds ratio"},
    {"Logit", "odds ratio"},
    {"generalized logit", "odds ratio"},
    {"cumulative logit", "odds ratio"},
    {"logit, cumulative", "odds ratio"},
};

std::string RatioOf(const ModelDescription& description)
{
    if (!description.strata.empty()) return "hazard ratio";
    for (const auto& row : kRatios) {
        if (row.link == description.link) return row.ratio;
    }
    return "";
}

// What estimates are judged by.
struct Distribution {
    bool isStudent;
    double df;

    /// P(|X| > size).
    double Beyond(double size) const
    {
        if (std::isnan(size)) return kNone;
        if (!isStudent) return Precise::Erfc(size / std::sqrt(2.0));
        return df > 0.0 ? 2.0 * Precise::SigT(size, df) : kNone;
    }
    /// The q with P(|X| <= q) = level.
    double Limit(double level) const
    {
        const double tail = (1.0 - level) / 2.0;
        if (!isStudent) return -Precise::IdfStdNorm(tail);
        return df > 0.0 ? -Precise::IdfT(tail, df) : kNone;
    }
};

}  // namespace

std::vector<std::string> CoefficientTable::Columns() const
{
    const std::string statistic = isStudent ? "t_value" : "z_value";
    std::vector<std::string> columns{"equation", "parameter", "label",    "estimate", "std_err",
                                     statistic,  "p_value",   "ci_lower", "ci_upper"};
    if (ratio.empty()) return columns;
    const std::string name = ratio == "hazard ratio" ? "hazard_ratio" : "odds_ratio";
    for (const char* which : {"", "_lower", "_upper"}) columns.push_back(name + which);
    return columns;
}

std::vector<double> CoefficientTable::NumbersOf(const CoefficientRow& row) const
{
    std::vector<double> numbers{row.estimate, row.standardError, row.statistic,
                                row.pValue,   row.lower,         row.upper,
                                row.ratio,    row.ratioLower,    row.ratioUpper};
    if (ratio.empty()) numbers.resize(numbers.size() - kRatioColumns);
    return numbers;
}

CoefficientTable CoefficientsOf(const ModelDescription& description, double level)
{
    CoefficientTable table;
    table.level = level;
    table.isStudent = description.hasStudentEstimates;
    table.degreesOfFreedom = description.degreesOfFreedom;
    table.hasCovariances = description.hasCovariances;
    table.ratio = RatioOf(description);
    const Distribution distribution{table.isStudent, table.degreesOfFreedom};
    const double quantile = distribution.Limit(level);
    for (const ModelDescription::Coefficient& each : description.coefficients) {
        CoefficientRow row{.category = each.category,
                           .parameter = each.parameter,
                           .label = each.label,
                           .estimate = each.estimate,
                           .standardError = each.standardError,
                           .statistic = kNone,
                           .pValue = kNone,
                           .lower = each.estimate - quantile * each.standardError,
                           .upper = each.estimate + quantile * each.standardError,
                           .ratio = kNone,
                           .ratioLower = kNone,
                           .ratioUpper = kNone};
        if (each.standardError > 0.0) {
            row.statistic = each.estimate / each.standardError;
            row.pValue = distribution.Beyond(std::fabs(row.statistic));
        }
        if (!table.ratio.empty() && !each.isConstant) {
            row.ratio = std::exp(row.estimate);
            row.ratioLower = std::exp(row.lower);
            row.ratioUpper = std::exp(row.upper);
        }
        table.rows.push_back(std::move(row));
    }
    return table;
}

std::string CoefficientsCsv(const CoefficientTable& table)
{
    RowText text;
    text.AddHeader(table.Columns());
    for (const CoefficientRow& row : table.rows) {
        for (const std::string* name : {&row.category, &row.parameter, &row.label}) {
            text.AddText(*name);
        }
        for (const double number : table.NumbersOf(row)) WriteResultNumber(text, number);
        text.EndRow();
    }
    return std::string(text.Text());
}

JsonValue CoefficientsJson(const CoefficientTable& table)
{
    Json json{{"level", table.level}, {"ratio", table.ratio}};
    json["df"] = table.isStudent ? Json(table.degreesOfFreedom) : Json();
    const std::vector<std::string> columns = table.Columns();
    Json rows = Json::Array();
    for (const CoefficientRow& row : table.rows) {
        Json entry{
            {columns[0], row.category}, {columns[1], row.parameter}, {columns[2], row.label}};
        const std::vector<double> numbers = table.NumbersOf(row);
        for (size_t i = 0; i < numbers.size(); ++i) {
            entry[columns[columns.size() - numbers.size() + i]] = numbers[i];
        }
        rows.Add(std::move(entry));
    }
    json["rows"] = std::move(rows);
    return json;
}

}  // namespace MCVelscore_850
