#include "engine/documents/documentadapter.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/engine/adapted.h"

namespace MCVelscore_850 {
namespace {

TEST(DocumentAdapter, LeavesADocumentOfTheDialectUntouched)
{
    EXPECT_TRUE(Adapted(Parts().Text()).Untouched());
}

TEST(DocumentAdapter, LeavesTheOlderFormUntouched)
{
    EXPECT_TRUE(Adapted("<zelt-ml version='1.2.3'><MiningSchema><MiningField name='a'/>"
                        "<MiningField name='a'/></MiningSchema></zelt-ml>")
                    .Untouched());
}

TEST(DocumentAdapter, LeavesADocumentWithoutItsModelToTheReader)
{
    EXPECT_TRUE(Adapted("<PMML version='4.4'/>").Untouched());
    EXPECT_TRUE(Adapted("<PMML version='4.4'><DataDictionary/><TreeModel/></PMML>").Untouched());
    EXPECT_TRUE(Adapted("<PMML version='4.4'><GeneralRegressionModel modelType='regression'>"
                        "<ParamMatrix/></GeneralRegressionModel></PMML>")
                    .Untouched());
}

TEST(DocumentAdapter, SaysPlaceAndRuleInOneLine)
{
    const Adapted adapted("<!-- -->\n<PMML version='4.4.1'/>");
    ASSERT_EQ(adapted.adaptations.size(), 1u);
    Findings findings;
    const Adaptation& adaptation = adapted.adaptations[0];
    findings.AddAdapted(*adaptation.rule, adaptation.place, adaptation.change);
    ASSERT_EQ(findings.Kept().size(), 1u);
    EXPECT_EQ(findings.Kept()[0].ToString(),
              "line 2, column 1: version \"4.4.1\" is read as \"4.4\" [short-version]");
}

TEST(NamespacePrefix, IsDroppedFromEveryPmmlElement)
{
    const Adapted adapted(
        "<p:PMML version='4.4' xmlns:p='http://www.dmg.org/PMML-4_4'>"
        "<p:Header><p:Application name='x:y'/></p:Header></p:PMML>");
    EXPECT_EQ(adapted.Rules(), "namespace-prefix");
    EXPECT_EQ(adapted.after,
              "<PMML version='4.4' xmlns:p='http://www.dmg.org/PMML-4_4'>"
              "<Header><Application name='x:y'></></></>");
}

TEST(NamespacePrefix, IsFoundBelowARootWithoutOne)
{
    const Adapted adapted(
        "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'>"
        "<q:Header xmlns:q='http://www.dmg.org/PMML-4_4'><q:A/></q:Header></PMML>");
    EXPECT_EQ(adapted.Rules(), "namespace-prefix");
    EXPECT_TRUE(adapted.Has("<A></>"));
}

TEST(NamespacePrefix, OfTheRootIsDroppedUndeclaredTooAndSaysSo)
{
    const Adapted adapted("<p:PMML version='4.4'><p:Header/></p:PMML>");
    ASSERT_EQ(adapted.Rules(), "namespace-prefix");
    EXPECT_EQ(adapted.after, "<PMML version='4.4'><Header></></>");
    EXPECT_EQ(adapted.adaptations[0].change,
              "prefix \"p\" dropped from 2 elements; nothing declares it");
}

TEST(NamespacePrefix, OfAnotherVocabularyStays)
{
    EXPECT_TRUE(Adapted("<PMML version='4.4' xmlns:x='http://example.com/x'>"
                        "<Extension><x:Value/></Extension></PMML>")
                    .Untouched());
}

TEST(NamespacePrefix, GoesBeforeTheOtherRulesLook)
{
    const Adapted adapted(
        "<p:PMML version='4.4.1' xmlns:p='http://www.dmg.org/PMML-4_4'>"
        "<p:GeneralRegressionModel><p:MiningSchema><p:MiningField name='a'/>"
        "<p:MiningField name='a'/></p:MiningSchema><p:ParamMatrix/></p:GeneralRegressionModel>"
        "</p:PMML>");
    EXPECT_EQ(adapted.Rules(), "namespace-prefix short-version repeated-mining-field");
}

TEST(VersionFromNamespace, IsTakenWhenTheRootHasNone)
{
    const Adapted adapted("<PMML xmlns='http://www.dmg.org/PMML-4_2'/>");
    EXPECT_EQ(adapted.Rules(), "version-from-namespace");
    EXPECT_EQ(adapted.Root().Text("version"), "4.2");
    const Adapted prefixed("<p:PMML version='' xmlns:p='http://www.dmg.org/PMML-3_1'/>");
    EXPECT_EQ(prefixed.Root().Text("version"), "3.1");
}

TEST(VersionFromNamespace, IsNotTakenOverAVersionOrFromElsewhere)
{
    EXPECT_TRUE(Adapted("<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_2'/>").Untouched());
    EXPECT_TRUE(Adapted("<PMML/>").Untouched());
    EXPECT_TRUE(Adapted("<PMML xmlns='http://www.dmg.org/PMML'/>").Untouched());
    EXPECT_TRUE(Adapted("<PMML xmlns='http://www.dmg.org/PMML-4_x'/>").Untouched());
    EXPECT_TRUE(Adapted("<PMML xmlns='http://example.com/PMML-4_2'/>").Untouched());
}

TEST(ShortVersion, HasTwoParts)
{
    EXPECT_EQ(Adapted("<PMML version='4.4.1'/>").Root().Text("version"), "4.4");
    EXPECT_EQ(Adapted("<PMML version='3.2.1.0'/>").Root().Text("version"), "3.2");
}

TEST(ShortVersion, LeavesNumbersAndWhatIsNoVersion)
{
    for (const char* version : {"4.4", "4", "4.", ".4", "4..1", "4.4.x", "4.4.1-beta", "v4.4.1"}) {
        EXPECT_TRUE(Adapted("<PMML version='" + std::string(version) + "'/>").Untouched())
            << version;
    }
}

TEST(RepeatedMiningField, CountsOnceWhenAlike)
{
    Parts parts;
    parts.schema =
        "<MiningField name='y' usageType='target'/>"
        "<MiningField name='a' lowValue='1'/><MiningField name='b'/>"
        "<MiningField lowValue='1' name='a'/><MiningField name='a' lowValue='1'/>";
    const Adapted adapted(parts.Text());
    EXPECT_EQ(adapted.Rules(), "repeated-mining-field");
    EXPECT_TRUE(
        adapted.Has("<MiningSchema><MiningField name='y' usageType='target'></>"
                    "<MiningField lowValue='1' name='a'></><MiningField name='b'></></>"));
}

TEST(RepeatedMiningField, MayHoldWhatOtherMakersSigned)
{
    Parts parts;
    parts.schema =
        "<MiningField name='y' usageType='target'/>"
        "<MiningField name='a'><Extension extender='acme' name='n' value='1'/></MiningField>"
        "<MiningField name='a'/>";
    const Adapted adapted(parts.Text());
    EXPECT_EQ(adapted.Rules(), "repeated-mining-field");
}

TEST(RepeatedMiningField, StaysWhenItDiffers)
{
    // which of the two is meant only the author knows; the reader refuses the second
    for (const char* other : {"<MiningField name='a' lowValue='2'/>", "<MiningField name='a'/>",
                              "<MiningField name='a' highValue='1'/>",
                              "<MiningField name='a' lowValue='1' highValue='1'/>",
                              "<MiningField name='a' lowValue='1'><Extension/></MiningField>"}) {
        Parts parts;
        parts.schema =
            "<MiningField name='y' usageType='target'/>"
            "<MiningField name='a' lowValue='1'/><MiningField name='b'/>" +
            std::string(other);
        EXPECT_TRUE(Adapted(parts.Text()).Untouched()) << other;
    }
}

TEST(NumericCovariate, BecomesContinuous)
{
    for (const char* type : {"integer", "float", "double"}) {
        Parts parts;
        parts.fields =
            "<DataField name='y' optype='continuous' dataType='double'/>"
            "<DataField name='a' optype='categorical' dataType='" +
            std::string(type) + "'/><DataField name='b' optype='continuous' dataType='double'/>";
        const Adapted adapted(parts.Text());
        EXPECT_EQ(adapted.Rules(), "numeric-covariate") << type;
        EXPECT_TRUE(adapted.Has("name='a' optype='continuous'")) << type;
    }
}

TEST(NumericCovariate, LeavesTextFactorsAndFieldsOfOtherUse)
{
    const auto withField = [](const std::string& attributes) {
        Parts parts;
        parts.fields += "<DataField name='c' " + attributes + "/>";
        return parts;
    };
    // no covariate
    EXPECT_TRUE(Adapted(withField("optype='categorical' dataType='integer'").Text()).Untouched());
    // a covariate of text: the reader refuses it
    Parts text = withField("optype='categorical' dataType='string'");
    text.covariates += "<Predictor name='c'/>";
    text.model = "modelType='generalLinear'";
    EXPECT_TRUE(Adapted(text.Text()).Untouched());
    // a numeric factor
    Parts factor = withField("optype='categorical' dataType='integer'");
    factor.factors = "<Predictor name='c'/>";
    factor.model = "modelType='generalLinear'";
    EXPECT_TRUE(Adapted(factor.Text()).Untouched());
    // both at once is no document that can be mended
    factor.covariates += "<Predictor name='c'/>";
    EXPECT_TRUE(Adapted(factor.Text()).Untouched());
}

TEST(ReplacementNoNumber, IsDroppedFromAContinuousField)
{
    for (const char* text : {"NA", "NaN", "INF", "mean", "1,5", "0x10", " "}) {
        Parts parts;
        parts.schema =
            "<MiningField name='y' usageType='target'/>"
            "<MiningField name='a' missingValueReplacement='" +
            std::string(text) + "'/><MiningField name='b' missingValueReplacement='2'/>";
        const Adapted adapted(parts.Text());
        EXPECT_EQ(adapted.Rules(), "replacement-no-number") << text;
        EXPECT_TRUE(adapted.Has("<MiningField name='a'></>")) << text;
        EXPECT_TRUE(adapted.Has("<MiningField missingValueReplacement='2' name='b'></>")) << text;
    }
}

TEST(ReplacementNoNumber, StaysWhereItIsANumberOrTheFieldIsNone)
{
    for (const char* text : {"0", "-1.5", "+2", "1e-400", " 3 ", ""}) {
        Parts parts;
        parts.schema =
            "<MiningField name='y' usageType='target'/><MiningField name='b'/>"
            "<MiningField name='a' missingValueReplacement='" +
            std::string(text) + "'/>";
        EXPECT_TRUE(Adapted(parts.Text()).Untouched()) << text;
    }
    // too large a number is one all the same: dropping it would hide a fault
    Parts large;
    large.schema += "<MiningField name='c' missingValueReplacement='1e999'/>";
    large.fields += "<DataField name='c' optype='continuous' dataType='double'/>";
    EXPECT_TRUE(Adapted(large.Text()).Untouched());

    Parts category;
    category.schema += "<MiningField name='c' missingValueReplacement='none'/>";
    category.fields += "<DataField name='c' optype='categorical' dataType='string'/>";
    EXPECT_TRUE(Adapted(category.Text()).Untouched());
}

TEST(ReplacementNoNumber, SeesDerivedFieldsAndCovariatesMadeContinuous)
{
    Parts parts;
    parts.fields =
        "<DataField name='y' optype='continuous' dataType='double'/>"
        "<DataField name='a' optype='categorical' dataType='double'/>"
        "<DataField name='b' optype='continuous' dataType='double'/>";
    parts.before =
        "<LocalTransformations><DerivedField name='d' optype='continuous' "
        "dataType='double'/></LocalTransformations>";
    parts.schema =
        "<Extension extender='velscore' name='derivedField'>"
        "<MiningField name='d' missingValueReplacement='none'/></Extension>"
        "<MiningField name='y' usageType='target'/><MiningField name='b'/>"
        "<MiningField name='a' missingValueReplacement='none'/>";
    const Adapted adapted(parts.Text());
    EXPECT_EQ(adapted.Rules(), "numeric-covariate replacement-no-number");
    EXPECT_FALSE(adapted.Has("missingValueReplacement"));
}

}  // namespace
}  // namespace MCVelscore_850
