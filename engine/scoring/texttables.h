#ifndef VELSCORE_ENGINE_SCORING_TEXTTABLES_H
#define VELSCORE_ENGINE_SCORING_TEXTTABLES_H

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "engine/scoring/tablescorer.h"
#include "engine/tables/columnblock.h"
#include "engine/tables/tablereader.h"

namespace MCVelscore_850 {

struct ScoringOptions;

/// The rows of tables, block after block, on one thread: for what isn't scored by the pipeline. Of
/// the options those that say how tables are read count.
///
/// Errors  Failure: what TableReader refuses, and a torn row.
class TextTables {
public:
    /// Reads the first header. The options outlive it.
    TextTables(const std::vector<std::string>& paths, const ScoringOptions& options);

    TableReader& Reader() { return reader_; }
    /// How a model's scorer reads them, by names of columns that the model's fields have here; see
    /// CaseOptions::columnOf.
    TableOptions OptionsFor(std::map<std::string, std::string> columnOf) const;

    /// Told a block of at most TableScorer::kRows rows and the number of the first, from 1 in all
    /// tables; false ends the visit.
    using Visitor = std::function<bool(const ColumnBlock& block, int64_t first)>;
    /// Cuts off what the scorers read of each row.
    void Visit(std::span<const TableScorer* const> scorers, const Visitor& visitor);

private:
    const ScoringOptions& options_;
    TableReader reader_;
};

}  // namespace MCVelscore_850

#endif
