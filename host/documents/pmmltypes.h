#ifndef VELSCORE_HOST_DOCUMENTS_PMMLTYPES_H
#define VELSCORE_HOST_DOCUMENTS_PMMLTYPES_H

#include <string>

#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

/// The row of that name in a table of texts that an attribute may have; refuses any other with
/// kUnknownDataType (text, attribute, field).
template <class Row, size_t N>
Row FindRow(const Row (&rows)[N], const std::string& text, const char* attribute,
            const std::string& field)
{
    for (const Row& row : rows) {
        if (text == row.name) return row;
    }
    Refuse(kUnknownDataType, text.c_str(), attribute, field.c_str());
}

/// The type of a field from its optype and dataType. Refuses with kUnknownDataType.
DictVarType FieldType(const std::string& name, const std::string& optype,
                      const std::string& dataType);

}  // namespace MCVelscore_850

#endif
