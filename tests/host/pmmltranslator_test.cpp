#include "host/documents/pmmltranslator.h"

#include <gtest/gtest.h>

#include "dom.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"
#include "pmmlreader.h"
#include "vars.h"

namespace MCVelscore_850 {
namespace {

using Tags = PMMLModelTags;

class PMMLTranslatorTest : public testing::Test {
protected:
    void SetUp() override { StartXml(); }
};

TEST_F(PMMLTranslatorTest, UnknownEncodingIsRefusedAtOnce)
{
    EXPECT_EQ(RefusalOf([] { PmmlReader("nothing"); }), (Refusal{kUnknownEncoding, {"nothing"}}));
}

TEST_F(PMMLTranslatorTest, ArrayIsItsNumbersWhateverTheBlanks)
{
    PmmlReader reader;
    const Dom dom("<Array>\n\t1 -2.5   +3e2\r\n 0 </Array>");
    EXPECT_EQ(reader.VerifyDoubleArray(dom.Root(), 4),
              (std::vector<double>{1.0, -2.5, 300.0, 0.0}));
    EXPECT_TRUE(reader.VerifyDoubleArray(Dom("<Array> </Array>").Root(), 0).empty());
    EXPECT_TRUE(reader.VerifyDoubleArray(Dom("<Array/>").Root(), 0).empty());
}

TEST_F(PMMLTranslatorTest, ArrayOfAnotherLengthIsRefused)
{
    PmmlReader reader;
    const Dom dom("<Array>1 2 3</Array>");
    const auto read = [&](int count) {
        return RefusalOf([&] { reader.VerifyDoubleArray(dom.Root(), count); });
    };
    EXPECT_EQ(read(3), Refusal{});
    EXPECT_EQ(read(2), (Refusal{kArrayLength, {"3", "2"}}));
    EXPECT_EQ(read(4), (Refusal{kArrayLength, {"3", "4"}}));
    EXPECT_EQ(read(0), (Refusal{kArrayLength, {"3", "0"}}));
    EXPECT_EQ(read(-1), (Refusal{kArrayLength, {"3", "-1"}}));
}

TEST_F(PMMLTranslatorTest, ArrayWithAWordIsRefusedWithTheWord)
{
    PmmlReader reader;
    const Dom dom("<Array>1 two 3</Array>");
    EXPECT_EQ(RefusalOf([&] { reader.VerifyDoubleArray(dom.Root(), 3); }),
              (Refusal{kNotANumber, {"two", "Array"}}));
    const Dom commas("<Array>1,2,3</Array>");
    EXPECT_EQ(RefusalOf([&] { reader.VerifyDoubleArray(commas.Root(), 3); }),
              (Refusal{kNotANumber, {"1,2,3", "Array"}}));
}

TEST_F(PMMLTranslatorTest, EncoderIsGivenToCategoricalVariablesOnce)
{
    PmmlReader reader;
    DictVar text(TextType());
    DictVar number(NumberType());
    reader.SetupCatEncoder(nullptr);
    reader.SetupCatEncoder(&number);
    EXPECT_EQ(number.GetCatEncoder(), nullptr);
    reader.SetupCatEncoder(&text);
    const CatEncoder* encoder = text.GetCatEncoder();
    ASSERT_NE(encoder, nullptr);
    reader.SetupCatEncoder(&text);
    EXPECT_EQ(text.GetCatEncoder(), encoder);
}

TEST_F(PMMLTranslatorTest, MeasureLevelsHaveTheirPublishedNames)
{
    const PmmlReader reader;
    EXPECT_EQ(reader.ToString(ScoreDictVar::CONTINUOUS), "continuous");
    EXPECT_EQ(reader.ToString(ScoreDictVar::CATEGORICAL), "categorical");
    EXPECT_EQ(reader.ToString(ScoreDictVar::ORDINAL), "ordinal");
    EXPECT_EQ(reader.ToString(7), "7");
}

TEST(PMMLModelTags, TextsAreThoseOfDocuments)
{
    EXPECT_EQ(Tags::XML_ELE_REGRESSMODEL, "GeneralRegressionModel");
    EXPECT_EQ(Tags::XML_ATT_RM_TARGET_VAR, "targetVariableName");
    EXPECT_EQ(Tags::XML_ATT_PCC_TCol, "tCol");
    EXPECT_EQ(Tags::XML_ELM_BASECUMHAZARDTABLES, "BaseCumHazardTables");
    EXPECT_EQ(Tags::XML_EXT_NAME_COXREG_SUBJECT_VARIABLE, "subjectIDVariable");
    EXPECT_EQ(Tags::XML_VAL_EXTENSION_EXTENDER, "velscore");
    EXPECT_EQ(Tags::XML_VAL_MN_GZLM, "GZLM");
    EXPECT_EQ(Tags::XML_VAL_RM_EXT_VALUE_LINK_NLOGLOG, "nloglog");
    EXPECT_EQ(Tags::XML_VAL_RM_VALUE_LINK_LOGLOG, "loglog");
}

}  // namespace
}  // namespace MCVelscore_850
