// The block scorers of the families that predict a category or its probability: multinomial,
// binary, conditional and ordinal logistic models.
#include <algorithm>
#include <array>

#include "host/values/datetimetext.h"
#include "models/blockscorer.h"
#include "models/blrmodel.h"
#include "models/caseroad.h"
#include "models/clrmodel.h"
#include "models/cumulativelinkmodel.h"
#include "models/mlrmodel.h"
#include "models/normalizedmodel.h"

namespace MCVelscore_850 {

namespace {

// Where probabilities that lie side by side go.
void GiveProbabilities(const double* from, size_t categories, const BatchResults& results,
                       size_t rows)
{
    for (size_t c = 0; results.probabilities != nullptr && c < categories; ++c) {
        std::copy_n(from + c * kernels::kBlockRows, rows, results.probabilities[c]);
    }
}

void GiveCategory(const double* index, const BatchResults& results, size_t rows)
{
    if (results.category == nullptr) return;
    std::transform(index, index + rows, results.category,
                   [](double category) { return static_cast<int32_t>(category); });
}

std::vector<std::string> NamesOf(const RegressionModel::NameMap& categories)
{
    std::vector<std::string> names(categories.size());
    for (const auto& [name, row] : categories) names[static_cast<size_t>(row)] = name;
    return names;
}

}  // namespace

class MLRBlocks final : public BlockScorer {
public:
    MLRBlocks(const kernels::BlockKernels& chosen, const MLRModel& model)
        : BlockScorer(chosen), model_(model)
    {
        categories_ = NamesOf(model.categoryMap);
    }
    bool Build() { return AddNumberedPredictors(model_.plan, model_.predictorVars); }

protected:
    enum : size_t { kIndex, kStart, kLp };
    size_t WorkColumns() const override { return kLp + categories_.size(); }

    void Compute(const Block& block) const override
    {
        const double* start = nullptr;
        if (model_.offset.HasVariable()) {
            start = block.Numbers(model_.predictorCount);
        } else {
            std::fill_n(block.Work(kStart), kernels::kBlockRows, model_.offset.value);
            start = block.Work(kStart);
        }
        const size_t categories = categories_.size();
        double* const lp = block.Work(kLp);
        kernels_.equations(block.columns, start, model_.plan.View(), model_.betasByParameter.data(),
                           categories, lp);
        if (categories == 1) Give(lp, block.results.linearPredictor, block.rows);
        if (block.results.probabilities == nullptr) {
            kernels_.largest(lp, categories, block.Work(kIndex), block.rows);
        } else {
            kernels_.softmax(lp, categories, block.Work(kIndex), block.rows);
        }
        GiveCategory(block.Work(kIndex), block.results, block.rows);
        GiveProbabilities(lp, categories, block.results, block.rows);
    }

private:
    const MLRModel& model_;
};

std::unique_ptr<BatchScorer> MLRModel::MakeBlockScorer(const kernels::BlockKernels& kernels) const
{
    if (categoryMap.empty() || !IsEveryCategoryGiven()) return nullptr;
    auto scorer = std::make_unique<MLRBlocks>(kernels, *this);
    if (!scorer->Build()) return nullptr;
    return scorer;
}

class NormalizedBlocks final : public BlockScorer {
public:
    NormalizedBlocks(const kernels::BlockKernels& chosen, const NormalizedModel& model)
        : BlockScorer(chosen), model_(model)
    {
        categories_ = NamesOf(model.categoryMap);
    }
    bool Build() { return AddNumberedPredictors(model_.plan, model_.predictorVars); }

protected:
    enum : size_t { kStart, kY };
    size_t WorkColumns() const override { return kY + categories_.size(); }

