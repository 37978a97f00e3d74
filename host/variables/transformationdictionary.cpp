#include "host/variables/transformationdictionary.h"

#include "host/expressions/expression.h"
#include "host/expressions/transformvar.h"

namespace MCVelscore_850 {

TransformationDictionary::TransformationDictionary() = default;
TransformationDictionary::~TransformationDictionary() = default;

void TransformationDictionary::SetUpDerivedCaseRecord()
{
    std::vector<std::string> names;
    for (const ScoreDictVar* var : GetVars()) names.push_back(var->GetName());
    derived_ = std::make_unique<CaseRecord>(std::move(names), false);
}

const ScoreCaseRecord* TransformationDictionary::GetValuesForDerivedVars(
    const ScoreCaseRecord* record, const ScoreDictionary* dictionary) const
{
    if (!derived_) return nullptr;
    const ExpressionCase c{record, dictionary, this};
    int position = 0;
    for (const ScoreDictVar* var : GetVars()) {
        const auto* derived = static_cast<const TransformVar*>(var);
        derived_->Point(position++, derived->ValueIn(c));
    }
    return derived_.get();
}

}  // namespace MCVelscore_850
