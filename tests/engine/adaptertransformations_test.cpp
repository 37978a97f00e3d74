#include <gtest/gtest.h>

#include "tests/engine/adapted.h"

namespace MCVelscore_850 {
namespace {

constexpr const char* kGlobalA = "<DerivedField name='a'><Constant>1</Constant></DerivedField>";
constexpr const char* kGlobalF = "<DefineFunction name='f'><Constant>1</Constant></DefineFunction>";
constexpr const char* kLocalA = "<DerivedField name='a'><Constant>2</Constant></DerivedField>";
constexpr const char* kLocalB = "<DerivedField name='b'><Constant>3</Constant></DerivedField>";

std::string WithSections(const std::string& global, const std::string& local)
{
    return "<PMML version='4.4'>" + global + "<GeneralRegressionModel>" + local +
           "<ParamMatrix/></GeneralRegressionModel></PMML>";
}

std::string Global(const std::string& content)
{
    return "<TransformationDictionary>" + content + "</TransformationDictionary>";
}
std::string Local(const std::string& content)
{
    return "<LocalTransformations>" + content + "</LocalTransformations>";
}

TEST(MergedTransformations, GlobalDefinitionsGoBeforeTheLocalOnes)
{
    const Adapted adapted(WithSections(Global(std::string(kGlobalA) + kGlobalF), Local(kLocalB)));
    EXPECT_EQ(adapted.Rules(), "merged-transformations");
    EXPECT_FALSE(adapted.Has("TransformationDictionary"));
    const size_t a = adapted.after.find("DerivedField name='a'");
    const size_t f = adapted.after.find("DefineFunction name='f'");
    const size_t b = adapted.after.find("DerivedField name='b'");
    ASSERT_NE(b, std::string::npos);
    EXPECT_LT(a, f);
    EXPECT_LT(f, b);
    EXPECT_NE(adapted.adaptations[0].change.find("\"a\", \"f\""), std::string::npos);
}

TEST(MergedTransformations, LocalNamesWin)
{
    const Adapted adapted(WithSections(Global(std::string(kGlobalA) + kGlobalF), Local(kLocalA)));
    EXPECT_EQ(adapted.Rules(), "merged-transformations");
    const size_t first = adapted.after.find("DerivedField name='a'");
    EXPECT_EQ(adapted.after.find("DerivedField name='a'", first + 1), std::string::npos);
    EXPECT_EQ(adapted.adaptations[0].change.find("\"a\""), std::string::npos);
}

TEST(MergedTransformations, OneSectionAloneStays)
{
    EXPECT_TRUE(Adapted(WithSections(Global(kGlobalA), "")).Untouched());
    EXPECT_TRUE(Adapted(WithSections("", Local(kLocalA))).Untouched());
    EXPECT_TRUE(Adapted(WithSections(Global(kGlobalA), Local(kLocalA))).Untouched());
    EXPECT_TRUE(Adapted(WithSections(Global("<Extension/>"), Local(kLocalA))).Untouched());
}

// A multinomial model with those covariance cells.
std::string WithCovariances(const std::string& attributes, const std::string& cells)
{
    Parts parts;
    parts.model = attributes;
    parts.covariances = cells;
    return parts.Text();
}

constexpr const char* kPlainCell = "<PCovCell pRow='pa' pCol='pa' value='1'/>";
constexpr const char* kCategoryCell = "<PCovCell pRow='pa' pCol='pa' tRow='x' tCol='x' value='1'/>";

TEST(CovarianceCategories, AreNeededByAMultinomialModelAlone)
{
    const Adapted adapted(WithCovariances("modelType='multinomialLogistic'", kPlainCell));
    EXPECT_EQ(adapted.Rules(), "covariance-categories");
    EXPECT_FALSE(adapted.Has("PCovMatrix"));

    EXPECT_TRUE(
        Adapted(WithCovariances("modelType='multinomialLogistic'", kCategoryCell)).Untouched());
    // mixed ones are a fault that the reader tells
    EXPECT_TRUE(Adapted(WithCovariances("modelType='multinomialLogistic'",
                                        std::string(kPlainCell) + kCategoryCell))
                    .Untouched());
    EXPECT_TRUE(
        Adapted(WithCovariances("modelType='multinomialLogistic' algorithmName='GZLM'", kPlainCell))
            .Untouched());
    EXPECT_TRUE(Adapted(WithCovariances("modelType='generalLinear'", kPlainCell)).Untouched());
}

}  // namespace
}  // namespace MCVelscore_850
