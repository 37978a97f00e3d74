#include "engine/scoring/baselinebuilder.h"

#include <utility>

namespace MCVelscore_850 {

BaselineBuilder::BaselineBuilder(int64_t row)
    : row_(row), baseline_(std::make_shared<ExplanationBaseline>())
{}

bool BaselineBuilder::Take(int64_t row, const CaseStatus& status,
                           const CaseExplanation& explanation)
{
    if (row_ != 0 && row != row_) return true;
    if (row_ != 0) status_ = status.code;
    if (status.IsOK()) baseline_->Add(explanation);
    return row_ == 0;
}

std::shared_ptr<const ExplanationBaseline> BaselineBuilder::Make()
{
    if (baseline_->cases == 0) return nullptr;
    baseline_->Finish();
    return std::move(baseline_);
}

}  // namespace MCVelscore_850
