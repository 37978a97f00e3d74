#include "models/ogzlrmodel.h"

#include <ostream>

#include "host/model/modelfamilies.h"
#include "models/caseroad.h"

namespace MCVelscore_850 {

namespace {

constexpr CaseRoad kRoad{
    .tracesNullRecord = false,
    .fetchesDerivedRecord = true,
    .failsUnderStatusOnly = true,
    .namesBadPredictor = true,
    .clearsNumbers = false,
    .missingPrediction = MissingPrediction::TargetTyped,
};

}  // namespace

OGZLRModel::OGZLRModel()
    : CumulativeLinkModel({.road = kRoad, .sign = -1.0, .offsetIsPredictor = true, .margin = 1e-14})
{}
OGZLRModel::~OGZLRModel() = default;

// Not the case's offset: the design value of the parameter whose index is the offset's index among
// the predictors. Scores of this family depend on it. Without such a parameter nothing is added.
double OGZLRModel::OffsetOfCase(const CaseWalk&, const CaseState& state) const
{
    return offsetIndex < state.design.size() ? state.design[offsetIndex] : 0.0;
}

void OGZLRModel::Display(std::ostream& out) const
{
    out << "Begin display of OGZLRModel" << std::endl;
    RegressionModel::Display(out);
    out << "Link function: " << LinkName() << std::endl;
    out << "Distribution: Multinomial" << std::endl;
    offset.Display(out);
    out << "End display of OGZLRModel" << std::endl;
}

void OGZLRModel::Describe(ModelDescription& description) const
{
    CumulativeLinkModel::Describe(description);
    DescribeFamily(kOrdinalGeneralized, description);
    description.distribution = "multinomial";
}

}  // namespace MCVelscore_850
