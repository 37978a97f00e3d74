#include <gtest/gtest.h>

#include "host/variables/catencoder.h"
#include "host/variables/scoredictvar.h"
#include "host/variables/varstats.h"
#include "readers/codes.h"
#include "tests/models/modelfixture.h"
#include "tests/readers/readdocument.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

// kLinearDocument with one more field z, and its mining field as given.
std::string WithField(const std::string& miningField, const std::string& version = "4.2",
                      const std::string& optype = "continuous")
{
    std::string text = With(
        kLinearDocument, "</DataDictionary>",
        "<DataField name=\"z\" optype=\"" + optype + "\" dataType=\"double\"/></DataDictionary>");
    text = With(text, "version=\"4.2\"", "version=\"" + version + "\"");
    return With(text, "</MiningSchema>", miningField + "</MiningSchema>");
}

TEST(MiningSchema, FieldWithoutUsageTypeIsActive)
{
    const auto model = ReadModel(WithField("<MiningField name=\"z\"/>"));
    EXPECT_EQ(model->GetVarRole("z"), ScoreModel::ROLE_PREDICTOR);
    EXPECT_EQ(
        ReadModel(WithField("<MiningField name=\"z\" usageType=\"active\"/>"))->GetVarRole("z"),
        ScoreModel::ROLE_PREDICTOR);
}

TEST(MiningSchema, FieldOfAnotherUsageGetsNoRoleButItsLimitsAreRead)
{
    const auto model = ReadModel(WithField(
        "<MiningField name=\"z\" usageType=\"supplementary\" lowValue=\"1\" highValue=\"2\"/>"));
    EXPECT_EQ(model->GetVarRole("z"), ScoreModel::ROLE_NONE);
    const VarStats* stats = model->GetDictionary()->GetVar("z")->GetVarStats();
    ASSERT_NE(stats, nullptr);
    EXPECT_EQ(stats->GetMinimum(), 1.0);
    EXPECT_EQ(stats->GetMaximum(), 2.0);
    EXPECT_EQ(stats->GetMean(), kSysmis);
    EXPECT_EQ(stats->GetMissingReplacement(), nullptr);
}

TEST(MiningSchema, FieldWithoutLimitsHasNoStats)
{
    EXPECT_EQ(ReadModel(kLinearDocument)->GetDictionary()->GetVar("x")->GetVarStats(), nullptr);
}

TEST(MiningSchema, ReplacementIsKept)
{
    const auto model =
        ReadModel(With(kLinearDocument, "<MiningField name=\"x\"/>",
                       "<MiningField name=\"x\" missingValueReplacement=\" 2.5 \"/>"));
    const VarStats* stats = model->GetDictionary()->GetVar("x")->GetVarStats();
    ASSERT_NE(stats, nullptr);
    EXPECT_EQ(stats->GetMissingReplacement()->GetDouble(), 2.5);
    EXPECT_EQ(model->GetMissingValuePolicy(), ScoreModel::MV_SUBSTITUTE);
}

TEST(MiningSchema, CategoricalFieldTakesNoLimitsWhateverTheyAre)
{
    const auto model = ReadModel(
        WithField("<MiningField name=\"z\" lowValue=\"nonsense\" missingValueReplacement=\"x\" "
                  "outliers=\"asExtremeValues\"/>",
                  "4.3", "categorical"));
    const ScoreDictVar* z = model->GetDictionary()->GetVar("z");
    EXPECT_EQ(z->GetVarStats(), nullptr);
    EXPECT_EQ(z->GetOutlierTreatment(), ScoreDictVar::AS_IS);
    EXPECT_NE(z->GetCatEncoder(), nullptr);
}

TEST(MiningSchema, OutlierTreatmentIsReadForEveryVersion)
{
    const auto treatment = [](const char* outliers) {
        return ReadModel(WithField(std::string("<MiningField name=\"z\" outliers=\"") + outliers +
                                   "\"/>"))
            ->GetDictionary()
            ->GetVar("z")
            ->GetOutlierTreatment();
    };
    EXPECT_EQ(treatment("asMissingValues"), ScoreDictVar::AS_MISSING);
    EXPECT_EQ(treatment("asExtremeValues"), ScoreDictVar::AS_EXTREME);
    EXPECT_EQ(treatment("asIs"), ScoreDictVar::AS_IS);
    EXPECT_EQ(treatment("nonsense"), ScoreDictVar::AS_IS);
}

