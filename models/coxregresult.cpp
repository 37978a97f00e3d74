#include "models/coxregresult.h"

namespace MCVelscore_850 {

// The cumulative hazard is not copied, on purpose; it starts system-missing.
CoxRegResult::CoxRegResult(const CoxRegResult& other)
    : ScoreResult(other),
      target_(other.target_),
      prediction_(other.prediction_),
      deadString_(other.deadString_)
{}

// Dead string and cumulative hazard stay as they were, on purpose.
CoxRegResult& CoxRegResult::operator=(const CoxRegResult& other)
{
    if (this == &other) return *this;
    target_ = other.target_;
    prediction_ = other.prediction_;
    return *this;
}

CoxRegResult::~CoxRegResult() = default;

void CoxRegResult::SetPrediction(ScoreValue* value) { prediction_.Take(value); }

}  // namespace MCVelscore_850
