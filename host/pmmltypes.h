#ifndef VELSCORE_HOST_PMMLTYPES_H
#define VELSCORE_HOST_PMMLTYPES_H

#include <string>

#include "host/dictvar.h"

namespace MCVelscore_850 {

/// The type of a field from its optype and dataType. Refuses with kUnknownDataType.
DictVarType FieldType(const std::string& name, const std::string& optype,
                      const std::string& dataType);

}  // namespace MCVelscore_850

#endif
