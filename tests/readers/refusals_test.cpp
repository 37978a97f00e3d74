// Every refusal of the reader that a linear or general linear document can meet, with its
// arguments in order.

#include <gtest/gtest.h>

#include "host/messages/messages.h"
#include "tests/readers/readdocument.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

struct Row {
    const char* what;
    const std::string& document;
    const char* from;
    const char* to;
    int code;
    std::vector<std::string> arguments;
};

// clang-format off: a row a fault
const std::vector<Row> kRows{
    {"no version", kLinearDocument, " version=\"4.2\"", "", 260115, {"version", "PMML"}},
    {"version no number",
     kLinearDocument,
     "\"4.2\"",
     "\"4.2.1\"",
     kNotANumber,
     {"4.2.1", "version"}},
    {"no model type",
     kLinearDocument,
     "<GeneralRegressionModel modelType=\"regression\" functionName=\"regression\" modelDF=\"5\">",
     "<GeneralRegressionModel functionName=\"regression\">",
     260115,
     {"modelType", "GeneralRegressionModel"}},
    {"not scorable",
     kLinearDocument,
     "modelDF=\"5\"",
     "isScorable=\"FALSE\"",
     260281,
     {"isScorable", "PMML"}},
    {"no dictionary field",
     kLinearDocument,
     "<DataField name=\"w\" optype=\"continuous\" dataType=\"double\"/>",
     "",
     260125,
     {"w", "DataDictionary", "TransformationDictionary"}},
    {"df no number",
     kLinearDocument,
     "modelDF=\"5\"",
     "modelDF=\"five\"",
     kNotANumber,
     {"five", "modelDF"}},
    {"field without name",
     kLinearDocument,
     "<MiningField name=\"w\"/>",
     "<MiningField/>",
     260115,
     {"name", "MiningField"}},
    {"field twice",
     kLinearDocument,
     "<MiningField name=\"w\"/>",
     "<MiningField name=\"w\"/><MiningField name=\"w\"/>",
     260126,
     {"w"}},
    {"target as second field",
     kLinearDocument,
     "<MiningField name=\"w\"/>",
     "<MiningField name=\"w\"/><MiningField name=\"y\"/>",
     260126,
     {"y"}},
    {"second target",
     kLinearDocument,
     "<MiningField name=\"w\"/>",
     "<MiningField name=\"w\" usageType=\"predicted\"/>",
     260204,
     {"w"}},
    {"no target",
     kLinearDocument,
     "<MiningField name=\"y\" usageType=\"target\"/>",
     "",
     260133,
     {}},
    {"target named otherwise",
     kLinearDocument,
     "modelDF=\"5\"",
     "targetVariableName=\"x\"",
     260202,
     {"x", "DataDictionary"}},
    {"replacement no number",
     kLinearDocument,
     "<MiningField name=\"w\"/>",
     "<MiningField name=\"w\" missingValueReplacement=\"none\"/>",
     kNotANumber,
     {"none", "missingValueReplacement"}},
    {"limit too large",
     kLinearDocument,
     "<MiningField name=\"w\"/>",
     "<MiningField name=\"w\" highValue=\"1e999\"/>",
     kNumberTooLarge,
     {"1e999", "highValue"}},
    {"categorical target without values",
     kLinearDocument,
     "name=\"y\" optype=\"continuous\"",
     "name=\"y\" optype=\"categorical\"",
     260126,
     {"y"}},
    {"parameter of another tag",
     kLinearDocument,
     "<Parameter name=\"bx\"/>",
     "<Param name=\"bx\"/>",
     260153,
     {"Param", "Parameter", "ParameterList"}},
    {"parameter without name",
     kLinearDocument,
     "<Parameter name=\"bx\"/>",
     "<Parameter/>",
     260115,
     {"name", "Parameter"}},
    {"reference points for some",
     kLinearDocument,
     "<Parameter name=\"bx\"/>",
     "<Parameter name=\"bx\" referencePoint=\"1\"/>",
     260251,
     {"1", "X-BasePoint", "referencePoint", "3", "Parameter", "ParameterList"}},
    {"reference point no number",
     kLinearDocument,
     "<Parameter name=\"bx\"/>",
     "<Parameter name=\"bx\" referencePoint=\"one\"/>",
     kNotANumber,
     {"one", "referencePoint"}},
    {"factor of another tag",
     kGeneralLinearDocument,
     "<FactorList><Predictor name=\"f\"/>",
     "<FactorList><Factor name=\"f\"/>",
     260153,
     {"Factor", "Predictor", "FactorList"}},
    {"factor without name",
     kGeneralLinearDocument,
     "<FactorList><Predictor name=\"f\"/>",
     "<FactorList><Predictor/>",
     260115,
     {"name", "Predictor"}},
    {"factor unknown",
     kGeneralLinearDocument,
     "<FactorList><Predictor name=\"f\"/>",
     "<FactorList><Predictor name=\"g\"/>",
     260125,
     {"g", "DataDictionary", "TransformationDictionary"}},
    {"factor that is continuous",
     kGeneralLinearDocument,
     "<FactorList><Predictor name=\"f\"/>",
     "<FactorList><Predictor name=\"x\"/>",
     260153,
     {"continuous", "optype", "x"}},
    {"contrast matrix in its own form",
     kGeneralLinearDocument,
     "<FactorList><Predictor name=\"f\"/>",
     "<FactorList><Predictor name=\"f\"><xBasis/></Predictor>",
     260302,
     {"xBasis", "generalLinear"}},
    {"contrast type without matrix",
     kGeneralLinearDocument,
     "<FactorList><Predictor name=\"f\"/>",
     "<FactorList><Predictor name=\"f\" contrastMatrixType=\"t\"/>",
     260115,
     {"xBasis", "Predictor"}},
    {"covariate of another tag",
     kGeneralLinearDocument,
     "<Predictor name=\"w\"/>",
     "<Cov name=\"w\"/>",
     260153,
     {"Cov", "Predictor", "CovariateList"}},
    {"covariate unknown",
     kGeneralLinearDocument,
     "<Predictor name=\"w\"/>",
     "<Predictor name=\"g\"/>",
     260125,
     {"g", "DataDictionary", "TransformationDictionary"}},
    {"covariate that is categorical",
     kGeneralLinearDocument,
     "<Predictor name=\"w\"/>",
     "<Predictor name=\"f\"/>",
     260180,
     {"continuous", "optype", "f"}},
    {"cell of another tag",
     kLinearDocument,
     "<PCell parameterName=\"bx\"",
     "<Cell parameterName=\"bx\"",
     260153,
     {"Cell", "PCell", "ParamMatrix"}},
    {"cell without parameter",
     kLinearDocument,
     "<PCell parameterName=\"bx\"",
     "<PCell",
     260115,
     {"parameterName", "PCell"}},
    {"cell without beta", kLinearDocument, "beta=\"2\"", "", 260115, {"beta", "PCell"}},
    {"beta no number", kLinearDocument, "beta=\"2\"", "beta=\"0x2\"", kNotANumber, {"0x2", "beta"}},
    {"beta empty", kLinearDocument, "beta=\"2\"", "beta=\"\"", kNotANumber, {"", "beta"}},
    {"df of a cell no whole number",
     kLinearDocument,
     "beta=\"2\" df=\"1\"",
     "beta=\"2\" df=\"1.5\"",
     kNotAnInteger,
     {"1.5", "df"}},
    {"cell of an unknown parameter",
     kLinearDocument,
     "<PCell parameterName=\"bx\"",
     "<PCell parameterName=\"bq\"",
     260258,
     {"LRdummy", "targetCategory", "bq", "parameterName", "PCell"}},
    {"covariance cell of another tag",
     kGeneralLinearDocument,
     "<PCovCell pRow=\"p1\" pCol=\"p1\"",
     "<Cell pRow=\"p1\" pCol=\"p1\"",
     260178,
     {"Cell", "PCovCell", "PCovMatrix"}},
    {"covariance cell without column",
     kGeneralLinearDocument,
     "pRow=\"p1\" pCol=\"p1\"",
     "pRow=\"p1\"",
     260115,
     {"pCol", "PCovCell"}},
    {"covariance cell without row",
     kGeneralLinearDocument,
     "pRow=\"p1\" pCol=\"p1\"",
     "pCol=\"p1\"",
     260115,
     {"pRow", "PCovCell"}},
    {"covariance cell without value",
     kGeneralLinearDocument,
     "pCol=\"p1\" value=\"4\"",
     "pCol=\"p1\"",
     260115,
     {"value", "PCovCell"}},
    {"covariance of an unknown parameter",
     kGeneralLinearDocument,
     "pRow=\"p1\" pCol=\"p1\"",
     "pRow=\"q\" pCol=\"p1\"",
     260258,
     {"p1", "pCol", "q", "pRow", "PCovCell"}},
    {"covariance with a column category",
     kGeneralLinearDocument,
     "pCol=\"p1\" value=\"4\"",
     "pCol=\"p1\" tCol=\"a\" value=\"4\"",
     260191,
     {"tCol", "generalLinear"}},
    {"covariance with a row category",
     kGeneralLinearDocument,
     "pCol=\"p1\" value=\"4\"",
     "pCol=\"p1\" tRow=\"a\" value=\"4\"",
     260191,
     {"tRow", "generalLinear"}},
    {"covariance with both categories",
     kGeneralLinearDocument,
     "pCol=\"p1\" value=\"4\"",
     "pCol=\"p1\" tRow=\"a\" tCol=\"b\" value=\"4\"",
     260191,
     {"tCol", "generalLinear"}},
    {"predictor cell of another tag",
     kGeneralLinearDocument,
     "<PPCell value=\"2\"",
     "<Cell value=\"2\"",
     260153,
     {"Cell", "PPCell", "PPMatrix"}},
    {"predictor cell without parameter",
     kGeneralLinearDocument,
     "predictorName=\"x\" parameterName=\"p2\"",
     "predictorName=\"x\"",
     260115,
     {"parameterName", "PPCell"}},
    {"predictor cell without predictor",
     kGeneralLinearDocument,
     "predictorName=\"x\" parameterName=\"p2\"",
     "parameterName=\"p2\"",
     260115,
     {"predictorName", "PPCell"}},
    {"predictor cell without value",
     kGeneralLinearDocument,
     "<PPCell value=\"2\"",
     "<PPCell",
     260115,
     {"value", "PPCell"}},
    {"predictor cell of an unknown field",
     kGeneralLinearDocument,
     "predictorName=\"x\"",
     "predictorName=\"q\"",
     260125,
     {"q", "DataDictionary", "TransformationDictionary"}},
    {"predictor cell of no predictor",
     kGeneralLinearDocument,
     "predictorName=\"x\"",
     "predictorName=\"y\"",
     260155,
     {"y"}},
    {"exponent no number",
     kGeneralLinearDocument,
     "<PPCell value=\"2\"",
     "<PPCell value=\"two\"",
     kNotANumber,
     {"two", "value"}},
    {"predictor cell of an unknown parameter",
     kGeneralLinearDocument,
     "predictorName=\"x\" parameterName=\"p2\"",
     "predictorName=\"x\" parameterName=\"q\"",
     260258,
     {"q", "parameterName", "x", "predictorName", "PPCell"}},
};
// clang-format on

