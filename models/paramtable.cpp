#include "models/paramtable.h"

#include "models/regressionmodel.h"

namespace MCVelscore_850 {

ParamTable::ParamTable(const RegressionModel* owner)
    : model(owner),
      cells(owner->GetCategoryMap().size(),
            std::vector<ParamTableCell>(owner->GetParameterMap().size())),
      categories(&owner->GetCategoryMap()),
      parameters(&owner->GetParameterMap())
{}

bool ParamTable::SetCell(const std::string& category, const std::string& parameter,
                         const ParamTableCell& cell)
{
    ParamTableCell* place = GetCell(category, parameter);
    if (place == nullptr) return false;
    *place = cell;
    return true;
}

const ParamTableCell* ParamTable::GetCell(const std::string& category,
                                          const std::string& parameter) const
{
    const auto row = categories->find(category);
    const auto column = parameters->find(parameter);
    if (row == categories->end() || column == parameters->end()) return nullptr;
    return GetCell(row->second, column->second);
}

ParamTableCell* ParamTable::GetCell(const std::string& category, const std::string& parameter)
{
    return const_cast<ParamTableCell*>(std::as_const(*this).GetCell(category, parameter));
}

int ParamTable::GetParameterIndex(const std::string& parameter) const
{
    const auto found = parameters->find(parameter);
    return found == parameters->end() ? -1 : found->second;
}

}  // namespace MCVelscore_850
