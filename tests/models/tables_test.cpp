#include <gtest/gtest.h>

#include "models/clrmodel.h"
#include "models/glrmodel.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

class Tables : public ::testing::Test {
protected:
    Tables()
    {
        built.Covariate("x");
        built.Parameters({"b", "a"});
        built.SetUp();
    }
    Built<GLRModel> built;
    ParamTable& Params() { return *built.model.GetParamTable(); }
    PPCMatrix& Cells() { return *built.model.GetPPCMatrix(); }
};

TEST_F(Tables, UnsetParamCellReadsZero)
{
    EXPECT_EQ(Params().GetCell(0, 0)->GetBeta(), 0.0);
    EXPECT_EQ(Params().GetCell(0, 0)->GetDf(), 0);
}

TEST_F(Tables, ParamCellIsWrittenByNamesAndReadByIndexes)
{
    EXPECT_TRUE(Params().SetCell("GLRdummy", "a", ParamTableCell(1.5, 2)));
    EXPECT_EQ(Params().GetCell(0, 1)->GetBeta(), 1.5);  // "a" was registered second
    EXPECT_EQ(Params().GetCell("GLRdummy", "a")->GetDf(), 2);
    EXPECT_TRUE(Params().SetCell("GLRdummy", "a", ParamTableCell(2.5, 1)));
    EXPECT_EQ(Params().GetCell(0, 1)->GetBeta(), 2.5);
}

// Whoever only looks at a model has the same tables.
TEST_F(Tables, AreTheSameOfAModelThatIsOnlyRead)
{
    built.Cell("a", "x", "2");
    const GLRModel& model = built.model;
    EXPECT_EQ(model.GetPPCMatrix(), &Cells());
    ASSERT_EQ(model.GetNumericPPMatrix().size(), 2U);
    EXPECT_EQ(model.GetNumericPPMatrix().at(1), std::vector<double>{2.0});
    EXPECT_EQ(model.GetPCovMatrix(), nullptr);
    const PCovMatrix* covariances = built.model.CreatePCovMatrix();
    EXPECT_EQ(model.GetPCovMatrix(), covariances);
}

TEST_F(Tables, UnknownNamesWriteNothing)
{
    EXPECT_FALSE(Params().SetCell("GLRdummy", "c", ParamTableCell(1.0, 1)));
    EXPECT_FALSE(Params().SetCell("other", "a", ParamTableCell(1.0, 1)));
    EXPECT_EQ(Params().GetCell(0, 0)->GetBeta(), 0.0);
    EXPECT_EQ(Params().GetCell(0, 1)->GetBeta(), 0.0);
    EXPECT_EQ(Params().GetCell("other", "a"), nullptr);
    EXPECT_EQ(Params().GetParameterIndex("c"), -1);
    EXPECT_EQ(Params().GetParameterIndex("a"), 1);
}

TEST_F(Tables, IndexesOutOfRangeAnswerNull)
{
    EXPECT_EQ(Params().GetCell(0, Params().GetNumOfParameters()), nullptr);
    EXPECT_EQ(Params().GetCell(-1, 0), nullptr);
    EXPECT_EQ(Params().GetCell(0, -1), nullptr);
    EXPECT_EQ(Params().GetCell(1, 0), nullptr);
    EXPECT_EQ(Cells().GetCell(0, 1), nullptr);
    EXPECT_EQ(Cells().GetCell(2, 0), nullptr);
    EXPECT_EQ(Cells().GetCell(-1, 0), nullptr);
    EXPECT_EQ(Cells().GetCell(0, -1), nullptr);
}

TEST_F(Tables, PredictorCellKeepsTheValueThatItIsGiven)
{
    auto* value = new NumericValue(2.0);
    EXPECT_TRUE(Cells().SetCell("a", "x", value));
    EXPECT_EQ(Cells().GetCell(1, 0), value);
    EXPECT_EQ(Cells().GetCell("a", "x"), value);
    EXPECT_EQ(Cells().GetCell("b", "x"), nullptr);  // never set
}

