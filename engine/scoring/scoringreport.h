#ifndef VELSCORE_ENGINE_SCORING_SCORINGREPORT_H
#define VELSCORE_ENGINE_SCORING_SCORINGREPORT_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/scoring/unlistedvalues.h"

namespace MCVelscore_850 {

/// Cases without a score: how many, and the first of them.
struct NotScored {
    static constexpr size_t kShown = 5;

    struct Case {
        size_t table = 0;
        int64_t row = 0;  ///< from 1 after the header of its table
        /// What stood in the field at fault; none of a derived field.
        std::optional<std::string> text{};
    };

    int64_t count = 0;
    std::vector<Case> first{};  ///< at most kShown
};

/// Why a case has no score.
struct NotScoredReason {
    long code = 0;
    std::string field{};  ///< empty when no single one is at fault
};

struct NotScoredOrder {
    using is_transparent = void;
    template <class One, class Other>
    bool operator()(const One& one, const Other& other) const
    {
        return one.code != other.code ? one.code < other.code : one.field < other.field;
    }
};

/// What became of a table, or of a part of it.
struct ScoringReport {
    int64_t scored = 0;
    std::map<NotScoredReason, NotScored, NotScoredOrder> notScored;
    std::vector<UnlistedValues> unlisted;
    int64_t rejected = 0;       ///< rows in the table of rejects
    int64_t rowsWritten = 0;    ///< whole rows in the output
    bool interrupted = false;   ///< the stop flag ended the run
    bool outputClosed = false;  ///< the reader of the output pipe went away

    int64_t NotScoredCount() const;
    /// Counts a case without a score; in the order of the rows.
    void Note(long code, std::string_view field, const NotScored::Case& first);
    /// Adds the counts of the rows behind those of this one.
    void Add(const ScoringReport& next);
};

}  // namespace MCVelscore_850

#endif
