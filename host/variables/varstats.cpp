#include "host/variables/varstats.h"

namespace MCVelscore_850 {

VarStats::VarStats() = default;

VarStats::VarStats(const VarStats& other)
    : minimum_(other.minimum_), maximum_(other.maximum_), mean_(other.mean_)
{
    SetMissingReplacement(other.replacement_.get());
}

VarStats::~VarStats() = default;

void VarStats::SetMissingReplacement(const ScoreValue* value)
{
    replacement_.reset(value == nullptr ? nullptr : value->Clone());
}

}  // namespace MCVelscore_850
