// What is found in the fields of the dictionary and of the mining schema.

#include <string>

#include <gtest/gtest.h>

#include "engine/documents/audit/fieldvalues.h"
#include "tests/engine/adapted.h"
#include "tests/engine/auditedfields.h"
#include "tests/readers/legacyparts.h"

namespace MCVelscore_850 {
namespace {

class FieldFault : public testing::TestWithParam<FaultRow> {};

TEST_P(FieldFault, IsToldWithItsPlace) { ExpectFault(kFieldsDocument, GetParam(), FieldRules()); }

const FaultRow kFaults[] = {
    {{"<Value value=\"blue\"/>", "<Value value=\"red\"/>"},
     "repeated-value",
     Answer::Fault,
     R"(<Value value="red"/>
<Value value="?")",
     "value",
     "red"},
    // equal numbers are one category
    {{"<Value value=\"2\"/>", "<Value value=\"1.0\"/>"},
     "repeated-value",
     Answer::Fault,
     R"(<Value value="1.0"/>)",
     "value",
     "1.0"},
    {{"<Value value=\"?\"", "<Value value=\"red\""},
     "value-of-two-properties",
     Answer::Fault,
     R"(<Value value="red" property)",
     "value",
     "red"},
    {{"<Value value=\"true\"/>",
      "<Value value=\"TRUE\" property=\"missing\"/><Value value=\"1\"/>"},
     "value-of-two-properties",
     Answer::Fault,
     R"(<Value value="1"/><Value value="false")",
     "value",
     "1"},
    {{"<Value value=\"true\"/>", "<Value value=\"yes\"/>"},
     "boolean-value",
     Answer::Fault,
     R"(<Value value="yes"/>)",
     "value",
     "yes"},
    {{"leftMargin=\"6\" rightMargin=\"9\"", "leftMargin=\"9\" rightMargin=\"6\""},
     "empty-interval",
     Answer::Fault,
     R"(<Interval closure="closedClosed" leftMargin="9")",
     "leftMargin",
     "[9, 6]"},
    {{"leftMargin=\"0\" rightMargin=\"5\"", "leftMargin=\"5\" rightMargin=\"5\""},
     "empty-interval",
     Answer::Fault,
     R"(<Interval closure="closedOpen" leftMargin="5")",
     "leftMargin",
     "[5, 5)"},
    {{"leftMargin=\"2020-01-01\" rightMargin=\"2021-01-01\"",
      "leftMargin=\"2021-01-01\" rightMargin=\"2020-01-01\""},
     "empty-interval",
     Answer::Fault,
     R"(<Interval closure="closedOpen" leftMargin="2021)",
     "leftMargin",
     "[2021-01-01, 2020-01-01)"},
    {{"leftMargin=\"6\"", "leftMargin=\"4.5\""},
     "overlapping-intervals",
     Answer::Fault,
     R"(<Interval closure="closedClosed" leftMargin="4.5")",
     "leftMargin",
     "[4.5, 9]"},
    {{"leftMargin=\"0\" rightMargin=\"5\"", "rightMargin=\"7\""},
     "overlapping-intervals",
     Answer::Fault,
     R"(<Interval closure="closedClosed")",
     "leftMargin",
     "[6, 9]"},
    {{"<MiningField name=\"n\"/>",
      "<MiningField name=\"n\"/><MiningField name=\"f\" importance=\"1\"/>"},
     "repeated-field",
     Answer::Fault,
     R"(<MiningField name="f" importance)",
     "name",
     "f"},
    {{"<MiningField name=\"f\"/>", "<MiningField name=\"f\" usageType=\"supplementary\"/>"},
     "inactive-predictor",
     Answer::Fault,
     R"(<MiningField name="f")",
     "usageType",
     "supplementary"},
    {{"<MiningField name=\"x\"", "<MiningField name=\"x\" usageType=\"target\""},
     "inactive-predictor",
     Answer::Fault,
     R"(<MiningField name="x")",
     "usageType",
     "target"},
    {{"lowValue=\"1\" highValue=\"9\"", "lowValue=\"9\" highValue=\"1\""},
     "turned-limits",
     Answer::Fault,
     R"(<MiningField name="x")",
     "lowValue",
     "9"},
    {{"lowValue=\"1\" highValue=\"9\" outliers=\"asExtremeValues\"",
      "lowValue=\"9\" highValue=\"1\" outliers=\"asIs\""},
     "unused-turned-limits",
     Answer::Notice,
     R"(<MiningField name="x")",
     "lowValue",
     "9"},
    {{"lowValue=\"1\" highValue=\"9\" outliers=\"asExtremeValues\"",
      "outliers=\"asMissingValues\""},
     "outliers-without-limits",
     Answer::Notice,
     R"(<MiningField name="x")",
     "outliers",
     "asMissingValues"},
    {{"<MiningField name=\"f\"/>", "<MiningField name=\"f\" invalidValueTreatment=\"asValue\"/>"},
     "no-invalid-replacement",
     Answer::Fault,
     R"(<MiningField name="f")",
     "invalidValueReplacement",
     ""},
    {{"<MiningField name=\"f\"/>", "<MiningField name=\"f\" invalidValueReplacement=\"red\"/>"},
     "unused-replacement",
     Answer::Notice,
     R"(<MiningField name="f")",
     "invalidValueReplacement",
     "red"},
    {{"<MiningField name=\"f\"/>", "<MiningField name=\"f\" missingValueTreatment=\"asMode\"/>"},
     "no-missing-replacement",
     Answer::Notice,
     R"(<MiningField name="f")",
     "missingValueTreatment",
     "asMode"},
};

