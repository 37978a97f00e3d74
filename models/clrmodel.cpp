#include "models/clrmodel.h"

#include <ostream>

#include "host/variables/valueset.h"
#include "kernels/softmax.h"
#include "models/caseroad.h"
#include "models/clrresult.h"

namespace MCVelscore_850 {

namespace {

constexpr CaseRoad kRoad{
    .family = "conditional logistic regression",
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
    linearPredictors.assign(categoryMap.size(), 0.0);
    exponentials.assign(categoryMap.size(), 0.0);
    return true;
}

MCScore::MCStatus CLRModel::GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                                     bool derivedInRecord)
{
    CaseWalk walk(*this, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    walk.PrepareResult<CLRResult>(result, ScoreResult::CLR_RESULT);
    walk.FetchDerived();
    walk.GatherValues(predictorVars.size());
    if (!walk.Status().IsOK()) return walk.Status();

    for (size_t c = 0; c < linearPredictors.size(); ++c) {
        linearPredictors[c] = walk.LinearPredictor(categoryBetas[c]);
    }
    const size_t categories = linearPredictors.size();
    const double largest = kernels::LargestOf(linearPredictors.data(), categories).value;
    const double sum =
        kernels::Exponentials(linearPredictors.data(), categories, largest, exponentials.data());
    walk.WritePrediction(exponentials[0] / sum);
    return walk.Status();
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
    description.family = kRoad.family;
    description.className = "CLRModel";
    description.resultType = ScoreResult::CLR_RESULT;
    description.takesStatusOnly = false;
    description.link = "logit";
    ModelDescription::Equation equation = DescribeEquation(0);
    for (const auto& [name, index] : categoryMap) {
        if (index == 0) equation.category = name;
    }
    description.quantities = {{"prediction", "probability of " + equation.category}};
    description.equations.push_back(std::move(equation));
}

}  // namespace MCVelscore_850
