// Each row changes one thing of a sound document, and one thing is found, or nothing is.

#include "tests/engine/auditrows.h"

namespace MCVelscore_850 {
namespace {

constexpr const char* kModel = "GeneralRegressionModel";
constexpr const char* kStrata = "cox-veteran-strata";
constexpr const char* kPlain = "cox-lung-centred";
constexpr const char* kExtensions = "cox-lung-extensions-3.2";
constexpr const char* kContrasts = "cox-veteran-contrasts";
constexpr const char* kBinary = "blr-birthwt-cutoff";

void ExpectEach(std::initializer_list<AuditRow> rows, std::span<const AuditRule> table)
{
    for (const AuditRow& row : rows) ExpectFound(row, table);
}

TEST(BaselineRules, OfHazards)
{
    ExpectEach({{kExtensions, "time=\"12\" cumHazard=\"0.017924927705028289\"",
                 "time=\"12\" cumHazard=\"0.013\"", "falling-baseline", "X-Baseline[3]",
                 "cumHazard", "0.013"},
                // As high as the one before is sound: nobody died of whom a cell is.
                {kExtensions, "time=\"12\" cumHazard=\"0.017924927705028289\"",
                 "time=\"12\" cumHazard=\"0.013388961908988343\""},
                {kExtensions, "time=\"5\" cumHazard=\"0.0044527079770919518\"",
                 "time=\"5\" cumHazard=\"-0.0044\"", "negative-hazard", "X-Baseline[1]",
                 "cumHazard", "-0.0044"},
                {kExtensions, "time=\"5\" cumHazard=\"0.0044527079770919518\"",
                 "time=\"5\" cumHazard=\"0\""},
                {kExtensions, "time=\"12\" cumHazard", "time=\"11\" cumHazard", "two-hazards",
                 "X-Baseline[3]", "cumHazard", "0.017924927705028289"},
                {kExtensions, "time=\"12\" cumHazard=\"0.017924927705028289\"",
                 "time=\"11.0\" cumHazard=\"0.013388961908988343\""},
                // Cells may stand in any order as long as the first is the earliest.
                {kExtensions,
                 "<X-Baseline time=\"11\" cumHazard=\"0.013388961908988343\"/>\n"
                 "        <X-Baseline time=\"12\" cumHazard=\"0.017924927705028289\"/>",
                 "<X-Baseline time=\"12\" cumHazard=\"0.017924927705028289\"/>\n"
                 "        <X-Baseline time=\"11\" cumHazard=\"0.013388961908988343\"/>"},
                {kExtensions,
                 "<X-Baseline time=\"5\" cumHazard=\"0.0044527079770919518\"/>\n"
                 "        <X-Baseline time=\"11\" cumHazard=\"0.013388961908988343\"/>",
                 "<X-Baseline time=\"11\" cumHazard=\"0.013388961908988343\"/>\n"
                 "        <X-Baseline time=\"5\" cumHazard=\"0.0044527079770919518\"/>",
                 "late-first-cell", "X-Baseline[1]", "time", "11"}},
               BaselineRules());
}

TEST(BaselineRules, OfTimesAndTables)
{
    ExpectEach(
        {{kExtensions, "<X-BaseMaxTime value=\"1022\"/>", "", "missing-max-time", "Extension[3]"},
         {kExtensions, "value=\"1022\"", "value=\"882.5\"", "early-max-time", "X-BaseMaxTime",
          "value", "882.5"},
         {kExtensions, "value=\"1022\"", "value=\"883\""},
         {kStrata, "maxTime=\"392\"", "maxTime=\"39\"", "early-max-time", "BaselineStratum[2]",
          "maxTime", "39"},
         {kExtensions, "<X-BaseMaxTime value=\"1022\"/>",
          "<X-BaseMaxTime value=\"1022\"/><X-BaseMaxTime value=\"1022\"/>", "repeated-baseline",
          "X-BaseMaxTime[2]"},
         {kExtensions, "<X-BaseCumHazardTable>",
          "<X-BaseCumHazardTable><X-Baseline time=\"1\" cumHazard=\"0\"/></X-BaseCumHazardTable>"
          "<X-BaseCumHazardTable>",
          "repeated-baseline", "X-BaseCumHazardTable[2]"},
         {kExtensions, "<MiningSchema>",
          "<BaseCumHazardTables maxTime=\"9\"><BaselineCell time=\"1\" cumHazard=\"0\"/>"
          "</BaseCumHazardTables><MiningSchema>",
          "repeated-baseline", "BaseCumHazardTables"},
         {kExtensions, "<X-BaseCumHazardTable>...</X-BaseCumHazardTable>",
          "<X-BaseCumHazardTable/>", "empty-baseline", "Extension[3]"},
         // Cells count at any depth of their table.
         {kExtensions, "<X-BaseCumHazardTable>...</X-BaseCumHazardTable>",
          "<X-BaseCumHazardTable><X-Part><X-Baseline time=\"5\" cumHazard=\"0.2\"/>"
          "<X-Baseline time=\"9\" cumHazard=\"0.1\"/></X-Part></X-BaseCumHazardTable>",
          "falling-baseline", "X-Baseline[2]", "cumHazard", "0.1"},
         {kStrata, "maxTime=\"392\">...</BaselineStratum>", "maxTime=\"392\"/>", "empty-baseline",
          "BaselineStratum[2]", "value", "smallcell"}},
        BaselineRules());
}

TEST(BaselineRules, AreAloneToTellARepeatedStratum)
{
    const Audited audited(Changed(CaseText(kStrata), "<BaselineStratum value=\"adeno\"",
                                  "<BaselineStratum value=\"large\""));
    EXPECT_EQ(audited.Rules(Answer::Fault), "repeated-stratum");
}

TEST(BaselineRules, OfStrata)
{
    ExpectEach(
        {{kStrata, " baselineStrataVariable=\"celltype\"", "", "strata-without-variable",
          "BaseCumHazardTables", "baselineStrataVariable"},
         {kStrata, "<BaselineStratum value=\"squamous\"",
          "<BaselineStratum varName=\"celltype\" value=\"squamous\""},
         {kStrata, "<BaseCumHazardTables>...</BaseCumHazardTables>",
          "<BaseCumHazardTables maxTime=\"9\"><BaselineCell time=\"1\" cumHazard=\"0\"/>"
          "</BaseCumHazardTables>",
          "variable-without-strata", kModel, "baselineStrataVariable", "celltype"},
         {kStrata, "<BaselineStratum value=\"smallcell\"",
          "<BaselineStratum varName=\"trt\" value=\"smallcell\"", "contradicting-strata-variables",
          "BaselineStratum[2]", "varName", "trt"},
         {kStrata, "<BaselineStratum value=\"smallcell\"",
          "<BaselineStratum varName=\"celltype\" value=\"smallcell\""},
         {kStrata, "<BaselineStratum value=\"large\"",
          "<BaselineStratum value=\"adeno\" maxTime=\"9\"><BaselineCell time=\"1\" "
          "cumHazard=\"0\"/>"
          "</BaselineStratum><BaselineStratum value=\"large\"",
          "repeated-stratum", "BaselineStratum[4]", "value", "adeno"},
         {kStrata, "<BaselineStratum value=\"large\"",
          "<BaselineStratum value=\"Large\" maxTime=\"9\"><BaselineCell time=\"1\" "
          "cumHazard=\"0\"/>"
          "</BaselineStratum><BaselineStratum value=\"large\"",
          "unknown-stratum", "BaselineStratum[4]", "value", "Large"},
         {"cox-lung-numeric-strata", "<BaselineStratum value=\"2\"",
          "<BaselineStratum value=\"2.0\""},
         {"cox-lung-numeric-strata", "<BaselineStratum value=\"2\"",
          "<BaselineStratum value=\"1.0\" maxTime=\"9\"><BaselineCell time=\"1\" cumHazard=\"0\"/>"
          "</BaselineStratum><BaselineStratum value=\"2\"",
          "repeated-stratum", "BaselineStratum[3]", "value", "1.0"},
         // A case's date would be compared as its number with the stratum's text.
         {"cox-lung-numeric-strata", "name=\"ecog\" optype=\"categorical\" dataType=\"integer\"",
          "name=\"ecog\" optype=\"categorical\" dataType=\"date\"", "strata-of-dates",
          "DataField[4]", "dataType", "date"},
         {"cox-lung-numeric-strata", "name=\"ecog\" optype=\"categorical\" dataType=\"integer\"",
          "name=\"ecog\" optype=\"categorical\" dataType=\"timeSeconds\"", "strata-of-dates",
          "DataField[4]", "dataType", "timeSeconds"},
         {"cox-lung-numeric-strata", "name=\"age\" optype=\"continuous\" dataType=\"double\"",
          "name=\"age\" optype=\"continuous\" dataType=\"date\""},
         // Of a field that lists no values any is one.
         {"cox-lung-numeric-strata", "<Value value=\"0\"/>...<Value value=\"2\"/>", ""}},
        BaselineRules());
}

// A Cox model whose type was changed would be scored as another.
TEST(BaselineRules, OfOtherFamilies)
{
    const std::string text =
        Changed(CaseText(kPlain), "modelType=\"CoxRegression\" modelName=\"Cox\"",
                "modelType=\"generalLinear\"");
    const std::vector<Finding> found = FoundIn(text, BaselineRules());
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].ToString(),
              "line 19, column 3: endTimeVariable belongs to Cox regression, and the model is read "
              "as general linear model [cox-part-not-read]");
    EXPECT_EQ(found[0].attribute, "endTimeVariable");
    EXPECT_EQ(found[0].found, "time");
    EXPECT_EQ(found[1].element, "BaseCumHazardTables");
    // Of an Extension it is the name.
    const std::vector<Finding> extensions =
        FoundIn(Changed(CaseText(kExtensions), "modelName=\"Cox\"", ""), BaselineRules());
    ASSERT_FALSE(extensions.empty());
    EXPECT_EQ(extensions[0].rule->name, "cox-part-not-read");
    EXPECT_EQ(extensions[0].attribute, "name");
    EXPECT_EQ(extensions[0].found, "endTimeVariable");
}

