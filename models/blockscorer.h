#ifndef VELSCORE_MODELS_BLOCKSCORER_H
#define VELSCORE_MODELS_BLOCKSCORER_H

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/model/batchscorer.h"
#include "kernels/blocks.h"
#include "models/termplan.h"

namespace MCVelscore_850 {

class CompactTerms;
class PCovMatrix;
class ScoreValue;

/// The covariances of a model, as its blocks read them.
class BlockCovariances {
public:
    /// `betas` are the linear predictor's: a parameter whose beta is 0 has no part. Parameter 0 has
    /// row `firstRow`. The matrix outlives this.
    BlockCovariances(const PCovMatrix* matrix, std::span<const double> betas, size_t firstRow = 0);

    /// False where the document has none.
    bool Exist() const { return cells_ != nullptr; }
    /// The standard error of each row's linear predictor, 0 without covariances. The design values
    /// of a row of the covariances stand at design + row * kernels::kBlockRows.
    void Errors(const kernels::BlockKernels& kernels, const double* design, double* errors,
                size_t rows) const;
    /// The same where they are wanted; without covariances there are none.
    void GiveErrors(const kernels::BlockKernels& kernels, const double* design, double* wanted,
                    size_t rows) const;

private:
    const double* cells_ = nullptr;
    size_t stride_ = 0;
    std::vector<uint32_t> met_;  // rows of the parameters that have a part
};

/// What the block scorers of all families share: the inputs, the rows that a block can't score, and
/// the columns that kernels read. A family derives, adds its slots in its constructor and computes.
///
/// A *slot* is one reading of an input: its numbers, or the codes of its categories. The slots of a
/// model's predictors come first, by predictor, so that terms find their columns.
class BlockScorer : public BatchScorer {
public:
    std::span<const ScoreDictVar* const> Inputs() const override { return inputs_; }
    std::span<const std::string> Categories() const override { return categories_; }
    std::unique_ptr<Scratch> MakeScratch() const override;
    void BindTexts(size_t input, std::span<const std::string_view> texts,
                   Scratch& scratch) const override;
    void Score(std::span<const BatchColumn> inputs, size_t rows, const BatchResults& results,
               uint64_t* unsure, Scratch& scratch) const override;
    bool SurelyWithin(const double* numbers, size_t rows, double low, double high) const override
    {
        return kernels_.within(numbers, low, high, false, rows);
    }

protected:
    explicit BlockScorer(const kernels::BlockKernels& kernels) : kernels_(kernels) {}

    /// What a value is to the arithmetic: a code from 0, or kUnsure for one that the family doesn't
    /// score by block.
    using CodeOf = std::function<int32_t(const ScoreValue&)>;
    static constexpr int32_t kUnsure = -1;
    /// The number that a text is read as; nothing where the family doesn't score it by block.
    using NumberOf = std::function<std::optional<double>(const ScoreValue&)>;

    /// Adds a slot that reads numbers; `ofText` answers for the texts of a text variable.
    size_t AddNumber(const ScoreDictVar& var, NumberOf ofText = NoNumber);
    static std::optional<double> NoNumber(const ScoreValue&) { return std::nullopt; }
    /// Adds a slot that reads codes.
    size_t AddCode(const ScoreDictVar& var, CodeOf code);
    /// Adds a slot for each predictor of a plan whose factors compare categories; a category that
    /// no term knows gets a code behind all others. False where a reading has no block form.
    bool AddPredictors(const TermPlan& plan, std::span<const ScoreDictVar* const> variables);
    /// The same of the number family, to which a text is the position of its category.
    bool AddNumberedPredictors(const TermPlan& plan,
                               std::span<const ScoreDictVar* const> variables);

    /// A block under way. Columns of results, and of Work(), have room for whole vectors.
    class Block {
    public:
        kernels::BlockColumns columns;  ///< by slot
        size_t rows;
        const BatchResults& results;

        const double* Numbers(size_t slot) const { return columns.numbers[slot]; }
        const int32_t* Codes(size_t slot) const { return columns.codes[slot]; }
        /// Column i of the family's own numbers.
        double* Work(size_t i) const { return work + i * kernels::kBlockRows; }
        /// Where a result goes that is needed whether it is wanted or not.
        double* Or(double* wanted, size_t i) const { return wanted != nullptr ? wanted : Work(i); }
        void Leave(size_t row) const { unsure[row / 64] |= uint64_t{1} << (row % 64); }

        uint64_t* unsure;
        double* work;
    };
    virtual void Compute(const Block& block) const = 0;
    /// The columns of numbers that Compute() takes for itself.
    virtual size_t WorkColumns() const = 0;

    /// True when no contrast of the factor lacks a place for the category.
    static bool HasEveryContrast(const TermPlan& plan, size_t predictor, int32_t row);
    /// The sums of a family's terms into `lp`. With `design` the design values go there, parameter
    /// by parameter, and all terms are walked; else the compact ones.
    void SumTerms(kernels::SumRule rule, const Block& block, const kernels::Terms& terms,
                  const double* betas, const CompactTerms& compact, double* lp,
                  double* design) const;
    /// Copies a column of results, where it is wanted.
    static void Give(const double* from, double* wanted, size_t rows);

    const kernels::BlockKernels& kernels_;
    std::vector<std::string> categories_;

private:
    struct Slot {
        size_t input;
        bool isCode;
        CodeOf code;
        NumberOf number;
    };
    struct Tables;
    class Own;

    size_t InputOf(const ScoreDictVar& var);
    void JudgeNumbers(size_t input, const BatchColumn& column, size_t rows,
                      const Block& block) const;
    void FillSlot(const Slot& slot, const BatchColumn& column, size_t rows, Tables& tables,
                  const Block& block) const;

    std::vector<const ScoreDictVar*> inputs_;
    std::vector<Slot> slots_;
};

/// The terms whose beta isn't 0 with their betas, in their order, for sums whose design values
/// nobody asks for: the terms of one factor's dummies that follow each other are one look-up.
class CompactTerms {
public:
    /// From parameter `first` on. `references`, where given, are those of a centred sum.
    CompactTerms(const TermPlan& plan, std::span<const double> betas, size_t first = 0,
                 std::span<const double> references = {});

    kernels::Terms View() const { return {parts_.data(), begin_.data(), betas_.size()}; }
    const double* Betas() const { return betas_.data(); }
    const double* References() const { return references_.data(); }

private:
    bool ContinuesRun(const TermPlan& plan, size_t parameter) const;

    std::vector<kernels::TermPart> parts_;
    std::vector<uint32_t> begin_{0};
    std::vector<double> betas_;
    std::vector<double> references_;
    std::deque<std::vector<double>> tables_;
};

}  // namespace MCVelscore_850

#endif
