#include "engine/scoring/casepreparer.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <unordered_map>

#include "engine/messages/failure.h"
#include "engine/messages/shorttext.h"
#include "engine/messages/suggestions.h"
#include "engine/tables/plainnumber.h"
#include "host/expressions/transformvar.h"
#include "host/messages/messages.h"
#include "host/model/mcstatus.h"
#include "host/model/scoremodel.h"
#include "host/values/datetimetext.h"
#include "host/values/datetimevalue.h"
#include "host/values/numbertext.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/transformationdictionary.h"

namespace MCVelscore_850 {

namespace {

constexpr std::string_view kNotAvailable = "NA";

// The names in one line of a message, the first ones when there are many.
std::string JoinNames(std::span<const std::string> names, std::string_view between)
{
    constexpr size_t kShown = 20;
    std::string joined;
    for (size_t i = 0; i < std::min(names.size(), kShown); ++i) {
        if (i > 0) joined += between;
        joined += ShortText(names[i]);
    }
    if (names.size() > kShown) {
        joined += between;
        joined += "and " + std::to_string(names.size() - kShown) + " more";
    }
    return joined;
}

template <class Range, class Value>
bool Contains(const Range& range, const Value& value)
{
    return std::find(range.begin(), range.end(), value) != range.end();
}

const ScoreDictVar* FindVariable(const ScoreDictionary* dictionary,
                                 const ScoreDictionary* transformations, const std::string& name)
{
    const ScoreDictVar* var = dictionary == nullptr ? nullptr : dictionary->GetVar(name);
    if (var == nullptr && transformations != nullptr) var = transformations->GetVar(name);
    return var;
}

}  // namespace

CasePreparer::CasePreparer(const ScoreModel& model, const ModelDescription& description,
                           const std::vector<MiningFieldTreatment>& treatments,
                           std::span<const std::string> header, const std::string& tableName,
                           CaseOptions options)
    : options_(std::move(options)),
      dictionary_(model.GetDictionary()),
      transformations_(model.GetTransformationDictionary()),
      modelSubstitutes_(model.GetMissingValuePolicy() == ScoreModel::MV_SUBSTITUTE)
{
    std::vector<std::string> names;
    for (const std::string& name : description.variables) {
        const ScoreDictVar* var = FindVariable(dictionary_, transformations_, name);
        if (var != nullptr) AddVariable(*var, names);
    }
    for (const std::string& name : options_.alsoRead) {
        const ScoreDictVar* var = FindVariable(dictionary_, transformations_, name);
        if (var != nullptr) AddVariable(*var, names, &header);
    }
    BindColumns(header, tableName);

    std::unordered_map<std::string_view, const MiningFieldTreatment*> treatmentOf;
    for (const MiningFieldTreatment& each : treatments) treatmentOf.emplace(each.name, &each);
    for (Binding& binding : bindings_) {
        const auto treatment = treatmentOf.find(binding.var->GetName());
        if (treatment == treatmentOf.end()) continue;
        ApplyTreatment(binding, *treatment->second, description);
    }

    // Data variables come first in the record, then the derived ones; both by their own order.
    for (const Derived& derived : derived_) names.push_back(derived.var->GetName());
    record_ = std::make_unique<CaseRecord>(std::move(names));
    int position = 0;
    for (Binding& binding : bindings_) {
        switch (binding.kind) {
            case Kind::Number: {
                auto value = std::make_unique<NumericValue>(NumericValue::GetSysmisValue());
                binding.number = value.get();
                record_->Own(position++, std::move(value));
                break;
            }
            case Kind::Text: {
                auto value = std::make_unique<StringValue>("");
                binding.text = value.get();
                record_->Own(position++, std::move(value));
                break;
            }
            case Kind::DateTime: {
                auto value = std::make_unique<DateTimeValue>(NumericValue::GetSysmisValue());
                binding.dateTime = value.get();
                record_->Own(position++, std::move(value));
                break;
            }
        }
    }
    for (Derived& derived : derived_) derived.position = position++;
}

CasePreparer::~CasePreparer() = default;

void CasePreparer::AddVariable(const ScoreDictVar& var, std::vector<std::string>& names,
                               const std::span<const std::string>* columns)
{
    if (!seen_.insert(&var).second) return;
    if (var.IsDerived()) {
        const auto& derived = static_cast<const TransformVar&>(var);
        for (const ScoreDictVar* input : derived.Inputs()) AddVariable(*input, names, columns);
        derived_.push_back({&derived, -1});
        return;
    }
    const bool optional = columns != nullptr;
    if (optional && std::find(columns->begin(), columns->end(), var.GetName()) == columns->end()) {
        return;
    }
    Binding binding;
    binding.var = &var;
    binding.optional = optional;
    binding.dictVar = dynamic_cast<const DictVar*>(&var);
    binding.kind = var.GetValueType() == ScoreDictVar::STRING     ? Kind::Text
                   : var.GetValueType() == ScoreDictVar::DATETIME ? Kind::DateTime
                                                                  : Kind::Number;
    if (binding.dictVar != nullptr) {
        binding.naIsMissing =
            binding.kind != Kind::Text || binding.dictVar->FindCategoryText(kNotAvailable) < 0;
        binding.spells = binding.dictVar->Type().boolean;
    }
    if (binding.kind != Kind::Text && binding.dictVar != nullptr &&
        var.GetOutlierTreatment() == ScoreDictVar::AS_EXTREME) {
        const DictVar::Limits limits = binding.dictVar->OutlierLimits();
        if (limits.low <= limits.high) binding.extremes = limits;
    }
    binding.countsUnlisted = binding.dictVar != nullptr && var.AcceptsUnlisted();
    binding.treated = binding.countsUnlisted;
    binding.unlisted.column = var.GetName();
    const auto& withoutReference = options_.withoutReference;
    binding.unlisted.oneMayBeReference = std::find(withoutReference.begin(), withoutReference.end(),
                                                   var.GetName()) != withoutReference.end();
    names.push_back(var.GetName());
    bindings_.push_back(std::move(binding));
}

void CasePreparer::BindColumns(std::span<const std::string> header, const std::string& tableName)
{
    std::unordered_multimap<std::string_view, size_t> columns;
    for (size_t i = 0; i < header.size(); ++i) columns.emplace(header[i], i);
    std::vector<std::string> missing;
    std::vector<std::string> bound;
    for (Binding& binding : bindings_) {
        const std::string& name = binding.var->GetName();
        const auto [first, last] = columns.equal_range(name);
        if (first == last) {
            missing.push_back(name);
        } else if (std::next(first) != last) {
            throw Failure(FailureKind::Cases, kDuplicateColumn, {tableName, name});
        } else {
            binding.column = first->second;
            bound.push_back(name);
        }
    }
    if (!missing.empty()) {
        throw Failure(FailureKind::Cases, kMissingColumn,
                      {tableName, JoinNames(missing, "', '"), JoinNames(header, ", ")},
                      SuggestColumns(missing, header, bound));
    }
}

// True for a continuous field whose missing values are the model's own business: no derived field
// sees them, or the model refuses the row because of them.
bool CasePreparer::LeavesReplacementToModel(const ScoreDictVar& var,
                                            const ModelDescription& description) const
{
    if (var.GetMeasureLevel() != ScoreDictVar::CONTINUOUS) return false;
    const auto& read = description.variables;
    const auto times = std::count(read.begin(), read.end(), var.GetName());
    if (times == 0) return false;
    const bool feedsDerived = std::any_of(derived_.begin(), derived_.end(), [&](const Derived& d) {
        return Contains(d.var->Inputs(), &var);
    });
    // One that stands there again is a time, a stratum or an offset too, which nobody replaces.
    const bool modelReplaces =
        modelSubstitutes_ && times == 1 && Contains(description.covariates, var.GetName());
    return !feedsDerived || !modelReplaces;
}

void CasePreparer::ApplyTreatment(Binding& binding, const MiningFieldTreatment& treatment,
                                  const ModelDescription& description) const
{
    const std::string& name = binding.var->GetName();
    binding.isFactor = Contains(description.factors, name);
    binding.hasContrasts =
        std::any_of(description.contrasts.begin(), description.contrasts.end(),
                    [&](const auto& contrast) { return contrast.predictor == name; });

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
        if (treatment.invalidValueTreatment == word.text) binding.invalid = word.invalid;
    }
    // Whether a factor takes what it doesn't list, its variable says: it may have no place for it.
    if (binding.invalid == Invalid::AsIs && binding.isFactor) {
        binding.invalid = Invalid::LeaveToModel;
    }
    if (binding.invalid == Invalid::AsValue) {
        if (options_.substitutes && !treatment.invalidValueReplacement.empty()) {
            binding.invalidReplacement = treatment.invalidValueReplacement;
        } else {
            binding.invalid = Invalid::LeaveToModel;
        }
    }
    binding.refusesMissing = treatment.missingValueTreatment == "returnInvalid";
    if (options_.substitutes && !treatment.missingValueReplacement.empty() &&
        !LeavesReplacementToModel(*binding.var, description)) {
        binding.missingReplacement = treatment.missingValueReplacement;
    }
    binding.treated = binding.treated || binding.invalid != Invalid::LeaveToModel ||
                      binding.refusesMissing || binding.missingReplacement.has_value();
}

