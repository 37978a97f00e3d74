#include "engine/scoring/verification.h"

#include <gtest/gtest.h>

#include "engine/documents/documenttree.h"
#include "engine/documents/loadedmodel.h"
#include "engine/documents/verificationsection.h"
#include "engine/messages/failure.h"
#include "host/messages/messages.h"
#include "tests/engine/textsource.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

// y = 1 for b and 3 for a or a missing value, which the document replaces by a. Its output fields
// have a copy of the note, which the model doesn't read.
constexpr char kDocument[] =
    "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'><Header/><DataDictionary>"
    "<DataField name='y' optype='continuous' dataType='double'/>"
    "<DataField name='f' optype='categorical' dataType='string'><Value value='a'/>"
    "<Value value='b'/></DataField>"
    "<DataField name='note' optype='continuous' dataType='double'/></DataDictionary>"
    "<GeneralRegressionModel modelType='generalLinear' functionName='regression'><MiningSchema>"
    "<MiningField name='y' usageType='target'/>"
    "<MiningField name='f' missingValueReplacement='a'/><MiningField name='note'/></MiningSchema>"
    "<Output><OutputField name='copy' feature='transformedValue' dataType='double' "
    "optype='continuous'><FieldRef field='note'/></OutputField>"
    "<OutputField name='r' feature='residual'/></Output>"
    "<ParameterList><Parameter name='p0'/><Parameter name='pf'/></ParameterList>"
    "<FactorList><Predictor name='f'/></FactorList><CovariateList/>"
    "<PPMatrix><PPCell value='a' predictorName='f' parameterName='pf'/></PPMatrix>"
    "<ParamMatrix><PCell parameterName='p0' beta='1'/><PCell parameterName='pf' beta='2'/>"
    "</ParamMatrix></GeneralRegressionModel></PMML>";

class Verification : public testing::Test {
protected:
    Verification()
        : model_(folder_.Write("model.pmml", kDocument), std::make_shared<Plugin>(VELSCORE_PLUGIN),
                 LoadOptions{.output = OutputColumns::Document})
    {}
    ScratchFolder folder_;
    LoadedModel model_;
};

TEST_F(Verification, FollowsThePolicyOfTheModelAsScoringDoes)
{
    VerificationTable table;
    table.fields = {{"f"}, {"y"}};
    table.records = {{"", "3"}, {"b", "1"}};
    EXPECT_TRUE(Verify(model_, table).differences.empty());
    model_.SetPolicy(MissingPolicy::SysmisResult);
    const VerificationReport report = Verify(model_, table);
    ASSERT_EQ(report.differences.size(), 1u);
    EXPECT_EQ(report.differences[0].record, 1);
    EXPECT_EQ(report.differences[0].status, 90029);
    EXPECT_EQ(report.differences[0].faultyField, "f");
    EXPECT_EQ(report.differences[0].faultyText, "");
    TextSource cases("f\n\nb\n");
    EXPECT_EQ(MakeVerification(model_, cases, {}).leftOut, 1);
}

// The records hold what a run of the same table shows, and the target's name is the prediction's.
TEST_F(Verification, RecordsHaveWhatTheOutputFieldsReadAndTheTargetOnce)
{
    TextSource cases("note,y,f\n2.5,17,b\n");
    const MadeVerification made = MakeVerification(model_, cases, {});
    std::vector<std::string> names;
    for (const auto& field : made.table.fields) names.push_back(field.name);
    EXPECT_EQ(names, (std::vector<std::string>{"f", "note", "y", "copy"}));
    EXPECT_EQ(made.table.records,
              (std::vector<std::vector<std::string>>{{"b", "2.5", "1", "2.5"}}));
    EXPECT_TRUE(Verify(model_, made.table).differences.empty());
}

// Records have the document's own mark, whatever the table has; a text is left as it is.
TEST_F(Verification, RecordsOfATableWithADecimalComma)
{
    TextSource cases("note;f\n2,5;b\n");
    const MadeVerification made =
        MakeVerification(model_, cases, {.delimiter = ';', .decimal = ','});
    EXPECT_EQ(made.table.records,
              (std::vector<std::vector<std::string>>{{"b", "2.5", "1", "2.5"}}));
}

// A difference may be a share of the expected number, and what is nearly 0 counts as 0.
TEST(AgreesWith, CountsRelativelyAndBelowTheThresholdAsZero)
{
    struct Row {
        double found, expected;
        bool agrees;
    };
    const Row rows[] = {
        {100.0, 100.0, true}, {100.5, 100.0, true},   {99.5, 100.0, true},    {101.5, 100.0, false},
        {98.5, 100.0, false}, {-100.0, 100.0, false}, {-100.5, -100.0, true}, {0.0, 0.25, true},
        {0.25, 0.0, true},    {-0.25, 0.25, true},    {0.5, 0.25, false},     {0.25, 0.5, false},
        {0.0, 0.0, true},     {1e300, 1e-300, false},
    };
    const VerificationTable::Field field{.name = "y", .precision = 0.01, .zeroThreshold = 0.25};
    for (const Row& row : rows) {
        EXPECT_EQ(AgreesWith(row.found, row.expected, field), row.agrees)
            << row.found << " for " << row.expected;
    }
}

std::string WithSection(const std::string& section)
{
    std::string text = kDocument;
    return text.insert(text.find("</GeneralRegressionModel>"),
                       "<ModelVerification>" + section + "</ModelVerification>");
}

