#include "models/blrmodel.h"

#include <algorithm>
#include <array>
#include <ostream>

#include "host/model/modelfamilies.h"
#include "host/variables/catencoder.h"
#include "host/variables/valueset.h"
#include "kernels/linearpredictor.h"
#include "kernels/softmax.h"
#include "models/caseroad.h"
#include "models/explainedterms.h"

namespace MCVelscore_850 {

using MCScore::MCStatus;

namespace {

constexpr CaseRoad kRoad{
    .tracesNullRecord = false,
    .fetchesDerivedRecord = true,
    .failsUnderStatusOnly = true,
    .namesBadPredictor = true,
    .clearsNumbers = false,
    .missingPrediction = MissingPrediction::TargetTyped,
};

constexpr size_t kCategories = 2;

// The first entry that equals the number within the host's tolerance; the size when none does.
size_t FindNumber(const std::vector<double>& numbers, double wanted)
{
    size_t i = 0;
    while (i < numbers.size() && !NumericValue::IsEqual(numbers[i], wanted)) ++i;
    return i;
}

// The category that a number stands for: a text's by its position, a number's is the number.
std::string CategoryText(const ScoreDictVar& var, double number)
{
    const ValueSet* values = var.GetValueSet();
    if (var.GetValueType() != ScoreDictVar::STRING || values == nullptr) {
        return NumericValue(number).GetString();
    }
    const auto& entries = values->GetEntries();
    const bool known = number >= 0.0 && number < static_cast<double>(entries.size());
    return known ? entries[static_cast<size_t>(number)].GetEntryValue()->GetString() : "";
}

}  // namespace

BLRModel::BLRModel() = default;
BLRModel::~BLRModel() = default;

bool BLRModel::SetContrastMatrix(const std::string& predictorName, const Matrix& matrix,
                                 const std::vector<double>& categories)
{
    const int index = GetPredictorIndex(predictorName);
    if (index < 0) return false;
    const auto predictor = static_cast<size_t>(index);
    if (predictor >= contrastMatrices.size()) {
        contrastMatrices.resize(predictor + 1);
        contrastCategories.resize(predictor + 1);
    }
    contrastMatrices[predictor] = matrix;
    contrastCategories[predictor] = categories;
    return true;
}

bool BLRModel::Setup()
{
    RegisterTargetCategories();
    bool complete = ResolvePredictors();
    for (size_t k = 0; complete && k < predictorVars.size(); ++k) {
        const bool contrasts = k < contrastMatrices.size() && !contrastMatrices[k].empty();
        complete = predictorRoles[k] != ROLE_FACTOR || contrasts;
    }
    paramTable = std::make_unique<ParamTable>(this);
    ppcMatrix = std::make_unique<PPCMatrix>(this);
    pcovMatrix = std::make_unique<PCovMatrix>(this);
    SizeNumericPPMatrix();
    return complete && categoryMap.size() == kCategories;
}

MCStatus BLRModel::ScoreCase(CaseState& state, const ScoreCaseRecord* record, ScoreResult*& result,
                             bool derivedInRecord) const
{
    CaseWalk walk(*this, state, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    walk.PrepareResult<MLRResult>(result, ScoreResult::MLR_RESULT);
    walk.FetchDerived();
    if (!FindBetaRow(state)) return MCStatus(MCScore::kReferenceCategoryUnknown, false);
    walk.GatherNumbers([&](size_t i, const ScoreDictVar* var) { return walk.FindValue(i, var); });
    if (!walk.Status().IsOK()) return walk.Status();

    // Only the row of the betas has a linear predictor; the other category's stays 0.
    std::array<double, kCategories> linearPredictors{};
    const auto betaRow = static_cast<size_t>(state.betaRow);
    if (betaRow < categoryBetas.size()) {
        const std::vector<double>& rowBetas = categoryBetas[betaRow];
        if (!FindContrastRows(state) || !hasEveryContrast) {
            if (const ScoreDictVar* outside = FindFactorOutsideContrasts(rowBetas, state)) {
                walk.SetStatus(MCScore::kFactorOutsideContrasts, outside);
                return walk.Status();
            }
        }
        const kernels::CaseCells cells{state.numbers.data(), state.codes.data()};
        state.linearPredictor =
            kernels::SumOfTerms<kernels::Ends::Alone, kernels::Adds::NonzeroTerms>(
                0.0, plan.View(), rowBetas.data(), 0, cells,
                [&](size_t p, double d) { state.design[p] = d; });
        WriteLinearPredictorError(state);
        if (betaRow < kCategories) linearPredictors[betaRow] = state.linearPredictor;
    }

    const auto largest = kernels::LargestOf(linearPredictors.data(), kCategories);
    const auto predicted = static_cast<int>(largest.index);
    std::array<double, kCategories> exponentials{};
    double sum = 0.0;
    if (!state.predictionOnly) {
        sum = kernels::Exponentials(linearPredictors.data(), kCategories, largest.value,
                                    exponentials.data());
    }
    // Under predictionOnly this is 0/0, which exceeds no cut-off: the category of the cut-off is
    // then never predicted. The cut-off has no branch for it, on purpose.
    const auto percent = [&](size_t c) { return (c < kCategories ? exponentials[c] : 0.0) / sum; };
    if (state.wantsProbabilityErrors && HasCovariances() && betaRow < categoryBetas.size()) {
        WriteBinaryErrors(state, percent(0) * percent(1), kCategories);
    }
    if (!UsesCutoff()) {
        walk.WriteCategories(predicted, percent);
        return walk.Status();
    }
    bool decided = false;
    for (const auto& [name, index] : categoryMap) {
        const double p = percent(static_cast<size_t>(index));
        if (!state.predictionOnly) walk.WritePercent(name, p);
        // Whichever name comes first: the category of the cut-off is taken over the other one.
        const bool taken = name == targetReferenceCategory ? p > cutoff : !decided;
        if (!taken) continue;
        walk.WriteCategory(name);
        decided = true;
    }
    return walk.Status();
}

// The row of the beta table that this case uses: the reference category's on the first case, row 1
// on every later one and without a reference category. So a model whose reference category is the
// first of its target flips after its first case; that is how this family scores.
bool BLRModel::FindBetaRow(CaseState& state) const
{
    if (state.betaRow != -1 || !refTargetCategory) {
        state.betaRow = 1;
        return true;
    }
    const auto found = categoryMap.find(refTargetCategory->GetString());
    if (found == categoryMap.end()) return false;
    state.betaRow = found->second;
    return true;
}

TermPlan BLRModel::PlanTerms() const
{
    const PlannedPredictors predictors = Planned();
    TermPlan made = EmptyPlan(predictors);
    for (const std::vector<double>& cells : numericPPMatrix) {
        for (size_t k = 0; k < cells.size(); ++k) {
            if (NumericValue::IsSystemMissingValue(cells[k])) continue;
            if (predictors.IsFactor(k)) {
                made.AddContrast(k, ContrastColumn(k, cells[k]));
            } else {
                made.AddPower(k, cells[k]);
            }
        }
        made.EndParameter();
    }
    return made;
}

std::vector<double> BLRModel::ContrastColumn(size_t predictor, double category) const
{
    if (predictor >= contrastCategories.size()) return {};
    const std::vector<double>& categories = contrastCategories[predictor];
    const Matrix& matrix = contrastMatrices[predictor];
    const size_t column = FindNumber(categories, category);
    std::vector<double> contrasts(categories.size(), kNoContrast);
    for (size_t row = 0; row < categories.size() && row < matrix.size(); ++row) {
        const bool has = column < categories.size() && column < matrix[row].size();
        if (has) contrasts[row] = matrix[row][column];
    }
    return contrasts;
}

void BLRModel::FinishPlan()
{
    hasEveryContrast =
        std::all_of(plan.columns.begin(), plan.columns.end(), [](const auto& column) {
            return std::find(column.begin(), column.end(), kNoContrast) == column.end();
        });
}

bool BLRModel::FindContrastRows(CaseState& state) const
{
    bool all = true;
    for (size_t k = 0; k < plan.readings.size(); ++k) {
        if (plan.readings[k] != TermPlan::Reading::Code) continue;
        state.codes[k] = ContrastRow(k, state.numbers[k]);
        all = all && state.codes[k] >= 0;
    }
    return all;
}

int32_t BLRModel::ContrastRow(size_t predictor, double number) const
{
    if (predictor >= contrastCategories.size()) return -1;
    const std::vector<double>& categories = contrastCategories[predictor];
    const size_t row = FindNumber(categories, number);
    return row < categories.size() ? static_cast<int32_t>(row) : -1;
}

double BLRModel::NumberOfText(size_t predictor, const ScoreValue& text) const
{
    const CatEncoder* encoder = predictorVars[predictor]->GetCatEncoder();
    return encoder == nullptr ? -1 : encoder->EncodeValue(&text);
}

// Every factor of a parameter is looked up, also after a covariate of 0.
const ScoreDictVar* BLRModel::FindFactorOutsideContrasts(const std::vector<double>& rowBetas,
                                                         const CaseState& state) const
{
    for (size_t p = 0; p < rowBetas.size(); ++p) {
        if (rowBetas[p] == 0.0) continue;
        for (size_t i = plan.begin[p]; i < plan.begin[p + 1]; ++i) {
            const kernels::TermPart& part = plan.parts[i];
            if (part.kind != kernels::TermPart::Contrast) continue;
            const auto k = static_cast<size_t>(part.predictor);
            const int32_t row = state.codes[k];
            if (row < 0 || part.column[row] == kNoContrast) return predictorVars[k];
        }
    }
    return nullptr;
}

void BLRModel::DescribeCoefficients(ModelDescription& description) const
{
    const auto found =
        refTargetCategory ? categoryMap.find(refTargetCategory->GetString()) : categoryMap.end();
    const int betaRow = found == categoryMap.end() ? 1 : found->second;
    for (const auto& [name, row] : categoryMap) {
        if (row == betaRow) AddCoefficients(name, row, 0, parameterMap.size(), 0, description);
    }
}

// Both rows of betas: which of them a case uses FindBetaRow() says.
void BLRModel::OutlineExplanations(ExplanationOutline& outline) const
{
    outline.equations.assign(categoryBetas.size(), {});
    for (const auto& [name, row] : categoryMap) {
        const auto c = static_cast<size_t>(row);
        outline.equations[c].category = name;
        OutlineParameters(categoryBetas[c], 0, outline.equations[c]);
    }
}

void BLRModel::ExplainCase(const CaseState& state, CaseExplanation& explanation) const
{
    const auto betaRow = static_cast<size_t>(state.betaRow);
    if (betaRow >= categoryBetas.size()) return;
    CaseExplanation::Sum& sum = explanation.Begin(betaRow);
    sum.linearPredictor = state.linearPredictor;
    ExplainTerms<kernels::Ends::Alone, kernels::Adds::NonzeroTerms>(
        plan.View(), categoryBetas[betaRow], 0, ExplainedCells(state), sum);
}

void BLRModel::Display(std::ostream& out) const
{
    out << "Begin display of BLRModel" << std::endl;
    RegressionModel::Display(out);
    out << "End display of BLRModel" << std::endl;
}

void BLRModel::Describe(ModelDescription& description) const
{
    DescribeCommon(description);
    DescribeFamily(kBinary, description);
    description.link = "logit";
    DescribeCategories(description);
    description.hasProbabilityErrors = HasCovariances();
    if (UsesCutoff()) {
        description.hasCutoff = true;
        description.cutoff = cutoff;
        description.cutoffCategory = targetReferenceCategory;
        description.quantities.front().meaning =
            targetReferenceCategory + " when its probability is above the cut-off, else the other";
    }
    if (categoryMap.size() != kCategories) return;
    // Row 1 serves every case but, with a reference category of row 0, the first.
    const auto found =
        refTargetCategory ? categoryMap.find(refTargetCategory->GetString()) : categoryMap.end();
    const int betaRow = found == categoryMap.end() ? 1 : found->second;
    const size_t other = betaRow == 1 ? 0 : 1;
    description.referenceCategory = description.targetCategories[other];
    ModelDescription::Equation equation = DescribeEquation(betaRow);
    equation.category = description.targetCategories[1 - other];
    description.equations.push_back(std::move(equation));
    for (size_t k = 0; k < predictorVars.size() && k < contrastMatrices.size(); ++k) {
        if (contrastMatrices[k].empty()) continue;
        ModelDescription::Contrast contrast;
        contrast.predictor = predictorVars[k]->GetName();
        contrast.rows = contrastMatrices[k];
        for (const double number : contrastCategories[k]) {
            contrast.categories.push_back(CategoryText(*predictorVars[k], number));
        }
        description.contrasts.push_back(std::move(contrast));
    }
}

}  // namespace MCVelscore_850
