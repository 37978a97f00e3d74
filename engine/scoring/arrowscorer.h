#ifndef VELSCORE_ENGINE_SCORING_ARROWSCORER_H
#define VELSCORE_ENGINE_SCORING_ARROWSCORER_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "engine/scoring/arrowresults.h"
#include "engine/scoring/outputshaper.h"
#include "engine/scoring/resultblock.h"
#include "engine/scoring/tablescorer.h"
#include "engine/tables/arrowcolumns.h"
#include "engine/tables/arrowdata.h"

namespace MCVelscore_850 {

class LoadedModel;

/// What is asked of tables in memory, beside what their columns are.
struct ArrowOptions {
    TableOptions table{};
    OutputOptions output{};
    bool nanIsMissing = true;  ///< else a value that is not valid
    /// A row without a score ends the table.
    bool strict = false;
};

/// Has the columns read that fields are read from, as they read them.
void UseColumnsOf(std::span<const CaseField> fields, ArrowColumns& columns);

/// How messages call a table in memory.
inline const std::string kArrowTableName = "the table";

/// Refuses a row without a score: throws Failure (kRowNotScored) with its number, from 1.
[[noreturn]] void RefuseRow(int64_t row, const CaseStatus& status);

/// Scores tables in Arrow's form through a model, one after the other: what they keep, then the
/// results. Kept columns are handed on without a copy.
///
/// Errors  Failure: from the constructor what ArrowColumns, TableScorer and OutputShaper refuse,
///         and columns whose type isn't taken; from Begin() and Score() a table that isn't as its
///         schema says, and with `strict` a row without a score.
/// Owner   the model outlives the scorer; arrays that it made don't need it.
/// Threads one.
class ArrowScorer {
public:
    ArrowScorer(const LoadedModel& model, const ArrowSchema& schema, const ArrowOptions& options);

    /// Of the tables that Score() gives.
    ArrowOwner<ArrowSchema> Schema() const;

    /// Takes a table over. Answers the number of its rows.
    int64_t Begin(ArrowOwner<ArrowArray> table);
    /// Scores some of its rows.
    ArrowOwner<ArrowArray> Score(int64_t first, int64_t rows);
    /// Lets the table go.
    void End();
    /// The next table is a first one: it settles the model anew, and its rows count from 1.
    void BeginAnew();

private:
    void ScoreBlock(int64_t first, size_t rows);

    ArrowColumns columns_;
    TableScorer scorer_;
    OutputShaper shaper_;
    ResultBlock block_;
    ArrowResults results_;
    std::vector<ArrowOwner<ArrowSchema>> kept_;
    bool strict_;
    std::shared_ptr<const ArrowOwner<ArrowArray>> table_;
    int64_t rowsBefore_ = 0;  ///< in the tables before
};

}  // namespace MCVelscore_850

#endif
