#include "host/variables/scoredictionary.h"

namespace MCVelscore_850 {

ScoreDictionary::~ScoreDictionary() = default;

BaseDictionary::BaseDictionary() = default;
BaseDictionary::~BaseDictionary() = default;

bool BaseDictionary::AddVar(const std::string& name, ScoreDictVar* var)
{
    std::unique_ptr<ScoreDictVar> owned(var);
    if (var == nullptr || !byName_.emplace(name, var).second) return false;
    vars_.push_back(std::move(owned));
    return true;
}

ScoreDictVar* BaseDictionary::GetVar(const std::string& name) const
{
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : found->second;
}

std::vector<ScoreDictVar*> BaseDictionary::GetVars() const
{
    std::vector<ScoreDictVar*> vars;
    vars.reserve(vars_.size());
    for (const auto& var : vars_) vars.push_back(var.get());
    return vars;
}

}  // namespace MCVelscore_850
