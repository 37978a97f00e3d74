#include "host/variables/dictvar.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "host/values/datetimetext.h"
#include "host/values/datetimevalue.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/catencoder.h"
#include "host/variables/datatypes.h"
#include "host/variables/targetdeclaration.h"
#include "host/variables/varstats.h"

namespace MCVelscore_850 {

namespace {

// The spellings of the two truth values: the standard's, and those that data frames write. A column
// of 1 and 0 with gaps comes from some of them as 1.0 and 0.0.
constexpr std::string_view kTrueWords[] = {"true", "TRUE", "True", "T", "1", "1.0"};
constexpr std::string_view kFalseWords[] = {"false", "FALSE", "False", "F", "0", "0.0"};

}  // namespace

std::optional<bool> TruthOf(std::string_view text)
{
    for (const std::string_view word : kTrueWords) {
        if (text == word) return true;
    }
    for (const std::string_view word : kFalseWords) {
        if (text == word) return false;
    }
    return std::nullopt;
}

// The encoder looks at the variable's categories, so it is live.
class DictVar::Encoder final : public CatEncoder {
public:
    explicit Encoder(const DictVar& var) : var_(var) {}

    int EncodeValue(const ScoreValue* value) const override
    {
        if (var_.IsMissing(value)) return -1;
        const int position = var_.FindCategory(*value);
        if (position >= 0 || !(var_.AcceptsUnlisted() || value->IsTakenAsIs())) return position;
        return var_.IsValid(value) ? var_.GetNumCategories() : -1;
    }

    int EncodeString(const std::string& text) const override
    {
        switch (var_.type_.valueType) {
            case STRING: return EncodeText(var_.Spelling(text));
            case DATETIME: {
                double number = NumericValue::GetSysmisValue();
                ReadDateTime(text, var_.type_.dateTimeType, number);
                const DateTimeValue value(number);
                return EncodeValue(&value);
            }
            case NUMERIC: break;
        }
        const NumericValue value(text);
        return EncodeValue(&value);
    }

private:
    // As EncodeValue of that text, without making a value of it.
    int EncodeText(std::string_view text) const
    {
        if (var_.missing_.FindText(text) >= 0) return -1;
        const int position = var_.categories_.FindText(text);
        if (position >= 0 || !var_.AcceptsUnlisted()) return position;
        return var_.invalid_.FindText(text) >= 0 ? -1 : var_.GetNumCategories();
    }

    const DictVar& var_;
};

DictVar::Listing::Listing(const Listing& other)
{
    for (const auto& value : other.values) Add(std::unique_ptr<ScoreValue>(value->Clone()));
}

int DictVar::Listing::Find(const ScoreValue& value) const
{
    if (value.GetValueType() == ScoreValue::STRING) {
        return FindText(static_cast<const StringValue&>(value).Text());
    }
    const auto found = byNumber.find(value.GetDouble());
    return found == byNumber.end() ? -1 : found->second;
}

int DictVar::Listing::FindText(std::string_view text) const
{
    const auto found = byText.find(text);
    return found == byText.end() ? -1 : found->second;
}

bool DictVar::Listing::Add(std::unique_ptr<ScoreValue> value)
{
    if (Find(*value) >= 0) return false;
    const int position = static_cast<int>(values.size());
    if (value->GetValueType() == ScoreValue::STRING) {
        byText.emplace(static_cast<const StringValue&>(*value).Text(), position);
    } else {
        byNumber.emplace(value->GetDouble(), position);
    }
    values.push_back(std::move(value));
    return true;
}

DictVar::DictVar(DictVarType type)
    : type_(std::move(type)), whole_(type_.level == CONTINUOUS && DataTypeOf(type_).whole)
{
    FindSureRange();
}

DictVar::DictVar(const DictVar& other)
    : ScoreDictVar(other),
      type_(other.type_),
      whole_(other.whole_),
      categories_(other.categories_),
      missing_(other.missing_),
      invalid_(other.invalid_),
      intervals_(other.intervals_),
      missingRanges_(other.missingRanges_),
      missingWords_(other.missingWords_),
      stats_(other.stats_ ? std::make_unique<VarStats>(*other.stats_) : nullptr),
      target_(other.target_),
      outlierTreatment_(other.outlierTreatment_),
      spellings_{other.spellings_[0], other.spellings_[1]},
      declared_(other.declared_),
      acceptsUnlisted_(other.acceptsUnlisted_),
      dictIndex_(other.dictIndex_)
{
    for (const auto& value : categories_.values) valueSet_.Append(value.get());
    if (other.encoder_) SetUpCatEncoder();
}

namespace {

// A closed range of numbers, which what is no good value cuts.
struct GoodRange {
    double low;
    double high;

