// The block scorers of the families that predict a number from a linear predictor: linear, general
// linear and generalized linear models.
#include <algorithm>
#include <limits>

#include "host/values/datetimetext.h"
#include "models/blockscorer.h"
#include "models/glrmodel.h"
#include "models/gzlrlinks.h"
#include "models/gzlrmodel.h"
#include "models/lrmodel.h"

namespace MCVelscore_850 {

namespace {

constexpr double kNone = NumericValue::GetSysmisValue();

bool WantsLimits(const BatchResults& results)
{
    return results.ciLower != nullptr || results.ciUpper != nullptr;
}
bool WantsErrors(const BatchResults& results)
{
    return results.stdDev != nullptr || WantsLimits(results);
}

// Errors that are those of the linear predictors too, unless the document has no covariances: there
// are none then.
void GivePredictorErrors(const double* errors, bool exist, double* wanted, size_t rows)
{
    if (wanted == nullptr) return;
    if (exist) {
        std::copy_n(errors, rows, wanted);
    } else {
        std::fill_n(wanted, rows, kNone);
    }
}

// Limits of lp, at a width or where the width has none at no number.
void GiveLimits(const kernels::BlockKernels& kernels, const double* lp, const double* errors,
                double width, double* lower, double* upper, size_t rows)
{
    if (NumericValue::IsSystemMissingValue(width)) {
        std::fill_n(lower, rows, kNone);
        std::fill_n(upper, rows, kNone);
    } else {
        kernels.limits(lp, errors, width, lower, upper, rows);
    }
}

}  // namespace

class LRBlocks final : public BlockScorer {
public:
    LRBlocks(const kernels::BlockKernels& chosen, const LRModel& model)
        : BlockScorer(chosen), model_(model), t_(model.LimitQuantile())
    {
        for (const ScoreDictVar* var : model.predictorVars) {
            AddNumber(*var, [](const ScoreValue& text) { return text.GetDouble(); });
        }
    }

protected:
    enum : size_t { kLp, kErrors, kLower, kUpper, kColumns };
    size_t WorkColumns() const override { return kColumns; }

    void Compute(const Block& block) const override
    {
        const size_t n = model_.predictorVars.size();
        const std::vector<double>& betas = model_.betas;
        double* const lp = block.Or(block.results.prediction, kLp);
        kernels_.slopes(block.columns, n < betas.size() ? betas[n] : 0.0, betas.data(),
                        std::min(n, betas.size()), lp);
        const BatchResults& results = block.results;
        Give(lp, results.linearPredictor, block.rows);
        if (!WantsErrors(results) && results.linearPredictorError == nullptr) return;

        const size_t rows = model_.pcovMatrix->GetRows();
        const size_t slopes = std::min(n, rows);
        double* const errors = block.Or(results.stdDev, kErrors);
        kernels_.slopeErrors(block.columns, model_.pcovMatrix->GetRow(0), rows, slopes,
                             slopes == n && n < rows, errors);
        GivePredictorErrors(errors, model_.HasCovariances(), results.linearPredictorError,
                            block.rows);
        if (!WantsLimits(results)) return;
        GiveLimits(kernels_, lp, errors, t_, block.Or(results.ciLower, kLower),
                   block.Or(results.ciUpper, kUpper), block.rows);
    }

private:
    const LRModel& model_;
    double t_;
};

std::unique_ptr<BatchScorer> LRModel::MakeBlockScorer(const kernels::BlockKernels& kernels) const
{
    for (const ScoreDictVar* var : predictorVars) {
        if (var == nullptr) return nullptr;
        // Its variance reads the plain number of a date beside the one from its origin.
        if (OriginShift(var->GetDateTimeType()) != 0.0 && pcovMatrix->IsWritten()) return nullptr;
    }
    return std::make_unique<LRBlocks>(kernels, *this);
}

class GLRBlocks final : public BlockScorer {
public:
    GLRBlocks(const kernels::BlockKernels& chosen, const GLRModel& model)
        : BlockScorer(chosen),
          model_(model),
          compact_(model.plan, model.betas),
          covariances_(model.pcovMatrix.get(), model.betas),
          fixedError_(model.IsLinearSVM() ? model.GetSigmaValue() : kNone),
          fixedWidth_(model.IsLinearSVM() ? model.GetPercentileValue() : kNone),
          t_(model.LimitQuantile())
    {}
    bool Build() { return AddNumberedPredictors(model_.plan, model_.predictorVars); }

protected:
    enum : size_t { kLp, kErrors, kLower, kUpper, kDesign };
    size_t WorkColumns() const override { return kDesign + model_.betas.size(); }