TEST(BaselineRules, OfTimesAndBasePoints)
{
    ExpectEach(
        {{kPlain, "endTimeVariable", "startTimeVariable=\"age\" endTimeVariable",
          "start-time-unused", kModel, "startTimeVariable", "age", Answer::Notice},
         {kExtensions, "parameterName=\"P0000002\"", "parameterName=\"P9\"", "unknown-base-point",
          "X-BasePoint[2]", "parameterName", "P9"},
         {kExtensions, "<X-BasePoint parameterName=\"P0000001\" value=\"62.502347417840376\"/>",
          "<X-BasePoint parameterName=\"P0000001\" value=\"62.5\"/>"
          "<X-BasePoint parameterName=\"P0000001\" value=\"63\"/>",
          "two-base-points", "X-BasePoint[2]", "value", "63"},
         {kExtensions, "<X-BasePoint parameterName=\"P0000001\" value=\"62.502347417840376\"/>",
          "<X-BasePoint parameterName=\"P0000001\" value=\"62.5\"/>"
          "<X-BasePoint parameterName=\"P0000001\" value=\"62.50\"/>"},
         {kPlain, "<MiningSchema>",
          "<Extension name=\"referencePoint\"><X-BasePoint parameterName=\"P0000001\" "
          "value=\"1\"/></Extension><MiningSchema>",
          "two-base-points", "X-BasePoint", "value", "1"}},
        BaselineRules());
}

