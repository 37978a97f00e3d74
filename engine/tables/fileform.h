#ifndef VELSCORE_ENGINE_TABLES_FILEFORM_H
#define VELSCORE_ENGINE_TABLES_FILEFORM_H

#include <string>
#include <string_view>

namespace MCVelscore_850 {

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// Throws kNoTextTable (Failure of kind Cases) for the first bytes of a table, a byte-order mark
/// left out, when they are those of another kind of file: compressed, binary, UTF-16, a document.
void RefuseOtherForms(std::string_view start, const std::string& name);

/// True while further bytes are needed to tell a byte-order mark or another kind of file.
bool NeedsMoreToTellForm(std::string_view start);

}  // namespace MCVelscore_850

#endif