    void Compute(const Block& block) const override
    {
        const BatchResults& results = block.results;
        double* const lp = block.Or(results.prediction, kLp);
        const bool wantsAny = WantsErrors(results) || results.linearPredictorError != nullptr;
        double* const design = wantsAny && covariances_.Exist() ? block.Work(kDesign) : nullptr;
        SumTerms(kernels::SumRule::GeneralLinear, block, model_.plan.View(), model_.betas.data(),
                 compact_, lp, design);
        Give(lp, results.linearPredictor, block.rows);
        if (!wantsAny) return;

        double* const errors = block.Or(results.stdDev, kErrors);
        if (NumericValue::IsSystemMissingValue(fixedError_)) {
            covariances_.Errors(kernels_, design, errors, block.rows);
            GivePredictorErrors(errors, covariances_.Exist(), results.linearPredictorError,
                                block.rows);
        } else {
            std::fill_n(errors, block.rows, fixedError_);
            covariances_.GiveErrors(kernels_, design, results.linearPredictorError, block.rows);
        }
        if (!WantsLimits(results)) return;
        const bool fixed = !NumericValue::IsSystemMissingValue(fixedWidth_);
        GiveLimits(kernels_, lp, fixed ? nullptr : errors, fixed ? fixedWidth_ : t_,
                   block.Or(results.ciLower, kLower), block.Or(results.ciUpper, kUpper),
                   block.rows);
    }

private:
    const GLRModel& model_;
    CompactTerms compact_;
    BlockCovariances covariances_;
    double fixedError_;
    double fixedWidth_;
    double t_;
};

std::unique_ptr<BatchScorer> GLRModel::MakeBlockScorer(const kernels::BlockKernels& kernels) const
{
    auto scorer = std::make_unique<GLRBlocks>(kernels, *this);
    if (!scorer->Build()) return nullptr;
    return scorer;
}

class GZLRBlocks final : public BlockScorer {
public:
    GZLRBlocks(const kernels::BlockKernels& chosen, const GZLRModel& model)
        : BlockScorer(chosen),
          model_(model),
          link_(static_cast<int>(model.GetLinkFunction())),
          betas_(model.categoryBetas[static_cast<size_t>(model.RowOfEvent())]),
          compact_(model.plan, betas_),
          covariances_(model.pcovMatrix.get(), betas_),
          z_(model.LimitQuantile())
    {
        if (!model.binaryTarget) return;
        categories_.resize(model.categoryMap.size());
        for (const auto& [name, row] : model.categoryMap) {
            categories_[static_cast<size_t>(row)] = name;
        }
        event_ = CategoryOf(model.eventName);
        other_ = model.otherCategory == nullptr ? -1 : CategoryOf(model.otherName);
    }
    bool Build() { return AddPredictors(model_.plan, model_.predictorVars); }

protected:
    enum : size_t { kLp, kMean, kErrors, kLower, kUpper, kDesign };
    size_t WorkColumns() const override { return kDesign + betas_.size(); }

