#include "models/clrmodel.h"

#include <ostream>

#include "host/model/modelfamilies.h"
#include "host/variables/valueset.h"
#include "kernels/linearpredictor.h"
#include "kernels/softmax.h"
#include "models/caseroad.h"
#include "models/clrresult.h"
#include "models/explainedterms.h"

namespace MCVelscore_850 {

namespace {

constexpr CaseRoad kRoad{
    .tracesNullRecord = false,
    .fetchesDerivedRecord = true,
    .failsUnderStatusOnly = false,
    .namesBadPredictor = false,
    .clearsNumbers = false,
    .missingPrediction = MissingPrediction::Number,
    // So a predictor that only the derived record holds is bad under validation, on purpose.
    .rereadsByName = true,
};

}  // namespace

CLRModel::CLRModel() : dummyCategory("CLRdummy") { SetMissingValuePolicy(MV_SYSMIS_RESULT); }
CLRModel::~CLRModel() = default;

bool CLRModel::Setup()
{
    const ValueSet* values = targetVar == nullptr ? nullptr : targetVar->GetValueSet();
    if (values == nullptr || values->GetEntries().empty()) return false;
    // The target's further categories are not looked at.
    categoryMap.emplace(values->GetEntries().front().GetEntryValue()->GetString(), 0);
    const bool two = categoryMap.emplace(dummyCategory, 1).second;
    if (!two || parameterMap.empty() || predictorMap.empty() || !ResolvePredictors()) return false;
    paramTable = std::make_unique<ParamTable>(this);
    ppcMatrix = std::make_unique<PPCMatrix>(this);
    pcovMatrix = std::make_unique<PCovMatrix>(this);
    return true;
}

MCScore::MCStatus CLRModel::ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                      ScoreResult*& result, bool derivedInRecord) const
{
    CaseWalk walk(*this, state, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    walk.PrepareResult<CLRResult>(result, ScoreResult::CLR_RESULT);
    walk.FetchDerived();
    walk.GatherValues(predictorVars.size());
    if (!walk.Status().IsOK()) return walk.Status();

    walk.ReadValues(predictorVars.size());
    const kernels::CaseCells cells{state.numbers.data(), state.codes.data()};
    double* const lp = state.linearPredictors.data();
    const size_t categories = state.linearPredictors.size();
    const auto sum = [&](size_t c, auto keep) {
        return kernels::SumOfTerms<kernels::Ends::AtZeroProduct, kernels::Adds::NonzeroTerms>(
            0.0, plan.View(), categoryBetas[c].data(), 0, cells, keep);
    };
    for (size_t c = 0; c < categories; ++c) lp[c] = sum(c, [](size_t, double) {});
    state.linearPredictor = lp[0];
    if (state.wantsLinearPredictorError) {
        sum(0, [&](size_t p, double d) { state.design[p] = d; });
        WriteLinearPredictorError(state);
    }
    const double largest = kernels::LargestOf(lp, categories).value;
    const double total = kernels::Exponentials(lp, categories, largest, state.probabilities.data());
    walk.WritePrediction(state.probabilities[0] / total);
    return walk.Status();
}

// The second equation is the one that the first is compared with: 0 but for a document that gives
// it betas.
void CLRModel::OutlineExplanations(ExplanationOutline& outline) const
{
    outline.equations.assign(HasBetas(1) ? 2 : 1, {});
    for (const auto& [name, row] : categoryMap) {
        const auto c = static_cast<size_t>(row);
        if (c >= outline.equations.size()) continue;
        outline.equations[c].category = c == 0 ? name : "other";
        OutlineParameters(categoryBetas[c], 0, outline.equations[c]);
    }
}

void CLRModel::ExplainCase(const CaseState& state, CaseExplanation& explanation) const
{
    const ExplainedCells cells(state);
    for (size_t c = 0; c < (HasBetas(1) ? 2 : 1); ++c) {
        CaseExplanation::Sum& sum = explanation.Begin(c);
        sum.linearPredictor = state.linearPredictors[c];
        ExplainTerms<kernels::Ends::AtZeroProduct, kernels::Adds::NonzeroTerms>(
            plan.View(), categoryBetas[c], 0, cells, sum);
    }
}

void CLRModel::Display(std::ostream& out) const
{
    out << "Begin display of CLRModel" << std::endl;
    RegressionModel::Display(out);
    out << "End display of CLRModel" << std::endl;
}

void CLRModel::Describe(ModelDescription& description) const
{
    DescribeCommon(description);
    DescribeFamily(kConditional, description);
    description.link = "logit";
    ModelDescription::Equation equation = DescribeEquation(0);
    for (const auto& [name, index] : categoryMap) {
        if (index == 0) equation.category = name;
    }
    description.quantities = {{"prediction", "probability of " + equation.category}};
    description.equations.push_back(std::move(equation));
}

}  // namespace MCVelscore_850
