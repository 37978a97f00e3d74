#include "models/lrresult.h"

#include "models/ownedprediction.h"

namespace MCVelscore_850 {

LRResult::LRResult(const LRResult& other)
    : ScoreRegResult(other),
      target_(other.target_),
      prediction_(CloneOf(other.prediction_)),
      stdDev_(other.stdDev_),
      ciBottom_(other.ciBottom_),
      ciTop_(other.ciTop_)
{}

LRResult& LRResult::operator=(const LRResult& other)
{
    if (this == &other) return *this;
    target_ = other.target_;
    SetPrediction(CloneOf(other.prediction_));
    stdDev_ = other.stdDev_;
    ciBottom_ = other.ciBottom_;
    ciTop_ = other.ciTop_;
    return *this;
}

LRResult::~LRResult() { delete prediction_; }

void LRResult::SetPrediction(ScoreValue* value) { ReplaceOwned(prediction_, value); }

}  // namespace MCVelscore_850