TEST(Refusals, NameCodeAndArguments)
{
    for (const Row& row : kRows) {
        const VSException refusal = RefusalOf(With(row.document, row.from, row.to));
        EXPECT_EQ(refusal.GetErrorCode(), row.code) << row.what << ": " << refusal.GetText();
        EXPECT_EQ(refusal.GetArguments(), row.arguments) << row.what;
    }
}

// Of several faults the one that is met first is told.
TEST(Refusals, FollowTheOrderOfTheStages)
{
    struct Faults {
        const std::string& document;
        std::vector<std::pair<const char*, const char*>> changes;
        int code;
        std::vector<std::string> arguments;
    };
    const Faults faults[] = {
        // The version, then the model, then whether it may be scored, then its type.
        {kLinearDocument,
         {{" version=\"4.2\"", ""}, {"modelType=\"regression\"", "isScorable=\"false\""}},
         260115,
         {"version", "PMML"}},
        {kLinearDocument,
         {{"modelType=\"regression\"", "isScorable=\"false\""}},
         260281,
         {"isScorable", "PMML"}},
        {kLinearDocument,
         {{"modelType=\"regression\"", "modelType=\"other\""}, {"modelDF=\"5\"", "modelDF=\"x\""}},
         260153,
         {"other", "modelType", "GeneralRegressionModel"}},
        // Degrees of freedom before the schema; a second target before a second role.
        {kLinearDocument,
         {{"modelDF=\"5\"", "modelDF=\"x\""}, {"<MiningField name=\"w\"/>", "<MiningField/>"}},
         kNotANumber,
         {"x", "modelDF"}},
        {kLinearDocument,
         {{"<MiningField name=\"w\"/>", "<MiningField name=\"y\" usageType=\"target\"/>"}},
         260204,
         {"y"}},
        // The high value is read before the low one, the replacement before both.
        {kLinearDocument,
         {{"<MiningField name=\"w\"/>",
           "<MiningField name=\"w\" lowValue=\"a\" highValue=\"b\"/>"}},
         kNotANumber,
         {"b", "highValue"}},
        {kLinearDocument,
         {{"<MiningField name=\"w\"/>",
           "<MiningField name=\"w\" highValue=\"b\" missingValueReplacement=\"c\"/>"}},
         kNotANumber,
         {"c", "missingValueReplacement"}},
        // Extensions after the parameters, before the lists; factors before covariates.
        {kGeneralLinearDocument,
         {{" <MiningSchema>", "<Extension name=\"modelDF\" value=\"x\"/><MiningSchema>"},
          {"<Parameter name=\"p2\"/>", "<Parameter/>"}},
         260115,
         {"name", "Parameter"}},
        {kGeneralLinearDocument,
         {{" <MiningSchema>", "<Extension name=\"modelDF\" value=\"x\"/><MiningSchema>"},
          {"<FactorList><Predictor name=\"f\"/>", "<FactorList><Predictor/>"}},
         kNotANumber,
         {"x", "value"}},
        {kGeneralLinearDocument,
         {{"<FactorList><Predictor name=\"f\"/>", "<FactorList><Predictor/>"},
          {"<Predictor name=\"w\"/>", "<Cov/>"}},
         260115,
         {"name", "Predictor"}},
        // Betas, covariances, design cells, wherever they stand in the document.
        {kGeneralLinearDocument,
         {{"beta=\"2\"", ""},
          {"<PCovCell pRow=\"p0\"", "<Cell pRow=\"p0\""},
          {"<PPCell value=\"2\"", "<Cell value=\"2\""}},
         260115,
         {"beta", "PCell"}},
        {kGeneralLinearDocument,
         {{"<PCovCell pRow=\"p0\"", "<Cell pRow=\"p0\""},
          {"<PPCell value=\"2\"", "<Cell value=\"2\""}},
         260178,
         {"Cell", "PCovCell", "PCovMatrix"}},
        // Within a cell: names before numbers, the column before the row.
        {kGeneralLinearDocument,
         {{"<PCell parameterName=\"p1\" beta=\"2\"", "<PCell"}},
         260115,
         {"parameterName", "PCell"}},
        {kGeneralLinearDocument,
         {{"pRow=\"p1\" pCol=\"p1\" value=\"4\"", ""}},
         260115,
         {"pCol", "PCovCell"}},
        {kGeneralLinearDocument,
         {{"pRow=\"p1\" pCol=\"p1\" value=\"4\"", "pCol=\"p1\" value=\"x\""}},
         260115,
         {"pRow", "PCovCell"}},
        {kGeneralLinearDocument,
         {{"value=\"2\" predictorName=\"x\" parameterName=\"p2\"", ""}},
         260115,
         {"parameterName", "PPCell"}},
        {kGeneralLinearDocument,
         {{"value=\"2\" predictorName=\"x\" parameterName=\"p2\"",
           "predictorName=\"q\" parameterName=\"p2\""}},
         260125,
         {"q", "DataDictionary", "TransformationDictionary"}},
        {kGeneralLinearDocument,
         {{"value=\"2\" predictorName=\"x\"", "value=\"two\" predictorName=\"y\""}},
         260155,
         {"y"}},
        {kGeneralLinearDocument,
         {{"value=\"2\" predictorName=\"x\" parameterName=\"p2\"",
           "value=\"two\" predictorName=\"x\" parameterName=\"q\""}},
         kNotANumber,
         {"two", "value"}},
    };
    for (const Faults& f : faults) {
        std::string document = f.document;
        for (const auto& [from, to] : f.changes) document = With(document, from, to);
        const VSException refusal = RefusalOf(document);
        EXPECT_EQ(refusal.GetErrorCode(), f.code) << f.changes[0].second << refusal.GetText();
        EXPECT_EQ(refusal.GetArguments(), f.arguments) << f.changes[0].second;
    }
}

