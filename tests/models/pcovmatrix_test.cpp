#include "models/pcovmatrix.h"

#include <gtest/gtest.h>

#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

// A model of any type with parameters p0, p1, .. and target categories c0, c1, ..
class AnyType : public BareFamily {
public:
    AnyType(int type, int parameters, int categories, bool withEncoder = true) : type_(type)
    {
        DictVarType varType;
        varType.name = "y";
        varType.level = ScoreDictVar::CATEGORICAL;
        varType.valueType = ScoreDictVar::STRING;
        target_ = std::make_unique<DictVar>(varType);
        for (int c = 0; c < categories; ++c) {
            const std::string name = "c" + std::to_string(c);
            target_->AddCategory(new StringValue(name), name);
            categoryMap.emplace(name, c);
        }
        if (withEncoder) target_->SetUpCatEncoder();
        SetTargetVar(target_.get());
        for (int p = 0; p < parameters; ++p) AddParameter("p" + std::to_string(p), "");
    }
    int GetModelType() const override { return type_; }
    double At(size_t row, size_t column) { return CreatePCovMatrix()->GetCells()[row][column]; }

private:
    int type_;
    std::unique_ptr<DictVar> target_;
};

TEST(PCovMatrix, PlainFormHasARowForEachParameterAndKeepsBothTriangles)
{
    AnyType model(ScoreModel::TYPE_GLR, 3, 0);
    PCovMatrix& v = *model.CreatePCovMatrix();
    ASSERT_EQ(v.GetDimension(), 3u);
    EXPECT_TRUE(v.SetCell("p0", "p1", 0.5));
    EXPECT_EQ(v.GetCell(0, 1), 0.5);
    EXPECT_EQ(v.GetCell(1, 0), 0.5);
    EXPECT_EQ(v.GetCell("p1", "p0"), 0.5);
    EXPECT_TRUE(v.SetCell("p1", "p2", 0.75));
    EXPECT_EQ(v.GetCell("p1", "p2"), 0.75);
    EXPECT_EQ(v.GetCell("p1", "nowhere"), 0.0);
    EXPECT_FALSE(v.SetCell("p0", "nowhere", 1.0));
}

TEST(PCovMatrix, CellsAreMadeWithTheFirstThatIsWritten)
{
    AnyType model(ScoreModel::TYPE_GLR, 3, 0);
    PCovMatrix& v = *model.CreatePCovMatrix();
    EXPECT_FALSE(v.SetCell("p0", "nowhere", 1.0));
    EXPECT_TRUE(v.GetCells().empty());
    EXPECT_EQ(v.GetCell(0, 1), 0.0);
    EXPECT_EQ(v.GetCell("p0", "p1"), 0.0);
    EXPECT_FALSE(v.IsWritten());
    EXPECT_TRUE(v.SetCell("p0", "p1", 0.5));
    EXPECT_TRUE(v.IsWritten());
    EXPECT_EQ(v.GetCells(), (RegressionModel::Matrix{{0, 0.5, 0}, {0.5, 0, 0}, {0, 0, 0}}));
}

TEST(PCovMatrix, PlainFormTakesNoCategories)
{
    AnyType model(ScoreModel::TYPE_BLR, 3, 2);
    PCovMatrix& v = *model.CreatePCovMatrix();
    EXPECT_FALSE(v.SetCell("p0", "p1", "c0", true, 1.0));
    EXPECT_FALSE(v.SetCell("p0", "p1", "c0", "c1", 1.0));
}

TEST(PCovMatrix, OrdinalFormPutsLocationParametersBehindTheThresholds)
{
    AnyType model(ScoreModel::TYPE_ORDINAL, 3, 4);
    PCovMatrix& v = *model.CreatePCovMatrix();
    ASSERT_EQ(v.GetDimension(), 5u);  // 3 + 4 - 2
    EXPECT_TRUE(v.SetCell("p1", "p2", 0.5));
    EXPECT_EQ(model.At(3, 4), 0.5);
    EXPECT_EQ(model.At(4, 3), 0.5);
    EXPECT_TRUE(v.SetCell("p0", "p0", 0.25));  // the last threshold's place, on purpose
    EXPECT_EQ(model.At(2, 2), 0.25);
}