    void Compute(const Block& block) const override
    {
        const size_t categories = categories_.size();
        std::fill_n(block.Work(kStart), kernels::kBlockRows, 0.0);
        double* const y = block.Work(kY);
        kernels_.equations(block.columns, block.Work(kStart), model_.plan.View(),
                           model_.betasByParameter.data(), categories, y);
        if (model_.soleEquation) {
            Give(y + *model_.soleEquation * kernels::kBlockRows, block.results.linearPredictor,
                 block.rows);
        }
        for (size_t row = 0; row < block.rows; ++row) {
            const int predicted =
                kernels::Normalize(model_.normalization, y + row, categories, kernels::kBlockRows);
            if (predicted < 0) {
                block.Leave(row);
            } else if (block.results.category != nullptr) {
                block.results.category[row] = predicted;
            }
        }
        GiveProbabilities(y, categories, block.results, block.rows);
    }

private:
    const NormalizedModel& model_;
};

std::unique_ptr<BatchScorer> NormalizedModel::MakeBlockScorer(
    const kernels::BlockKernels& kernels) const
{
    if (categoryMap.empty() || !IsEveryCategoryGiven()) return nullptr;
    auto scorer = std::make_unique<NormalizedBlocks>(kernels, *this);
    if (!scorer->Build()) return nullptr;
    return scorer;
}

// Later cases than the first, which a run scores by itself: they take row 1 of the betas.
class BLRBlocks final : public BlockScorer {
public:
    BLRBlocks(const kernels::BlockKernels& chosen, const BLRModel& model)
        : BlockScorer(chosen),
          model_(model),
          betas_(model.categoryBetas[kBetaRow]),
          compact_(model.plan, betas_),
          covariances_(model.pcovMatrix.get(), betas_)
    {
        categories_ = NamesOf(model.categoryMap);
        if (!model.UsesCutoff()) return;
        const auto found = model.categoryMap.find(model.targetReferenceCategory);
        cutoffCategory_ = found == model.categoryMap.end() ? -1 : found->second;
    }

    bool Build()
    {
        for (size_t k = 0; k < model_.predictorVars.size(); ++k) {
            const ScoreDictVar* var = model_.predictorVars[k];
            if (var == nullptr) return false;
            if (model_.plan.readings[k] == TermPlan::Reading::Code) {
                if (model_.plan.codeCounts[k] == 0) return false;
                AddCode(*var, [this, k](const ScoreValue& value) { return RowOf(k, value); });
            } else {
                AddNumber(*var, [this, k](const ScoreValue& text) -> std::optional<double> {
                    const double number = model_.NumberOfText(k, text);
                    if (number < 0.0) return std::nullopt;
                    return number;
                });
            }
        }
        return true;
    }

protected:
    static constexpr size_t kBetaRow = 1;
    static constexpr size_t kCategories = 2;
    enum : size_t { kIndex, kLp, kDesign = kLp + kCategories };
    size_t WorkColumns() const override
    {
        return kDesign + (covariances_.Exist() ? betas_.size() : 0);
    }

    void Compute(const Block& block) const override
    {
        double* const lp = block.Work(kLp);
        std::fill_n(lp, block.rows, 0.0);
        double* const sum = lp + kBetaRow * kernels::kBlockRows;
        double* const wanted = block.results.linearPredictorError;
        double* const design =
            wanted != nullptr && covariances_.Exist() ? block.Work(kDesign) : nullptr;
        SumTerms(kernels::SumRule::Logistic, block, model_.plan.View(), betas_.data(), compact_,
                 sum, design);
        Give(sum, block.results.linearPredictor, block.rows);
        covariances_.GiveErrors(kernels_, design, wanted, block.rows);
        kernels_.softmax(lp, kCategories, block.Work(kIndex), block.rows);
        GiveProbabilities(lp, kCategories, block.results, block.rows);
        if (block.results.category == nullptr) return;
        if (!model_.UsesCutoff()) {
            GiveCategory(block.Work(kIndex), block.results, block.rows);
        } else {
            GiveByCutoff(block, lp);
        }
    }

private:
    // The row of the contrast matrix; a category without a whole one is left to the case's own
    // road.
    int32_t RowOf(size_t predictor, const ScoreValue& value) const
    {
        const bool isText = value.Kind() == ScoreValue::STRING;
        const double number = isText ? model_.NumberOfText(predictor, value)
                                     : NumericReading(value, *model_.predictorVars[predictor]);
        if (isText && number < 0.0) return kUnsure;
        const int32_t row = model_.ContrastRow(predictor, number);
        return row >= 0 && HasEveryContrast(model_.plan, predictor, row) ? row : kUnsure;
    }

