#ifndef VELSCORE_ENGINE_SCORING_UNLISTEDVALUES_H
#define VELSCORE_ENGINE_SCORING_UNLISTEDVALUES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace MCVelscore_850 {

/// Values of one column that its variable accepts without listing them: often a typing error.
struct UnlistedValues {
    static constexpr size_t kShown = 3;

    std::string column;
    int64_t count = 0;
    std::vector<std::string> first{};  ///< the first different ones, at most kShown
    /// One different value may be the reference category, which the list lacks. The first one
    /// isn't counted then; which of them it is nobody knows.
    bool oneMayBeReference = false;

    /// Counts a value; in the order of the rows.
    void Count(std::string_view text)
    {
        if (first.size() < kShown && std::find(first.begin(), first.end(), text) == first.end()) {
            first.emplace_back(text);
        }
        if (!oneMayBeReference || first.front() != text) ++count;
    }
};

/// An unlisted value that a row of a block has.
struct UnlistedValue {
    size_t row;
    size_t field;           ///< among CasePreparer::Fields()
    std::string_view text;  ///< what stands in the table
};

}  // namespace MCVelscore_850

#endif