TEST(PCovMatrix, OrdinalFormPlacesAThresholdByItsCategory)
{
    AnyType model(ScoreModel::TYPE_ORDINAL, 3, 4);
    PCovMatrix& v = *model.CreatePCovMatrix();
    EXPECT_TRUE(v.SetCell("p1", "p0", "c2", true, 0.5));
    EXPECT_EQ(model.At(3, 2), 0.5);
    EXPECT_EQ(model.At(2, 3), 0.5);
    EXPECT_TRUE(v.SetCell("p0", "p2", "c0", false, 0.75));
    EXPECT_EQ(model.At(0, 4), 0.75);
    EXPECT_TRUE(v.SetCell("p0", "p0", "c0", "c1", 1.5));
    EXPECT_EQ(model.At(0, 1), 1.5);
    EXPECT_EQ(model.At(1, 0), 1.5);
    EXPECT_FALSE(v.SetCell("p1", "p0", "c9", true, 1.0));
    EXPECT_FALSE(v.SetCell("p1", "nowhere", "c0", true, 1.0));  // both names have to be known
    EXPECT_FALSE(v.SetCell("p1", "p0", "c0", "c1", 1.0));       // two thresholds only
}

TEST(PCovMatrix, MultinomialFormRepeatsTheParametersForEachCategory)
{
    AnyType model(ScoreModel::TYPE_MLR, 2, 3);
    PCovMatrix& v = *model.CreatePCovMatrix();
    ASSERT_EQ(v.GetDimension(), 6u);
    EXPECT_TRUE(v.SetCell("p1", "p0", "c2", "c1", 0.5));
    EXPECT_EQ(model.At(5, 2), 0.5);
    EXPECT_EQ(model.At(2, 5), 0.5);
    EXPECT_FALSE(v.SetCell("p1", "p0", 1.0));
    EXPECT_FALSE(v.SetCell("p1", "p0", "c1", true, 1.0));
    EXPECT_FALSE(v.SetCell("p1", "p0", "c1", "c9", 1.0));
}

TEST(PCovMatrix, ReadingByIndexStopsAtTheParameterCountInEveryForm)
{
    AnyType model(ScoreModel::TYPE_MLR, 2, 3);
    PCovMatrix& v = *model.CreatePCovMatrix();
    v.SetCell("p0", "p0", "c1", "c1", 0.5);  // row 2
    EXPECT_EQ(model.At(2, 2), 0.5);
    EXPECT_EQ(v.GetCell(2, 2), 0.0);
    EXPECT_EQ(v.GetCell(2, 0), 0.0);
    EXPECT_EQ(v.GetCell(-1, 0), 0.0);
    v.SetCell("p0", "p1", "c0", "c0", 0.25);
    EXPECT_EQ(v.GetCell(0, 1), 0.25);
    EXPECT_EQ(v.GetCell("p0", "p1"), 0.0);  // by name in the plain form alone
}

TEST(PCovMatrix, TargetWithoutEncoderKnowsNoCategory)
{
    AnyType ordinal(ScoreModel::TYPE_ORDINAL, 3, 4, false);
    EXPECT_FALSE(ordinal.CreatePCovMatrix()->SetCell("p1", "p0", "c2", true, 0.5));
    EXPECT_FALSE(ordinal.CreatePCovMatrix()->SetCell("p0", "p0", "c0", "c1", 0.5));
    AnyType multinomial(ScoreModel::TYPE_MLR, 2, 3, false);
    EXPECT_FALSE(multinomial.CreatePCovMatrix()->SetCell("p1", "p0", "c2", "c1", 0.5));
}