CaseStatus CasePreparer::Prepare(std::span<const std::string_view> fields)
{
    for (Binding& binding : bindings_) {
        const std::string_view text = fields[binding.column];
        long code = SetValue(binding, text);
        if (code == 0 && binding.treated) code = Treat(binding, text);
        if (code == 0) continue;
        if (!binding.optional) return {code, &binding.var->GetName(), text};
        SetMissing(binding);
    }
    for (const Derived& derived : derived_) {
        record_->Point(derived.position, derived.var->GetTransformedValue(
                                             record_.get(), dictionary_, transformations_));
    }
    return {};
}

const ScoreDictVar* CasePreparer::FindVar(const std::string& name) const
{
    return FindVariable(dictionary_, transformations_, name);
}

CaseStatus CasePreparer::Refusal(long code, const ScoreDictVar* failed,
                                 std::span<const std::string_view> fields) const
{
    if (failed == nullptr) return {code};
    const ScoreDictVar* blamed = failed;
    while (blamed->IsDerived()) {
        const auto& inputs = static_cast<const TransformVar*>(blamed)->Inputs();
        const auto bad = std::find_if(inputs.begin(), inputs.end(), [&](const auto* input) {
            return !input->Accepts(record_->GetValue(input->GetName()));
        });
        if (bad == inputs.end() && inputs.size() != 1) break;
        blamed = bad == inputs.end() ? inputs.front() : *bad;
    }
    for (const Binding& binding : bindings_) {
        if (binding.var == blamed) return {code, &blamed->GetName(), fields[binding.column]};
    }
    return {code, &blamed->GetName()};
}

