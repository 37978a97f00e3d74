#include "engine/documents/miningtreatments.h"

#include <gtest/gtest.h>

#include "engine/documents/documentloader.h"

namespace MCVelscore_850 {
namespace {

std::vector<MiningFieldTreatment> Read(const std::string& text)
{
    const Document document = LoadDocumentText(text, "model.pmml");
    return ReadMiningTreatments(document);
}

TEST(MiningTreatments, EveryFieldOfTheModelsSchemaIsRead)
{
    const auto treatments = Read(R"(<PMML version="4.4"><GeneralRegressionModel><MiningSchema>
        <MiningField name="x"/>
        <MiningField name="sex" invalidValueTreatment="asValue" invalidValueReplacement="f"
                     missingValueTreatment="asMode" missingValueReplacement="m"/>
        </MiningSchema></GeneralRegressionModel></PMML>)");
    ASSERT_EQ(treatments.size(), 2u);
    EXPECT_EQ(treatments[0].name, "x");
    EXPECT_EQ(treatments[0].invalidValueTreatment, "");
    EXPECT_EQ(treatments[1].name, "sex");
    EXPECT_EQ(treatments[1].invalidValueTreatment, "asValue");
    EXPECT_EQ(treatments[1].invalidValueReplacement, "f");
    EXPECT_EQ(treatments[1].missingValueTreatment, "asMode");
    EXPECT_EQ(treatments[1].missingValueReplacement, "m");
}

TEST(MiningTreatments, DocumentsWithoutASchemaHaveNone)
{
    EXPECT_TRUE(Read("<PMML version=\"4.4\"/>").empty());
    EXPECT_TRUE(Read("<PMML version=\"4.4\"><GeneralRegressionModel/></PMML>").empty());
    EXPECT_TRUE(Read("<zelt-ml><MiningSchema/></zelt-ml>").empty());
}

}  // namespace
}  // namespace MCVelscore_850
