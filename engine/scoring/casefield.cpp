#include "engine/scoring/casefield.h"

#include <algorithm>
#include <limits>

#include "engine/tables/columnblock.h"
#include "engine/tables/plainnumber.h"
#include "host/messages/messages.h"
#include "host/model/mcstatus.h"
#include "host/values/datetimetext.h"
#include "host/values/datetimevalue.h"
#include "host/values/numbertext.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"

namespace MCVelscore_850 {

namespace {

constexpr std::string_view kNotAvailable = "NA";

CaseField::Kind KindOf(const ScoreDictVar& var)
{
    switch (var.GetValueType()) {
        case ScoreDictVar::STRING: return CaseField::Kind::Text;
        case ScoreDictVar::DATETIME: return CaseField::Kind::DateTime;
        default: return CaseField::Kind::Number;
    }
}

}  // namespace

CaseField::CaseField(const ScoreDictVar& var, const CaseOptions& options, bool optional)
    : var_(&var),
      dictVar_(dynamic_cast<const DictVar*>(&var)),
      options_(&options),
      kind_(KindOf(var)),
      optional_(optional),
      low_(-NumericValue::GetInfinity()),
      high_(NumericValue::GetInfinity())
{
    if (dictVar_ != nullptr) {
        naIsMissing_ = kind_ != Kind::Text || dictVar_->FindCategoryText(kNotAvailable) < 0;
        spells_ = dictVar_->Type().boolean;
    }
    if (kind_ != Kind::Text && dictVar_ != nullptr &&
        var.GetOutlierTreatment() == ScoreDictVar::AS_EXTREME) {
        const DictVar::Limits limits = dictVar_->OutlierLimits();
        if (limits.low <= limits.high) {
            extremes_ = limits;
            low_ = limits.low;
            high_ = limits.high;
        }
    }
    hasMissingWords_ =
        !options.missingTexts.empty() || (dictVar_ != nullptr && dictVar_->HasMissingWords());
    countsUnlisted_ = dictVar_ != nullptr && var.AcceptsUnlisted();
    treated_ = countsUnlisted_;
}

void CaseField::SetTreatment(const FieldTreatment& treatment)
{
    isFactor_ = treatment.isFactor;
    hasContrasts_ = treatment.hasContrasts;

    // An absent treatment leaves the value to the model.
    struct Word {
        std::string_view text;
        Invalid invalid;
    };
    constexpr Word kWords[] = {{"asIs", Invalid::AsIs},
                               {"asMissing", Invalid::AsMissing},
                               {"asValue", Invalid::AsValue},
                               {"returnInvalid", Invalid::Refuse}};
    for (const Word& word : kWords) {
        if (treatment.schema.invalidValueTreatment == word.text) invalid_ = word.invalid;
    }
    // Whether a factor takes what it doesn't list, its variable says: it may have no place for it.
    if (invalid_ == Invalid::AsIs && isFactor_) invalid_ = Invalid::LeaveToModel;
    if (invalid_ == Invalid::AsValue) {
        if (options_->substitutes && !treatment.schema.invalidValueReplacement.empty()) {
            invalidReplacement_ = treatment.schema.invalidValueReplacement;
        } else {
            invalid_ = Invalid::LeaveToModel;
        }
    }
    refusesMissing_ = treatment.schema.missingValueTreatment == "returnInvalid";
    if (options_->substitutes && !treatment.schema.missingValueReplacement.empty() &&
        !treatment.modelReplacesMissing) {
        missingReplacement_ = treatment.schema.missingValueReplacement;
    }
    treated_ = treated_ || invalid_ != Invalid::LeaveToModel || refusesMissing_ ||
               missingReplacement_.has_value();
}

std::unique_ptr<ScoreValue> CaseField::MakeValue()
{
    switch (kind_) {
        case Kind::Text: {
            auto value = std::make_unique<StringValue>("");
            value_ = text_ = value.get();
            return value;
        }
        case Kind::DateTime: {
            auto value = std::make_unique<DateTimeValue>(NumericValue::GetSysmisValue());
            value_ = dateTime_ = value.get();
            return value;
        }
        case Kind::Number: break;
    }
    auto value = std::make_unique<NumericValue>(NumericValue::GetSysmisValue());
    value_ = number_ = value.get();
    return value;
}

bool CaseField::SetSurely(const TableColumn& column, std::string_view text)
{
    double number = 0.0;
    if (!ReadSurely(column, text, number)) return false;
    number_->SetTakenAsIs(false);
    number_->SetDoubleValue(number);
    return true;
}

long CaseField::SetAndTreat(const TableColumn& column, size_t row, bool& unlisted)
{
    long code = 0;
    if (column.numbers == nullptr) {
        code = SetText(column.Text(row));
    } else if (column.IsPresent(row)) {
        SetNumber(column.numbers[row]);
    } else {
        value_->SetTakenAsIs(false);
        SetMissing();
    }
    return code == 0 && treated_ ? Treat(unlisted) : code;
}

bool CaseField::IsMissingText(std::string_view text) const
{
    return text.empty() || (naIsMissing_ && text == kNotAvailable) || IsNamedMissing(text);
}

// The document or the options call it missing.
bool CaseField::IsMissingWord(std::string_view text) const
{
    if (dictVar_ != nullptr && dictVar_->IsMissingWord(text)) return true;
    if (options_->missingTexts.empty()) return false;
    return std::find(options_->missingTexts.begin(), options_->missingTexts.end(), text) !=
           options_->missingTexts.end();
}

std::string CaseField::DocumentText(std::string_view text) const
{
    if (IsMissingText(text)) return {};
    std::string written(text);
    if (kind_ == Kind::Number && options_->decimal != '.') {
        std::replace(written.begin(), written.end(), options_->decimal, '.');
    }
    return written;
}

// Sets the value of this row; the code of the refusal when the text can't be read.
long CaseField::SetText(std::string_view text)
{
    value_->SetTakenAsIs(false);
    if (IsMissingText(text)) {
        SetMissing();
        return 0;
    }
    double number = 0.0;
    switch (kind_) {
        case Kind::Number:
            if (!ReadDecimal(text, number)) return kCaseTextNotANumber;
            number_->SetDoubleValue(number);
            break;
        case Kind::Text: AssignText(text); break;
        case Kind::DateTime:
            if (!ReadDateTime(text, var_->GetDateTimeType(), number)) return kCaseTextNotADateTime;
            dateTime_->SetNumber(number);
            break;
    }
    if (extremes_) TakeExtreme();
    return 0;
}

// A number that came as one; for a text it is written as everywhere else.
void CaseField::SetNumber(double number)
{
    value_->SetTakenAsIs(false);
    switch (kind_) {
        case Kind::Number: number_->SetDoubleValue(number); break;
        case Kind::Text:
            scratch_.clear();
            AppendNumber(number, scratch_);
            AssignText(scratch_);
            break;
        case Kind::DateTime:
            dateTime_->SetNumber(number - OriginShift(var_->GetDateTimeType()));
            break;
    }
    if (extremes_) TakeExtreme();
}

void CaseField::ReadSurely(const TableColumn& column, size_t rows, double* numbers,
                           RowBits& unsure) const
{
    if (!column.textsHaveRoom || hasMissingWords_) {
        for (size_t row = 0; row < rows; ++row) {
            if (!ReadSurely(column, column.Text(row), numbers[row])) AddRow(unsure, row);
        }
        return;
    }
    ReadPlainNumbersInRoom(column.texts, column.stride, rows, options_->decimal, numbers,
                           unsure.data());
    // Without limits whatever is read so is sure: it is finite.
    if (TakesNumbersAsTheyAre()) return;
    const double low = low_;
    const double high = high_;
    const bool needsMore = treated_ || countsUnlisted_;
    for (size_t first = 0; first < rows; first += 64) {
        uint64_t sure = 0;
        const size_t count = std::min<size_t>(64, rows - first);
        for (size_t i = 0; i < count; ++i) {
            const double number = numbers[first + i];
            const bool isWithin = (number >= low) & (number <= high);
            sure |= uint64_t{isWithin} << i;
        }
        if (needsMore) {
            for (size_t i = 0; i < count; ++i) {
                if (!IsSure(numbers[first + i])) sure &= ~(uint64_t{1} << i);
            }
        }
        const uint64_t all = count == 64 ? ~uint64_t{0} : (uint64_t{1} << count) - 1;
        unsure[first / 64] |= all & ~sure;
    }
}

// A value that the document calls missing stays so, however far beyond the limits it lies.
void CaseField::TakeExtreme()
{
    const ScoreValue& value = *value_;
    const double number = value.GetDouble();
    const double taken = std::clamp(number, extremes_->low, extremes_->high);
    if (taken != number && !var_->IsMissing(&value)) SetPlainNumber(taken);
}

long CaseField::Treat(bool& unlisted)
{
    ScoreValue& value = *value_;
    bool missing = var_->IsMissing(&value);
    if (!missing && invalid_ != Invalid::LeaveToModel && !var_->IsValid(&value)) {
        switch (invalid_) {
            case Invalid::Refuse: return kCaseInvalidValue;
            case Invalid::AsIs: value.SetTakenAsIs(true); break;
            case Invalid::AsMissing:
                SetMissing();
                missing = true;
                break;
            case Invalid::AsValue:
                if (!SetReplacement(*invalidReplacement_)) return kCaseInvalidValue;
                break;
            case Invalid::LeaveToModel: break;
        }
    }
    if (missing) {
        if (refusesMissing_) return MCScore::kCaseNotScorable;
        if (missingReplacement_) SetReplacement(*missingReplacement_);
    } else {
        unlisted = countsUnlisted_ && dictVar_->FindCategory(value) < 0;
    }
    return 0;
}

bool CaseField::ReadDecimal(std::string_view text, double& number)
{
    if (ReadPlainNumber(text, options_->decimal, number)) return true;
    if (options_->decimal == '.') return ReadNumber(text, number) == NumberText::Number;
    // With another mark a point is no part of a number: it may well group thousands.
    if (text.find('.') != std::string_view::npos) return false;
    scratch_.assign(text);
    std::replace(scratch_.begin(), scratch_.end(), options_->decimal, '.');
    return ReadNumber(scratch_, number) == NumberText::Number;
}

void CaseField::SetMissing()
{
    if (kind_ == Kind::Text) {
        text_->SetMissing();
    } else {
        SetPlainNumber(NumericValue::GetSysmisValue());
    }
}

void CaseField::AssignText(std::string_view text)
{
    text_->Assign(spells_ ? dictVar_->Spelling(text) : text);
}

void CaseField::SetPlainNumber(double number)
{
    if (kind_ == Kind::Number) number_->SetDoubleValue(number);
    if (kind_ == Kind::DateTime) dateTime_->SetNumber(number);
}

// A replacement is the document's text: its numbers have a decimal point, whatever the table has.
bool CaseField::SetReplacement(const std::string& text)
{
    const ScoreDictVar::DateTimeType type = var_->GetDateTimeType();
    double number = 0.0;
    const bool isNumber = ReadNumber(text, number) == NumberText::Number;
    switch (kind_) {
        case Kind::Number:
            if (!isNumber) {
                if (!isFactor_ || hasContrasts_) return false;
                number = std::numeric_limits<double>::quiet_NaN();  // equals no category
            }
            number_->SetDoubleValue(number);
            break;
        case Kind::Text: AssignText(text); break;
        case Kind::DateTime:
            // A number counts from the type's own origin, which is 1970 where it has none.
            if (isNumber) {
                number -= OriginShift(type);
            } else if (!ReadDateTime(text, type, number)) {
                return false;
            }
            dateTime_->SetNumber(number);
            break;
    }
    // Contrasts tell nothing of a category without a row: the variable refuses it.
    value_->SetTakenAsIs(!hasContrasts_);
    return true;
}

UnlistedValues CaseField::NoneUnlisted() const
{
    const std::vector<std::string>& names = options_->withoutReference;
    const bool lacksReference = std::find(names.begin(), names.end(), Name()) != names.end();
    return {.column = Name(), .oneMayBeReference = lacksReference};
}

}  // namespace MCVelscore_850
