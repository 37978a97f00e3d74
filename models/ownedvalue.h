#ifndef VELSCORE_MODELS_OWNEDVALUE_H
#define VELSCORE_MODELS_OWNEDVALUE_H

#include <memory>
#include <utility>

#include "host/values/scorevalue.h"

namespace MCVelscore_850 {

/// A value that a result owns, or none. A copy owns a clone.
class OwnedValue {
public:
    OwnedValue() = default;
    explicit OwnedValue(std::unique_ptr<ScoreValue> value) : value_(std::move(value)) {}
    OwnedValue(const OwnedValue& other) : value_(other.value_ ? other.value_->Clone() : nullptr) {}
    OwnedValue(OwnedValue&&) noexcept = default;
    /// The clone takes the place of what was owned, which is released; an assignment to itself
    /// changes nothing.
    OwnedValue& operator=(const OwnedValue& other)
    {
        if (this != &other) *this = OwnedValue(other);
        return *this;
    }
    OwnedValue& operator=(OwnedValue&&) noexcept = default;

    ScoreValue* Get() const { return value_.get(); }
    /// Releases what it owns and takes `value` over. The object that is there already stays.
    void Take(ScoreValue* value)
    {
        if (value != value_.get()) value_.reset(value);
    }

private:
    std::unique_ptr<ScoreValue> value_;
};

}  // namespace MCVelscore_850

#endif
