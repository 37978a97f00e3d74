#include "models/ormodel.h"

#include "host/model/modelfamilies.h"
#include "models/caseroad.h"

namespace MCVelscore_850 {

namespace {

constexpr CaseRoad kRoad{
    .tracesNullRecord = true,
    .fetchesDerivedRecord = true,
    .failsUnderStatusOnly = true,
    .namesBadPredictor = true,
    .clearsNumbers = false,
    .missingPrediction = MissingPrediction::TargetTyped,
};

}  // namespace

ORModel::ORModel()
    : CumulativeLinkModel({.road = kRoad, .sign = 1.0, .offsetIsPredictor = false, .margin = 0.0})
{}
ORModel::~ORModel() = default;

double ORModel::OffsetOfCase(const CaseWalk& walk, const CaseState&) const
{
    const ScoreValue* value = walk.FindByPosition(offsetIndex);
    return value == nullptr ? 0.0 : value->GetDouble();
}

void ORModel::Display(std::ostream& out) const { RegressionModel::Display(out); }

void ORModel::Describe(ModelDescription& description) const
{
    CumulativeLinkModel::Describe(description);
    DescribeFamily(kOrdinal, description);
}

}  // namespace MCVelscore_850
