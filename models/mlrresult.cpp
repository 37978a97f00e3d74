#include "models/mlrresult.h"

#include <memory>

#include "host/numbertext.h"
#include "host/numericvalue.h"
#include "host/scoredictvar.h"
#include "host/stringvalue.h"
#include "models/ownedprediction.h"

namespace MCVelscore_850 {

MLRResult::MLRResult(const MLRResult& other)
    : ScoreClsResult(other),
      target_(other.target_),
      prediction_(CloneOf(other.prediction_)),
      valuePercents_(other.valuePercents_)
{
    for (auto& entry : valuePercents_) entry.first = entry.first->Clone();
}

MLRResult& MLRResult::operator=(const MLRResult& other)
{
    if (this == &other) return *this;
    target_ = other.target_;
    SetPrediction(CloneOf(other.prediction_));
    for (auto& entry : valuePercents_) delete entry.first;
    valuePercents_ = other.valuePercents_;
    for (auto& entry : valuePercents_) entry.first = entry.first->Clone();
    return *this;
}

MLRResult::~MLRResult()
{
    delete prediction_;
    for (auto& entry : valuePercents_) delete entry.first;
}

void MLRResult::SetPrediction(ScoreValue* value) { ReplaceOwned(prediction_, value); }

bool MLRResult::AddValuePercent(ScoreValue* value, double percent)
{
    std::unique_ptr<ScoreValue> owned(value);
    if (!target_->IsValid(value) || target_->IsMissing(value)) return false;
    valuePercents_.emplace_back(owned.release(), percent);
    return true;
}

double MLRResult::GetPercent(const ScoreValue* value) const
{
    for (const auto& entry : valuePercents_) {
        if (entry.first->Equals(value)) return entry.second;
    }
    return -1.0;
}

bool MLRResult::SetPercent(const std::string& key, double percent)
{
    // Runs for every category of every case, so texts are compared where they lie, and a number is
    // spelt out only where it is the key's.
    const double number = NumericValue(key).GetDouble();
    const auto reads = [&](const ScoreValue& value) {
        if (value.Kind() == ScoreValue::STRING) {
            return static_cast<const StringValue&>(value).Text() == key;
        }
        return value.GetDouble() == number && IsTextOfNumber(key, number);
    };
    for (auto& entry : valuePercents_) {
        if (reads(*entry.first)) {
            entry.second = percent;
            return true;
        }
    }
    return false;
}

}  // namespace MCVelscore_850
