// What is found in the expressions of derived fields, functions and output fields.

#include <gtest/gtest.h>

#include "tests/engine/auditedfields.h"

namespace MCVelscore_850 {
namespace {

class TransformationFault : public testing::TestWithParam<FaultRow> {};

TEST_P(TransformationFault, IsToldWithItsPlace)
{
    ExpectFault(kFieldsDocument, GetParam(), TransformationRules());
}

const FaultRow kFaults[] = {
    {{"field=\"f\" value=\"green\"", "field=\"f\" value=\"Green\""},
     "unlisted-value",
     Answer::Fault,
     R"(<NormDiscrete)",
     "value",
     "Green",
     "green"},
    {{"field=\"f\" value=\"green\"", "field=\"f\" value=\"purple\""},
     "unlisted-value",
     Answer::Fault,
     R"(<NormDiscrete)",
     "value",
     "purple"},
    // a missing value is never met
    {{"field=\"f\" value=\"green\"", "field=\"f\" value=\"?\""},
     "unlisted-value",
     Answer::Fault,
     R"(<NormDiscrete)",
     "value",
     "?"},
    {{"field=\"f\" value=\"green\"", "field=\"n\" value=\"3\""},
     "unlisted-value",
     Answer::Fault,
     R"(<NormDiscrete)",
     "value",
     "3"},
    // what the expression of a derived field yields
    {{"field=\"f\" value=\"green\"", "field=\"g\" value=\"hihg\""},
     "unlisted-value",
     Answer::Fault,
     R"(<NormDiscrete)",
     "value",
     "hihg",
     "high"},
    {{"<in>green</in>", "<in>Green</in>"},
     "unlisted-value",
     Answer::Fault,
     R"(<in>Green)",
     "",
     "Green",
     "green"},
    {{"<in>green</in>", "<in>violet</in>"},
     "unlisted-value",
     Answer::Fault,
     R"(<in>violet)",
     "",
     "violet"},
    {{"<Discretize field=\"x\">", "<Discretize field=\"f\">"},
     "text-as-number",
     Answer::Fault,
     R"(<Discretize)",
     "field",
     "f"},
    {{"<Constant>red</Constant>", "<Constant>Red</Constant>"},
     "unlisted-value",
     Answer::Fault,
     R"(<Constant>Red)",
     "",
     "Red",
     "red"},
    {{"<Constant>red</Constant>", "<Constant>violet</Constant>"},
     "constant-comparison",
     Answer::Notice,
     R"(<Constant>violet)",
     "",
     "violet"},
    // every value has its row; another row is of no use
    {{"<row><in>blue</in><out>3</out></row>",
      "<row><in>blue</in><out>3</out></row><row><in>violet</in><out>4</out></row>"},
     "unused-value",
     Answer::Notice,
     R"(<in>violet)",
     "",
     "violet"},
    {{"<Apply function=\"equal\"><FieldRef field=\"f\"/>\n<Constant>red</Constant>",
      "<Apply function=\"isIn\"><FieldRef field=\"f\"/><Constant>violet</Constant>\n"
      "<Constant>red</Constant>"},
     "unused-value",
     Answer::Notice,
     R"(<Constant>violet)",
     "",
     "violet"},
    {{"<in>green</in>", "<in>red</in>"},
     "contradicting-rows",
     Answer::Fault,
     R"(<row><in>red</in><out>2)",
     "",
     "2"},
    {{"<DiscretizeBin binValue=\"low\"><Interval closure=\"closedOpen\" leftMargin=\"0\" "
      "rightMargin=\"5\"",
      "<DiscretizeBin binValue=\"low\"><Interval closure=\"closedOpen\" leftMargin=\"5\" "
      "rightMargin=\"0\""},
     "empty-bin",
     Answer::Fault,
     R"(<Interval closure="closedOpen" leftMargin="5")",
     "leftMargin",
     "[5, 0)"},
    {{"leftMargin=\"5\" rightMargin=\"10\"", "leftMargin=\"4\" rightMargin=\"10\""},
     "overlapping-bins",
     Answer::Fault,
     R"(<Interval closure="closedClosed" leftMargin="4")",
     "leftMargin",
     "[4, 10]"},
    {{"<DiscretizeBin binValue=\"low\"><Interval closure=\"closedOpen\"",
      "<DiscretizeBin binValue=\"low\"><Interval closure=\"closedClosed\""},
     "touching-bins",
     Answer::Notice,
     R"(<Interval closure="closedClosed" leftMargin="5")",
     "leftMargin",
     "[5, 10]"},
};

INSTANTIATE_TEST_SUITE_P(Expressions, TransformationFault, testing::ValuesIn(kFaults));

TEST(TransformationFaults, OfACellAreToldForEachRow)
{
    const Audited audited(
        Edited(kFieldsDocument, {"<FieldColumnPair field=\"f\"", "<FieldColumnPair field=\"z\""}));
    EXPECT_EQ(audited.findings.CountOf("cell-without-number"), 3u);
    EXPECT_EQ(audited.Of("cell-without-number").found, "red");
}

class SoundTransformation : public testing::TestWithParam<Edit> {};

TEST_P(SoundTransformation, IsPassedOver)
{
    ExpectSilence(kFieldsDocument, GetParam(), TransformationRules());
}

const Edit kSound[] = {
    {"<PMML", "<PMML"},
    // equal values in other spellings
    {"field=\"f\" value=\"green\"", "field=\"n\" value=\"1.0\""},
    {"field=\"f\" value=\"green\"", "field=\"t\" value=\"T\""},
    {"field=\"f\" value=\"green\"", "field=\"g\" value=\"high\""},
    // fields that take any value, or that nobody declares, which is the reader's to tell
    {"field=\"f\" value=\"green\"", "field=\"s\" value=\"any\""},
    {"field=\"f\" value=\"green\"", "field=\"z\" value=\"17\""},
    {"field=\"f\" value=\"green\"", "field=\"nobody\" value=\"any\""},
    // rows of the same outcome; a table of some values alone
    {"<in>green</in><out>2</out>", "<in>red</in><out>1</out>"},
    {"<row><in>green</in><out>2</out></row>", ""},
    // rows that lack a cell are the reader's to refuse
    {"column=\"in\"", "column=\"inn\""},
    // a function sees its parameters alone, of whatever name
    {"<LocalTransformations>",
     "<LocalTransformations><DefineFunction name=\"h\" optype=\"continuous\"><ParameterField "
     "name=\"f\"/><NormDiscrete field=\"f\" value=\"any\"/></DefineFunction>"},
    // an output field goes before a field of its name
    {"</MiningSchema>",
     "</MiningSchema><Output><OutputField name=\"f\" feature=\"predictedValue\"/><OutputField "
     "name=\"o\" feature=\"transformedValue\"><NormDiscrete field=\"f\" value=\"17\"/>"
     "</OutputField></Output>"},
    // bins of one value may overlap, and margins that meet in one of them
    {"<DiscretizeBin binValue=\"high\"><Interval closure=\"closedClosed\" leftMargin=\"5\"",
     "<DiscretizeBin binValue=\"low\"><Interval closure=\"closedClosed\" leftMargin=\"4\""},
    {"leftMargin=\"5\" rightMargin=\"10\"", "leftMargin=\"7\" rightMargin=\"10\""},
    // other functions compare nothing
    {"<Apply function=\"equal\"><FieldRef field=\"f\"/>\n<Constant>red</Constant>",
     "<Apply function=\"greaterThan\"><FieldRef field=\"n\"/>\n<Constant>1.5</Constant>"},
};

INSTANTIATE_TEST_SUITE_P(Expressions, SoundTransformation, testing::ValuesIn(kSound));

// What the mining schema puts in the place of a value is a value too.
TEST(TransformationFaults, DontCountReplacements)
{
    const std::string replaced =
        Edited(kFieldsDocument, {"<MiningField name=\"f\"/>",
                                 "<MiningField name=\"f\" missingValueReplacement=\"none\"/>"});
    ExpectSilence(replaced, {"\"f\" value=\"green\"", "\"f\" value=\"none\""},
                  TransformationRules());
    const std::string taken = Edited(
        kFieldsDocument,
        {"<MiningField name=\"f\"/>", "<MiningField name=\"f\" invalidValueTreatment=\"asIs\"/>"});
    ExpectSilence(taken, {"\"f\" value=\"green\"", "\"f\" value=\"none\""}, TransformationRules());
    const std::string open =
        Edited(kFieldsDocument, {"<Value value=\"red\"/>",
                                 "<Extension extender=\"velscore\" name=\"unlistedCategories\" "
                                 "value=\"accept\"/><Value value=\"red\"/>"});
    ExpectSilence(open, {"\"f\" value=\"green\"", "\"f\" value=\"none\""}, TransformationRules());
}

TEST(TransformationFaults, SayWhatTheFieldHas)
{
    const Audited audited(
        Edited(kFieldsDocument, {"field=\"f\" value=\"green\"", "field=\"f\" value=\"Green\""}));
    const Finding finding = audited.Of("unlisted-value");
    EXPECT_EQ(finding.ToString(),
              "line 31, column 1: \"Green\" is looked for in the field \"f\", which never has it; "
              "did you mean \"green\"? [unlisted-value]");
    EXPECT_EQ(finding.remedy,
              "Write the value as the field has it (one of \"red\", \"green\", \"blue\"), or list "
              "it in the field.");
}

}  // namespace
}  // namespace MCVelscore_850