TEST(Refusals, MissingSectionsAreNamed)
{
    const std::pair<const char*, std::vector<std::string>> sections[] = {
        {"DataDictionary", {"DataDictionary", "PMML"}},
        {"GeneralRegressionModel", {"GeneralRegressionModel", "PMML"}},
        {"MiningSchema", {"MiningSchema", "PMML"}},
        {"ParameterList", {"ParameterList", "GeneralRegressionModel"}},
    };
    for (const auto& [tag, arguments] : sections) {
        std::string document =
            With(kLinearDocument, std::string("<") + tag, std::string("<Not") + tag);
        document = With(document, std::string("</") + tag, std::string("</Not") + tag);
        const VSException refusal = RefusalOf(document);
        EXPECT_EQ(refusal.GetErrorCode(), 260115) << tag;
        EXPECT_EQ(refusal.GetArguments(), arguments) << tag;
    }
}

TEST(Refusals, SectionsThatMayBeAbsentAreNotMissed)
{
    for (const char* tag :
         {"FactorList", "CovariateList", "PPMatrix", "PCovMatrix", "ParamMatrix"}) {
        std::string document = kGeneralLinearDocument;
        // Without the lists their cells have nothing to refer to.
        for (const char* gone : {tag, std::string(tag).ends_with("List") ? "PPMatrix" : tag}) {
            const size_t from = document.find(std::string("<") + gone);
            if (from == std::string::npos) continue;
            const std::string end = std::string("</") + gone + ">";
            document.erase(from, document.find(end) + end.size() - from);
        }
        EXPECT_EQ(RefusalOf(document).GetErrorCode(), 0) << tag;
    }
}

