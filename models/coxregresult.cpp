#include "models/coxregresult.h"

#include "models/ownedprediction.h"

namespace MCVelscore_850 {

// The cumulative hazard is not copied, on purpose; it starts system-missing.
CoxRegResult::CoxRegResult(const CoxRegResult& other)
    : ScoreResult(other),
      target_(other.target_),
      prediction_(CloneOf(other.prediction_)),
      deadString_(other.deadString_)
{}

// Dead string and cumulative hazard stay as they were, on purpose.
CoxRegResult& CoxRegResult::operator=(const CoxRegResult& other)
{
    if (this == &other) return *this;
    target_ = other.target_;
    SetPrediction(CloneOf(other.prediction_));
    return *this;
}

CoxRegResult::~CoxRegResult() { delete prediction_; }

void CoxRegResult::SetPrediction(ScoreValue* value) { ReplaceOwned(prediction_, value); }

}  // namespace MCVelscore_850