INSTANTIATE_TEST_SUITE_P(Fields, FieldFault, testing::ValuesIn(kFaults));

class SoundField : public testing::TestWithParam<Edit> {};

TEST_P(SoundField, IsPassedOver) { ExpectSilence(kFieldsDocument, GetParam(), FieldRules()); }

const Edit kSound[] = {
    {"<PMML", "<PMML"},
    // another field's value, and two spellings of a truth
    {"<Value value=\"1\"/>", "<Value value=\"3\"/>"},
    {"<Value value=\"true\"/>", "<Value value=\"T\"/><Value value=\"true\"/>"},
    {"<Value value=\"true\"/>", "<Value value=\"?\" property=\"missing\"/><Value value=\"true\"/>"},
    {"<Value value=\"?\" property=\"missing\"/>",
     "<Value value=\"?\" property=\"missing\"/><Value value=\"?\" property=\"missing\"/>"},
    // texts apart by case are two categories
    {"<Value value=\"blue\"/>", "<Value value=\"Red\"/><Value value=\"blue\"/>"},
    // one value alone; margins that meet, in both or in neither
    {"closure=\"closedClosed\" leftMargin=\"6\" rightMargin=\"9\"",
     "closure=\"closedClosed\" leftMargin=\"9\" rightMargin=\"9\""},
    {"leftMargin=\"6\"", "leftMargin=\"5\""},
    {"closure=\"closedOpen\" leftMargin=\"0\" rightMargin=\"5\"",
     "closure=\"closedClosed\" leftMargin=\"0\" rightMargin=\"6\""},
    {"leftMargin=\"0\" rightMargin=\"5\"", "rightMargin=\"5\""},
    // one limit, equal limits, limits that say nothing
    {"lowValue=\"1\" highValue=\"9\"", "lowValue=\"9\" highValue=\"9\""},
    {"lowValue=\"1\" highValue=\"9\" outliers=\"asExtremeValues\"",
     "lowValue=\"9\" outliers=\"asMissingValues\""},
    {"<MiningField name=\"f\"/>", "<MiningField name=\"f\" usageType=\"active\"/>"},
    {"<MiningField name=\"f\"/>",
     "<MiningField name=\"f\" invalidValueTreatment=\"asValue\" invalidValueReplacement=\"red\"/>"},
    {"<MiningField name=\"f\"/>",
     "<MiningField name=\"f\" missingValueTreatment=\"asMode\" missingValueReplacement=\"red\"/>"},
    {"<MiningField name=\"f\"/>", "<MiningField name=\"f\" missingValueTreatment=\"asIs\"/>"},
};

INSTANTIATE_TEST_SUITE_P(Fields, SoundField, testing::ValuesIn(kSound));