TEST(Refusals, ScorableIsRefusedByTheWordFalseAloneInAnyCase)
{
    for (const char* word : {"false", "False", "FALSE"}) {
        EXPECT_EQ(RefusalOf(With(kLinearDocument, "modelDF=\"5\"",
                                 std::string("isScorable=\"") + word + "\""))
                      .GetErrorCode(),
                  260281);
    }
    for (const char* word : {"true", "0", "", "no"}) {
        EXPECT_EQ(RefusalOf(With(kLinearDocument, "modelDF=\"5\"",
                                 std::string("isScorable=\"") + word + "\""))
                      .GetErrorCode(),
                  0)
            << word;
    }
}

TEST(Refusals, EmptyParameterListIsRefusedOutsideLinearRegression)
{
    const auto emptied = [](std::string document) {
        const size_t from = document.find("<ParameterList>");
        const std::string end = "</ParameterList>";
        document.replace(from, document.find(end) + end.size() - from, "<ParameterList/>");
        return document;
    };
    const VSException refusal = RefusalOf(emptied(kGeneralLinearDocument));
    EXPECT_EQ(refusal.GetErrorCode(), 260283);
    EXPECT_EQ(refusal.GetArguments(), std::vector<std::string>{"ParameterList"});
    // A linear regression has its constant all the same; its slopes' cells are then unknown.
    EXPECT_EQ(RefusalOf(emptied(kLinearDocument)).GetErrorCode(), 260258);
}