// By the columns' elements, whatever prefix they carry; an absent cell is a missing value, and one
// that no field declares is not read.
TEST_F(Verification, SectionHasItsFieldsAndRecords)
{
    const std::string path = folder_.Write(
        "records.pmml",
        WithSection("<VerificationFields>"
                    "<VerificationField field='f' column='d:group'/>"
                    "<VerificationField field='y' precision='0.01' zeroThreshold='1e-3'/>"
                    "</VerificationFields><InlineTable xmlns:d='urn:d'>"
                    "<row><d:group> b </d:group><y>1.005</y><other>7</other></row>"
                    "<row><y>2.9</y></row></InlineTable>"));
    const LoadedModel model(path, std::make_shared<Plugin>(VELSCORE_PLUGIN),
                            LoadOptions{.verification = true});
    const VerificationTable& table = *model.Verification();
    ASSERT_EQ(table.fields.size(), 2U);
    EXPECT_EQ(table.fields[0].name, "f");
    EXPECT_EQ(table.fields[0].precision, 1e-6);
    EXPECT_EQ(table.fields[0].zeroThreshold, 1e-16);
    EXPECT_EQ(table.fields[1].precision, 0.01);
    EXPECT_EQ(table.fields[1].zeroThreshold, 1e-3);
    using Records = std::vector<std::vector<std::string>>;
    EXPECT_EQ(table.records, (Records{{"b", "1.005"}, {"", "2.9"}}));
    // 1 for b is within a hundredth of 1.005; 3 isn't within one of 2.9.
    const VerificationReport report = Verify(model, table);
    EXPECT_EQ(report.records, 2);
    EXPECT_EQ(report.compared, 2);
    ASSERT_EQ(report.differences.size(), 1U);
    EXPECT_EQ(report.differences[0].record, 2);
    EXPECT_EQ(report.differences[0].field, "y");
    EXPECT_EQ(report.differences[0].expected, "2.9");
    EXPECT_EQ(report.differences[0].found, "3");
    EXPECT_EQ(report.differences[0].precision, 0.01);
    EXPECT_EQ(report.differences[0].status, 0);
}

TEST_F(Verification, SectionWithoutItsPartsIsRefused)
{
    const std::string fields =
        "<VerificationFields><VerificationField field='y'/></VerificationFields>";
    const auto field = [](const std::string& attribute) {
        return "<VerificationFields><VerificationField field='y' " + attribute +
               "/></VerificationFields><InlineTable/>";
    };
    struct Row {
        std::string section;
        int code;
        std::vector<std::string> arguments;
    };
    const Row rows[] = {
        {"<InlineTable/>", kAbsent, {"VerificationFields", "ModelVerification"}},
        {fields, kAbsent, {"InlineTable", "ModelVerification"}},
        {fields + "<TableLocator/>",
         kExpressionNotSupported,
         {"TableLocator", "ModelVerification"}},
        {field("precision='some'"), kNotANumber, {"some", "precision"}},
        {field("precision='-1'"), kNotANumber, {"-1", "precision"}},
        {field("zeroThreshold='1e'"), kNotANumber, {"1e", "zeroThreshold"}},
    };
    for (const Row& row : rows) {
        const Document document =
            LoadDocument(folder_.Write("faulty.pmml", WithSection(row.section)));
        try {
            ReadVerification(document);
            ADD_FAILURE() << "taken: " << row.section;
        } catch (const VSException& refusal) {
            EXPECT_EQ(refusal.GetErrorCode(), row.code) << row.section;
            EXPECT_EQ(refusal.GetArguments(), row.arguments) << row.section;
            EXPECT_TRUE(refusal.GetPlace().IsKnown()) << row.section;
        }
    }
    const Document without = LoadDocument(folder_.Write("without.pmml", kDocument));
    EXPECT_EQ(ReadVerification(without), nullptr);
}

TEST_F(Verification, FieldThatTheModelDoesNotKnowIsAFailure)
{
    VerificationTable table;
    table.fields = {{"f"}, {"z"}};
    table.records = {{"b", "1"}};
    try {
        Verify(model_, table);
        ADD_FAILURE() << "taken";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), kVerificationField);
    }
}

// Values that are expected and missing, missing and there, and of another kind.
TEST_F(Verification, MissingValuesAgreeWithMissingValuesAlone)
{
    VerificationTable table;
    table.fields = {{"f"}, {"note"}, {"y"}, {"copy"}};
    table.records = {
        {"b", "", "1", ""}, {"b", "2", "1", ""}, {"b", "", "1", "2"}, {"b", "2", "one", "2"}};
    const VerificationReport report = Verify(model_, table);
    EXPECT_EQ(report.compared, 8);
    std::vector<std::string> told;
    for (const Difference& difference : report.differences) {
        told.push_back(std::to_string(difference.record) + " " + difference.field + ": " +
                       difference.found + " for " + difference.expected);
    }
    EXPECT_EQ(told,
              (std::vector<std::string>{"2 copy: 2 for ", "3 copy:  for 2", "4 y: 1 for one"}));
}

// What is written into a document, in place of a section that was there, is what is read back.
TEST_F(Verification, SectionThatIsWrittenIsReadBack)
{
    VerificationTable table;
    table.fields = {{"f"}, {"y", 1e-9}};
    table.records = {{"b", "1"}, {"", "3"}};
    const std::string old = folder_.Write("old.pmml", WithSection("<Old/>"));
    const std::string text = TextWithVerification(old, table);
    EXPECT_EQ(text.find("<Old"), std::string::npos);
    const Document document = LoadDocument(folder_.Write("new.pmml", text));
    const auto read = ReadVerification(document);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->records, table.records);
    ASSERT_EQ(read->fields.size(), 2U);
    EXPECT_EQ(read->fields[0].name, "f");
    EXPECT_EQ(read->fields[1].name, "y");
    EXPECT_EQ(read->fields[1].precision, 1e-9);
}

}  // namespace
}  // namespace MCVelscore_850