TEST_F(Tables, RefusedPredictorCellStaysEmptyAndTheValueIsReleased)
{
    EXPECT_FALSE(Cells().SetCell("nowhere", "x", new NumericValue(2.0)));
    EXPECT_FALSE(Cells().SetCell("a", "nowhere", new NumericValue(2.0)));
    EXPECT_FALSE(Cells().SetCell("nowhere", "x", nullptr));
    EXPECT_EQ(Cells().GetCell("a", "x"), nullptr);
    EXPECT_EQ(Cells().GetCell("nowhere", "x"), nullptr);
}

TEST_F(Tables, PredictorCellSetTwiceHoldsTheLast)
{
    Cells().SetCell("a", "x", new NumericValue(2.0));
    Cells().SetCell("a", "x", new NumericValue(3.0));
    EXPECT_EQ(Cells().GetCell(1, 0)->GetDouble(), 3.0);
}

TEST_F(Tables, PredictorCellSetToNothingIsEmpty)
{
    Cells().SetCell("a", "x", new NumericValue(2.0));
    EXPECT_TRUE(Cells().SetCell("a", "x", nullptr));
    EXPECT_EQ(Cells().GetCell("a", "x"), nullptr);
    EXPECT_TRUE(Cells().SetCell("b", "x", nullptr));
    EXPECT_EQ(Cells().GetCell("b", "x"), nullptr);
}

TEST(PPCMatrix, RowHoldsItsCellsInTheOrderOfThePredictors)
{
    Built<GLRModel> built;
    for (const char* name : {"x", "y1", "z"}) built.Covariate(name);
    built.Parameters({"a"});
    ASSERT_TRUE(built.SetUp());
    PPCMatrix& cells = *built.model.GetPPCMatrix();
    cells.SetCell("a", "z", new NumericValue(3.0));
    cells.SetCell("a", "x", new NumericValue(1.0));
    ASSERT_EQ(cells.Row(0).size(), 2u);
    EXPECT_EQ(cells.Row(0)[0].predictor, 0);
    EXPECT_EQ(cells.Row(0)[1].predictor, 2);
    EXPECT_EQ(cells.GetCell(0, 1), nullptr);
    EXPECT_EQ(cells.GetCell(0, 2)->GetDouble(), 3.0);
    EXPECT_TRUE(cells.Row(1).empty());
    EXPECT_TRUE(cells.Row(-1).empty());
}

TEST(PPCMatrix, PredictorRegisteredAfterItsConstructionHasNoColumn)
{
    Built<GLRModel> built;
    built.Covariate("x");
    built.Parameters({"a"});
    ASSERT_TRUE(built.SetUp());
    built.Covariate("late");
    EXPECT_FALSE(built.model.GetPPCMatrix()->SetCell("a", "late", new NumericValue(1.0)));
}

TEST(ParamTable, CategoryRegisteredAfterItsConstructionHasNoRow)
{
    class Late : public BareFamily {
    public:
        void Register(const std::string& name)
        {
            categoryMap.emplace(name, static_cast<int>(categoryMap.size()));
        }
    } model;
    model.AddParameter("p", "");
    model.Register("first");
    ParamTable table(&model);
    model.Register("late");
    EXPECT_TRUE(table.SetCell("first", "p", ParamTableCell(1.0, 1)));
    EXPECT_FALSE(table.SetCell("late", "p", ParamTableCell(1.0, 1)));
    EXPECT_EQ(table.GetCell(1, 0), nullptr);
}

TEST(PPCMatrix, WithoutParametersEveryCellIsNull)
{
    Built<GLRModel> built;
    built.Covariate("x");
    ASSERT_TRUE(built.SetUp());
    EXPECT_EQ(built.model.GetPPCMatrix()->GetCell(0, 0), nullptr);
}

TEST(PPCMatrix, ParameterRegisteredAfterItsConstructionHasNoRow)
{
    Built<GLRModel> built;
    built.Covariate("x");
    built.Parameters({"a"});
    ASSERT_TRUE(built.SetUp());
    built.Parameters({"late"});
    PPCMatrix& cells = *built.model.GetPPCMatrix();
    EXPECT_FALSE(cells.SetCell("late", "x", new NumericValue(1.0)));
    EXPECT_EQ(cells.GetCell("late", "x"), nullptr);
    EXPECT_EQ(cells.GetCell("a", "nowhere"), nullptr);
    EXPECT_EQ(cells.GetCell("nowhere", "x"), nullptr);
}

}  // namespace
}  // namespace MCVelscore_850
