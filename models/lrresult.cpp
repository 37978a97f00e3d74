#include "models/lrresult.h"

namespace MCVelscore_850 {

LRResult::~LRResult() = default;

void LRResult::SetPrediction(ScoreValue* value) { prediction_.Take(value); }

}  // namespace MCVelscore_850
