#ifndef VELSCORE_DUCKDB_DOCUMENT_H
#define VELSCORE_DUCKDB_DOCUMENT_H

#include <memory>
#include <string>

#include "duckdb/api.h"
#include "duckdb/modelcache.h"

namespace velscore::sql {

/// The bytes of a file, through the database's own file system: what its settings forbid
/// (enable_external_access, allowed_paths, allowed_directories) isn't read, and what its other
/// extensions can open is. Throws SqlError.
std::string ReadDocument(duckdb_client_context context, const std::string& path);

/// The model of a file, out of the process's cache where its document is as it was. Throws SqlError
/// and velscore::Error.
std::shared_ptr<const OpenModel> ModelOf(duckdb_client_context context, const std::string& path);

}  // namespace velscore::sql

#endif
