#include "models/termplan.h"

#include <algorithm>
#include <cmath>

#include "host/model/scoremodel.h"
#include "host/variables/scoredictvar.h"
#include "models/ppcmatrix.h"

namespace MCVelscore_850 {

using kernels::TermPart;

namespace {

TermPart PartOf(size_t predictor, TermPart::Kind kind)
{
    return {.predictor = static_cast<int32_t>(predictor),
            .kind = kind,
            .times = 0,
            .code = CategoryCodes::kNone,
            .number = 0.0,
            .column = nullptr};
}

TermPart Repeated(size_t predictor, int32_t times)
{
    TermPart part = PartOf(predictor, TermPart::Times);
    part.times = times;
    return part;
}

TermPart Power(size_t predictor, double exponent)
{
    TermPart part = PartOf(predictor, TermPart::Power);
    part.number = exponent;
    return part;
}

// Factors whose cells are all numbers: they need no codes.
std::vector<char> FactorsOfNumbers(const PPCMatrix& cells, size_t parameters, size_t predictors)
{
    std::vector<char> numbers(predictors, 1);
    for (size_t p = 0; p < parameters; ++p) {
        for (const auto& [predictor, value] : cells.Row(static_cast<int>(p))) {
            if (value->Kind() != ScoreValue::NUMERIC) numbers[static_cast<size_t>(predictor)] = 0;
        }
    }
    return numbers;
}

}  // namespace

void TermPlan::AddPower(size_t predictor, double exponent)
{
    if (!(exponent > 0.0)) {
        parts.push_back(Repeated(predictor, 0));
    } else if (exponent == 1.0) {  // pow(x, 1) is x, exactly
        parts.push_back(Repeated(predictor, 1));
    } else {
        parts.push_back(Power(predictor, exponent));
    }
}

void TermPlan::AddRepeatedProduct(size_t predictor, double exponent)
{
    constexpr double kMostMultiplications = 100000.0;
    if (!(exponent > 0.0)) {
        parts.push_back(Repeated(predictor, 0));
    } else if (exponent > kMostMultiplications) {
        parts.push_back(Power(predictor, std::ceil(exponent)));
    } else {
        parts.push_back(Repeated(predictor, static_cast<int32_t>(std::ceil(exponent))));
    }
}

void TermPlan::AddCategory(size_t predictor, int32_t code)
{
    readings[predictor] = Reading::Code;
    TermPart part = PartOf(predictor, TermPart::Category);
    part.code = code;
    parts.push_back(part);
    codeCounts[predictor] = std::max(codeCounts[predictor], code + 1);
}

void TermPlan::AddNumber(size_t predictor, TermPart::Kind kind, double number)
{
    TermPart part = PartOf(predictor, kind);
    part.number = number;
    parts.push_back(part);
}

void TermPlan::AddContrast(size_t predictor, std::vector<double> column)
{
    readings[predictor] = Reading::Code;
    TermPart part = PartOf(predictor, TermPart::Contrast);
    codeCounts[predictor] = std::max(codeCounts[predictor], static_cast<int32_t>(column.size()));
    part.column = columns.emplace_back(std::move(column)).data();
    parts.push_back(part);
}

bool PlannedPredictors::IsFactor(size_t predictor) const
{
    return predictor < roles.size() && roles[predictor] == ScoreModel::ROLE_FACTOR;
}

bool PlannedPredictors::HasTexts(size_t predictor) const
{
    const ScoreDictVar* var = predictor < variables.size() ? variables[predictor] : nullptr;
    return var != nullptr && var->GetValueType() == ScoreDictVar::STRING;
}

TermPlan EmptyPlan(const PlannedPredictors& predictors)
{
    TermPlan plan;
    plan.readings.assign(predictors.variables.size(), TermPlan::Reading::Number);
    plan.codes.resize(predictors.variables.size());
    plan.codeCounts.resize(predictors.variables.size());
    return plan;
}

TermPlan TermsOfCells(const PPCMatrix& cells, size_t parameters,
                      const PlannedPredictors& predictors)
{
    TermPlan plan = EmptyPlan(predictors);
    const std::vector<char> ofNumbers =
        FactorsOfNumbers(cells, parameters, predictors.variables.size());
    for (size_t p = 0; p < parameters; ++p) {
        for (const auto& [predictor, value] : cells.Row(static_cast<int>(p))) {
            const auto k = static_cast<size_t>(predictor);
            if (!predictors.IsFactor(k)) {
                plan.AddPower(k, value->GetDouble());
            } else if (ofNumbers[k] != 0) {
                plan.readings[k] = TermPlan::Reading::FactorNumber;
                plan.AddNumber(k, TermPart::Equal, value->GetDouble());
            } else {
                plan.AddCategory(k, plan.codes[k].Add(*value));
            }
        }
        plan.EndParameter();
    }
    return plan;
}

}  // namespace MCVelscore_850
