#ifndef VELSCORE_DUCKDB_ROWOPTIONS_H
#define VELSCORE_DUCKDB_ROWOPTIONS_H

#include <span>
#include <string>
#include <vector>

#include "capi/include/velscore.hpp"
#include "duckdb/api.h"

namespace velscore::sql {

/// A field that the options of a call may have.
struct RowOption {
    const char* name;
    /// Throws SqlError for a value of another type, and for what the library takes for a default.
    void (*read)(duckdb_value value, const char* name, velscore::ScoreOptions& options);
};

// By what they say: how a table is read, what is done with missing values, the limits, and what is
// answered.
extern const RowOption kMapOption;
extern const RowOption kMissingOption;
extern const RowOption kNanOption;
extern const RowOption kPolicyOption;
extern const RowOption kLevelOption;
extern const RowOption kPredictionOnlyOption;
extern const RowOption kTopOption;

/// The options that a constant struct of SQL tells; a field that is NULL tells nothing. Throws
/// SqlError, which names the function, for what isn't a struct and for fields that it doesn't have.
velscore::ScoreOptions RowOptionsOf(duckdb_value value, std::span<const RowOption* const> known,
                                    const std::string& function);

/// The columns of a table that a model reads, by the names that `map` gives them.
std::vector<std::string> MappedColumns(std::vector<std::string> reads,
                                       const velscore::ScoreOptions& options);

}  // namespace velscore::sql

#endif
