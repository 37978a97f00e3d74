#include "models/paramtable.h"

#include "models/nameindex.h"
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
    return GetCell(IndexOf(*categories, category), IndexOf(*parameters, parameter));
}

ParamTableCell* ParamTable::GetCell(const std::string& category, const std::string& parameter)
{
    return const_cast<ParamTableCell*>(std::as_const(*this).GetCell(category, parameter));
}

int ParamTable::GetParameterIndex(const std::string& parameter) const
{
    return IndexOf(*parameters, parameter);
}

}  // namespace MCVelscore_850
