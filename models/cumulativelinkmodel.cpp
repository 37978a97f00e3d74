#include "models/cumulativelinkmodel.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "kernels/linearpredictor.h"
#include "kernels/links.h"
#include "kernels/ordinal.h"
#include "kernels/standarderror.h"
#include "models/caseroad.h"
#include "models/explainedterms.h"

namespace MCVelscore_850 {

namespace {

// By CumulLinkFunction.
constexpr struct {
    const char* name;  // in the display
    const char* description;
} kLinks[] = {
    {"Logit", "cumulative logit"},
    {"Cauchit", "cumulative Cauchit"},
    {"Complementary log-log", "cumulative complementary log-log"},
    {"Negative log-log", "cumulative negative log-log"},
    {"Probit", "cumulative probit"},
};
static_assert(std::size(kLinks) == kernels::kCumulativeLinks);

// The derivative of the cumulative probability of x.
double DerivativeAt(kernels::CumulativeLink link, double x)
{
    constexpr double kPi = 3.141592653589793;
    switch (link) {
        case kernels::CumulativeLink::Logit: {
            const double small = std::exp(-std::fabs(x));
            return small / ((1.0 + small) * (1.0 + small));
        }
        case kernels::CumulativeLink::Cauchit: return 1.0 / (kPi * (1.0 + x * x));
        case kernels::CumulativeLink::ComplementaryLogLog: return std::exp(x - std::exp(x));
        case kernels::CumulativeLink::NegativeLogLog: return std::exp(-x - std::exp(-x));
        case kernels::CumulativeLink::Probit: return std::exp(-0.5 * x * x) / std::sqrt(2.0 * kPi);
    }
    return 0.0;
}

}  // namespace

CumulativeLinkModel::~CumulativeLinkModel() = default;

double CumulativeLinkModel::CInvLinkFunction(CumulLinkFunction link, double x)
{
    const auto row = static_cast<size_t>(link);
    if (row >= std::size(kLinks)) return NumericValue::GetSysmisValue();
    return kernels::ProbabilityOf(static_cast<kernels::CumulativeLink>(row), x);
}

const char* CumulativeLinkModel::LinkName() const
{
    const auto row = static_cast<size_t>(linkFunction);
    return row < std::size(kLinks) ? kLinks[row].name : "";
}

double CumulativeLinkModel::ComputeCumProb(CumulLinkFunction link, int categories, int index,
                                           double linearPredictor,
                                           const std::vector<double>& boundaries) const
{
    if (index == -1) return 0.0;
    if (index == categories - 1) return 1.0;
    const auto boundary = static_cast<size_t>(index);
    if (index < 0 || index >= categories || boundary >= boundaries.size()) {
        return NumericValue::GetSysmisValue();
    }
    return CInvLinkFunction(link, boundaries[boundary] + ways_.sign * linearPredictor);
}

bool CumulativeLinkModel::Setup()
{
    RegisterTargetCategories();
    const bool resolved = ResolvePredictors();
    predictorCount = predictorVars.size();
    if (offset.variable != nullptr) {
        offsetIndex = predictorVars.size();
        predictorVars.push_back(offset.variable);
        if (ways_.offsetIsPredictor) predictorRoles.push_back(GetVarRole(offset.variable));
    }
    paramTable = std::make_unique<ParamTable>(this);
    ppcMatrix = std::make_unique<PPCMatrix>(this);
    return resolved;
}

MCScore::MCStatus CumulativeLinkModel::ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                                 ScoreResult*& result, bool derivedInRecord) const
{
    CaseWalk walk(*this, state, ways_.road, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    walk.PrepareResult<MLRResult>(result, ScoreResult::MLR_RESULT);
    walk.FetchDerived();
    const size_t gathered = ways_.offsetIsPredictor ? predictorVars.size() : predictorCount;
    walk.GatherValues(gathered);
    if (walk.Status().IsOK()) walk.HasEveryValue(gathered);

    // A case with a bad value is not left here, on purpose: its prediction comes from the
    // thresholds alone, over what the policy wrote, and the status stays.
    state.linearPredictor = LinearPredictor(walk, state);
    WriteLinearPredictorError(state, FirstCovarianceRow());
    const size_t predicted = ComputeCategoryProbs(state.linearPredictor, state);
    walk.WriteCategories(static_cast<int>(predicted),
                         [&](size_t c) { return state.probabilities[c]; });
    if (state.wantsProbabilityErrors && HasCovariances()) WriteProbabilityErrors(state);
    return walk.Status();
}

// With f[i] the derivative of F[i] by its threshold, 0 of the last category and below the first,
//
//     dp[i] / dthreshold[i] = f[i]      dp[i] / dthreshold[i-1] = -f[i-1]
//     dp[i] / db[j] = sign d[j] (f[i] - f[i-1])
//
// A boundary that counts as none has no derivative, and its case no errors.
void CumulativeLinkModel::WriteProbabilityErrors(CaseState& state) const
{
    const auto link = static_cast<kernels::CumulativeLink>(linkFunction);
    const size_t boundaries = categoryMap.size() - 1;
    const size_t rows = pcovMatrix->GetRows();
    std::vector<double> f(boundaries + 1);
    double before = 0.0;
    for (size_t i = 0; i < boundaries; ++i) {
        const double x = thresholds[i] + ways_.sign * state.linearPredictor;
        const double cumulative = CInvLinkFunction(linkFunction, x);
        if (cumulative == NumericValue::GetSysmisValue() || before > cumulative) return;
        before = cumulative;
        f[i] = DerivativeAt(link, x);
    }
    std::vector<uint32_t> met(rows);
    for (size_t i = 0; i <= boundaries; ++i) {
        std::vector<double> gradient(rows);
        const double below = i == 0 ? 0.0 : f[i - 1];
        if (i < boundaries) gradient[i] = f[i];
        if (i > 0) gradient[i - 1] = -below;
        for (size_t p = 1; p < state.design.size(); ++p) {
            const size_t row = p + FirstCovarianceRow();
            if (row < rows) gradient[row] = ways_.sign * state.design[p] * (f[i] - below);
        }
        size_t count = 0;
        for (size_t row = 0; row < rows; ++row) {
            if (gradient[row] != 0.0) met[count++] = static_cast<uint32_t>(row);
        }
        state.probabilityErrors.push_back(
            kernels::StandardErrorOfSum<double>(pcovMatrix->GetRow(0), rows, met.data(), count,
                                                [&](size_t row) { return gradient[row]; }));
    }
}

void CumulativeLinkModel::FinishPlan()
{
    thresholds.assign(categoryMap.size(), 0.0);
    for (size_t i = 0; i < thresholds.size() && !betas.empty(); ++i) {
        thresholds[i] = categoryBetas[i].front();
    }
}

double CumulativeLinkModel::LinearPredictor(CaseWalk& walk, CaseState& state) const
{
    double lp = 0.0;
    if (walk.Status().IsOK() && HasLocation()) {
        walk.ReadValues(predictorCount);
        const kernels::CaseCells cells{state.numbers.data(), state.codes.data()};
        // Parameter 0 is the thresholds' own.
        lp = kernels::SumOfTerms<kernels::Ends::AtZeroProduct, kernels::Adds::NonzeroTerms>(
            0.0, plan.View(), SharedBetas().data(), 1, cells,
            [&](size_t p, double d) { state.design[p] = d; });
    } else {
        std::fill(state.design.begin(), state.design.end(), 0.0);
    }
    switch (offset.kind) {
        case Offset::VARIABLE:
            state.offset = offset.HasVariable() ? OffsetOfCase(walk, state) : 0.0;
            return offset.HasVariable() ? lp + state.offset : lp;
        case Offset::VALUE: state.offset = offset.value; return lp + offset.value;
        case Offset::NONE: break;
    }
    return lp;
}

size_t CumulativeLinkModel::ComputeCategoryProbs(double linearPredictor, CaseState& state) const
{
    const int categories = static_cast<int>(state.probabilities.size());
    kernels::OrdinalScale<double> scale{};
    for (int i = 0; i < categories; ++i) {
        const auto c = static_cast<size_t>(i);
        const double cumulative =
            ComputeCumProb(linkFunction, categories, i, linearPredictor, thresholds);
        state.probabilities[c] = kernels::NextCategory(scale, c, cumulative, ways_.margin);
    }
    return static_cast<size_t>(scale.predicted);
}

// The thresholds, a category each, then what all boundaries share.
void CumulativeLinkModel::DescribeCoefficients(ModelDescription& description) const
{
    const size_t categories = categoryMap.size();
    if (categories < 2) return;
    std::vector<const std::string*> names(categories);
    for (const auto& [name, row] : categoryMap) names[static_cast<size_t>(row)] = &name;
    for (size_t c = 0; c + 1 < categories; ++c) {
        AddCoefficients(*names[c], static_cast<int>(c), 0, 1, c, description);
        if (!description.coefficients.empty()) description.coefficients.back().isConstant = true;
    }
    AddCoefficients("", static_cast<int>(categories) - 2, 1, parameterMap.size(),
                    FirstCovarianceRow(), description);
}

// The linear predictor that all boundaries share, then what each makes of it.
void CumulativeLinkModel::OutlineExplanations(ExplanationOutline& outline) const
{
    using Kind = ExplanationOutline::Term::Kind;
    outline.equations.assign(std::max<size_t>(1, categoryMap.size()), {});
    ExplanationOutline::Equation& shared = outline.equations.front();
    if (HasLocation()) OutlineParameters(SharedBetas(), 1, shared);
    offset.Outline(shared);
    for (const auto& [name, row] : categoryMap) {
        const auto c = static_cast<size_t>(row);
        if (c + 1 == categoryMap.size()) continue;
        ExplanationOutline::Equation& boundary = outline.equations[c + 1];
        boundary.category = name;
        boundary.isCumulative = true;
        boundary.terms = {
            {.name = "linear_predictor", .kind = Kind::LinearPredictor, .beta = ways_.sign},
            {.name = "threshold", .kind = Kind::Threshold}};
    }
}

void CumulativeLinkModel::ExplainCase(const CaseState& state, CaseExplanation& explanation) const
{
    CaseExplanation::Sum& shared = explanation.Begin(0);
    const double lp = state.linearPredictor;
    shared.linearPredictor = lp;
    if (HasLocation()) {
        ExplainTerms<kernels::Ends::AtZeroProduct, kernels::Adds::NonzeroTerms>(
            plan.View(), SharedBetas(), 1, ExplainedCells(state), shared);
    }
    if (offset.kind != Offset::NONE) shared.Add(state.offset, state.offset);
    for (size_t c = 0; c + 1 < categoryBetas.size(); ++c) {
        CaseExplanation::Sum& boundary = explanation.Begin(c + 1);
        boundary.linearPredictor = thresholds[c] + ways_.sign * lp;
        boundary.Add(lp, ways_.sign * lp);
        boundary.Add(thresholds[c], thresholds[c]);
    }
}

void CumulativeLinkModel::Describe(ModelDescription& description) const
{
    DescribeCommon(description);
    const auto link = static_cast<size_t>(linkFunction);
    if (link < std::size(kLinks)) description.link = kLinks[link].description;
    description.offset = offset.Describe();
    // One that is a predictor too is looked at as such.
    if (offset.HasVariable() && !ways_.offsetIsPredictor &&
        GetPredictorIndex(offset.variable->GetName()) < 0) {
        description.uncheckedOffset = offset.variable->GetName();
    }
    DescribeCategories(description);
    description.hasProbabilityErrors = HasCovariances() && categoryMap.size() > 1;
    if (categoryBetas.size() < 2) return;
    // The equation of each boundary: its threshold, and what all share.
    const ModelDescription::Equation shared =
        DescribeEquation(static_cast<int>(categoryBetas.size()) - 2);
    for (size_t i = 0; i + 1 < categoryBetas.size(); ++i) {
        ModelDescription::Equation equation = shared;
        equation.category = description.targetCategories[i];
        equation.isCumulative = true;
        for (size_t p = 0; p < equation.terms.size(); ++p) {
            ModelDescription::Term& term = equation.terms[p];
            // A negated 0 would read as -0.
            term.beta = p == 0 ? categoryBetas[i][0] : ways_.sign * term.beta + 0.0;
        }
        description.equations.push_back(std::move(equation));
    }
}

}  // namespace MCVelscore_850