TEST(Refusals, TargetlessDocumentOfAClusteringFunctionEndsBeforeSetup)
{
    std::string document =
        With(kLinearDocument, "<MiningField name=\"y\" usageType=\"target\"/>", "");
    document = With(document, "functionName=\"regression\"", "functionName=\"clustering\"");
    const VSException refusal = RefusalOf(document);
    EXPECT_EQ(refusal.GetErrorCode(), kModelWithoutTarget);
    // With a target attribute there is nothing to compare it with.
    EXPECT_EQ(RefusalOf(With(document, "modelDF=\"5\"", "targetVariableName=\"y\"")).GetErrorCode(),
              260202);
}

TEST(Refusals, ReferencePointsOnEveryParameterNeedACoxModel)
{
    std::string document = kLinearDocument;
    for (const char* name : {"(Constant)", "bx", "bw"}) {
        document = With(document, std::string("<Parameter name=\"") + name + "\"",
                        std::string("<Parameter referencePoint=\"1\" name=\"") + name + "\"");
    }
    const VSException refusal = RefusalOf(document);
    EXPECT_EQ(refusal.GetErrorCode(), kReferencePointFamily);
    EXPECT_EQ(refusal.GetArguments(), (std::vector<std::string>{"(Constant)", "regression"}));
}

TEST(Refusals, InvalidFactorCategoryIsRefusedByItsVariable)
{
    const std::string declared =
        With(kGeneralLinearDocument, "<Value value=\"b\"/>",
             "<Value value=\"b\"/><Value value=\"c\" property=\"invalid\"/>");
    const VSException refusal =
        RefusalOf(With(declared, "<PPCell value=\"b\"", "<PPCell value=\"c\""));
    EXPECT_EQ(refusal.GetErrorCode(), 260127);
    EXPECT_EQ(refusal.GetArguments(), (std::vector<std::string>{"c", "f"}));
}

