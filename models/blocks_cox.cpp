// The block scorer of Cox models.
#include <algorithm>

#include "models/blockscorer.h"
#include "models/coxregrmodel.h"

namespace MCVelscore_850 {

class CoxBlocks final : public BlockScorer {
public:
    CoxBlocks(const kernels::BlockKernels& chosen, const CoxRegModel& model)
        : BlockScorer(chosen),
          model_(model),
          references_(model.ReferenceTerms()),
          compact_(model.plan, model.betas, 0, references_),
          covariances_(model.pcovMatrix.get(), model.betas)
    {
        for (size_t i = 0; i < std::max(model.stratumCategs.size(), size_t{1}); ++i) {
            strata_.push_back(model.BaselineOf(i));
        }
    }

    bool Build()
    {
        if (model_.contrastMatrices.empty()) {
            if (!AddPredictors(model_.plan, model_.predictorVars)) return false;
        } else {
            if (!AddContrastPredictors()) return false;
        }
        if (model_.endTimeVariable == nullptr) return false;
        endTime_ = AddNumber(*model_.endTimeVariable,
                             [](const ScoreValue& text) { return text.GetDouble(); });
        if (model_.stratumVariableName.empty()) return true;
        if (model_.stratumVariable == nullptr) return false;
        stratum_ = AddCode(*model_.stratumVariable, [this](const ScoreValue& value) {
            const int stratum = model_.StratumOf(&value);
            return stratum < 0 ? kUnsure : stratum;
        });
        return true;
    }

protected:
    enum : size_t { kLp, kBaseline, kHazard, kSurvival, kTime, kDesign };
    size_t WorkColumns() const override
    {
        return kDesign + (covariances_.Exist() ? model_.betas.size() : 0);
    }

    void Compute(const Block& block) const override
    {
        static constexpr int32_t kOnlyStratum[kernels::kBlockRows] = {};
        const BatchResults& results = block.results;
        double* const lp = block.Or(results.linearPredictor, kLp);
        if (results.linearPredictorError != nullptr && covariances_.Exist()) {
            SumWithErrors(block, lp);
        } else {
            kernels_.centred(block.columns, compact_.View(), compact_.Betas(),
                             compact_.References(), lp, nullptr);
            covariances_.GiveErrors(kernels_, nullptr, results.linearPredictorError, block.rows);
        }
        const int32_t* const strata =
            model_.stratumVariableName.empty() ? kOnlyStratum : block.Codes(stratum_);
        double* const baseline = block.Work(kBaseline);
        kernels_.baselines(strata_.data(), strata, block.Numbers(endTime_), baseline, block.rows);
        kernels_.survival(lp, baseline, block.Or(results.cumHazard, kHazard),
                          block.Or(results.prediction, kSurvival), block.rows);
        GiveRisks(block, lp, strata);
        GiveSurvivals(block, lp, strata);
    }

private:
    void GiveRisks(const Block& block, const double* lp, const int32_t* strata) const
    {
        const BatchResults& results = block.results;
        if (results.risk == nullptr && results.medianSurvival == nullptr) return;
        double* const ones = block.Work(kBaseline);
        double* const risk = block.Or(results.risk, kHazard);
        std::fill_n(ones, block.rows, 1.0);
        kernels_.survival(lp, ones, risk, block.Work(kSurvival), block.rows);
        if (results.medianSurvival == nullptr) return;
        for (size_t row = 0; row < block.rows; ++row) {
            results.medianSurvival[row] =
                model_.MedianOf(static_cast<size_t>(strata[row]), risk[row]);
        }
    }

    void GiveSurvivals(const Block& block, const double* lp, const int32_t* strata) const
    {
        const BatchResults& results = block.results;
        double* const times = block.Work(kTime);
        double* const baseline = block.Work(kBaseline);
        for (size_t i = 0; i < results.survivalTimes.size(); ++i) {
            std::fill_n(times, block.rows, results.survivalTimes[i]);
            kernels_.baselines(strata_.data(), strata, times, baseline, block.rows);
            kernels_.survival(lp, baseline, block.Work(kHazard), results.survivals[i], block.rows);
        }
    }

    void SumWithErrors(const Block& block, double* lp) const
    {
        double* const design = block.Work(kDesign);
        const std::vector<double>& betas = model_.betas;
        kernels_.centred(block.columns, model_.plan.View(), betas.data(), references_.data(), lp,
                         design);
        for (size_t p = 0; p < betas.size(); ++p) {
            if (betas[p] == 0.0) continue;
            kernels_.shift(design + p * kernels::kBlockRows, nullptr, -model_.BasePoint(p),
                           block.rows);
        }
        covariances_.GiveErrors(kernels_, design, block.results.linearPredictorError, block.rows);
    }

    // The place in the contrast matrix; a category without a whole row is left to the case's own
    // road.
    bool AddContrastPredictors()
    {
        const TermPlan& plan = model_.plan;
        for (size_t k = 0; k < model_.predictorVars.size(); ++k) {
            if (model_.predictorVars[k] == nullptr) return false;
            const ScoreDictVar& var = *model_.predictorVars[k];
            if (plan.readings[k] != TermPlan::Reading::Code) {
                AddNumber(var, [](const ScoreValue& text) { return text.GetDouble(); });
                continue;
            }
            if (plan.codeCounts[k] == 0) return false;
            AddCode(var, [&plan, k](const ScoreValue& value) {
                const int32_t row = plan.codes[k].Find(&value);
                return row >= 0 && HasEveryContrast(plan, k, row) ? row : kUnsure;
            });
        }
        return true;
    }

    const CoxRegModel& model_;
    std::vector<double> references_;
    CompactTerms compact_;
    BlockCovariances covariances_;
    std::vector<kernels::Baseline> strata_;
    size_t endTime_ = 0;
    size_t stratum_ = 0;
};

std::unique_ptr<BatchScorer> CoxRegModel::MakeBlockScorer(
    const kernels::BlockKernels& kernels) const
{
    auto scorer = std::make_unique<CoxBlocks>(kernels, *this);
    if (!scorer->Build()) return nullptr;
    return scorer;
}

}  // namespace MCVelscore_850
