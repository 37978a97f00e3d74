#include "engine/documents/vocabulary.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

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
        add(RegressionVocabulary());
    }
    return words;
}

const ElementWord* FindElementWord(std::string_view tag)
{
    for (const auto table : {FieldVocabulary(), ModelVocabulary(), RegressionVocabulary()}) {
        for (const ElementWord& word : table) {
            if (word.tag == tag) return &word;
        }
    }
    return nullptr;
}

std::span<const std::string_view> WordsOf(std::string_view element, std::string_view attribute)
{
    for (const auto table :
         {FieldVocabulary(), ModelVocabulary(), RegressionVocabulary(), OlderVocabulary()}) {
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

std::string VersionInNamespace(std::string_view uri)
{
    constexpr std::string_view kBefore = "http://www.dmg.org/PMML-";
    const auto isNumeral = [](std::string_view text) {
        return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    };
    if (!uri.starts_with(kBefore)) return {};
    uri.remove_prefix(kBefore.size());
    const size_t bar = uri.find('_');
    if (bar == std::string_view::npos) return {};
    const std::string_view major = uri.substr(0, bar);
    const std::string_view minor = uri.substr(bar + 1);
    if (!isNumeral(major) || !isNumeral(minor)) return {};
    return fmt::format("{}.{}", major, minor);
}

bool IsPmmlNamespace(std::string_view uri)
{
    return uri.find("dmg.org/PMML") != std::string_view::npos;
}

}  // namespace MCVelscore_850
