#ifndef VELSCORE_DUCKDB_REPORT_H
#define VELSCORE_DUCKDB_REPORT_H

#include <string>
#include <variant>
#include <vector>

#include "duckdb/api.h"

namespace velscore::sql {

/// A value of a report: nothing is NULL.
using ReportCell = std::variant<std::monostate, std::string, double, int64_t, bool>;

struct ReportColumn {
    const char* name;
    duckdb_type type;  ///< VARCHAR, DOUBLE, BIGINT or BOOLEAN
};

/// A small table, made when a statement is bound.
struct Report {
    std::vector<ReportColumn> columns;
    std::vector<std::vector<ReportCell>> rows;
};

/// A table function NAME(path, ...).
struct ReportFunction {
    const char* name;
    std::vector<duckdb_type> parameters;
    /// Throws SqlError and velscore::Error.
    Report (*make)(duckdb_bind_info info, duckdb_client_context context, const std::string& path);
};

/// Makes a function known, which stays where it is as long as the database. Throws SqlError.
void Register(duckdb_connection connection, const ReportFunction& function);

}  // namespace velscore::sql

#endif