std::vector<std::string> CasePreparer::InputNames() const
{
    std::vector<std::string> names;
    for (const Binding& binding : bindings_) names.push_back(binding.var->GetName());
    return names;
}

std::vector<std::string> CasePreparer::InputTexts(std::span<const std::string_view> fields) const
{
    std::vector<std::string> texts;
    for (const Binding& binding : bindings_) {
        std::string text(fields[binding.column]);
        if (IsMissingText(binding, text)) text.clear();
        if (binding.kind == Kind::Number && options_.decimal != '.') {
            std::replace(text.begin(), text.end(), options_.decimal, '.');
        }
        texts.push_back(std::move(text));
    }
    return texts;
}

std::vector<UnlistedValues> CasePreparer::Unlisted() const
{
    std::vector<UnlistedValues> met;
    for (const Binding& binding : bindings_) {
        if (binding.unlisted.count > 0) met.push_back(binding.unlisted);
    }
    return met;
}

bool CasePreparer::IsMissingText(const Binding& binding, std::string_view text) const
{
    if (text.empty() || (binding.naIsMissing && text == kNotAvailable)) return true;
    if (binding.dictVar != nullptr && binding.dictVar->IsMissingWord(text)) return true;
    if (options_.missingTexts.empty()) return false;
    return std::find(options_.missingTexts.begin(), options_.missingTexts.end(), text) !=
           options_.missingTexts.end();
}

// Sets the value of this row; the code of the refusal when the text can't be read.
long CasePreparer::SetValue(Binding& binding, std::string_view text)
{
    ValueOf(binding).SetTakenAsIs(false);
    if (IsMissingText(binding, text)) {
        SetMissing(binding);
        return 0;
    }
    double number = 0.0;
    switch (binding.kind) {
        case Kind::Number:
            if (!ReadDecimal(text, number)) return kCaseTextNotANumber;
            binding.number->SetDoubleValue(number);
            break;
        case Kind::Text:
            binding.text->Assign(binding.spells ? binding.dictVar->Spelling(text) : text);
            break;
        case Kind::DateTime:
            if (!ReadDateTime(text, binding.var->GetDateTimeType(), number)) {
                return kCaseTextNotADateTime;
            }
            binding.dateTime->SetNumber(number);
            break;
    }
    if (binding.extremes) TakeExtreme(binding);
    return 0;
}