TEST(MiningSchema, ExtremeValuesNeedBothLimitsFromVersion43On)
{
    const char* low = "<MiningField name=\"z\" outliers=\"asExtremeValues\" highValue=\"2\"/>";
    const char* high = "<MiningField name=\"z\" outliers=\"asExtremeValues\" lowValue=\"1\"/>";
    EXPECT_EQ(RefusalOf(WithField(low, "4.2")).GetErrorCode(), 0);
    EXPECT_EQ(RefusalOf(WithField(low, "4.3")).GetErrorCode(), 260117);
    EXPECT_EQ(RefusalOf(WithField(low, "4.3")).GetArguments(),
              (std::vector<std::string>{"lowValue", "MiningField"}));
    EXPECT_EQ(RefusalOf(WithField(high, "4.4")).GetErrorCode(), 260118);
    EXPECT_EQ(RefusalOf(WithField(high, "4.4")).GetArguments(),
              (std::vector<std::string>{"highValue", "MiningField"}));
    const char* neither = "<MiningField name=\"z\" outliers=\"asExtremeValues\"/>";
    EXPECT_EQ(RefusalOf(WithField(neither, "4.3")).GetErrorCode(), 260117);
    EXPECT_EQ(RefusalOf(WithField("<MiningField name=\"z\" outliers=\"asMissingValues\"/>", "4.3"))
                  .GetErrorCode(),
              0);
}

// What is wrong with the target is the model's affair, not the last field's.
TEST(MiningSchema, ATargetThatLacksIsToldOfTheModel)
{
    const VSException none = RefusalOf(With(kLinearDocument, " usageType=\"target\"", ""));
    EXPECT_EQ(none.GetErrorCode(), kNoTarget);
    EXPECT_EQ(none.GetPlace().path, "PMML/GeneralRegressionModel");
    const VSException other =
        RefusalOf(With(kLinearDocument, "modelDF=", "targetVariableName=\"x\" modelDF="));
    EXPECT_EQ(other.GetErrorCode(), kTargetsDiffer);
    EXPECT_EQ(other.GetPlace().path, "PMML/GeneralRegressionModel");
}

TEST(MiningSchema, DerivedFieldIsKnownThroughItsExtensionAlone)
{
    const std::string derived =
        With(kLinearDocument, "<GeneralRegressionModel",
             "<TransformationDictionary><DerivedField name=\"d\" optype=\"continuous\" "
             "dataType=\"double\"><FieldRef field=\"x\"/></DerivedField></TransformationDictionary>"
             "<GeneralRegressionModel");
    const auto with = [&](const std::string& fields) {
        return With(derived, "</MiningSchema>", fields + "</MiningSchema>");
    };
    EXPECT_EQ(RefusalOf(with("<MiningField name=\"d\"/>")).GetErrorCode(), 260125);
    const std::string extension = "<Extension extender=\"velscore\" name=\"derivedField\">";
    const auto model = ReadModel(
        with(extension + "<MiningField name=\"d\" missingValueReplacement=\"3\"/></Extension>"));
    EXPECT_EQ(model->GetVarRole("d"), ScoreModel::ROLE_PREDICTOR);
    EXPECT_EQ(model->GetTransformationDictionary()
                  ->GetVar("d")
                  ->GetVarStats()
                  ->GetMissingReplacement()
                  ->GetDouble(),
              3.0);
    // A field of the data stays one there.
    const auto ofData = ReadModel(With(with(extension + "<MiningField name=\"w\"/></Extension>"),
                                       "<MiningField name=\"w\"/>", ""));
    EXPECT_EQ(ofData->GetVarRole("w"), ScoreModel::ROLE_COVARIATE);
    const VSException empty = RefusalOf(with(extension + "</Extension>"));
    EXPECT_EQ(empty.GetErrorCode(), 260115);
    EXPECT_EQ(empty.GetArguments(), (std::vector<std::string>{"MiningField", "derivedField"}));
    // Other extensions are passed over, and without derived fields this one too.
    for (const char* other : {"extender=\"other\" name=\"derivedField\"", "name=\"derivedField\"",
                              "extender=\"velscore\" name=\"other\"", "extender=\"velscore\""}) {
        // It isn't looked at: its one field would be a target beside the target.
        const std::string field = "<MiningField name=\"d\" usageType=\"target\"/>";
        const std::string passed = std::string("<Extension ") + other + ">";
        EXPECT_EQ(RefusalOf(with(passed + field + "</Extension>")).GetErrorCode(), 0) << other;
    }
    EXPECT_EQ(RefusalOf(With(kLinearDocument, "</MiningSchema>",
                             extension + "</Extension></MiningSchema>"))
                  .GetErrorCode(),
              0);
}

