#ifndef VELSCORE_MODELS_CATEGORYCODES_H
#define VELSCORE_MODELS_CATEGORYCODES_H

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/values/scorevalue.h"

namespace MCVelscore_850 {

/// The categories that the terms of a model know of one factor, numbered from 0.
class CategoryCodes {
public:
    /// The code of a value that is none of them. No term knows it.
    static constexpr int32_t kNone = std::numeric_limits<int32_t>::min();

    /// The next code, for a copy of the category; a null one takes a code and equals nothing.
    int32_t Append(const ScoreValue* category);
    /// The code of the first category that equals the value, kNone for null.
    int32_t Find(const ScoreValue* value) const;
    /// Find, or where it finds none, Append.
    int32_t Add(const ScoreValue& category);
    size_t Size() const { return categories_.size(); }

private:
    std::vector<std::unique_ptr<const ScoreValue>> categories_;
    // Of many: a few are found sooner one after another.
    std::unordered_map<std::string, int32_t> byText_;
    std::unordered_map<double, int32_t> byNumber_;
};

}  // namespace MCVelscore_850

#endif
