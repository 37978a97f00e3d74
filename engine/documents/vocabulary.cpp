#include "engine/documents/vocabulary.h"

#include <algorithm>
#include <iterator>

namespace MCVelscore_850 {

namespace {

// 4.2.1 and the like count as the first two numbers.
constexpr double kVersions[] = {kFirstVersion, 3.1, 3.2, 4.0, 4.1, 4.2, 4.3, kLastVersion};

}  // namespace

std::vector<const ElementWord*> Vocabulary(bool older)
{
    std::vector<const ElementWord*> words;
    const auto add = [&](std::span<const ElementWord> table) {
        for (const ElementWord& word : table) words.push_back(&word);
    };
    if (older) {
        add(OlderVocabulary());
    } else {
        add(FieldVocabulary());
        add(ModelVocabulary());
    }
    return words;
}

std::span<const std::string_view> WordsOf(std::string_view element, std::string_view attribute)
{
    for (const auto table : {FieldVocabulary(), ModelVocabulary(), OlderVocabulary()}) {
        for (const ElementWord& word : table) {
            if (word.tag != element) continue;
            for (const AttributeWord& row : word.attributes) {
                if (row.name == attribute) return row.words;
            }
        }
    }
    return {};
}

bool IsKnownVersion(double version)
{
    // Exact: both are the nearest double of the same decimals.
    return std::find(std::begin(kVersions), std::end(kVersions), version) != std::end(kVersions);
}

bool IsPmmlNamespace(std::string_view uri)
{
    return uri.find("dmg.org/PMML") != std::string_view::npos;
}

}  // namespace MCVelscore_850
