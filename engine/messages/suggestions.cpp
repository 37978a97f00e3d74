#include "engine/messages/suggestions.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

#include <fmt/format.h>

#include "engine/messages/shorttext.h"
#include "host/messages/nearword.h"
#include "host/model/scoremodel.h"
#include "host/values/scorevalue.h"
#include "host/variables/scoredictionary.h"
#include "host/variables/scoredictvar.h"
#include "host/variables/valueset.h"

namespace MCVelscore_850 {

namespace {

// More would make the message long, and a wide table's search slow.
constexpr size_t kMostSuggestions = 5;

}  // namespace

std::string SuggestWord(std::string_view word, std::span<const std::string> candidates,
                        std::string_view before)
{
    const std::string near = NearWord(word, candidates);
    return near.empty() ? near : fmt::format("Did you mean '{}{}'?", before, ShortText(near));
}

std::string SuggestColumns(std::span<const std::string> missing,
                           std::span<const std::string> header, std::span<const std::string> used)
{
    if (header.size() == 1) {
        std::string delimiter = SuggestDelimiter(header[0], '\0');
        if (!delimiter.empty()) return delimiter;
    }
    const std::unordered_set<std::string_view> taken(used.begin(), used.end());
    std::vector<std::string> free;
    std::copy_if(header.begin(), header.end(), std::back_inserter(free),
                 [&](const std::string& name) { return !taken.contains(name); });
    std::string pairs;
    for (const std::string& name : missing.first(std::min(missing.size(), kMostSuggestions))) {
        const std::string near = NearWord(name, free);
        if (near.empty()) continue;
        pairs += fmt::format("{}'{}' for '{}'", pairs.empty() ? "" : ", ", ShortText(near),
                             ShortText(name));
    }
    return pairs.empty() ? pairs : fmt::format("Did you mean {}?", pairs);
}

std::string SuggestDelimiter(std::string_view header, char delimiter)
{
    struct Candidate {
        char character;
        const char* name;
        const char* option;
    };
    constexpr Candidate kCandidates[] = {{';', "semicolons", "';'"},
                                         {'\t', "tabulators", "tab"},
                                         {'|', "bars", "'|'"},
                                         {',', "commas", "','"}};
    const Candidate* best = nullptr;
    std::ptrdiff_t most = 0;
    for (const Candidate& candidate : kCandidates) {
        const auto count = std::count(header.begin(), header.end(), candidate.character);
        if (candidate.character == delimiter || count <= most) continue;
        most = count;
        best = &candidate;
    }
    if (best == nullptr) return {};
    return fmt::format("Its columns seem to be separated by {}: give --delimiter {}.", best->name,
                       best->option);
}

std::string SuggestCategory(const ScoreModel& model, const std::string& field,
                            std::string_view text)
{
    const ScoreDictionary* dictionary = model.GetDictionary();
    const ScoreDictVar* var = dictionary == nullptr ? nullptr : dictionary->GetVar(field);
    const ValueSet* values = var == nullptr ? nullptr : var->GetValueSet();
    if (values == nullptr || var->GetValueType() != ScoreDictVar::STRING) return {};
    std::vector<std::string> categories;
    for (const ValueSetEntry& entry : values->GetEntries()) {
        categories.push_back(entry.GetEntryValue()->GetString());
    }
    return SuggestWord(text, categories);
}

}  // namespace MCVelscore_850
