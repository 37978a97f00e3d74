#ifndef VELSCORE_ENGINE_COMPARISON_SCORECOMPARISON_H
#define VELSCORE_ENGINE_COMPARISON_SCORECOMPARISON_H

#include <cstdint>
#include <string>
#include <vector>

namespace MCVelscore_850 {

class LoadedModel;
struct ScoringOptions;

/// What two models answer for the cases of a table.
struct ScoreComparison {
    /// A result column that both models have.
    struct Column {
        std::string name;
        int64_t compared = 0;   ///< rows in which both have a value
        int64_t different = 0;  ///< of these
        int64_t oneAlone = 0;   ///< rows that both scored, in which one has a value
        /// Of numbers, over the rows that are compared: the largest distance and the row that has
        /// it, from 1, 0 without any; the sum of all.
        double largest = 0.0;
        int64_t worstRow = 0;
        double sum = 0.0;
        std::string first{};  ///< what the two say in that row; of categories in the first changed
        std::string second{};
        bool isCategory = false;

        double Mean() const { return compared == 0 ? 0.0 : sum / static_cast<double>(compared); }
    };

    int64_t rows = 0;
    int64_t both = 0;  ///< rows that both scored
    int64_t firstAlone = 0;
    int64_t secondAlone = 0;
    std::vector<Column> columns;
    std::vector<std::string> ofFirst;  ///< columns that the other model has none of
    std::vector<std::string> ofSecond;

    bool Differ() const;
};

/// Scores the cases of a table with both models. Of the options those that say how tables are read
/// count: what they tell of a field that one model alone reads is told of that one. The columns of
/// a table without a header are the first model's, in its order; the second reads its own by these
/// names.
///
/// Errors  Failure: what TextTables and CasePreparer refuse.
ScoreComparison CompareScores(const LoadedModel& first, const LoadedModel& second,
                              const std::string& table, const ScoringOptions& options);

}  // namespace MCVelscore_850

#endif
