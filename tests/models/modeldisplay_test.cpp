#include <gtest/gtest.h>

#include <sstream>

#include "models/glrmodel.h"
#include "models/lrmodel.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

std::string Displayed(const ScoreModel& model)
{
    std::ostringstream out;
    model.Display(out);
    return out.str();
}

TEST(Display, FreshModelSaysWhichTablesAreNotPresent)
{
    Built<GLRModel> built("y");
    EXPECT_EQ(Displayed(built.model),
              "Begin display of GLRModel\n"
              "\n"
              "Begin display of RegressionModel.\n"
              "The target: y\n"
              "df = 0\n"
              "Target categories :  size = 0\n"
              "\n"
              "Parameters :  size = 0\n"
              "\n"
              "Predictors :  size = 0\n"
              "\n"
              "ParamTable not present\n"
              "PCovMatrix not present\n"
              "PPCMatrix not present\n"
              "End display of RegressionModel.\n"
              "End display of GLRModel\n");
}

TEST(Display, MapsAscendByNameAndCellsStandInTheirRows)
{
    Built<LRModel> built("y");
    built.Covariate("z");
    built.Covariate("x");
    built.Parameters({"b", "a"});
    built.model.SetDF(2.5);
    ASSERT_TRUE(built.SetUp());
    built.Beta("b", 1.25);
    built.Cell("a", "x", "2");
    built.model.GetPCovMatrix()->SetCell("a", "b", 0.5);
    EXPECT_EQ(Displayed(built.model),
              "Begin display of LRModel\n"
              "\n"
              "Begin display of RegressionModel.\n"
              "The target: y\n"
              "df = 2.5\n"
              "Target categories :  size = 1\n"
              "\tLRdummy\t0\n"
              "\n"
              "Parameters :  size = 2\n"
              "\ta\t1\n"
              "\tb\t0\n"
              "\n"
              "Predictors :  size = 2\n"
              "\tx\t1\n"
              "\tz\t0\n"
              "\n"
              "Begin display of ParamTable object.\n"
              "Number of categories = 1, number of parameters = 2\n"
              "\tBeta=1.25 df=1\tBeta=0 df=0\n"
              "\n"
              "End display of ParamTable object.\n"
              "PCovMatrix :  size = 2 by 2\n"
              "\t0\t0.5\n"
              "\t0.5\t0\n"
              "\n"
              "Begin display of PPCMatrix object.\n"
              "Number of parameters = 2, number of predictors = 2\n"
              "\t Null\t\t Null\t\n"
              "\t Null\t\t2\n"
              "\n"
              "End display of PPCMatrix object.\n"
              "End display of RegressionModel.\n"
              "End display of LRModel\n");
}

TEST(Display, CovariancesOfWhichNoneIsWrittenAreZeros)
{
    Built<LRModel> built("y");
    built.Parameters({"a", "b"});
    ASSERT_TRUE(built.SetUp());
    EXPECT_NE(Displayed(built.model).find("PCovMatrix :  size = 2 by 2\n\t0\t0\n\t0\t0\n\n"),
              std::string::npos);
}

TEST(Display, PiecesAreThereForOthers)
{
    const Built<LRModel> built("y");
    std::ostringstream out;
    built.model.DisplayMap("Names", {{"b", 0}, {"a", 1}}, out);
    built.model.DisplayMatrix("Numbers", {{1.5, 2}, {0, -3}}, out);
    EXPECT_EQ(out.str(),
              "Names :  size = 2\n\ta\t1\n\tb\t0\n\n"
              "Numbers :  size = 2 by 2\n\t1.5\t2\n\t0\t-3\n\n");
}

TEST(Display, EmptyCovarianceMatrixPrintsItsHeader)
{
    Built<GLRModel> built("y");
    built.model.CreatePCovMatrix();
    EXPECT_NE(Displayed(built.model).find("PCovMatrix :  size = 0 by 0\n\n"), std::string::npos);
}

}  // namespace
}  // namespace MCVelscore_850
