#include "host/model/batchscorer.h"

namespace MCVelscore_850 {

BatchScorer::~BatchScorer() = default;
BatchScorer::Scratch::~Scratch() = default;

bool BatchScorer::SurelyWithin(const double*, size_t, double, double) const { return false; }

}  // namespace MCVelscore_850
