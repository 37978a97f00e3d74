#include "engine/scoring/curveshaper.h"

#include <algorithm>
#include <string>

#include "engine/scoring/resultnumber.h"
#include "engine/scoring/resultschema.h"
#include "engine/tables/rowtext.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

std::vector<std::string> WideColumns(const std::vector<double>& times)
{
    std::vector<std::string> columns{"row"};
    for (const double time : times) {
        AppendNumber(time, columns.emplace_back(kSurvivalAt));
    }
    return columns;
}

}  // namespace

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

const std::vector<std::string>& CurveShaper::LongColumns()
{
    static const std::vector<std::string> kColumns{"row", "time", "survival", "cum_hazard"};
    return kColumns;
}

CurveShaper::CurveShaper(const CurveForm& form, const OutputOptions& output,
                         std::span<const std::string> header, const std::string& tableName)
    : wide_(form.wide),
      results_(form.wide ? WideColumns(form.times) : LongColumns()),
      kept_(output, header, tableName, results_),
      columns_(kept_.Names())
{
    columns_.insert(columns_.end(), results_.begin(), results_.end());
}

void CurveShaper::WriteCurve(RowText& rows, const InputRow& input, int64_t row,
                             const std::vector<SurvivalPoint>& curve) const
{
    if (curve.empty() || wide_) kept_.Write(rows, input);
    if (curve.empty()) return WriteNoCurve(rows, row);
    if (wide_) {
        rows.AddWhole(row);
        for (const SurvivalPoint& point : curve) WriteResultNumber(rows, point.survival);
        rows.EndRow();
        return;
    }
    for (const SurvivalPoint& point : curve) {
        kept_.Write(rows, input);
        rows.AddWhole(row);
        rows.AddLabel(point.time);
        WriteResultNumber(rows, point.survival);
        WriteResultNumber(rows, point.cumHazard);
        rows.EndRow();
    }
}

void CurveShaper::WriteTorn(RowText& rows, std::string_view table, int64_t row) const
{
    kept_.WriteTorn(rows, table);
    WriteNoCurve(rows, row);
}

void CurveShaper::WriteNoCurve(RowText& rows, int64_t row) const
{
    rows.AddWhole(row);
    for (size_t i = 1; i < results_.size(); ++i) rows.AddEmpty();
    rows.EndRow();
}

}  // namespace MCVelscore_850
