#include "host/model/batchscorer.h"

namespace MCVelscore_850 {

BatchScorer::~BatchScorer() = default;
BatchScorer::Scratch::~Scratch() = default;

}  // namespace MCVelscore_850
