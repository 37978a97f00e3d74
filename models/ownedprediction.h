#ifndef VELSCORE_MODELS_OWNEDPREDICTION_H
#define VELSCORE_MODELS_OWNEDPREDICTION_H

#include "host/scorevalue.h"

namespace MCVelscore_850 {

/// A copy of the value, owned by the caller; null stays null.
inline ScoreValue* CloneOf(const ScoreValue* value)
{
    return value == nullptr ? nullptr : value->Clone();
}

/// Releases what `owned` holds and puts `value` there. The object that is there already stays.
inline void ReplaceOwned(ScoreValue*& owned, ScoreValue* value)
{
    if (owned != value) delete owned;
    owned = value;
}

}  // namespace MCVelscore_850

#endif