TEST(Refusals, FactorThatDeclaresOnlyAMissingValueTakesItAsNoCategory)
{
    const std::string declared =
        With(kGeneralLinearDocument, "<Value value=\"a\"/><Value value=\"b\"/>",
             "<Value value=\"b\" property=\"missing\"/>");
    const VSException refusal = RefusalOf(declared);
    EXPECT_EQ(refusal.GetErrorCode(), 260126);
    EXPECT_EQ(refusal.GetArguments(), std::vector<std::string>{"f"});
}

// A document of that many parameters and covariates, the covariates z0, z1, ..
std::string Wide(const std::string& modelType, int parameters, int covariates,
                 const std::string& section)
{
    std::string text =
        "<PMML version=\"4.2\"><DataDictionary>"
        "<DataField name=\"y\" optype=\"continuous\" dataType=\"double\"/>";
    for (int i = 0; i < covariates; ++i) {
        text += "<DataField name=\"z" + std::to_string(i) +
                "\" optype=\"continuous\" dataType=\"double\"/>";
    }
    text += "</DataDictionary><GeneralRegressionModel modelType=\"" + modelType +
            "\" functionName=\"regression\"><MiningSchema>"
            "<MiningField name=\"y\" usageType=\"target\"/></MiningSchema><ParameterList>";
    for (int i = 0; i < parameters; ++i) {
        text += "<Parameter name=\"p" + std::to_string(i) + "\"/>";
    }
    text += "</ParameterList><CovariateList>";
    for (int i = 0; i < covariates; ++i) {
        text += "<Predictor name=\"z" + std::to_string(i) + "\"/>";
    }
    return text + "</CovariateList>" + section + "</GeneralRegressionModel></PMML>";
}

TEST(Refusals, TablesThatTakeAllMemoryAreRefusedBeforeTheyAreMade)
{
    // Tables hold every cell: a document of half a megabyte would otherwise ask for gigabytes.
    const std::string covariances =
        "<PCovMatrix><PCovCell pRow=\"p0\" pCol=\"p0\" value=\"1\"/></PCovMatrix>";
    const VSException square = RefusalOf(Wide("generalLinear", 12000, 0, covariances));
    EXPECT_EQ(square.GetErrorCode(), kTableTooLarge);
    EXPECT_EQ(square.GetArguments(), (std::vector<std::string>{"PCovMatrix", "12000", "12000"}));
    EXPECT_EQ(RefusalOf(Wide("generalLinear", 12000, 0, "")).GetErrorCode(), 0);
    // A linear regression has one row more for its constant. Without a covariance it needs none,
    // and of its predictors' cells those that are given.
    EXPECT_EQ(RefusalOf(Wide("regression", 12000, 0, covariances)).GetArguments(),
              (std::vector<std::string>{"PCovMatrix", "12001", "12001"}));
    const std::string cells =
        "<PPMatrix><PPCell value=\"1\" predictorName=\"z11999\" parameterName=\"p11999\"/>"
        "</PPMatrix><PCovMatrix/>";
    EXPECT_EQ(RefusalOf(Wide("regression", 12000, 12000, cells)).GetErrorCode(), 0);
    const VSException design = RefusalOf(Wide("generalLinear", 12000, 13000, ""));
    EXPECT_EQ(design.GetErrorCode(), kTableTooLarge);
    EXPECT_EQ(design.GetArguments(), (std::vector<std::string>{"PPMatrix", "12000", "13000"}));
    std::string categories = "<DataField name=\"y\" optype=\"categorical\" dataType=\"string\">";
    for (int i = 0; i < 12001; ++i) categories += "<Value value=\"" + std::to_string(i) + "\"/>";
    const VSException betas =
        RefusalOf(With(Wide("multinomialLogistic", 12000, 0, ""),
                       "<DataField name=\"y\" optype=\"continuous\" dataType=\"double\"/>",
                       categories + "</DataField>"));
    EXPECT_EQ(betas.GetErrorCode(), kTableTooLarge);
    EXPECT_EQ(betas.GetArguments(), (std::vector<std::string>{"ParamMatrix", "12000", "12001"}));
}

TEST(Refusals, SayWhereInTheDocument)
{
    const VSException refusal = RefusalOf(With(kLinearDocument, "beta=\"2\"", "beta=\"two\""));
    EXPECT_EQ(refusal.GetPlace().path, "PMML/GeneralRegressionModel/ParamMatrix/PCell[2]");
}

}  // namespace
}  // namespace MCVelscore_850
