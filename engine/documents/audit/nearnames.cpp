#include "engine/documents/audit/nearnames.h"

#include <algorithm>

#include "engine/documents/names.h"
#include "engine/messages/shorttext.h"
#include "host/messages/nearword.h"

namespace MCVelscore_850 {

namespace {

std::string OneOf(std::vector<std::string> names, const std::string& nearWord)
{
    std::erase(names, std::string());
    if (names.empty()) return "none at all";
    const auto near = std::find(names.begin(), names.end(), nearWord);
    if (near != names.end()) std::rotate(names.begin(), near, near + 1);
    std::transform(names.begin(), names.end(), names.begin(),
                   [](const std::string& name) { return ShortText(name); });
    return (names.size() > 1 ? "one of " : "only ") + Listed(names);
}

}  // namespace

std::string Quoted(const std::string& name)
{
    return std::string("\"").append(ShortText(name)).append("\"");
}

void NearNames::Tell(Detail detail, const std::vector<std::string>& known)
{
    if (++told_ <= Findings::kKeptOfRule) {
        detail.nearWord = NearWord(detail.found, known);
        detail.expected = OneOf(known, detail.nearWord);
    }
    report_(detail);
}

}  // namespace MCVelscore_850
