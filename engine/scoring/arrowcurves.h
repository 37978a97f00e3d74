#ifndef VELSCORE_ENGINE_SCORING_ARROWCURVES_H
#define VELSCORE_ENGINE_SCORING_ARROWCURVES_H

#include <cstdint>
#include <vector>

#include "engine/scoring/arrowscorer.h"
#include "engine/scoring/tablescorer.h"
#include "engine/tables/arrowcolumns.h"
#include "engine/tables/arrowdata.h"

namespace MCVelscore_850 {

/// Survival curves of the rows of tables in Arrow's form, in long form: CurveShaper's columns, row
/// as int64 and the others as float64. A case without a curve has one line of nulls but for row;
/// with `strict` it ends the table.
///
/// Order, errors, owner, threads as ArrowScorer's.
class ArrowCurves {
public:
    ArrowCurves(const LoadedModel& model, const ArrowSchema& schema, const ArrowOptions& options);

    static ArrowOwner<ArrowSchema> Schema();

    int64_t Begin(ArrowOwner<ArrowArray> table);
    /// The curves of some of the table's rows, at most TableScorer::kRows.
    ArrowOwner<ArrowArray> Draw(int64_t first, size_t rows);
    void End();

private:
    void AddPoint(int64_t row, const SurvivalPoint& point);
    void AddNoCurve(int64_t row);

    ArrowColumns columns_;
    TableScorer scorer_;
    bool strict_;
    ArrowOwner<ArrowArray> table_;
    int64_t rowsBefore_ = 0;
    std::vector<int64_t> rows_;
    std::vector<double> times_;
    std::vector<double> survivals_;
    std::vector<double> hazards_;
};

}  // namespace MCVelscore_850

#endif
