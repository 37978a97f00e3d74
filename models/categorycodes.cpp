#include "models/categorycodes.h"

#include <utility>

#include "host/values/stringvalue.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kFew = 8;

template <class Map, class Key>
int32_t CodeIn(const Map& map, const Key& key)
{
    const auto found = map.find(key);
    return found == map.end() ? CategoryCodes::kNone : found->second;
}

}  // namespace

int32_t CategoryCodes::Append(const ScoreValue* category)
{
    const auto code = static_cast<int32_t>(categories_.size());
    // Held before the vector takes memory for itself.
    std::unique_ptr<const ScoreValue> copy(category == nullptr ? nullptr : category->Clone());
    categories_.push_back(std::move(copy));
    if (category != nullptr && category->Kind() == ScoreValue::STRING) {
        byText_.emplace(static_cast<const StringValue&>(*category).Text(), code);
    } else if (category != nullptr && category->Kind() == ScoreValue::NUMERIC) {
        byNumber_.emplace(category->GetDouble(), code);
    }
    return code;
}

int32_t CategoryCodes::Find(const ScoreValue* value) const
{
    if (value == nullptr) return kNone;
    if (categories_.size() > kFew && value->Kind() == ScoreValue::STRING) {
        return CodeIn(byText_, static_cast<const StringValue*>(value)->Text());
    }
    if (categories_.size() > kFew && value->Kind() == ScoreValue::NUMERIC) {
        return CodeIn(byNumber_, value->GetDouble());
    }
    for (size_t i = 0; i < categories_.size(); ++i) {
        if (categories_[i] && categories_[i]->Equals(value)) return static_cast<int32_t>(i);
    }
    return kNone;
}

int32_t CategoryCodes::Add(const ScoreValue& category)
{
    const int32_t code = Find(&category);
    return code == kNone ? Append(&category) : code;
}

}  // namespace MCVelscore_850
