#ifndef VELSCORE_HOST_MODEL_BATCHSCORER_H
#define VELSCORE_HOST_MODEL_BATCHSCORER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "host/export.h"

namespace MCVelscore_850 {

class ScoreDictVar;

/// One input of a block of cases, borrowed: numbers for a numeric or date variable, codes for one
/// of texts. Both have room for the block's rows rounded up to a multiple of
/// BatchScorer::kRowMultiple; what stands beyond the rows, and where a row isn't present, is read
/// and means nothing.
struct BatchColumn {
    /// Dates and times count from their variable's own origin.
    const double* numbers = nullptr;
    /// Indexes into the texts of BatchScorer::BindTexts(); any other number is a text unknown to
    /// it.
    const int32_t* codes = nullptr;
    /// A bit a row, least significant first; null when every row has a value.
    const uint8_t* present = nullptr;
};

/// Where the results of a block go; a null pointer isn't wanted. Each has room as a BatchColumn
/// has. A number that doesn't exist is the system-missing number, as in a result.
struct BatchResults {
    double* prediction = nullptr;  ///< of a model that predicts a number
    int32_t* category = nullptr;   ///< of one that predicts a category: index into Categories()
    double* linearPredictor = nullptr;       ///< of a model with one equation
    double* linearPredictorError = nullptr;  ///< as ScoringState::linearPredictorError
    double* stdDev = nullptr;
    double* ciLower = nullptr;
    double* ciUpper = nullptr;
    double* cumHazard = nullptr;
    double* risk = nullptr;  ///< as SurvivalAnswers, of a model that has survival curves
    double* medianSurvival = nullptr;
    double* const* survivals = nullptr;  ///< by time of survivalTimes
    std::span<const double> survivalTimes{};
    double* const* probabilities = nullptr;  ///< by category of Categories()
};

/// Scores the rows of a block at once, for the cases that need no judgement: every input present,
/// accepted by its variable and known to the model. Their results have the bits that
/// ScoreModel::ScoreRow gives. Any other row is left to ScoreRow and marked.
///
/// Owner   the model outlives it; later changes to the model aren't seen.
/// Threads any number, each with a scratch of its own.
class VELHOST_API BatchScorer {
public:
    /// The most rows of a block.
    static constexpr size_t kRows = 512;
    /// Columns have room for a multiple of so many rows.
    static constexpr size_t kRowMultiple = 8;

    /// What one thread writes: the texts that its inputs' codes stand for, and its numbers.
    class VELHOST_API Scratch {
    public:
        virtual ~Scratch();
    };

    virtual ~BatchScorer();

    /// The variables that a block has columns for, in this order; each once, derived ones too.
    virtual std::span<const ScoreDictVar* const> Inputs() const = 0;
    /// The target's categories; empty for a model that predicts a number.
    virtual std::span<const std::string> Categories() const = 0;
    virtual std::unique_ptr<Scratch> MakeScratch() const = 0;
    /// The texts that the codes of an input stand for from now on, each looked up once.
    virtual void BindTexts(size_t input, std::span<const std::string_view> texts,
                           Scratch& scratch) const = 0;
    /// Scores `rows` rows, at most kRows. `inputs` has a column for each of Inputs(). Sets the bit
    /// of each row that is left to ScoreRow, whose results mean nothing, and clears the others;
    /// `unsure` has kRows / 64 words.
    virtual void Score(std::span<const BatchColumn> inputs, size_t rows,
                       const BatchResults& results, uint64_t* unsure, Scratch& scratch) const = 0;
    /// True when each of `rows` numbers, and no more, lies in low .. high, as quickly as the
    /// processor can tell. False for NaN among them, and where nothing quicker is known than to
    /// look at each.
    virtual bool SurelyWithin(const double* numbers, size_t rows, double low, double high) const;
};

}  // namespace MCVelscore_850

#endif
