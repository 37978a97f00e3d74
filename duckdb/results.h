#ifndef VELSCORE_DUCKDB_RESULTS_H
#define VELSCORE_DUCKDB_RESULTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "capi/include/velscore_arrow.h"
#include "duckdb/api.h"

namespace velscore::sql {

/// The struct that velscore() answers; the same for all models, what a model doesn't have is NULL.
Type ResultType();

/// Writes tables of results into vectors of ResultType(). One thread at a time.
class ResultWriter {
public:
    /// Of the schema of a binding's results.
    explicit ResultWriter(const ArrowSchema& schema);

    /// Writes all rows. Where `isThere`, a bit a row, has a 0 the result itself is NULL; null: all
    /// are there.
    void Write(const ArrowArray& results, const uint64_t* isThere, duckdb_vector out);

private:
    void WriteProbabilities(const ArrowArray& results, const uint64_t* isThere, duckdb_vector out);

    static constexpr size_t kNone = static_cast<size_t>(-1);
    std::vector<size_t> columns_;          ///< of each field of the struct, in the results
    std::vector<size_t> probabilities_;    ///< the columns of these
    std::vector<std::string> categories_;  ///< and what they are of
};

}  // namespace velscore::sql

#endif
