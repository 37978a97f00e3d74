#include "models/gzlrmodel.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <ostream>

#include "host/model/modelfamilies.h"
#include "host/variables/valueset.h"
#include "kernels/linearpredictor.h"
#include "kernels/links.h"
#include "models/caseroad.h"
#include "models/explainedterms.h"
#include "models/gzlrlinks.h"
#include "models/limitquantile.h"
#include "models/lrresult.h"
#include "models/mlrresult.h"

namespace MCVelscore_850 {

namespace {

constexpr CaseRoad kRoad{
    .tracesNullRecord = true,
    .fetchesDerivedRecord = true,
    .failsUnderStatusOnly = true,
    .namesBadPredictor = false,
    .clearsNumbers = false,
    .missingPrediction = MissingPrediction::TargetTyped,
    .substitute = Substitute::ReplacementAlone,
};

constexpr double kNone = NumericValue::GetSysmisValue();

// By GZLRModel::DistType.
constexpr const char* kDistributions[] = {
    "Normal", "Binomial", "Gamma", "Inverse Gaussian", "Negative binomial", "Poisson", "Tweedie"};

const char* DistributionName(GZLRModel::DistType type)
{
    const auto row = static_cast<size_t>(type);
    return row < std::size(kDistributions) ? kDistributions[row] : "";
}

void KeepFirstOfEach(std::vector<std::string>& names)
{
    std::vector<std::string> kept;
    for (std::string& name : names) {
        if (std::find(kept.begin(), kept.end(), name) == kept.end())
            kept.push_back(std::move(name));
    }
    names = std::move(kept);
}

}  // namespace

GZLRModel::GZLRModel() : dummyCategory("GZLRdummy") {}
GZLRModel::~GZLRModel() = default;

double GZLRModel::LimitQuantile() const { return NormalLimitQuantile(confidenceLevel); }

void GZLRModel::SetTrialsVar(const ScoreDictVar* var)
{
    if (trialsKind != NONE) return;
    trialsVar = var;
    trialsKind = VARIABLE;
}

void GZLRModel::SetTrialsValue(int value)
{
    if (trialsKind != NONE || value <= 0) return;
    trialsValue = value;
    trialsKind = VALUE;
}

double GZLRModel::GetInverseValue(double eta) const
{
    const GZLRLink* link = GZLRLink::Find(linkFunction);
    return link == nullptr ? kNone : link->Mean(eta, linkParameter);
}

double GZLRModel::TimesTrials(double mean, int trials) const
{
    if (distType != DIST_BINOMIAL || trialsKind == NONE) return mean;
    return mean * (trialsKind == VARIABLE ? trials : trialsValue);
}

double GZLRModel::GetMeanPred(double eta, int trials) const
{
    const double mean = GetInverseValue(eta);
    return mean == kNone ? kNone : TimesTrials(mean, trials);
}

std::pair<double, double> GZLRModel::GetCIMeanPred(double eta, double se, int trials) const
{
    return LimitsOfMean(eta, se, LimitQuantile(), trials);
}

std::pair<double, double> GZLRModel::LimitsOfMean(double eta, double se, double z, int trials) const
{
    if (se == kNone || z == kNone) return {kNone, kNone};
    const double halfWidth = z * se;
    // On purpose: a limit without a mean is multiplied like any other.
    const double lower = TimesTrials(GetInverseValue(eta - halfWidth), trials);
    const double upper = TimesTrials(GetInverseValue(eta + halfWidth), trials);
    if (linkFunction == LINK_POWER && linkParameter < 0.0) return {upper, lower};
    return {lower, upper};
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void GZLRModel::UpdateResAndRefCat(std::string refCategory)
{
    const ValueSet* values = targetVar == nullptr ? nullptr : targetVar->GetValueSet();
    if (values == nullptr || refCategory.empty()) return;
    for (const ValueSetEntry& entry : values->GetEntries()) {
        const ScoreValue* value = entry.GetEntryValue();
        // Compared as written: a number's text has to be the dictionary's own.
        (value->GetString() == refCategory ? eventCategory : otherCategory) = value;
    }
    NameCategories();
}

void GZLRModel::NameCategories()
{
    if (eventCategory != nullptr) eventName = eventCategory->GetString();
    if (otherCategory != nullptr) otherName = otherCategory->GetString();
}

bool GZLRModel::Setup()
{
    const ValueSet* values = targetVar == nullptr ? nullptr : targetVar->GetValueSet();
    if (values != nullptr) {
        // The first category is the event, also where another one was set before.
        for (const ValueSetEntry& entry : values->GetEntries()) {
            const ScoreValue* value = entry.GetEntryValue();
            RegisterCategory(value->GetString());
            (categoryMap.size() == 1 ? eventCategory : otherCategory) = value;
        }
    }
    NameCategories();
    if (categoryMap.size() > 2) return false;
    binaryTarget = !categoryMap.empty();
    if (!binaryTarget) categoryMap.emplace(dummyCategory, 0);

    const bool resolved = ResolvePredictors();
    predictorCount = predictorVars.size();
    for (const ScoreDictVar* var : {offset.variable, trialsVar}) {
        if (var == nullptr) continue;
        predictorVars.push_back(var);
        predictorRoles.push_back(GetVarRole(var));
    }
    paramTable = std::make_unique<ParamTable>(this);
    ppcMatrix = std::make_unique<PPCMatrix>(this);
    return resolved;
}

int GZLRModel::RowOfEvent() const
{
    const auto found = categoryMap.find(eventName);
    return eventCategory == nullptr || found == categoryMap.end() ? 0 : found->second;
}

MCScore::MCStatus GZLRModel::ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                       ScoreResult*& result, bool derivedInRecord) const
{
    CaseWalk walk(*this, state, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    LRResult* measured = nullptr;
    if (binaryTarget) {
        walk.PrepareResult<MLRResult>(result, ScoreResult::MLR_RESULT);
    } else {
        measured = &walk.PrepareResult<LRResult>(result, ScoreResult::LR_RESULT);
    }
    if (state.betaRow < 0) state.betaRow = RowOfEvent();  // for good: a later event keeps it
    walk.FetchDerived();
    const size_t n = predictorVars.size();  // the offset and trials variables among them
    walk.GatherValues(n);
    if (!walk.Status().IsOK() || !walk.HasEveryValue(n)) return walk.Status();

    walk.ReadValues(n);
    const kernels::CaseCells cells{state.numbers.data(), state.codes.data()};
    double eta = kernels::SumOfTerms<kernels::Ends::AtZeroProduct, kernels::Adds::NonzeroTerms>(
        0.0, plan.View(), categoryBetas[static_cast<size_t>(state.betaRow)].data(), 0, cells,
        [&](size_t p, double d) { state.design[p] = d; });
    if (offset.kind == Offset::VALUE) eta += offset.value;
    if (offset.HasVariable()) eta += state.numbers[predictorCount];
    state.linearPredictor = eta;
    WriteLinearPredictorError(state);
    int trials = -1;
    if (trialsKind == VARIABLE && !ReadTrials(state, trials)) {
        if (state.policy != MV_STATUS_ONLY) walk.WriteMissingPrediction();
        walk.SetStatus(MCScore::kCaseNotScorable, trialsVar);
        return walk.Status();
    }
    if (measured == nullptr) {
        if (state.wantsProbabilityErrors && HasCovariances()) {
            const double derivative = kernels::MeanDerivative(
                static_cast<kernels::Link>(linkFunction), eta, linkParameter);
            if (derivative != kNone) {
                WriteBinaryErrors(state, TimesTrials(derivative, trials), categoryMap.size());
            }
        }
        WriteCategory(walk, GetMeanPred(eta, trials), state.predictionOnly);
    } else {
        walk.WritePrediction(GetMeanPred(eta, trials));
        if (!state.predictionOnly) WriteLimits(*measured, eta, trials, state);
    }
    return walk.Status();
}

bool GZLRModel::ReadTrials(const CaseState& state, int& trials) const
{
    if (trialsVar == nullptr) return true;
    return TrialsOf(state.numbers.back(), trials);
}

bool GZLRModel::TrialsOf(double number, int& trials)
{
    using Limits = std::numeric_limits<int>;
    // Written so that a NaN fails; truncated, the limits are still in reach.
    if (!(number > Limits::min() - 1.0 && number < Limits::max() + 1.0)) return false;
    trials = static_cast<int>(number);
    return true;
}

void GZLRModel::WriteLimits(LRResult& answer, double eta, int trials, CaseState& state) const
{
    const double se = pcovMatrix == nullptr ? 0.0 : DesignStandardError(state);
    answer.SetStdDev(se);
    const auto [lower, upper] = LimitsOfMean(eta, se, state.limitQuantile, trials);
    answer.SetCIBottom(lower);
    answer.SetCITop(upper);
}

void GZLRModel::WriteCategory(CaseWalk& walk, double mean, bool categoryOnly) const
{
    // The mean is compared as it stands, times the trials where there are any; a NaN is below.
    const bool isEvent = mean >= kEventBoundary;
    if (mean == kNone || (!isEvent && otherCategory == nullptr)) {
        walk.WriteMissingPrediction();
        walk.SetStatus(MCScore::kNoMean);
    } else {
        walk.WriteCategory(isEvent ? eventName : otherName);
    }
    if (categoryOnly) return;
    // Without a mean too: the status says that they are none.
    walk.WritePercent(eventName, mean);
    if (otherCategory != nullptr) walk.WritePercent(otherName, 1.0 - mean);
}

void GZLRModel::DescribeCoefficients(ModelDescription& description) const
{
    AddCoefficients(binaryTarget ? eventName : "", RowOfEvent(), 0, parameterMap.size(), 0,
                    description);
}

void GZLRModel::OutlineExplanations(ExplanationOutline& outline) const
{
    const auto row = static_cast<size_t>(RowOfEvent());
    outline.equations.assign(1, {});
    ExplanationOutline::Equation& equation = outline.equations.front();
    if (binaryTarget) equation.category = eventName;
    OutlineParameters(categoryBetas[row], 0, equation);
    offset.Outline(equation);
}

void GZLRModel::ExplainCase(const CaseState& state, CaseExplanation& explanation) const
{
    CaseExplanation::Sum& sum = explanation.Begin(0);
    sum.linearPredictor = state.linearPredictor;
    ExplainTerms<kernels::Ends::AtZeroProduct, kernels::Adds::NonzeroTerms>(
        plan.View(), categoryBetas[static_cast<size_t>(state.betaRow)], 0, ExplainedCells(state),
        sum);
    if (offset.kind == Offset::NONE) return;
    const double added = offset.HasVariable() ? state.numbers[predictorCount] : offset.value;
    sum.Add(added, added);
}

void GZLRModel::Display(std::ostream& out) const
{
    out << "Begin display of GZLRModel" << std::endl;
    RegressionModel::Display(out);
    const GZLRLink* link = GZLRLink::Find(linkFunction);
    out << "Link function: " << (link == nullptr ? "" : link->name) << std::endl;
    if (link != nullptr && link->takesParameter) {
        out << "Link parameter: " << linkParameter << std::endl;
    }
    out << "Distribution: " << DistributionName(distType);
    if (distType == DIST_BINOMIAL) {
        out << ", ";
        if (trialsKind == NONE) {
            out << "target is binary";
        } else {
            out << "events and trials: " << DescribeTrials();
        }
    }
    out << std::endl;
    offset.Display(out);
    out << "End display of GZLRModel" << std::endl;
}

std::string GZLRModel::DescribeTrials() const
{
    switch (trialsKind) {
        case VARIABLE: return trialsVar == nullptr ? "" : trialsVar->GetName();
        case VALUE: return std::to_string(trialsValue);
        case NONE: break;
    }
    return "";
}

void GZLRModel::Describe(ModelDescription& description) const
{
    DescribeCommon(description);
    // The offset or trials variable may be a predictor too.
    KeepFirstOfEach(description.factors);
    KeepFirstOfEach(description.covariates);
    KeepFirstOfEach(description.variables);
    description.distribution = DistributionName(distType);
    description.offset = offset.Describe();
    description.trials = DescribeTrials();
    if (const GZLRLink* link = GZLRLink::Find(linkFunction)) {
        description.link = link->name;
        description.hasLinkParameter = link->takesParameter;
        description.linkParameter = linkParameter;
        description.mean = DescribeMean(*link);
    }
    if (binaryTarget) {
        DescribeClasses(description);
    } else {
        description.equations.push_back(DescribeEquation(0));
        const bool lacks = !description.hasCovariances;
        description.hasConfidenceLevel = !lacks;
        const std::string limit = LevelText() + " confidence limit of the linear predictor";
        description.quantities = {
            {"prediction", "mean of the target"},
            {"std_dev", "standard error of the linear predictor", lacks},
            {"ci_lower", "mean at the lower " + limit, lacks},
            {"ci_upper", "mean at the upper " + limit, lacks},
        };
        if (linkFunction == LINK_POWER && linkParameter < 0.0) {
            std::swap(description.quantities[2].meaning, description.quantities[3].meaning);
        }
    }
    DescribeFamily(kGeneralizedLinear, description);
}

std::string GZLRModel::DescribeMean(const GZLRLink& link) const
{
    const bool atZero = linkParameter == 0.0 && link.meanAtZero != nullptr;
    std::string text = atZero ? link.meanAtZero : link.mean;
    if (distType == DIST_BINOMIAL && trialsKind != NONE) {
        if (text.starts_with("1 - ")) text = "(" + text + ")";
        text.insert(0, DescribeTrials() + " * ");
    }
    text += ", eta = linear predictor";
    if (offset.kind == Offset::VALUE && offset.value < 0.0) {
        text += " - " + NumericValue(-offset.value).GetString();
    } else if (offset.kind != Offset::NONE) {
        text += " + " + offset.Describe();
    }
    if (link.takesParameter && !atZero) text += ", k = " + NumericValue(linkParameter).GetString();
    return text;
}

void GZLRModel::DescribeClasses(ModelDescription& description) const
{
    DescribeCategories(description);
    description.hasProbabilityErrors = HasCovariances();
    ModelDescription::Equation equation = DescribeEquation(RowOfEvent());
    equation.category = eventName;
    description.equations.push_back(std::move(equation));
    description.referenceCategory = otherName;
    description.quantities = {
        {"prediction", eventName + " where the mean is 0.5 or more, else " + otherName}};
    for (const std::string& category : description.targetCategories) {
        description.quantities.push_back(
            {"probability(" + category + ")", category == eventName ? "mean" : "1 - mean"});
    }
}

}  // namespace MCVelscore_850
