#ifndef VELSCORE_ENGINE_MESSAGES_SUGGESTIONS_H
#define VELSCORE_ENGINE_MESSAGES_SUGGESTIONS_H

#include <span>
#include <string>
#include <string_view>

namespace MCVelscore_850 {

class ScoreModel;

// What a user most likely meant, as sentences for a failure's remedy; empty when nothing suggests
// itself.

/// For a word that is none of the candidates: "Did you mean 'weight'?", with `before` in front of
/// the candidate.
std::string SuggestWord(std::string_view word, std::span<const std::string> candidates,
                        std::string_view before = {});

/// For columns that a table lacks: the names in its header that come near, beside those in `used`,
/// which stand for themselves. A header of one column that seems to hold several names tells the
/// delimiter.
std::string SuggestColumns(std::span<const std::string> missing,
                           std::span<const std::string> header, std::span<const std::string> used);

/// For a header that `delimiter` doesn't split: the delimiter that would.
std::string SuggestDelimiter(std::string_view header, char delimiter);

/// For a text that stands in a field: the category of that variable that comes near.
std::string SuggestCategory(const ScoreModel& model, const std::string& field,
                            std::string_view text);

}  // namespace MCVelscore_850

#endif
