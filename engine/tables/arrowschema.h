#ifndef VELSCORE_ENGINE_TABLES_ARROWSCHEMA_H
#define VELSCORE_ENGINE_TABLES_ARROWSCHEMA_H

#include <optional>
#include <string>
#include <vector>

#include "engine/tables/arrowdata.h"
#include "engine/tables/arrowtype.h"

namespace MCVelscore_850 {

/// A column of a table as its schema tells it.
struct ArrowField {
    std::string name;
    std::string typeName;              ///< how messages call its type
    std::optional<ArrowType> type{};   ///< of its values; nothing for a type that isn't taken
    std::optional<ArrowType> index{};  ///< of a dictionary's indexes, where it has one
};

/// The columns of a table.
///
/// Errors  Failure (kArrowStructure) for a schema that is released, that isn't of a table, or that
///         lacks what its own numbers tell.
std::vector<ArrowField> ReadArrowSchema(const ArrowSchema& schema);

/// A copy of a column's schema, under another name, that keeps nothing of the other.
///
/// Errors  Failure: kArrowStructure, and kArrowTooDeep for types within types without end.
ArrowOwner<ArrowSchema> CopyArrowSchema(const ArrowSchema& schema, const std::string& name);

/// The schema of a column of values without children.
ArrowOwner<ArrowSchema> MakeArrowSchema(const std::string& format, const std::string& name,
                                        bool isNullable);
/// The same of texts by indexes into a dictionary.
ArrowOwner<ArrowSchema> MakeDictionarySchema(const std::string& name, bool isNullable);
/// The schema of a table of columns.
ArrowOwner<ArrowSchema> MakeTableSchema(std::vector<ArrowOwner<ArrowSchema>> columns);

/// The most types within types that are copied.
inline constexpr int kMostArrowDepth = 64;

}  // namespace MCVelscore_850

#endif