TEST(PCovMatrix, OrdinalFormOfNothingHasNoRow)
{
    EXPECT_EQ(AnyType(ScoreModel::TYPE_ORDINAL, 0, 1).CreatePCovMatrix()->GetDimension(), 0U);
    EXPECT_EQ(AnyType(ScoreModel::TYPE_ORDINAL, 1, 0).CreatePCovMatrix()->GetDimension(), 0U);
    EXPECT_EQ(AnyType(ScoreModel::TYPE_ORDINAL, 1, 1).CreatePCovMatrix()->GetDimension(), 0U);
    EXPECT_EQ(AnyType(ScoreModel::TYPE_ORDINAL, 2, 1).CreatePCovMatrix()->GetDimension(), 1U);
}

// Whichever name or category isn't known, nothing is written; nor beyond the last row.
TEST(PCovMatrix, EveryNameHasToBeKnown)
{
    AnyType ordinal(ScoreModel::TYPE_ORDINAL, 1, 3);
    PCovMatrix& o = *ordinal.CreatePCovMatrix();
    EXPECT_FALSE(o.SetCell("nowhere", "p0", 1.0));
    EXPECT_FALSE(o.SetCell("p0", "nowhere", 1.0));
    EXPECT_FALSE(o.SetCell("nowhere", "p0", "c0", true, 1.0));
    EXPECT_FALSE(o.SetCell("p0", "nowhere", "c0", false, 1.0));
    EXPECT_FALSE(o.SetCell("p0", "p0", "c9", false, 1.0));
    EXPECT_FALSE(o.SetCell("p0", "p0", "c2", "c0", 1.0));  // the last category has no threshold
    EXPECT_FALSE(o.SetCell("p0", "p0", "c0", "c2", 1.0));
    EXPECT_TRUE(o.GetCells().empty());
    AnyType two(ScoreModel::TYPE_ORDINAL, 2, 3);
    EXPECT_FALSE(two.CreatePCovMatrix()->SetCell("p0", "p1", "c0", "c1", 1.0));
    EXPECT_FALSE(two.CreatePCovMatrix()->SetCell("p1", "p0", "c0", "c1", 1.0));
    EXPECT_FALSE(two.CreatePCovMatrix()->IsWritten());

    AnyType multinomial(ScoreModel::TYPE_MLR, 2, 3);
    PCovMatrix& m = *multinomial.CreatePCovMatrix();
    EXPECT_FALSE(m.SetCell("nowhere", "p0", "c1", "c1", 1.0));
    EXPECT_FALSE(m.SetCell("p0", "nowhere", "c1", "c1", 1.0));
    EXPECT_FALSE(m.SetCell("p0", "p1", "c9", "c1", 1.0));
    EXPECT_FALSE(m.IsWritten());
    EXPECT_TRUE(m.SetCell("p0", "p0", "c0", "c0", 1.0));  // row and column 0
    EXPECT_EQ(multinomial.At(0, 0), 1.0);

    AnyType plain(ScoreModel::TYPE_GLR, 2, 0);
    EXPECT_FALSE(plain.CreatePCovMatrix()->SetCell("nowhere", "p0", 1.0));
    EXPECT_FALSE(plain.CreatePCovMatrix()->IsWritten());
    EXPECT_TRUE(plain.CreatePCovMatrix()->SetCell("p0", "p0", 2.0));
    EXPECT_EQ(plain.At(0, 0), 2.0);
}

TEST(PCovMatrix, TargetThatIsNotThereKnowsNoCategory)
{
    class NoTarget final : public BareFamily {
    public:
        NoTarget()
        {
            AddParameter("p", "");
            categoryMap.emplace("c", 0);
        }
        int GetModelType() const override { return TYPE_MLR; }
    } model;
    EXPECT_FALSE(model.CreatePCovMatrix()->SetCell("p", "p", "c", "c", 1.0));
}

}  // namespace
}  // namespace MCVelscore_850
