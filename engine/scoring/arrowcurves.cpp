#include "engine/scoring/arrowcurves.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/curveshaper.h"
#include "engine/tables/arrowarrays.h"
#include "host/model/survivalpoint.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

double NumberOrNone(double number)
{
    return NumericValue::IsSystemMissingValue(number) ? kNone : number;
}

template <class T>
ArrowBytes CopyOf(const std::vector<T>& values)
{
    ArrowBytes bytes = MakeArrowBytes(values.size() * sizeof(T));
    if (!values.empty()) std::memcpy(bytes.get(), values.data(), values.size() * sizeof(T));
    return bytes;
}

// NaN is no value.
ArrowColumnParts NumbersOf(const std::vector<double>& numbers)
{
    ArrowColumnParts parts{.validity = MakeArrowZeros((numbers.size() + 7) / 8),
                           .values = CopyOf(numbers)};
    for (size_t i = 0; i < numbers.size(); ++i) {
        if (std::isnan(numbers[i])) {
            ++parts.nullCount;
        } else {
            parts.validity[i / 8] |= static_cast<std::byte>(1U << (i % 8));
        }
    }
    if (parts.nullCount == 0) parts.validity = nullptr;
    return parts;
}

}  // namespace

ArrowCurves::ArrowCurves(const LoadedModel& model, const ArrowSchema& schema,
                         const ArrowOptions& options)
    : columns_(schema, options.nanIsMissing, TableScorer::kRows),
      scorer_(model, columns_.Header(), kArrowTableName, options.table),
      strict_(options.strict)
{
    UseColumnsOf(scorer_.Preparer().Fields(), columns_);
}

ArrowOwner<ArrowSchema> ArrowCurves::Schema()
{
    const std::vector<std::string>& names = CurveShaper::LongColumns();
    std::vector<ArrowOwner<ArrowSchema>> columns;
    columns.push_back(MakeArrowSchema("l", names[0], false));
    for (size_t i = 1; i < names.size(); ++i)
        columns.push_back(MakeArrowSchema("g", names[i], true));
    return MakeTableSchema(std::move(columns));
}

int64_t ArrowCurves::Begin(ArrowOwner<ArrowArray> table)
{
    table_ = std::move(table);
    columns_.Begin(*table_);
    return columns_.Rows();
}

ArrowOwner<ArrowArray> ArrowCurves::Draw(int64_t first, size_t rows)
{
    rows_.clear();
    times_.clear();
    survivals_.clear();
    hazards_.clear();
    const int64_t before = rowsBefore_ + first + 1;
    scorer_.VisitCurves(columns_.Block(first, rows),
                        [&](size_t row, const CaseStatus& status, const auto& curve) {
                            const int64_t number = before + static_cast<int64_t>(row);
                            if (strict_ && !status.IsOK()) RefuseRow(number, status);
                            for (const SurvivalPoint& point : curve) AddPoint(number, point);
                            if (curve.empty()) AddNoCurve(number);
                            return true;
                        });
    std::vector<ArrowOwner<ArrowArray>> columns;
    const auto count = static_cast<int64_t>(rows_.size());
    columns.push_back(MakeArrowArray(count, {.validity = nullptr, .values = CopyOf(rows_)}));
    for (const auto* numbers : {&times_, &survivals_, &hazards_}) {
        columns.push_back(MakeArrowArray(count, NumbersOf(*numbers)));
    }
    return MakeArrowTable(count, std::move(columns));
}

void ArrowCurves::End()
{
    rowsBefore_ += columns_.Rows();
    table_ = {};
}

void ArrowCurves::AddPoint(int64_t row, const SurvivalPoint& point)
{
    rows_.push_back(row);
    times_.push_back(point.time);
    survivals_.push_back(NumberOrNone(point.survival));
    hazards_.push_back(NumberOrNone(point.cumHazard));
}

void ArrowCurves::AddNoCurve(int64_t row)
{
    rows_.push_back(row);
    for (auto* numbers : {&times_, &survivals_, &hazards_}) numbers->push_back(kNone);
}

}  // namespace MCVelscore_850