    void Keep(const DictVar::Interval& interval)
    {
        const double from = interval.lowClosed ? interval.low : std::nextafter(interval.low, kMost);
        const double to =
            interval.highClosed ? interval.high : std::nextafter(interval.high, -kMost);
        low = std::max(low, from);
        high = std::min(high, to);
    }
    // Of the two sides of numbers from `from` to `to` that are none, the one nearer to 0 stays:
    // codes for missing values lie outside of what is measured.
    void Cut(double from, double to)
    {
        if (to < low || from > high) return;
        if (from > 0.0) {
            high = std::nextafter(from, -kMost);
        } else {
            low = std::nextafter(to, kMost);
        }
    }

    static constexpr double kMost = std::numeric_limits<double>::infinity();
};

}  // namespace

void DictVar::FindSureRange()
{
    ForgetSureRange();
    const bool listsAlone = !categories_.values.empty() && intervals_.empty();
    if (type_.level != CONTINUOUS || type_.valueType != NUMERIC || listsAlone ||
        outlierTreatment_ == AS_MISSING) {
        return;
    }
    constexpr double kLargestExact = 9007199254740992.0;  // 2^53
    constexpr double kLargest = std::numeric_limits<double>::max();
    GoodRange range{std::nextafter(NumericValue::GetSysmisValue(), 0.0), kLargest};
    if (whole_) range = {-kLargestExact, kLargestExact};
    if (!intervals_.empty()) {
        range.Keep(*std::max_element(
            intervals_.begin(), intervals_.end(),
            [](const Interval& a, const Interval& b) { return a.high - a.low < b.high - b.low; }));
    }
    for (const Listing* bad : {&missing_, &invalid_}) {
        for (const auto& value : bad->values) range.Cut(value->GetDouble(), value->GetDouble());
    }
    for (const auto& [from, to] : missingRanges_) range.Cut(from, to);
    SetSureRange(range.low, range.high, whole_);
}

void DictVar::SetOutlierTreatment(int treatment)
{
    outlierTreatment_ = treatment;
    FindSureRange();
}

void DictVar::EndDeclarations() { FindSureRange(); }

void DictVar::DeclareInterval(const Interval& interval)
{
    intervals_.push_back(interval);
    ForgetSureRange();
}

void DictVar::DeclareMissingValue(std::unique_ptr<ScoreValue> value)
{
    if (IsDeclared(*value)) return;
    missing_.Add(std::move(value));
    ForgetSureRange();
}

void DictVar::DeclareMissingRange(double low, double high)
{
    if (!(low <= high)) return;  // holds nothing
    auto range = missingRanges_.upper_bound(low);
    if (range != missingRanges_.begin() && std::prev(range)->second >= low) {
        --range;
        low = range->first;
    }
    while (range != missingRanges_.end() && range->first <= high) {
        high = std::max(high, range->second);
        range = missingRanges_.erase(range);
    }
    missingRanges_.emplace(low, high);
    ForgetSureRange();
}

DictVar::~DictVar() = default;

void DictVar::SetTargetDeclaration(TargetDeclaration target)
{
    target_ = std::make_shared<const TargetDeclaration>(std::move(target));
}

ScoreDictVar* DictVar::Clone() const { return new DictVar(*this); }

void DictVar::SetVarStats(VarStats* stats)
{
    if (stats_.get() != stats) stats_.reset(stats);
}

bool DictVar::HasOwnKind(const ScoreValue& value) const
{
    const int kind = value.GetValueType();
    switch (type_.valueType) {
        case NUMERIC: return kind == ScoreValue::NUMERIC;
        case STRING: return kind == ScoreValue::STRING;
        case DATETIME: return kind == ScoreValue::DATETIME;
    }
    return false;
}

bool DictVar::IsOutlier(double number) const
{
    if (outlierTreatment_ != AS_MISSING || !stats_) return false;
    const Limits limits = OutlierLimits();
    return number < limits.low || number > limits.high;
}

DictVar::Limits DictVar::OutlierLimits() const
{
    Limits limits{-NumericValue::GetInfinity(), NumericValue::GetInfinity()};
    if (!stats_) return limits;
    // The document counts from the type's own origin, plain numbers from 1970.
    const double shift = type_.valueType == DATETIME ? OriginShift(type_.dateTimeType) : 0.0;
    const double low = stats_->GetMinimum();
    const double high = stats_->GetMaximum();
    if (!NumericValue::IsSystemMissingValue(low)) limits.low = low - shift;
    if (!NumericValue::IsSystemMissingValue(high)) limits.high = high - shift;
    return limits;
}

bool DictVar::IsInMissingRange(double number) const
{
    if (missingRanges_.empty() || std::isnan(number)) return false;
    const auto above = missingRanges_.upper_bound(number);
    return above != missingRanges_.begin() && number <= std::prev(above)->second;
}

bool DictVar::IsMissing(const ScoreValue* value) const
{
    if (value == nullptr) return true;
    const bool text = value->GetValueType() == ScoreValue::STRING;
    if (text ? static_cast<const StringValue*>(value)->IsMissingText()
             : NumericValue::IsSystemMissingValue(value->GetDouble())) {
        return true;
    }
    // What the document says is missing, it says of values of the variable's own kind.
    if (!HasOwnKind(*value) || value->IsTakenAsIs()) return false;
    if (!text && (IsOutlier(value->GetDouble()) || IsInMissingRange(value->GetDouble()))) {
        return true;
    }
    return !missing_.values.empty() && missing_.Find(*value) >= 0;
}

bool DictVar::RefusesFraction(double number) const
{
    if (!whole_ || std::trunc(number) == number) return false;
    if (outlierTreatment_ != AS_EXTREME) return true;
    const Limits limits = OutlierLimits();
    return number != limits.low && number != limits.high;
}

bool DictVar::IsValidNumber(double number) const
{
    if (!std::isfinite(number) || NumericValue::IsSystemMissingValue(number)) return false;
    if (RefusesFraction(number)) return false;
    if (intervals_.empty()) return categories_.values.empty() || type_.level != CONTINUOUS;
    for (const Interval& i : intervals_) {
        const bool aboveLow = i.lowClosed ? number >= i.low : number > i.low;
        const bool belowHigh = i.highClosed ? number <= i.high : number < i.high;
        if (aboveLow && belowHigh) return true;
    }
    return false;
}

bool DictVar::IsValid(const ScoreValue* value) const
{
    if (value == nullptr || !HasOwnKind(*value)) return false;
    const bool text = type_.valueType == STRING;
    if (text && static_cast<const StringValue*>(value)->IsMissingText()) return false;
    if (value->IsTakenAsIs()) return true;
    if (!missing_.values.empty() && missing_.Find(*value) >= 0) return false;
    if (!invalid_.values.empty() && invalid_.Find(*value) >= 0) return false;
    const bool listed = !categories_.values.empty() && categories_.Find(*value) >= 0;
    if (type_.level == CONTINUOUS) {
        // Listed values of a continuous variable are valid beside its intervals.
        return listed || text || IsValidNumber(value->GetDouble());
    }
    if (listed) return true;
    if (!text && !IsValidNumber(value->GetDouble())) return false;
    return categories_.values.empty() || acceptsUnlisted_;
}

bool DictVar::Accepts(const ScoreValue* value) const
{
    return !DictVar::IsMissing(value) && DictVar::IsValid(value);
}

const ValueSet* DictVar::GetValueSet() const
{
    if (type_.level == CONTINUOUS || HasOpenCategories()) return nullptr;
    return &valueSet_;
}

bool DictVar::HasOpenCategories() const
{
    return type_.level != CONTINUOUS && !declared_ && categories_.values.empty();
}

int DictVar::GetNumCategories() const
{
    return type_.level == CONTINUOUS ? 0 : static_cast<int>(categories_.values.size());
}

ScoreValue* DictVar::MakeValue(const std::string& text) const
{
    switch (type_.valueType) {
        case STRING: return new StringValue(std::string(Spelling(text)));
        case DATETIME: {
            double number = NumericValue::GetSysmisValue();
            ReadDateTime(text, type_.dateTimeType, number);
            return new DateTimeValue(number);
        }
        case NUMERIC: break;
    }
    return new NumericValue(text);
}

void DictVar::AddCategory(ScoreValue* value, const std::string&)
{
    std::unique_ptr<ScoreValue> category(value);
    if (type_.level == CONTINUOUS || value == nullptr || !HasOwnKind(*value)) return;
    if (IsMissing(value) || invalid_.Find(*value) >= 0) return;
    if (type_.valueType != STRING && !std::isfinite(value->GetDouble())) return;
    Append(std::move(category));
}

void DictVar::Append(std::unique_ptr<ScoreValue> category)
{
    const ScoreValue* value = category.get();
    if (!categories_.Add(std::move(category))) return;
    if (type_.level != CONTINUOUS) valueSet_.Append(value);
    if (!type_.boolean) return;
    const std::optional<bool> truth = TruthOf(static_cast<const StringValue*>(value)->Text());
    if (truth && spellings_[*truth] < 0) {
        spellings_[*truth] = static_cast<int>(categories_.values.size()) - 1;
    }
}

bool DictVar::IsDeclared(const ScoreValue& value) const
{
    for (const Listing* listing : {&categories_, &missing_, &invalid_}) {
        if (listing->Find(value) >= 0) return true;
    }
    return false;
}

void DictVar::DeclareValue(std::unique_ptr<ScoreValue> value, const std::string& text,
                           Property property)
{
    declared_ = true;
    if (IsDeclared(*value)) return;
    switch (property) {
        case Property::Missing: missing_.Add(std::move(value)); break;
        case Property::Invalid: invalid_.Add(std::move(value)); break;
        case Property::Valid:
            if (type_.level == CONTINUOUS) {
                Append(std::move(value));
            } else {
                AddCategory(value.release(), text);
            }
            break;
    }
    ForgetSureRange();
}

void DictVar::SetUpCatEncoder()
{
    if (type_.level != CONTINUOUS && !encoder_) encoder_ = std::make_unique<Encoder>(*this);
}

int DictVar::FindCategory(const ScoreValue& value) const
{
    return HasOwnKind(value) ? categories_.Find(value) : -1;
}

int DictVar::FindCategoryText(std::string_view text) const { return categories_.FindText(text); }

std::string_view DictVar::Spelling(std::string_view text) const
{
    if (!type_.boolean) return text;
    const std::optional<bool> truth = TruthOf(text);
    if (!truth || spellings_[*truth] < 0) return text;
    const ScoreValue& declared = *categories_.values[static_cast<size_t>(spellings_[*truth])];
    return static_cast<const StringValue&>(declared).Text();
}

}  // namespace MCVelscore_850
