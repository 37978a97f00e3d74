#ifndef VELSCORE_TESTS_MODELS_CLASSIFIERFIXTURE_H
#define VELSCORE_TESTS_MODELS_CLASSIFIERFIXTURE_H

#include <string>
#include <vector>

#include "host/messages/scoringlog.h"
#include "models/blrmodel.h"
#include "models/mlrmodel.h"
#include "models/ogzlrmodel.h"
#include "models/ormodel.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850::testing {

/// A few roundings of a number near 1.
inline constexpr double kRounding = 1e-15;

inline std::unique_ptr<DictVar> TextTarget() { return Categorical("y", {"no", "yes"}); }
inline std::unique_ptr<DictVar> NumberTarget()
{
    return Categorical("y", {"0", "1"}, ScoreDictVar::NUMERIC);
}

/// What the families that predict a category do each its own way.
template <class Model>
struct Family {
    static constexpr bool traces = false;
    static constexpr bool goesOnAfterABadValue = false;
    static constexpr bool isOrdinal = false;
};
template <>
struct Family<MLRModel> : Family<void> {
    static constexpr bool traces = true;
};
template <>
struct Family<ORModel> : Family<void> {
    static constexpr bool traces = true;
    static constexpr bool goesOnAfterABadValue = true;
    static constexpr bool isOrdinal = true;
};
template <>
struct Family<OGZLRModel> : Family<void> {
    static constexpr bool goesOnAfterABadValue = true;
    static constexpr bool isOrdinal = true;
};

/// A model of two categories and the covariates a and b. With lp = a + b the second category's
/// probability is 1 / (1 + exp(-lp)); in an ORModel, whose linear predictor raises the cumulative
/// probabilities, it is the first one's.
template <class Model>
class TwoCategories : public Built<Model> {
public:
    explicit TwoCategories(std::unique_ptr<DictVar> target = TextTarget())
        : Built<Model>(std::move(target))
    {
        this->Covariate("a");
        this->Covariate("b");
        AddTerms("a", "b");
    }
    /// The model, its tables filled.
    Model& Ready()
    {
        EXPECT_TRUE(this->SetUp());
        const auto categories = CategoriesInOrder();
        first = categories.at(0);
        second = categories.at(1);
        // An ordinal model has its betas in the last row but one.
        const std::string& row = Family<Model>::isOrdinal ? first : second;
        for (const auto& [parameter, predictor] : terms_) {
            this->Cell(parameter, predictor, "1");
            this->Beta(row, parameter, 1.0);
        }
        this->model.FinishSetup();
        return this->model;
    }

    std::string first, second;

private:
    void AddTerms(const std::string& one, const std::string& other)
    {
        if (Family<Model>::isOrdinal) this->Parameters({"threshold"});
        terms_ = {{"p" + one, one}, {"p" + other, other}};
        for (const auto& [parameter, predictor] : terms_) this->Parameters({parameter});
    }
    std::vector<std::string> CategoriesInOrder() const
    {
        std::vector<std::string> names(this->model.GetCategoryMap().size());
        for (const auto& [name, index] : this->model.GetCategoryMap()) {
            names[static_cast<size_t>(index)] = name;
        }
        return names;
    }
    std::vector<std::pair<std::string, std::string>> terms_;
};

/// The lines that scoring a null record leaves in the trace.
template <class Model>
std::vector<std::string> TraceOfNullRecord(Model& model)
{
    std::vector<std::string> lines;
    ScoringLog* log = ScoringLog::GetInstance();
    log->SetSink([&](int, std::string_view line) { lines.emplace_back(line); });
    log->SetLevel(2);
    ScoreResult* result = nullptr;
    EXPECT_EQ(model.GetScore(nullptr, result, true).GetErrorCode(), 90029);
    EXPECT_EQ(result, nullptr);
    log->SetLevel(0);
    log->SetSink(nullptr);
    return lines;
}

}  // namespace MCVelscore_850::testing

#endif