// A value that the document calls missing stays so, however far beyond the limits it lies.
void CasePreparer::TakeExtreme(Binding& binding)
{
    const ScoreValue& value = ValueOf(binding);
    const double number = value.GetDouble();
    const double taken = std::clamp(number, binding.extremes->low, binding.extremes->high);
    if (taken != number && !binding.var->IsMissing(&value)) SetPlainNumber(binding, taken);
}

long CasePreparer::Treat(Binding& binding, std::string_view text)
{
    ScoreValue& value = ValueOf(binding);
    bool missing = binding.var->IsMissing(&value);
    if (!missing && binding.invalid != Invalid::LeaveToModel && !binding.var->IsValid(&value)) {
        switch (binding.invalid) {
            case Invalid::Refuse: return kCaseInvalidValue;
            case Invalid::AsIs: value.SetTakenAsIs(true); break;
            case Invalid::AsMissing:
                SetMissing(binding);
                missing = true;
                break;
            case Invalid::AsValue:
                if (!SetReplacement(binding, *binding.invalidReplacement)) return kCaseInvalidValue;
                break;
            case Invalid::LeaveToModel: break;
        }
    }
    if (missing) {
        if (binding.refusesMissing) return MCScore::kCaseNotScorable;
        if (binding.missingReplacement) SetReplacement(binding, *binding.missingReplacement);
    } else if (binding.countsUnlisted && binding.dictVar->FindCategory(value) < 0) {
        CountUnlisted(binding, text);
    }
    return 0;
}

bool CasePreparer::ReadDecimal(std::string_view text, double& number)
{
    if (ReadPlainNumber(text, options_.decimal, number)) return true;
    if (options_.decimal == '.') return ReadNumber(text, number) == NumberText::Number;
    // With another mark a point is no part of a number: it may well group thousands.
    if (text.find('.') != std::string_view::npos) return false;
    decimalText_.assign(text);
    std::replace(decimalText_.begin(), decimalText_.end(), options_.decimal, '.');
    return ReadNumber(decimalText_, number) == NumberText::Number;
}

void CasePreparer::SetMissing(Binding& binding)
{
    if (binding.kind == Kind::Text) {
        binding.text->SetMissing();
    } else {
        SetPlainNumber(binding, NumericValue::GetSysmisValue());
    }
}

void CasePreparer::SetPlainNumber(const Binding& binding, double number)
{
    if (binding.kind == Kind::Number) binding.number->SetDoubleValue(number);
    if (binding.kind == Kind::DateTime) binding.dateTime->SetNumber(number);
}

ScoreValue& CasePreparer::ValueOf(const Binding& binding)
{
    switch (binding.kind) {
        case Kind::Text: return *binding.text;
        case Kind::DateTime: return *binding.dateTime;
        case Kind::Number: break;
    }
    return *binding.number;
}

// A replacement is the document's text: its numbers have a decimal point, whatever the table has.
bool CasePreparer::SetReplacement(const Binding& binding, const std::string& text)
{
    const ScoreDictVar::DateTimeType type = binding.var->GetDateTimeType();
    double number = 0.0;
    const bool isNumber = ReadNumber(text, number) == NumberText::Number;
    switch (binding.kind) {
        case Kind::Number:
            if (!isNumber) {
                if (!binding.isFactor || binding.hasContrasts) return false;
                number = std::numeric_limits<double>::quiet_NaN();  // equals no category
            }
            binding.number->SetDoubleValue(number);
            break;
        case Kind::Text:
            binding.text->Assign(binding.spells ? binding.dictVar->Spelling(text) : text);
            break;
        case Kind::DateTime:
            // A number counts from the type's own origin, which is 1970 where it has none.
            if (isNumber) {
                number -= OriginShift(type);
            } else if (!ReadDateTime(text, type, number)) {
                return false;
            }
            binding.dateTime->SetNumber(number);
            break;
    }
    // Contrasts tell nothing of a category without a row: the variable refuses it.
    ValueOf(binding).SetTakenAsIs(!binding.hasContrasts);
    return true;
}

void CasePreparer::CountUnlisted(Binding& binding, std::string_view text)
{
    UnlistedValues& unlisted = binding.unlisted;
    if (unlisted.first.size() < UnlistedValues::kShown &&
        std::find(unlisted.first.begin(), unlisted.first.end(), text) == unlisted.first.end()) {
        unlisted.first.emplace_back(text);
    }
    if (unlisted.oneMayBeReference && unlisted.first.front() == text) return;
    ++unlisted.count;
}

}  // namespace MCVelscore_850