    // That of the category of the cut-off, where its probability exceeds it, and else the other;
    // where the cut-off is for a category that the target hasn't, the first by name.
    void GiveByCutoff(const Block& block, const double* probabilities) const
    {
        const auto first = model_.categoryMap.begin()->second;
        for (size_t row = 0; row < block.rows; ++row) {
            int32_t category = first;
            if (cutoffCategory_ >= 0) {
                const auto c = static_cast<size_t>(cutoffCategory_);
                const double p = probabilities[c * kernels::kBlockRows + row];
                category = p > model_.GetCutoff() ? cutoffCategory_ : 1 - cutoffCategory_;
            }
            block.results.category[row] = category;
        }
    }

    const BLRModel& model_;
    const std::vector<double>& betas_;
    CompactTerms compact_;
    BlockCovariances covariances_;
    int32_t cutoffCategory_ = -1;
};

std::unique_ptr<BatchScorer> BLRModel::MakeBlockScorer(const kernels::BlockKernels& kernels) const
{
    if (categoryBetas.size() != 2 || !IsEveryCategoryGiven()) return nullptr;
    // Its cut-off looks at probabilities that it then doesn't compute.
    if (predictionOnly && UsesCutoff()) return nullptr;
    if (refTargetCategory && categoryMap.count(refTargetCategory->GetString()) == 0) return nullptr;
    auto scorer = std::make_unique<BLRBlocks>(kernels, *this);
    if (!scorer->Build()) return nullptr;
    return scorer;
}

class CLRBlocks final : public BlockScorer {
public:
    CLRBlocks(const kernels::BlockKernels& chosen, const CLRModel& model)
        : BlockScorer(chosen),
          model_(model),
          compact_{CompactTerms(model.plan, model.categoryBetas[0]),
                   CompactTerms(model.plan, model.categoryBetas[1])},
          covariances_(model.pcovMatrix.get(), model.categoryBetas[0])
    {}
    bool Build() { return AddPredictors(model_.plan, model_.predictorVars); }

protected:
    static constexpr size_t kEquations = 2;
    enum : size_t { kIndex, kLp, kDesign = kLp + kEquations };
    size_t WorkColumns() const override
    {
        return kDesign + (covariances_.Exist() ? model_.categoryBetas[0].size() : 0);
    }

    void Compute(const Block& block) const override
    {
        double* const lp = block.Work(kLp);
        double* const wanted = block.results.linearPredictorError;
        double* const design =
            wanted != nullptr && covariances_.Exist() ? block.Work(kDesign) : nullptr;
        for (size_t c = 0; c < kEquations; ++c) {
            SumTerms(kernels::SumRule::Generalized, block, model_.plan.View(),
                     model_.categoryBetas[c].data(), compact_[c], lp + c * kernels::kBlockRows,
                     c == 0 ? design : nullptr);
        }
        Give(lp, block.results.linearPredictor, block.rows);
        covariances_.GiveErrors(kernels_, design, wanted, block.rows);
        kernels_.softmax(lp, kEquations, block.Work(kIndex), block.rows);
        Give(lp, block.results.prediction, block.rows);
    }

private:
    const CLRModel& model_;
    std::array<CompactTerms, kEquations> compact_;
    BlockCovariances covariances_;
};

std::unique_ptr<BatchScorer> CLRModel::MakeBlockScorer(const kernels::BlockKernels& kernels) const
{
    if (categoryBetas.size() != 2) return nullptr;
    auto scorer = std::make_unique<CLRBlocks>(kernels, *this);
    if (!scorer->Build()) return nullptr;
    return scorer;
}

class CumulativeLinkBlocks final : public BlockScorer {
public:
    CumulativeLinkBlocks(const kernels::BlockKernels& chosen, const CumulativeLinkModel& model)
        : BlockScorer(chosen), model_(model), link_(static_cast<int>(model.GetLinkFunction()))
    {
        categories_ = NamesOf(model.categoryMap);
        // Parameter 0 is the thresholds' own.
        if (model.betas.size() > 1 && categories_.size() > 1) {
            betas_ = model.categoryBetas[categories_.size() - 2];
            betas_.front() = 0.0;
        }
        compact_.emplace(model.plan, betas_);
        covariances_.emplace(model.pcovMatrix.get(), betas_, model.FirstCovarianceRow());
    }

