// The entry that the database calls when it loads the extension.

#define DUCKDB_EXTENSION_NAME velscore
#include "duckdb/errors.h"
#include "duckdb/functions.h"

DUCKDB_EXTENSION_ENTRYPOINT(duckdb_connection connection, duckdb_extension_info info,
                            struct duckdb_extension_access* access)
{
    bool isDone = false;
    velscore::sql::Guard(
        [&] {
            velscore::sql::RegisterScore(connection);
            velscore::sql::RegisterCurve(connection);
            velscore::sql::RegisterExplain(connection);
            velscore::sql::RegisterReports(connection);
            isDone = true;
        },
        [&](const char* text) { access->set_error(info, text); });
    return isDone;
}
