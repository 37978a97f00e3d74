#ifndef VELSCORE_ENGINE_DOCUMENTS_NAMES_H
#define VELSCORE_ENGINE_DOCUMENTS_NAMES_H

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/documents/element.h"

namespace MCVelscore_850 {

/// The part of a qualified name before the colon, empty without one, and the part after it.
std::string_view PrefixOf(std::string_view name);
std::string_view LocalNameOf(std::string_view name);

/// The namespace that a prefix stands for at the element; none where nothing declares it.
std::optional<std::string> NamespaceOf(Element element, std::string_view prefix);

/// True when the text is one of the words.
bool IsOneOf(std::string_view text, std::span<const std::string_view> words);

/// Names for a message: "a", "b", "c" and 4 more.
std::string Listed(const std::vector<std::string>& names);

}  // namespace MCVelscore_850

#endif
