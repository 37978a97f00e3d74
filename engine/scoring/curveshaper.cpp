#include "engine/scoring/curveshaper.h"

#include <algorithm>
#include <string>

#include "engine/scoring/resultnumber.h"
#include "engine/tables/csvwriter.h"

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

void CurveShaper::WriteHeader(CsvWriter& writer)
{
    for (const char* column : {"row", "time", "survival", "cum_hazard"}) writer.AddText(column);
    writer.EndRow();
}

void CurveShaper::WriteCurve(CsvWriter& writer, int64_t row,
                             const std::vector<SurvivalPoint>& curve)
{
    const std::string number = std::to_string(row);
    for (const SurvivalPoint& point : curve) {
        writer.AddText(number);
        writer.AddNumber(point.time);
        WriteResultNumber(writer, point.survival);
        WriteResultNumber(writer, point.cumHazard);
        writer.EndRow();
    }
    if (curve.empty()) WriteNoCurve(writer, row);
}

void CurveShaper::WriteNoCurve(CsvWriter& writer, int64_t row)
{
    writer.AddText(std::to_string(row));
    for (int i = 0; i < 3; ++i) writer.AddEmpty();
    writer.EndRow();
}

}  // namespace MCVelscore_850
