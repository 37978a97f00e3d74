#ifndef VELSCORE_DUCKDB_FUNCTIONS_H
#define VELSCORE_DUCKDB_FUNCTIONS_H

#include "duckdb/api.h"

namespace velscore::sql {

// What SQL calls. docs/sql.md tells what each takes and answers. All throw SqlError where the
// database doesn't take a function.

/// velscore(path, row, options): the results of a row.
void RegisterScore(duckdb_connection connection);
/// velscore_curve(path, row, options): the survival curve of a row.
void RegisterCurve(duckdb_connection connection);
/// velscore_explain(path, row, options): how the linear predictors of a row add up.
void RegisterExplain(duckdb_connection connection);
/// velscore_inspect(path) and velscore_check(path): tables about a document.
void RegisterReports(duckdb_connection connection);

}  // namespace velscore::sql

#endif
