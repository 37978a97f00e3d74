#include "models/clrresult.h"

#include "models/ownedprediction.h"

namespace MCVelscore_850 {

CLRResult::CLRResult(const CLRResult& other)
    : ScoreRegResult(other), target_(other.target_), prediction_(CloneOf(other.prediction_))
{}

CLRResult& CLRResult::operator=(const CLRResult& other)
{
    if (this == &other) return *this;
    target_ = other.target_;
    SetPrediction(CloneOf(other.prediction_));
    return *this;
}

CLRResult::~CLRResult() { delete prediction_; }

void CLRResult::SetPrediction(ScoreValue* value) { ReplaceOwned(prediction_, value); }

}  // namespace MCVelscore_850
