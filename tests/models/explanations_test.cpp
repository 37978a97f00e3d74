// What explains a case adds up to the bits of the linear predictors that scoring has: models of all
// families that are drawn, over rows that are drawn, the odd ones among them.
//
// VELSCORE_TEST_ROWS says over how many rows a family and link, 20,000 without it.

#include <gtest/gtest.h>

#include "host/model/caseexplanation.h"
#include "kernels/normalization.h"
#include "kernels/ordinal.h"
#include "models/casestate.h"
#include "models/cumulativelinkmodel.h"
#include "models/normalizedmodel.h"
#include "tests/models/drawnrows.h"

namespace MCVelscore_850 {

namespace {

using namespace testing;
using Kind = ExplanationOutline::Term::Kind;

// The sign of a zero is no part of a sum.
bool SameSum(double a, double b) { return SameBits(a, b) || (a == 0.0 && b == 0.0); }

size_t WantedRows()
{
    const char* rows = std::getenv("VELSCORE_TEST_ROWS");
    return rows == nullptr ? 20'000 : std::strtoull(rows, nullptr, 10);
}

// What a test has seen, so that it can't pass by looking at nothing.
struct Seen {
    size_t rows = 0;
    size_t refused = 0;
    size_t sums = 0;
    size_t longSums = 0;  // of several addends other than 0
    size_t scoring = 0;   // linear predictors compared with those that scoring has
    size_t shares = 0;    // probabilities compared likewise
    size_t offsets = 0;
    size_t references = 0;
};

// The linear predictors of a row that was scored, as scoring leaves them, in the order of the
// outline's equations; none where the family keeps none.
std::vector<double> LinearPredictorsOf(const RegressionModel& model, const CaseState& state,
                                       size_t equations)
{
    if (model.GetModelType() == ScoreModel::TYPE_MLR) {
        const auto& all = state.linearPredictors;
        return all.size() == equations ? all : std::vector<double>();
    }
    return {state.linearPredictor};
}

// The linear predictors as the contributions add up to them, by the outline's equations.
using Totals = std::vector<double>;

// The probabilities of an ordinal model, by its link over the boundaries, which follow the first
// equation.
std::vector<double> ProbabilitiesOf(const CumulativeLinkModel& model, const ExplanationOutline&,
                                    const Totals& totals)
{
    std::vector<double> probabilities(totals.size());
    kernels::OrdinalScale<double> scale{};
    for (size_t c = 0; c < probabilities.size(); ++c) {
        const bool isLast = c + 1 == totals.size();
        const double cumulative =
            isLast ? 1.0
                   : CumulativeLinkModel::CInvLinkFunction(model.GetLinkFunction(), totals[c + 1]);
        probabilities[c] = kernels::NextCategory(scale, c, cumulative, 0.0);
    }
    return probabilities;
}

// Of a normalized one. The category without an equation is the remainder.
std::vector<double> ProbabilitiesOf(const NormalizedModel& model, const ExplanationOutline& outline,
                                    const Totals& totals)
{
    using Link = kernels::CumulativeLink;
    using kernels::Normalization;
    constexpr std::pair<std::string_view, Link> kLinks[] = {
        {"logit", Link::Logit},
        {"probit", Link::Probit},
        {"cloglog", Link::ComplementaryLogLog},
        {"loglog", Link::NegativeLogLog},
        {"cauchit", Link::Cauchit},
    };
    ModelDescription description;
    model.Describe(description);
    const auto& categories = description.targetCategories;
    Normalization how;
    std::vector<double> y(categories.size());
    size_t equation = 0;
    for (size_t c = 0; c < categories.size(); ++c) {
        const bool has = equation < outline.equations.size() &&
                         outline.equations[equation].category == categories[c];
        if (has) y[c] = totals[equation++];
        if (!has) how.remainder = c;
    }
    if (model.GetNormalization() != "simplemax") {
        const bool steps = !outline.equations.empty() && outline.equations[0].isCumulative;
        how.method = steps ? Normalization::Steps : Normalization::Shares;
        for (const auto& [word, link] : kLinks) {
            if (word == model.GetNormalization()) how.link = link;
        }
    }
    EXPECT_EQ(equation, totals.size());
    kernels::Normalize(how, y.data(), y.size(), 1);
    return y;
}

// Those of the families whose equations scoring doesn't keep one by one, none of others.
std::vector<double> ProbabilitiesOf(const RegressionModel& model, const ExplanationOutline& outline,
                                    const Totals& totals)
{
    if (const auto* ordinal = dynamic_cast<const CumulativeLinkModel*>(&model)) {
        return ProbabilitiesOf(*ordinal, outline, totals);
    }
    if (const auto* normalized = dynamic_cast<const NormalizedModel*>(&model)) {
        return ProbabilitiesOf(*normalized, outline, totals);
    }
    return {};
}

class Comparison {
public:
    Comparison(DrawnModel& drawn, bool keepsPredictors, Seen& seen)
        : model_(drawn.Get()),
          keepsPredictors_(keepsPredictors),
          seen_(seen),
          scored_(model_.MakeState()),
          explained_(model_.MakeState())
    {
        model_.OutlineExplanations(outline_);
    }

