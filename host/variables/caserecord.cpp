#include "host/variables/caserecord.h"

namespace MCVelscore_850 {

CaseRecord::CaseRecord(std::vector<std::string> names, bool indexedAccess)
    : names_(std::move(names)),
      values_(names_.size(), nullptr),
      owned_(names_.size()),
      indexedAccess_(indexedAccess)
{
    for (size_t i = 0; i < names_.size(); ++i) positions_.emplace(names_[i], static_cast<int>(i));
}

CaseRecord::~CaseRecord() = default;

ScoreValue* CaseRecord::GetValue(const std::string& name) const
{
    const auto found = positions_.find(name);
    return found == positions_.end() ? nullptr : values_[static_cast<size_t>(found->second)];
}

ScoreValue* CaseRecord::GetValue(int position) const
{
    const size_t index = static_cast<size_t>(position);  // a negative one is out of range too
    return indexedAccess_ && index < values_.size() ? values_[index] : nullptr;
}

int CaseRecord::GetVarIndex(const std::string& name) const
{
    const auto found = positions_.find(name);
    return found == positions_.end() ? -1 : found->second;
}

void CaseRecord::Own(int position, std::unique_ptr<ScoreValue> value)
{
    Point(position, value.get());
    owned_[static_cast<size_t>(position)] = std::move(value);
}

void CaseRecord::Point(int position, ScoreValue* value)
{
    values_[static_cast<size_t>(position)] = value;
}

}  // namespace MCVelscore_850
