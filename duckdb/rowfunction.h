#ifndef VELSCORE_DUCKDB_ROWFUNCTION_H
#define VELSCORE_DUCKDB_ROWFUNCTION_H

#include <memory>
#include <span>

#include "duckdb/api.h"
#include "duckdb/modelcache.h"
#include "duckdb/rowoptions.h"

namespace velscore::sql {

/// What a function of SQL answers for rows of one type by one model. One thread at a time.
class RowAnswerer {
public:
    virtual ~RowAnswerer() = default;
    /// Writes the answers of the rows of a flat STRUCT vector. Throws SqlError and velscore::Error.
    virtual void Answer(duckdb_vector rows, idx_t count, duckdb_vector out) = 0;
};

/// A scalar function NAME(path, row) or NAME(path, row, options). The path is the same for all rows
/// of a statement, a row is a struct, the options are a constant one.
///
/// The database binds a statement once: path, document, options and columns are checked then. Each
/// of its threads makes an answerer of its own. Only where the path is a parameter of a prepared
/// statement they are checked when the first rows come.
struct RowFunction {
    const char* name;
    Type (*resultType)();
    std::span<const RowOption* const> options;
    /// Throws SqlError and velscore::Error where row or options don't suit the model.
    std::unique_ptr<RowAnswerer> (*make)(const std::shared_ptr<const OpenModel>& model,
                                         duckdb_logical_type rowType,
                                         const velscore::ScoreOptions& options);
};

/// Makes a function known, which stays where it is as long as the database. Throws SqlError.
void Register(duckdb_connection connection, const RowFunction& function);

}  // namespace velscore::sql

#endif