TEST(ContrastRules, OfFamiliesWithContrasts)
{
    ExpectEach({{kBinary, "<Categories>...</Matrix>", "", "contrast-type-without-matrix",
                 "Predictor[1]", "contrastMatrixType", "mixed"},
                {kContrasts, "<Matrix ...</Matrix>", "", "contrast-type-without-matrix",
                 "Predictor[1]", "contrastMatrixType", "mixed"},
                {kBinary, " contrastMatrixType=\"mixed\"", "", "contrast-matrix-without-type",
                 "Predictor[1]", "contrastMatrixType"},
                {kContrasts, " contrastMatrixType=\"mixed\"", "", "contrast-matrix-without-type",
                 "Predictor[1]", "contrastMatrixType"},
                // A Cox model reads a bare matrix.
                {kContrasts, " contrastMatrixType=\"mixed\">...</Categories>", ">"},
                {kContrasts, " contrastMatrixType=\"mixed\">...</Predictor>", "/>",
                 "factor-without-contrasts", "Predictor[1]"},
                {kPlain, "", ""},  // none has them
                {kBinary, " contrastMatrixType=\"mixed\">...</Predictor>", "/>",
                 "factor-without-contrasts", "Predictor[1]"},
                {kBinary, "<Array type=\"real\" n=\"2\">-1 -1</Array>", "",
                 "category-without-contrast-row", "Matrix", "", "other"},
                {kBinary, "<Category value=\"other\"/>", "<Category value=\"white\"/>",
                 "category-without-contrast-row", "Matrix", "", "other"},
                {kBinary, "<Matrix ", "<Matrix kind=\"symmetric\" ", "contrast-matrix-shape",
                 "Matrix", "kind", "symmetric"},
                {kBinary, "<Matrix ", "<Matrix kind=\"any\" "},
                // The reader refuses a short row of a matrix that it looks at.
                {kBinary, "<Array type=\"real\" n=\"2\">-1 -1</Array>",
                 "<Array type=\"real\" n=\"2\">-1</Array>"},
                {kBinary, "nbRows=\"3\"", "nbRows=\"4\"", "contrast-matrix-shape", "Matrix",
                 "nbRows", "4"},
                {kBinary, "<Category value=\"other\"/>", "<Category value=\"othr\"/>",
                 "unknown-contrast-category", "Category[3]", "value", "othr"},
                {kContrasts, "<Array type=\"real\" n=\"1\">1</Array>", "",
                 "category-without-contrast-row", "Matrix", "", "2"},
                {kContrasts, "<PPCell value=\"adeno\"", "<PPCell value=\"large\"",
                 "category-without-contrast-column", "PPCell[3]", "value", "large"},
                {kContrasts, "<PPCell value=\"1\" predictorName=\"trt\"",
                 "<PPCell value=\"2\" predictorName=\"trt\"", "category-without-contrast-column",
                 "PPCell[4]", "value", "2"},
                {kContrasts, "<PPCell value=\"1\" predictorName=\"trt\"",
                 "<PPCell value=\"01\" predictorName=\"trt\""}},
               ContrastRules());
}

