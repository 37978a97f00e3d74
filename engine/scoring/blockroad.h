#ifndef VELSCORE_ENGINE_SCORING_BLOCKROAD_H
#define VELSCORE_ENGINE_SCORING_BLOCKROAD_H

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/scoring/casepreparer.h"
#include "engine/scoring/resultblock.h"
#include "host/model/batchscorer.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

/// The road of rows that need no judgement: turns a table's columns into those of a model's block
/// scorer, and scores the block. A row is unsure, and to be scored alone, when the scorer says so,
/// when its text can't be read, or when it has a missing value that nothing stands in for.
///
/// Fields   are made numbers and codes column by column, treated as CasePreparer has it. Where
///          there are derived fields, or fields that the block scorer has no column for, each row
///          is prepared as a case, and the columns are read off its record.
/// Texts    get codes as they are met, up to kMostTexts and kMostTextBytes of an input; a row with
///          a further one is unsure.
/// Memory   nothing is allocated for a block that has no new text.
class BlockRoad {
public:
    static constexpr size_t kMostTexts = 4096;
    static constexpr size_t kMostTextBytes = size_t{1} << 18;

    /// Null where the model has no block scorer, or one that wants a variable that the preparer
    /// hasn't. `modelReads` are the variables of a case; of `notRead`, on which nothing depends
    /// that is wanted, the scorer gets zeros (empty for none). Model and preparer outlive the road.
    static std::unique_ptr<BlockRoad> Make(const ScoreModel& model,
                                           const std::vector<std::string>& modelReads,
                                           std::string_view notRead, CasePreparer& preparer);
    ~BlockRoad();

    const BatchScorer& Scorer() const { return *scorer_; }
    /// At most BatchScorer::kRows rows; those whose bit is set in `unsure` afterwards have no
    /// results. Bits that are set before stay so.
    void Score(const ColumnBlock& block, const BatchResults& results, RowBits& unsure);

private:
    struct TextHash {
        using is_transparent = void;
        size_t operator()(std::string_view text) const
        {
            return std::hash<std::string_view>{}(text);
        }
    };
    /// What a text of an input's column comes to.
    struct Meaning {
        int32_t code = -1;
        bool unsure = true;
        bool unlisted = false;
    };
    /// One column of the block scorer.
    struct Input {
        const ScoreDictVar* var = nullptr;
        CaseField* field = nullptr;  ///< null of a derived variable, and of one that isn't read
        int position = -1;           ///< in the record; -1 of a variable that isn't read
        std::vector<double> numbers{};
        std::vector<int32_t> codes{};
        std::unordered_map<std::string, Meaning, TextHash, std::equal_to<>> meanings{};
        std::deque<std::string> values{};       ///< by code
        std::vector<std::string_view> texts{};  ///< the same
        size_t textBytes = 0;
        size_t boundTexts = 0;  ///< that the scorer knows

        bool IsRead() const { return position >= 0; }
        bool IsText() const { return var->GetValueType() == ScoreDictVar::STRING; }
    };
    /// A variable that the model reads and the block scorer has no column for.
    struct Judged {
        const ScoreDictVar* var;
        int position;
    };

    BlockRoad(std::unique_ptr<BatchScorer> scorer, CasePreparer& preparer);
    bool FindInputs(const std::vector<std::string>& modelReads, std::string_view notRead);

    void FillFromTable(const ColumnBlock& block, RowBits& unsure);
    void FillNumbers(Input& input, const ColumnBlock& block, RowBits& unsure);
    void FillCodes(Input& input, const ColumnBlock& block, RowBits& unsure);
    void FillFromCases(const ColumnBlock& block, RowBits& unsure);
    /// These answer false where the row is unsure.
    bool ReadNumber(const Input& input, const ColumnBlock& block, size_t row, double& number);
    bool ReadCode(Input& input, const ColumnBlock& block, size_t row, int32_t& code);
    bool ReadCase(size_t row);
    /// Gives a new text its code, which stands for `value`; null where that is none. Null where the
    /// input has no room for a further text.
    static const Meaning* Learn(Input& input, std::string_view text, const ScoreValue* value,
                                bool unlisted);
    void BindNewTexts();

    std::unique_ptr<BatchScorer> scorer_;
    std::unique_ptr<BatchScorer::Scratch> scratch_;
    CasePreparer& preparer_;
    std::vector<Input> inputs_;
    std::vector<BatchColumn> columns_;
    std::vector<Judged> judged_;
    bool fromCases_ = false;
    std::string numberText_;
};

}  // namespace MCVelscore_850

#endif
