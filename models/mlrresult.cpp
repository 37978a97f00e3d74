#include "models/mlrresult.h"

#include <memory>
#include <utility>

#include "host/values/numbertext.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

MLRResult::MLRResult(const MLRResult& other)
    : ScoreClsResult(other),
      target_(other.target_),
      prediction_(other.prediction_),
      valuePercents_(other.valuePercents_),
      values_(other.values_)
{
    NameOwnValues();
}

MLRResult& MLRResult::operator=(const MLRResult& other)
{
    if (this == &other) return *this;
    target_ = other.target_;
    prediction_ = other.prediction_;
    valuePercents_ = other.valuePercents_;
    values_ = other.values_;
    NameOwnValues();
    return *this;
}

MLRResult::~MLRResult() = default;

void MLRResult::NameOwnValues()
{
    for (size_t i = 0; i < values_.size(); ++i) valuePercents_[i].first = values_[i].Get();
}

void MLRResult::SetPrediction(ScoreValue* value) { prediction_.Take(value); }

bool MLRResult::AddValuePercent(ScoreValue* value, double percent)
{
    std::unique_ptr<ScoreValue> owned(value);
    if (!target_->IsValid(value) || target_->IsMissing(value)) return false;
    values_.emplace_back(std::move(owned));
    valuePercents_.emplace_back(value, percent);
    return true;
}

double MLRResult::GetPercent(const ScoreValue* value) const
{
    for (const auto& entry : valuePercents_) {
        if (entry.first->Equals(value)) return entry.second;
    }
    return -1.0;
}

namespace {

// Whether a value's text is the key. Runs for every category of every case, so texts are compared
// where they lie, and a number is spelt out only where it is the key's.
class Key {
public:
    explicit Key(const std::string& text) : text_(text), number_(NumericValue(text).GetDouble()) {}
    bool IsTextOf(const ScoreValue& value) const
    {
        if (value.Kind() == ScoreValue::STRING) {
            return static_cast<const StringValue&>(value).Text() == text_;
        }
        return value.GetDouble() == number_ && IsTextOfNumber(text_, number_);
    }

private:
    const std::string& text_;
    double number_;
};

}  // namespace

bool MLRResult::SetPercent(const std::string& key, double percent)
{
    const Key wanted(key);
    for (auto& entry : valuePercents_) {
        if (!wanted.IsTextOf(*entry.first)) continue;
        entry.second = percent;
        return true;
    }
    return false;
}

bool MLRResult::SetPercentAt(size_t place, const std::string& key, double percent)
{
    if (place >= valuePercents_.size() || !Key(key).IsTextOf(*valuePercents_[place].first)) {
        return SetPercent(key, percent);
    }
    valuePercents_[place].second = percent;
    return true;
}

}  // namespace MCVelscore_850
