#include "models/normalizedmodel.h"

#include <iterator>

#include "host/model/modelfamilies.h"
#include "kernels/linearpredictor.h"
#include "models/caseroad.h"
#include "models/explainedterms.h"

namespace MCVelscore_850 {

namespace {

using kernels::CumulativeLink;

constexpr CaseRoad kRoad{
    .tracesNullRecord = true,
    .fetchesDerivedRecord = true,
    .failsUnderStatusOnly = true,
    .namesBadPredictor = true,
    .clearsNumbers = false,
    .missingPrediction = MissingPrediction::TargetTyped,
};

// The words of shares and steps.
struct Word {
    std::string_view text;
    std::optional<CumulativeLink> link;
};

constexpr Word kWords[] = {
    {"none", std::nullopt},
    {"logit", CumulativeLink::Logit},
    {"probit", CumulativeLink::Probit},
    {"cloglog", CumulativeLink::ComplementaryLogLog},
    {"loglog", CumulativeLink::NegativeLogLog},
    {"cauchit", CumulativeLink::Cauchit},
};
constexpr std::string_view kSimplemax = "simplemax";

}  // namespace

NormalizedModel::NormalizedModel() = default;
NormalizedModel::~NormalizedModel() = default;

bool NormalizedModel::SetNormalization(std::string_view text)
{
    for (const Word& row : kWords) {
        if (row.text != text) continue;
        word = text;
        normalization.method = kernels::Normalization::Shares;
        normalization.link = row.link;
        return true;
    }
    if (text != kSimplemax) return false;
    word = text;
    normalization.method = kernels::Normalization::Quotients;
    return true;
}

bool NormalizedModel::Setup()
{
    RegisterTargetCategories();
    const bool resolved = ResolvePredictors();
    paramTable = std::make_unique<ParamTable>(this);
    ppcMatrix = std::make_unique<PPCMatrix>(this);
    SizeNumericPPMatrix();
    return resolved;
}

void NormalizedModel::FinishPlan()
{
    if (categoryMap.empty()) return;
    const size_t categories = categoryMap.size();
    normalization.remainder = categories - 1;
    if (normalization.method == kernels::Normalization::Quotients) {
        if (categories == 1) soleEquation = 0;
        return;
    }
    if (ordered) {
        normalization.method = kernels::Normalization::Steps;
    } else if (const auto found = categoryMap.find(remainder); found != categoryMap.end()) {
        normalization.remainder = static_cast<size_t>(found->second);
    }
    if (categories == 2) soleEquation = 1 - normalization.remainder;
}

MCScore::MCStatus NormalizedModel::ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                             ScoreResult*& result, bool derivedInRecord) const
{
    CaseWalk walk(*this, state, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    walk.PrepareResult<MLRResult>(result, ScoreResult::MLR_RESULT);
    walk.FetchDerived();
    walk.GatherNumbers([&](size_t i, const ScoreDictVar* var) { return walk.FindValue(i, var); });
    if (!walk.Status().IsOK()) return walk.Status();

    EncodeNumbers(state, false);
    const size_t categories = state.probabilities.size();
    double* const y = state.probabilities.data();
    const kernels::CaseCells cells{state.numbers.data(), state.codes.data()};
    kernels::SumsOfTerms<kernels::Ends::Alone>(0.0, plan.View(), betasByParameter.data(),
                                               categories, cells, y, 1);
    if (soleEquation) state.linearPredictor = y[*soleEquation];
    const int predicted = kernels::Normalize(normalization, y, categories, 1);
    if (predicted < 0) {
        walk.WriteMissingPrediction();
        walk.SetStatus(MCScore::kNoMean);
        return walk.Status();
    }
    walk.WriteCategories(predicted, [&](size_t c) { return y[c]; });
    return walk.Status();
}

void NormalizedModel::DescribeCoefficients(ModelDescription& description) const
{
    std::vector<const std::string*> names(categoryMap.size());
    for (const auto& [name, row] : categoryMap) names[static_cast<size_t>(row)] = &name;
    const size_t parameters = parameterMap.size();
    for (size_t c = 0; c < categoryBetas.size(); ++c) {
        if (IsRemainder(c)) continue;
        AddCoefficients(*names[c], static_cast<int>(c), 0, parameters, c * parameters, description);
    }
}

// An equation each but for the remainder, whose linear predictor isn't looked at.
void NormalizedModel::OutlineExplanations(ExplanationOutline& outline) const
{
    outline.equations.clear();
    std::vector<const std::string*> names(categoryMap.size());
    for (const auto& [name, row] : categoryMap) names[static_cast<size_t>(row)] = &name;
    for (size_t c = 0; c < names.size(); ++c) {
        if (IsRemainder(c)) continue;
        ExplanationOutline::Equation& equation = outline.equations.emplace_back();
        equation.category = *names[c];
        equation.isCumulative = normalization.method == kernels::Normalization::Steps;
        OutlineParameters(categoryBetas[c], 0, equation);
    }
}

void NormalizedModel::ExplainCase(const CaseState& state, CaseExplanation& explanation) const
{
    const ExplainedCells cells(state);
    size_t equation = 0;
    for (size_t c = 0; c < categoryBetas.size(); ++c) {
        if (IsRemainder(c)) continue;
        CaseExplanation::Sum& sum = explanation.Begin(equation++);
        // Scoring has put probabilities in their place.
        sum.linearPredictor =
            kernels::SumOfTerms<kernels::Ends::Alone, kernels::Adds::NonzeroTerms>(
                0.0, plan.View(), categoryBetas[c].data(), 0, cells, [](size_t, double) {});
        ExplainTerms<kernels::Ends::Alone, kernels::Adds::NonzeroTerms>(
            plan.View(), categoryBetas[c], 0, cells, sum);
    }
}

void NormalizedModel::Describe(ModelDescription& description) const
{
    DescribeCommon(description);
    // RegressionModels, which it stands for, have no covariances.
    description.hasLinearPredictorError = false;
    DescribeCategories(description);
    DescribeFamily(kNormalized, description);
    description.link = word;
    if (normalization.method == kernels::Normalization::Steps) description.link += ", cumulative";
    for (const std::string& category : description.targetCategories) {
        const int c = categoryMap.at(category);
        if (IsRemainder(static_cast<size_t>(c))) {
            description.referenceCategory = category;
            continue;
        }
        ModelDescription::Equation equation = DescribeEquation(c);
        equation.category = category;
        equation.isCumulative = normalization.method == kernels::Normalization::Steps;
        description.equations.push_back(std::move(equation));
    }
}

}  // namespace MCVelscore_850