TEST(FieldFaults, NameFieldAndText)
{
    const Audited audited(Edited(kFieldsDocument, {"leftMargin=\"6\"", "leftMargin=\"4.5\""}));
    EXPECT_EQ(audited.Of("overlapping-intervals").ToString(),
              "line 6, column 1: Interval \"[4.5, 9]\" of the field \"x\" overlaps with "
              "\"[0, 5)\" [overlapping-intervals]");
}

TEST(FieldFaults, OfTheOlderFormStandAtItsCategories)
{
    LegacyParts parts;
    parts.variables += OldVariable("f", "STRING", "NOMINAL", OldCategories({"red", "blue", "red"}));
    const Audited audited(parts.Text());
    ASSERT_EQ(audited.Rules(Answer::Fault), "repeated-value");
    const Finding finding = audited.Of("repeated-value");
    EXPECT_TRUE(finding.place.path.ends_with("categories/category[3]")) << finding.place.path;
    EXPECT_EQ(finding.text, "category \"red\" of the field \"f\" stands twice");
}

// Every pair of a hundred thousand values would take minutes.
TEST(FieldFaults, AreFoundInManyValues)
{
    std::string values;
    for (int i = 0; i < 100'000; ++i) values += "<Value value=\"v" + std::to_string(i) + "\"/>";
    values += "<Value value=\"v7\"/>";
    const Audited audited(Edited(kFieldsDocument, {"<Value value=\"blue\"/>", values}));
    EXPECT_EQ(audited.findings.CountOf("repeated-value"), 1u);
    EXPECT_EQ(audited.Of("repeated-value").found, "v7");
}

TEST(ReplacementThatIsNoNumber, OfInvalidValuesIsDroppedWithItsTreatment)
{
    const Adapted adapted(Edited(kFieldsDocument, {"<MiningField name=\"x\"",
                                                   "<MiningField name=\"x\" "
                                                   "invalidValueTreatment=\"asValue\" "
                                                   "invalidValueReplacement=\"NA\""}));
    EXPECT_EQ(adapted.Rules(), "replacement-no-number");
    EXPECT_EQ(adapted.adaptations[0].change,
              "invalidValueReplacement \"NA\" of \"x\" is no number and is dropped");
    EXPECT_TRUE(adapted.adaptations[0].place.path.ends_with("MiningSchema/MiningField[2]"))
        << adapted.adaptations[0].place.path;
    EXPECT_FALSE(adapted.Has("invalidValue"));
}

TEST(ReplacementThatIsNoNumber, OfInvalidValuesStaysWhereItIsUsed)
{
    for (const char* attributes :
         {"name=\"x\" invalidValueTreatment=\"asValue\" invalidValueReplacement=\"3\"",
          "name=\"x\" invalidValueTreatment=\"asMissing\" invalidValueReplacement=\"NA\""}) {
        const std::string field = std::string("<MiningField ") + attributes;
        EXPECT_TRUE(
            Adapted(Edited(kFieldsDocument, {"<MiningField name=\"x\"", field})).Untouched())
            << attributes;
    }
}

TEST(FieldInterval, IsReadWhereTheReaderTakesIt)
{
    const struct {
        const char* attributes;
        const char* dataType;
        const char* text;  // none where nothing is read
    } kRows[] = {
        {"closure='closedOpen' leftMargin='0' rightMargin='5'", "double", "[0, 5)"},
        {"closure='openOpen' rightMargin='5'", "double", "(, 5)"},
        {"closure='openClosed' leftMargin='2020-01-01'", "date", "(2020-01-01, ]"},
        {"closure='closed' leftMargin='0' rightMargin='5'", "double", nullptr},
        {"leftMargin='0' rightMargin='5'", "double", nullptr},
        {"closure='closedOpen' leftMargin='low' rightMargin='5'", "double", nullptr},
        {"closure='closedOpen' leftMargin='0' rightMargin='high'", "double", nullptr},
        {"closure='closedOpen' leftMargin='today'", "date", nullptr},
    };
    for (const auto& row : kRows) {
        const Document document =
            LoadDocumentText("<PMML><Interval " + std::string(row.attributes) + "/></PMML>", "m");
        const auto interval = ReadFieldInterval(document.Root().Child("Interval"), row.dataType);
        ASSERT_EQ(interval.has_value(), row.text != nullptr) << row.attributes;
        if (!interval) continue;
        EXPECT_EQ(interval->Text(), row.text);
    }
}

}  // namespace
}  // namespace MCVelscore_850
