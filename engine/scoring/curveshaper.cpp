#include "engine/scoring/curveshaper.h"

#include <algorithm>
#include <string>

#include "engine/scoring/resultnumber.h"
#include "engine/tables/rowtext.h"

namespace MCVelscore_850 {

ModelDescription CurveShaper::Needs(ModelDescription description)
{
    const std::string& endTime = description.endTimeVariable;
    const auto holds = [&](const std::vector<std::string>& names) {
        return std::find(names.begin(), names.end(), endTime) != names.end();
    };
    if (!holds(description.factors) && !holds(description.covariates) &&
        endTime != description.stratumVariable) {
        std::erase(description.variables, endTime);
    }
    return description;
}

const std::vector<std::string>& CurveShaper::Columns()
{
    static const std::vector<std::string> kColumns{"row", "time", "survival", "cum_hazard"};
    return kColumns;
}

void CurveShaper::WriteCurve(RowText& rows, int64_t row, const std::vector<SurvivalPoint>& curve)
{
    for (const SurvivalPoint& point : curve) {
        rows.AddWhole(row);
        rows.AddLabel(point.time);
        WriteResultNumber(rows, point.survival);
        WriteResultNumber(rows, point.cumHazard);
        rows.EndRow();
    }
    if (curve.empty()) WriteNoCurve(rows, row);
}

void CurveShaper::WriteNoCurve(RowText& rows, int64_t row)
{
    rows.AddWhole(row);
    for (int i = 0; i < 3; ++i) rows.AddEmpty();
    rows.EndRow();
}

}  // namespace MCVelscore_850
