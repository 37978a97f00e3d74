#ifndef VELSCORE_HOST_VARIABLES_DATATYPES_H
#define VELSCORE_HOST_VARIABLES_DATATYPES_H

#include <string_view>

#include "host/export.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

struct DictVarType;

/// One dataType of the standard.
struct DataType {
    const char* name;
    ScoreDictVar::ValueType valueType;
    ScoreDictVar::DateTimeType dateTimeType;
    bool boolean;  ///< a text of truth values
    bool whole;    ///< a number without a fraction
};

/// The type of that name, null for a name that the standard doesn't know.
VELHOST_API const DataType* FindDataType(std::string_view name);

/// The type of a variable: the one that its declaration names, else the first of its value type.
const DataType& DataTypeOf(const DictVarType& type);

}  // namespace MCVelscore_850

#endif
