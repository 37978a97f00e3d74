#ifndef VELSCORE_DUCKDB_ROWFUNCTION_H
#define VELSCORE_DUCKDB_ROWFUNCTION_H

#include <memory>

#include "duckdb/api.h"
#include "duckdb/modelcache.h"

namespace velscore::sql {

/// What a function of SQL answers for rows of one type by one model. One thread at a time.
class RowAnswerer {
public:
    virtual ~RowAnswerer() = default;
    /// Writes the answers of the rows of a flat STRUCT vector. Throws SqlError and velscore::Error.
    virtual void Answer(duckdb_vector rows, idx_t count, duckdb_vector out) = 0;
};

/// A scalar function NAME(path, row). The path is the same for all rows of a statement, a row is a
/// struct.
///
/// The database binds a statement once: path, document, and columns are checked then. Each of its
/// threads makes an answerer of its own. Only where the path is a parameter of a prepared statement
/// they are checked when the first rows come.
struct RowFunction {
    const char* name;
    Type (*resultType)();
    /// Throws SqlError and velscore::Error where the row doesn't suit the model.
    std::unique_ptr<RowAnswerer> (*make)(const std::shared_ptr<const OpenModel>& model,
                                         duckdb_logical_type rowType);
};

/// Makes a function known, which stays where it is as long as the database. Throws SqlError.
void Register(duckdb_connection connection, const RowFunction& function);

}  // namespace velscore::sql

#endif