    bool Build()
    {
        if (!AddPredictors(model_.plan, model_.predictorVars)) return false;
        if (!model_.offset.HasVariable() || model_.ways_.offsetIsPredictor) return true;
        // Its plain number is read, not the one from its origin.
        return OriginShift(model_.offset.variable->GetDateTimeType()) == 0.0;
    }

protected:
    enum : size_t { kEta, kIndex, kProbabilities };
    size_t WorkColumns() const override
    {
        const bool keepsDesign = ReadsDesign() || covariances_->Exist();
        return DesignColumn() + (keepsDesign ? betas_.size() : 0);
    }

    void Compute(const Block& block) const override
    {
        double* const eta = block.Or(block.results.linearPredictor, kEta);
        double* const wanted = block.results.linearPredictorError;
        const bool wantsDesign = ReadsDesign() || (wanted != nullptr && covariances_->Exist());
        double* const design = wantsDesign ? block.Work(DesignColumn()) : nullptr;
        const kernels::Terms all = model_.plan.View();
        SumTerms(kernels::SumRule::Generalized, block, {all.parts, all.begin, betas_.size()},
                 betas_.data(), *compact_, eta, design);
        AddOffset(block, eta, design);
        // By row of the covariances; those of the thresholds aren't looked at.
        covariances_->GiveErrors(kernels_, block.Work(DesignColumn() - model_.FirstCovarianceRow()),
                                 wanted, block.rows);

        double* const probabilities = block.Work(kProbabilities);
        const size_t boundaries = categories_.size() - 1;
        for (size_t c = 0; c < boundaries; ++c) {
            double* const column = probabilities + c * kernels::kBlockRows;
            kernels_.boundary(eta, model_.thresholds[c], model_.ways_.sign, column, block.rows);
            kernels_.cumulative[link_](column, column, block.rows);
        }
        kernels_.scale(probabilities, boundaries, model_.ways_.margin, block.Work(kIndex),
                       block.rows);
        GiveCategory(block.Work(kIndex), block.results, block.rows);
        GiveProbabilities(probabilities, categories_.size(), block.results, block.rows);
    }

private:
    // Of parameter 0. Before it there are more columns than the covariances have rows before it.
    size_t DesignColumn() const { return kProbabilities + categories_.size(); }
    bool ReadsDesign() const
    {
        return model_.offset.HasVariable() && model_.ways_.offsetIsPredictor &&
               model_.offsetIndex < betas_.size();
    }
    void AddOffset(const Block& block, double* eta, const double* design) const
    {
        if (model_.offset.kind == Offset::VALUE) {
            kernels_.shift(eta, nullptr, model_.offset.value, block.rows);
        } else if (model_.offset.HasVariable()) {
            if (ReadsDesign()) {
                kernels_.shift(eta, design + model_.offsetIndex * kernels::kBlockRows, 0.0,
                               block.rows);
            } else if (model_.ways_.offsetIsPredictor) {
                kernels_.shift(eta, nullptr, 0.0, block.rows);
            } else {
                kernels_.shift(eta, block.Numbers(model_.offsetIndex), 0.0, block.rows);
            }
        }
    }

    const CumulativeLinkModel& model_;
    int link_;
    std::vector<double> betas_;
    std::optional<CompactTerms> compact_;
    std::optional<BlockCovariances> covariances_;
};

std::unique_ptr<BatchScorer> CumulativeLinkModel::MakeBlockScorer(
    const kernels::BlockKernels& kernels) const
{
    const auto link = static_cast<int>(linkFunction);
    if (categoryMap.empty() || link < 0 || link >= kernels::kCumulativeLinks) return nullptr;
    if (!IsEveryCategoryGiven()) return nullptr;
    auto scorer = std::make_unique<CumulativeLinkBlocks>(kernels, *this);
    if (!scorer->Build()) return nullptr;
    return scorer;
}

}  // namespace MCVelscore_850
