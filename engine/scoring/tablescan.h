#ifndef VELSCORE_ENGINE_SCORING_TABLESCAN_H
#define VELSCORE_ENGINE_SCORING_TABLESCAN_H

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/scoring/arrowscorer.h"
#include "engine/scoring/scoringsession.h"
#include "engine/tables/tablereader.h"

namespace MCVelscore_850 {

class ScanTask;

/// How tables of files are scanned.
struct ScanOptions {
    TableDialect dialect{};
    ArrowOptions scoring{};  ///< nanIsMissing has no meaning: a file has texts
    size_t threads = 1;
    size_t blockBytes = BlockReader::kBlockSize;
};

/// Scores tables of files through a model as ScoringSession does, and hands the results out as
/// tables in Arrow's form, one for each block of the file in their order. Kept columns are texts.
///
/// Work    nobody works between two calls: Next() reads as many blocks as there are threads, scores
///         them side by side and hands out the first; the calls after it the others. Blocks go one
///         by one until a row was scored, since a model may settle things by it. Results don't
///         depend on the threads.
/// Errors  Failure: from the constructor what TableReader, TableScorer and OutputShaper refuse;
///         from Next() a fault of the file, after the whole rows before it.
/// Owner   the model outlives the scan; arrays that it made don't need it.
/// Threads one at a time.
class TableScan {
public:
    TableScan(const LoadedModel& model, std::vector<std::string> paths, const ScanOptions& options);
    ~TableScan();

    ArrowOwner<ArrowSchema> Schema() const;
    /// The next table; nothing at the end.
    std::optional<ArrowOwner<ArrowArray>> Next();

private:
    void Fill();
    void RunAll();

    TableReader reader_;
    std::vector<std::unique_ptr<ScanTask>> tasks_;  ///< each stays where it is
    size_t threads_;
    size_t filled_ = 0;  ///< tasks that hold a block
    size_t taken_ = 0;   ///< of these, handed out
    bool readEnded_ = false;
    std::exception_ptr failure_;  ///< that ended the reading
};

}  // namespace MCVelscore_850

#endif