    void Compare(const CaseRecord& record)
    {
        const long code = model_.ScoreRow(*scored_, &record, score_.result, true).GetErrorCode();
        ASSERT_EQ(model_.ExplainRow(*explained_, &record, again_.result, true, explanation_)
                      .GetErrorCode(),
                  code);
        ++seen_.rows;
        if (code != 0) {
            ++seen_.refused;
            ASSERT_TRUE(explanation_.Sums().empty());
            return;
        }
        ASSERT_FALSE(explanation_.Sums().empty());
        Totals totals;
        for (const CaseExplanation::Sum& sum : explanation_.Sums()) {
            ASSERT_NO_FATAL_FAILURE(CompareSum(sum, totals.emplace_back()));
        }
        const auto& state = static_cast<const CaseState&>(*scored_);
        const auto probabilities = ProbabilitiesOf(model_, outline_, totals);
        for (size_t c = 0; c < probabilities.size(); ++c) {
            ASSERT_TRUE(SameSum(probabilities[c], state.probabilities.at(c)))
                << c << ": " << probabilities[c] << " for " << state.probabilities[c];
            ++seen_.shares;
        }
        if (!keepsPredictors_) return;
        const auto kept = LinearPredictorsOf(model_, state, outline_.equations.size());
        ASSERT_FALSE(kept.empty());
        for (size_t i = 0; i < kept.size(); ++i) {
            ASSERT_TRUE(SameBits(explanation_.Sums()[i].linearPredictor, kept[i]));
            ++seen_.scoring;
        }
    }

private:
    void CompareSum(const CaseExplanation::Sum& sum, double& total)
    {
        ASSERT_LT(sum.equation, outline_.equations.size());
        const auto& terms = outline_.equations[sum.equation].terms;
        ASSERT_EQ(sum.addends.size(), terms.size());
        size_t met = 0;
        for (size_t i = 0; i < terms.size(); ++i) {
            const auto& [value, contribution] = sum.addends[i];
            total = i == 0 ? contribution : total + contribution;
            met += contribution != 0.0 ? 1 : 0;
            ASSERT_FALSE(contribution == 0.0 && std::signbit(contribution));
            ASSERT_NO_FATAL_FAILURE(CompareTerm(terms[i], value, contribution));
        }
        ++seen_.sums;
        seen_.longSums += met > 1 ? 1 : 0;
        ASSERT_TRUE(SameSum(total, sum.linearPredictor))
            << std::hexfloat << total << " for " << sum.linearPredictor;
    }
    void CompareTerm(const ExplanationOutline::Term& term, double value, double contribution)
    {
        if (term.kind == Kind::Offset) ++seen_.offsets;
        const double reference =
            term.referencePoint.has_value() ? *term.referencePoint * term.beta : 0.0;
        if (reference != 0.0) ++seen_.references;
        if (term.beta == 0.0) {
            ASSERT_EQ(contribution, 0.0);
        } else if (value != 0.0 || reference != 0.0) {
            ASSERT_TRUE(SameSum(contribution, value * term.beta - reference))
                << term.name << ": " << contribution << " of " << value << " * " << term.beta;
        }
    }

    RegressionModel& model_;
    bool keepsPredictors_;
    Seen& seen_;
    ExplanationOutline outline_;
    std::unique_ptr<ScoringState> scored_;
    std::unique_ptr<ScoringState> explained_;
    CaseExplanation explanation_;
    Slot score_;
    Slot again_;
};

class ExplanationsOfFamily : public ::testing::TestWithParam<DrawnFamily> {};
INSTANTIATE_TEST_SUITE_P(Families, ExplanationsOfFamily, ::testing::ValuesIn(DrawnFamilies()),
                         [](const auto& family) { return std::string(family.param.name); });

TEST_P(ExplanationsOfFamily, AddUpToTheBitsOfScoring)
{
    const DrawnFamily& family = GetParam();
    const std::string_view name = family.name;
    // Their probabilities take the place of the linear predictors.
    const bool keepsPredictors = !name.starts_with("Normalized");
    constexpr Mixture kMixtures[] = {{0, 0}, {5, 2}, {30, 2}};
    constexpr size_t kBlocksOfModel = 3;
    constexpr size_t kRowsOfBlock = 100;
    Seen seen;
    for (uint64_t round = 0; seen.rows < WantedRows(); ++round) {
        SCOPED_TRACE(::testing::Message() << name << ", round " << round);
        Draw draw(round * 64 + static_cast<uint64_t>(family.link));
        const auto drawn = family.make(draw, false, family.link);
        Comparison comparison(*drawn, keepsPredictors, seen);
        Block block(*drawn);
        RowRecord record(*drawn);
        for (size_t i = 0; i < kBlocksOfModel; ++i) {
            block.Fill(draw, kRowsOfBlock, draw.Of(kMixtures));
            for (size_t row = 0; row < block.rows; ++row) {
                record.Take(block, row);
                ASSERT_NO_FATAL_FAILURE(comparison.Compare(record.Get())) << "row " << row;
            }
        }
    }
    EXPECT_GT(seen.refused, seen.rows / 200);
    EXPECT_GT(seen.longSums, seen.rows / 4);
    EXPECT_EQ(seen.scoring > seen.rows / 2, keepsPredictors);
    const bool isScale = name.find("Ordinal") != name.npos;
    EXPECT_EQ(seen.shares > seen.rows, isScale || !keepsPredictors) << seen.shares;
    const bool takesOffset = name.starts_with("Multinomial") || name.starts_with("Ordinal") ||
                             name.starts_with("Generalized");
    EXPECT_EQ(seen.offsets > seen.rows / 20, takesOffset) << seen.offsets;
    EXPECT_EQ(seen.references > seen.rows / 20, name.starts_with("Cox")) << seen.references;
}

}  // namespace

}  // namespace MCVelscore_850
