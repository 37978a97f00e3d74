#include "engine/scoring/casescorer.h"

#include <gtest/gtest.h>

#include "host/model/mcstatus.h"
#include "host/model/scoringstate.h"
#include "host/values/numericvalue.h"
#include "models/clrresult.h"
#include "tests/engine/fakemodel.h"
#include "tests/engine/onerow.h"

namespace MCVelscore_850 {
namespace {

using Row = std::vector<std::string_view>;

// A model that answers what a test tells it to.
class Answering final : public FakeModel {
public:
    MCScore::MCStatus ScoreRow(ScoringState& state, const ScoreCaseRecord*, ScoreResult*& result,
                               bool) const override
    {
        ++asked;
        delete result;
        result = makesResult ? new CLRResult(nullptr) : nullptr;
        state.failedVar = failed;
        return status;
    }

    bool makesResult = true;
    MCScore::MCStatus status;
    const ScoreDictVar* failed = nullptr;
    mutable int asked = 0;
};

class CaseScorerTest : public testing::Test {
protected:
    CaseScorer Scorer(const std::vector<std::string>& header)
    {
        return CaseScorer(model_, model_.description, {}, header, "cases.csv", {});
    }
    Answering model_;
};

TEST_F(CaseScorerTest, AnOkWithoutAResultIsNoScore)
{
    model_.AddNumber("x");
    CaseScorer scorer = Scorer({"x"});
    EXPECT_TRUE(scorer.Score(OneRow(Row{"1"}), 0).IsOK());
    model_.makesResult = false;
    EXPECT_EQ(scorer.Score(OneRow(Row{"1"}), 0).code, MCScore::kCaseNotScorable);
    model_.makesResult = true;
    EXPECT_TRUE(scorer.Score(OneRow(Row{"1"}), 0).IsOK());
    EXPECT_EQ(scorer.Result().GetScoreResultType(), ScoreResult::CLR_RESULT);
}

TEST_F(CaseScorerTest, ARefusalNamesTheColumnOfTheFailedVariableAndItsText)
{
    model_.AddNumber("x");
    model_.failed = &model_.AddText("sex", {"f", "m"});
    model_.status = MCScore::MCStatus(MCScore::kFactorOutsideContrasts, false);
    CaseScorer scorer = Scorer({"sex", "id", "x"});
    const CaseStatus status = scorer.Score(OneRow(Row{"m", "7", "1"}), 0);
    EXPECT_EQ(status.code, MCScore::kFactorOutsideContrasts);
    EXPECT_EQ(status.FieldName(), "sex");
    EXPECT_EQ(status.text, "m");
    model_.failed = nullptr;
    const CaseStatus blameless = scorer.Score(OneRow(Row{"m", "7", "1"}), 0);
    EXPECT_EQ(blameless.FieldName(), "");
    EXPECT_FALSE(blameless.text.has_value());
}

TEST_F(CaseScorerTest, AnOffsetThatTheModelTakesUncheckedIsCheckedBeforeIt)
{
    DictVar& offset = model_.AddNumber("o");
    offset.DeclareMissingRange(90.0, 99.0);
    model_.description.uncheckedOffset = "o";
    CaseScorer scorer = Scorer({"o"});
    EXPECT_TRUE(scorer.Score(OneRow(Row{"1"}), 0).IsOK());
    EXPECT_EQ(model_.asked, 1);
    for (const char* text : {"", "NA", "95"}) {
        const CaseStatus status = scorer.Score(OneRow(Row{text}), 0);
        EXPECT_EQ(status.code, MCScore::kCaseNotScorable);
        EXPECT_EQ(status.FieldName(), "o");
        EXPECT_EQ(status.text, text);
    }
    EXPECT_EQ(model_.asked, 1);
    model_.description.uncheckedOffset.clear();
    EXPECT_TRUE(Scorer({"o"}).Score(OneRow(Row{""}), 0).IsOK());
}

}  // namespace
}  // namespace MCVelscore_850
