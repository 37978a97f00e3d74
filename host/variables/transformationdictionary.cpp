#include "host/variables/transformationdictionary.h"

#include "host/expressions/expression.h"
#include "host/expressions/transformvar.h"

namespace MCVelscore_850 {

TransformationDictionary::TransformationDictionary() = default;
TransformationDictionary::~TransformationDictionary() = default;

std::unique_ptr<CaseRecord> TransformationDictionary::NewRecord() const
{
    std::vector<std::string> names;
    for (const ScoreDictVar* var : GetVars()) names.push_back(var->GetName());
    return std::make_unique<CaseRecord>(std::move(names), false);
}

void TransformationDictionary::SetUpDerivedCaseRecord()
{
    own_ = std::make_unique<Derivation>();
    own_->record = NewRecord();
}

const ScoreCaseRecord* TransformationDictionary::GetValuesForDerivedVars(
    const ScoreCaseRecord* record, const ScoreDictionary* dictionary) const
{
    return own_ == nullptr ? nullptr : GetValuesForDerivedVars(record, dictionary, *own_);
}

const ScoreCaseRecord* TransformationDictionary::GetValuesForDerivedVars(
    const ScoreCaseRecord* record, const ScoreDictionary* dictionary, Derivation& derivation) const
{
    if (own_ == nullptr) return nullptr;
    if (derivation.record == nullptr) derivation.record = NewRecord();
    const ExpressionCase c{record, dictionary, this, derivation.scratch};
    int position = 0;
    for (const ScoreDictVar* var : GetVars()) {
        const auto* derived = static_cast<const TransformVar*>(var);
        derivation.record->Point(position++, derived->ValueIn(c));
    }
    return derivation.record.get();
}

}  // namespace MCVelscore_850