TEST(ContrastRules, PassOverExtensionsAmongRowsAndCategories)
{
    for (const char* place : {"<Categories>", "<Matrix nbRows=\"3\" nbCols=\"2\">"}) {
        const std::string extended = std::string(place) + "<Extension extender=\"x\" name=\"y\"/>";
        ExpectEach({{kBinary, place, extended.c_str()}}, ContrastRules());
    }
}

TEST(ContrastRules, ForgiveACellWhoseBetaIs0)
{
    const std::string text =
        Changed(CaseText(kContrasts), "<PPCell value=\"adeno\"", "<PPCell value=\"large\"");
    EXPECT_EQ(FoundIn(text, ContrastRules()).size(), 1u);
    EXPECT_TRUE(FoundIn(Changed(text, "0.55761160950663957", "0"), ContrastRules()).empty());
}

TEST(ContrastRules, OfOtherFamilies)
{
    constexpr const char* kOther = "published/contrasts-general-linear.pmml";
    ExpectEach({{kOther, "", ""},
                {kOther, " contrastMatrixType=\"helmert\"", ""},
                {kOther, "<PPCell value=\"clay\"", "<PPCell value=\"sand\"",
                 "category-without-contrast-column", "PPCell[1]", "value", "sand"},
                {kOther, " contrastMatrixType=\"helmert\">...-0.5 1<",
                 "><Matrix nbRows=\"3\" nbCols=\"2\"><Array>1 0</Array><Array>-0.5 x<",
                 "ragged-contrast-matrix", "Array[2]", "", "-0.5 x"},
                {kOther, " contrastMatrixType=\"helmert\">...-0.5 1<",
                 "><Matrix nbRows=\"3\" nbCols=\"2\"><Array>1 0</Array><Array>-0.5<",
                 "ragged-contrast-matrix", "Array[2]", "", "-0.5"},
                // Of rows with labels nobody reads how many they are said to be.
                {kOther, " contrastMatrixType=\"helmert\">...</Predictor>",
                 "><Extension name=\"contrastMatrix\"><X-Basis nbRows=\"4\" nbCols=\"2\">"
                 "<X-Row value=\"clay\">1 0</X-Row><X-Row value=\"loam\">0 1</X-Row>"
                 "<X-Row value=\"sand\">0 0</X-Row></X-Basis></Extension></Predictor>",
                 "contrast-extension-not-read", "Extension", "name", "contrastMatrix"}},
               ContrastRules());
}

}  // namespace
}  // namespace MCVelscore_850
