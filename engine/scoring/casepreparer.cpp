#include "engine/scoring/casepreparer.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

#include "engine/messages/failure.h"
#include "engine/messages/shorttext.h"
#include "engine/messages/suggestions.h"
#include "engine/tables/columnblock.h"
#include "host/expressions/transformvar.h"
#include "host/messages/messages.h"
#include "host/model/scoremodel.h"
#include "host/values/numbertext.h"
#include "host/variables/transformationdictionary.h"

namespace MCVelscore_850 {

namespace {

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
    RefuseUnknownNames();
    BindColumns(header, tableName);

    std::unordered_map<std::string_view, const MiningFieldTreatment*> treatmentOf;
    for (const MiningFieldTreatment& each : treatments) treatmentOf.emplace(each.name, &each);
    for (CaseField& field : fields_) {
        const auto treatment = treatmentOf.find(field.Name());
        if (treatment == treatmentOf.end()) continue;
        field.SetTreatment(TreatmentOf(field.Var(), *treatment->second, description));
    }

    // Data variables come first in the record, then the derived ones; both by their own order.
    for (const Derived& derived : derived_) names.push_back(derived.var->GetName());
    record_ = std::make_unique<CaseRecord>(std::move(names));
    int position = 0;
    for (CaseField& field : fields_) record_->Own(position++, field.MakeValue());
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
    if (optional && !options_.columnOf.contains(var.GetName()) &&
        !Contains(*columns, var.GetName())) {
        return;
    }
    names.push_back(var.GetName());
    fields_.emplace_back(var, options_, optional);
}

void CasePreparer::BindColumns(std::span<const std::string> header, const std::string& tableName)
{
    std::unordered_multimap<std::string_view, size_t> columns;
    for (size_t i = 0; i < header.size(); ++i) columns.emplace(header[i], i);
    std::vector<std::string> missing;
    std::vector<std::string> bound;
    for (CaseField& field : fields_) {
        const std::string& name = options_.ColumnOf(field.Name());
        const auto [first, last] = columns.equal_range(name);
        if (first == last) {
            missing.push_back(name);
        } else if (std::next(first) != last) {
            throw Failure(FailureKind::Cases, kDuplicateColumn, {tableName, name});
        } else {
            field.SetColumn(first->second);
            bound.push_back(name);
        }
    }
    if (!missing.empty()) {
        std::string hint = SuggestColumns(missing, header, bound);
        if (!hint.empty() && !options_.headerRemedy.empty()) hint += ' ';
        throw Failure(FailureKind::Cases, kMissingColumn,
                      {tableName, JoinNames(missing, "', '"), JoinNames(header, ", ")},
                      hint + options_.headerRemedy);
    }
}

void CasePreparer::RefuseUnknownNames() const
{
    const std::vector<std::string> names = InputNames();
    for (const auto& [name, column] : options_.columnOf) {
        if (Contains(names, name)) continue;
        throw Failure(FailureKind::Usage, kUnknownMappedName, {name, JoinNames(names, ", ")},
                      SuggestWord(name, names));
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

FieldTreatment CasePreparer::TreatmentOf(const ScoreDictVar& var,
                                         const MiningFieldTreatment& schema,
                                         const ModelDescription& description) const
{
    const std::string& name = var.GetName();
    const bool hasContrasts =
        std::any_of(description.contrasts.begin(), description.contrasts.end(),
                    [&](const auto& contrast) { return contrast.predictor == name; });
    return {schema, Contains(description.factors, name), hasContrasts,
            LeavesReplacementToModel(var, description)};
}

CaseStatus CasePreparer::Prepare(const ColumnBlock& block, size_t row)
{
    for (CaseField& field : fields_) {
        bool unlisted = false;
        const long code = field.Set(block.columns[field.Column()], row, unlisted);
        if (unlisted) NoteUnlisted(field, block, row);
        if (code == 0) continue;
        if (!field.IsOptional()) return {code, &field.Name(), TextOf(field, block, row)};
        field.SetMissing();
    }
    ComputeDerived();
    return {};
}

bool CasePreparer::PrepareSurely(const ColumnBlock& block, size_t row)
{
    for (CaseField& field : fields_) {
        bool unlisted = false;
        if (field.Set(block.columns[field.Column()], row, unlisted) != 0) return false;
        if (unlisted) NoteUnlisted(field, block, row);
    }
    ComputeDerived();
    return true;
}

void CasePreparer::NoteUnlisted(const CaseField& field, const ColumnBlock& block, size_t row)
{
    const auto place = static_cast<size_t>(&field - fields_.data());
    unlisted_.push_back({row, place, TextOf(field, block, row)});
}

bool CasePreparer::IsMissing(const CaseStatus& status) const
{
    if (!status.text || status.field == nullptr) return false;
    return std::any_of(fields_.begin(), fields_.end(), [&](const CaseField& field) {
        return field.Name() == *status.field && field.IsMissingText(*status.text);
    });
}

void CasePreparer::BeginBlock()
{
    unlisted_.clear();
    numberTextCount_ = 0;
}

void CasePreparer::ComputeDerived()
{
    for (const Derived& derived : derived_) {
        record_->Point(derived.position, derived.var->ValueIn({record_.get(), dictionary_,
                                                               transformations_, expressions_}));
    }
}

const ScoreDictVar* CasePreparer::FindVar(const std::string& name) const
{
    return FindVariable(dictionary_, transformations_, name);
}

CaseStatus CasePreparer::Refusal(long code, const ScoreDictVar* failed, const ColumnBlock& block,
                                 size_t row)
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
    for (const CaseField& field : fields_) {
        if (&field.Var() == blamed) return {code, &blamed->GetName(), TextOf(field, block, row)};
    }
    return {code, &blamed->GetName()};
}

std::string_view CasePreparer::TextOf(const CaseField& field, const ColumnBlock& block, size_t row)
{
    const TableColumn& column = block.columns[field.Column()];
    if (column.numbers == nullptr) return column.Text(row);
    if (!column.IsPresent(row)) return {};
    if (numberTextCount_ == numberTexts_.size()) numberTexts_.emplace_back();
    std::string& text = numberTexts_[numberTextCount_++];
    text.clear();
    AppendNumber(column.numbers[row], text);
    return text;
}

std::vector<std::string> CasePreparer::InputNames() const
{
    std::vector<std::string> names;
    for (const CaseField& field : fields_) names.push_back(field.Name());
    return names;
}

std::vector<std::string> CasePreparer::InputTexts(const ColumnBlock& block, size_t row) const
{
    std::vector<std::string> texts;
    for (const CaseField& field : fields_) {
        texts.push_back(field.DocumentText(block.columns[field.Column()].Text(row)));
    }
    return texts;
}

}  // namespace MCVelscore_850
