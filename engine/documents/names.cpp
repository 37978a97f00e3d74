#include "engine/documents/names.h"

#include <algorithm>

namespace MCVelscore_850 {

namespace {

constexpr size_t kListedNames = 3;

}  // namespace

std::string_view PrefixOf(std::string_view name)
{
    const size_t colon = name.find(':');
    return colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
}

std::string_view LocalNameOf(std::string_view name)
{
    const size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::optional<std::string> NamespaceOf(Element element, std::string_view prefix)
{
    const std::string declaration = "xmlns:" + std::string(prefix);
    for (; element; element = element.Parent()) {
        if (element.Has(declaration)) return element.Text(declaration);
    }
    return std::nullopt;
}

bool IsOneOf(std::string_view text, std::span<const std::string_view> words)
{
    return std::find(words.begin(), words.end(), text) != words.end();
}

std::string Listed(const std::vector<std::string>& names)
{
    std::string text;
    for (size_t i = 0; i < names.size() && i < kListedNames; ++i) {
        if (i > 0) text += ", ";
        text.append("\"").append(names[i]).append("\"");
    }
    if (names.size() > kListedNames) {
        text += " and " + std::to_string(names.size() - kListedNames) + " more";
    }
    return text;
}

}  // namespace MCVelscore_850