    void Compute(const Block& block) const override
    {
        const BatchResults& results = block.results;
        const bool wantsErrors = !model_.binaryTarget && WantsErrors(results);
        const bool wantsAny = wantsErrors || results.linearPredictorError != nullptr;
        double* const eta = block.Or(results.linearPredictor, kLp);
        double* const design = wantsAny && covariances_.Exist() ? block.Work(kDesign) : nullptr;
        SumTerms(kernels::SumRule::Generalized, block, model_.plan.View(), betas_.data(), compact_,
                 eta, design);
        if (model_.offset.kind == Offset::VALUE) {
            kernels_.shift(eta, nullptr, model_.offset.value, block.rows);
        } else if (model_.offset.HasVariable()) {
            kernels_.shift(eta, block.Numbers(model_.predictorCount), 0.0, block.rows);
        }

        double* const mean = block.Or(model_.binaryTarget ? nullptr : results.prediction, kMean);
        kernels_.means[link_](eta, model_.GetLinkParameter(), mean, block.rows);
        for (size_t row = 0; HasTrials() && row < block.rows; ++row) {
            int trials = -1;
            if (!ReadTrials(block, row, trials)) {
                block.Leave(row);
            } else if (mean[row] != kNone) {
                mean[row] = model_.TimesTrials(mean[row], trials);
            }
        }
        if (model_.binaryTarget) GiveCategories(block, mean);
        if (wantsErrors) {
            GiveErrors(block, eta, design);
        } else {
            covariances_.GiveErrors(kernels_, design, results.linearPredictorError, block.rows);
        }
    }

private:
    int32_t CategoryOf(const std::string& name) const
    {
        const auto found = std::find(categories_.begin(), categories_.end(), name);
        return found == categories_.end() ? -1 : static_cast<int32_t>(found - categories_.begin());
    }
    bool HasTrials() const { return model_.trialsKind != GZLRModel::NONE; }
    bool ReadTrials(const Block& block, size_t row, int& trials) const
    {
        if (model_.trialsKind != GZLRModel::VARIABLE || model_.trialsVar == nullptr) return true;
        return GZLRModel::TrialsOf(block.Numbers(model_.predictorVars.size() - 1)[row], trials);
    }

    void GiveErrors(const Block& block, const double* eta, const double* design) const
    {
        const BatchResults& results = block.results;
        double* const errors = block.Or(results.stdDev, kErrors);
        covariances_.Errors(kernels_, design, errors, block.rows);
        GivePredictorErrors(errors, covariances_.Exist(), results.linearPredictorError, block.rows);
        if (!WantsLimits(results)) return;
        double* lower = block.Or(results.ciLower, kLower);
        double* upper = block.Or(results.ciUpper, kUpper);
        GiveLimits(kernels_, eta, errors, z_, lower, upper, block.rows);
        if (NumericValue::IsSystemMissingValue(z_)) return;
        const double k = model_.GetLinkParameter();
        kernels_.means[link_](lower, k, lower, block.rows);
        kernels_.means[link_](upper, k, upper, block.rows);
        // On purpose: a limit without a mean is multiplied like any other.
        for (size_t row = 0; HasTrials() && row < block.rows; ++row) {
            int trials = -1;
            if (!ReadTrials(block, row, trials)) continue;
            lower[row] = model_.TimesTrials(lower[row], trials);
            upper[row] = model_.TimesTrials(upper[row], trials);
        }
        const bool falls = model_.GetLinkFunction() == GZLRModel::LINK_POWER && k < 0.0;
        if (falls) std::swap_ranges(lower, lower + block.rows, upper);
    }

    void GiveCategories(const Block& block, const double* mean) const
    {
        const BatchResults& results = block.results;
        for (size_t row = 0; row < block.rows; ++row) {
            const bool isEvent = mean[row] >= GZLRModel::kEventBoundary;
            if (mean[row] == kNone || (!isEvent && other_ < 0)) block.Leave(row);
            if (results.category != nullptr) results.category[row] = isEvent ? event_ : other_;
        }
        if (results.probabilities == nullptr) return;
        std::copy_n(mean, block.rows, results.probabilities[event_]);
        for (size_t row = 0; other_ >= 0 && row < block.rows; ++row) {
            results.probabilities[other_][row] = 1.0 - mean[row];
        }
    }

    const GZLRModel& model_;
    int link_;
    const std::vector<double>& betas_;
    CompactTerms compact_;
    BlockCovariances covariances_;
    double z_;
    int32_t event_ = -1;
    int32_t other_ = -1;
};

std::unique_ptr<BatchScorer> GZLRModel::MakeBlockScorer(const kernels::BlockKernels& kernels) const
{
    if (GZLRLink::Find(linkFunction) == nullptr) return nullptr;
    // Cells of both categories, one not as the dictionary has it, make the event the other one too.
    if (binaryTarget && (!IsEveryCategoryGiven() || eventCategory == otherCategory)) return nullptr;
    auto scorer = std::make_unique<GZLRBlocks>(kernels, *this);
    if (!scorer->Build()) return nullptr;
    return scorer;
}

}  // namespace MCVelscore_850