TEST(MiningSchema, BelowVersion31ItMayBeAbsentAndTheAttributeNamesTheTarget)
{
    std::string bare = With(kLinearDocument, "version=\"4.2\"", "version=\"3.0\"");
    const size_t from = bare.find("<MiningSchema>");
    bare.erase(from, bare.find("</MiningSchema>") + 15 - from);
    EXPECT_EQ(RefusalOf(bare).GetErrorCode(), 260115);  // no target attribute either
    const std::string named = With(bare, "modelDF", "targetVariableName=\"y\" modelDF");
    const auto model = ReadModel(named);
    EXPECT_EQ(model->GetTargetVar()->GetName(), "y");
    const VSException unknown = RefusalOf(With(named, "Name=\"y\"", "Name=\"q\""));
    EXPECT_EQ(unknown.GetErrorCode(), 260125);
    EXPECT_EQ(unknown.GetArguments().at(0), "q");
}

TEST(MiningSchema, FromVersion31OnItIsNeededAndTheAttributeIsNot)
{
    const std::string attributeless = With(kLinearDocument, "version=\"4.2\"", "version=\"3.1\"");
    EXPECT_EQ(RefusalOf(attributeless).GetErrorCode(), 0);
    std::string bare = With(attributeless, "modelDF", "targetVariableName=\"y\" modelDF");
    const size_t from = bare.find("<MiningSchema>");
    bare.erase(from, bare.find("</MiningSchema>") + 15 - from);
    EXPECT_EQ(RefusalOf(bare).GetArguments(), (std::vector<std::string>{"MiningSchema", "PMML"}));
    // 3.09 is below 3.1: versions are numbers.
    EXPECT_EQ(RefusalOf(With(bare, "version=\"3.1\"", "version=\"3.09\"")).GetErrorCode(), 0);
}

TEST(MiningSchema, ExtremeValuesWithBothLimitsAreTakenInEveryVersion)
{
    const auto model = ReadModel(WithField(
        "<MiningField name=\"z\" outliers=\"asExtremeValues\" lowValue=\"2\" highValue=\"1\"/>",
        "4.3"));
    const ScoreDictVar* z = model->GetDictionary()->GetVar("z");
    EXPECT_EQ(z->GetOutlierTreatment(), ScoreDictVar::AS_EXTREME);
    EXPECT_EQ(z->GetVarStats()->GetMinimum(), 2.0);  // that low lies below high isn't asked
    EXPECT_EQ(z->GetVarStats()->GetMaximum(), 1.0);
}

TEST(MiningSchema, ChildOfAnyTagIsAField)
{
    const auto model = ReadModel(WithField("<Field name=\"z\"/>"));
    EXPECT_EQ(model->GetVarRole("z"), ScoreModel::ROLE_PREDICTOR);
}

TEST(MiningSchema, ReplacementThatIsTheSystemMissingNumberKeepsThePolicy)
{
    const auto model = ReadModel(
        With(kLinearDocument, "<MiningField name=\"x\"/>",
             "<MiningField name=\"x\" missingValueReplacement=\"-1.7976931348623157e308\"/>"));
    EXPECT_EQ(model->GetMissingValuePolicy(), ScoreModel::MV_SUBSTITUTE);
}

TEST(MiningSchema, EmptyTargetAttributeCountsAsAbsent)
{
    const std::string empty = With(kLinearDocument, "modelDF", "targetVariableName=\"\" modelDF");
    EXPECT_EQ(RefusalOf(empty).GetErrorCode(), 0);
    EXPECT_EQ(RefusalOf(With(empty, "version=\"4.2\"", "version=\"3.0\"")).GetErrorCode(), 260115);
}

}  // namespace
}  // namespace MCVelscore_850
