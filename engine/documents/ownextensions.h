#ifndef VELSCORE_ENGINE_DOCUMENTS_OWNEXTENSIONS_H
#define VELSCORE_ENGINE_DOCUMENTS_OWNEXTENSIONS_H

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/documents/element.h"
#include "host/model/modelfamilies.h"

namespace MCVelscore_850 {

/// An Extension that the reader obeys, by the element that it stands in and its name.
struct OwnExtension {
    std::string_view parent;
    std::string_view name;
    unsigned families;   ///< a bit for each FamilyCode whose models heed it
    bool needsExtender;  ///< the reader passes it over unless the extender is the system's own

    bool IsHeededBy(std::optional<FamilyCode> family) const
    {
        return family && (families & (1U << *family)) != 0;
    }
};

/// By parent.
std::span<const OwnExtension> OwnExtensions();
/// The one that an Extension is; null for any other.
const OwnExtension* FindOwnExtension(Element extension);
/// The names of those that an element may hold.
std::vector<std::string> OwnExtensionNames(Element parent);
/// The own name that an Extension most likely means; empty for one that bears it, and where none is
/// near. Without extender a single letter may be wrong.
std::string NearOwnName(Element extension);

/// Whose an Extension is, by its extender: one that is near the system's own counts as misspelt.
enum class Extender { Own, None, Misspelt, Another };
Extender ExtenderOf(Element extension);

/// True where nothing but other Extensions stand before it: of those in a model the reader sees no
/// other.
bool IsLeading(Element extension);

}  // namespace MCVelscore_850

#endif
