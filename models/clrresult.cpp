#include "models/clrresult.h"

namespace MCVelscore_850 {

CLRResult::~CLRResult() = default;

void CLRResult::SetPrediction(ScoreValue* value) { prediction_.Take(value); }

}  // namespace MCVelscore_850
