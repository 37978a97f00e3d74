#include "host/model/modelfamilies.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "host/model/modeldescription.h"
#include "host/model/scoreresult.h"

namespace MCVelscore_850 {
namespace {

TEST(ModelFamilies, EverySelectionLeadsToARowAndEveryRowIsSelected)
{
    std::set<FamilyCode> selected;
    for (const FamilySelection& selection : FamilySelections()) {
        EXPECT_EQ(FamilyOf(selection.code).code, selection.code);
        selected.insert(selection.code);
    }
    std::set<FamilyCode> rows;
    for (const ModelFamily& family : ModelFamilies()) {
        EXPECT_TRUE(rows.insert(family.code).second) << family.name;
    }
    // The two that a generalized selector stands for are told apart by the document's options.
    EXPECT_EQ(selected, rows);
}

TEST(ModelFamilies, TheDocumentationNamesEverySelectionAsItsFamily)
{
    std::ifstream file("docs/documents.md");
    ASSERT_TRUE(file);
    std::stringstream page;
    page << file.rdbuf();
    std::vector<std::string> lines;
    for (std::string line; std::getline(page, line);) lines.push_back(line);
    for (const FamilySelection& selection : FamilySelections()) {
        if (selection.versions == FamilySelection::BelowSelectors) continue;
        const std::string name = FamilyOf(selection.code).name;
        const std::string& type = selection.modelTypes.front();
        const bool told = std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
            const bool selects = selection.selectors.empty() ||
                                 line.find(selection.selectors.front().get()) != std::string::npos;
            return line.find("| " + type) == 0 && line.find(name) != std::string::npos && selects;
        });
        EXPECT_TRUE(told) << type << ": " << name;
    }
}

TEST(ModelFamilies, ResultsFollowTheTarget)
{
    ModelDescription description;
    DescribeFamily(kGeneralizedLinear, description);
    EXPECT_EQ(description.resultType, ScoreResult::LR_RESULT);
    EXPECT_EQ(description.className, "GZLRModel");
    description.targetCategories = {"no", "yes"};
    DescribeFamily(kGeneralizedLinear, description);
    EXPECT_EQ(description.resultType, ScoreResult::MLR_RESULT);
    DescribeFamily(kConditional, description);
    EXPECT_EQ(description.resultType, ScoreResult::CLR_RESULT);
    EXPECT_FALSE(description.takesStatusOnly);
}

TEST(ModelFamilies, SelectorsBelongToTheirModelTypes)
{
    EXPECT_TRUE(IsSelector("multinomialLogistic", "contrastLogistic"));
    EXPECT_FALSE(IsSelector("generalLinear", "contrastLogistic"));
    EXPECT_EQ(FindFamily("multinomialLogistic", 3.0, "contrastLogistic"), kMultinomial);
    EXPECT_EQ(FindFamily("multinomialLogistic", 3.1, "contrastLogistic"), kBinary);
    EXPECT_EQ(FindFamily("unheard", 4.4, ""), std::nullopt);
}

}  // namespace
}  // namespace MCVelscore_850
