// The fields of a document's Output section, case by case, from a document's text to their values.
#include "engine/scoring/outputevaluator.h"

#include <cmath>

#include <gtest/gtest.h>

#include "engine/documents/outputfield.h"
#include "host/messages/messages.h"
#include "host/model/scoremodel.h"
#include "host/values/numbertext.h"
#include "tests/engine/outputcells.h"
#include "tests/engine/scoredtable.h"
#include "tests/engine/smallmodels.h"
#include "tests/engine/textsource.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

LoadedModel Open(const std::string& document)
{
    return OpenText(document, {.output = OutputColumns::Document});
}

std::vector<std::vector<OutputCell>> CellsOf(const LoadedModel& model, const std::string& csv)
{
    const CaseTable table{TextSource(csv)};
    return OutputCellsOf(model, table.header, table.views);
}

// The fields' values as texts, "-" for nothing, a row's fields with blanks between.
Texts RowsOf(const std::string& document, const std::string& csv)
{
    const LoadedModel model = Open(document);
    Texts rows;
    for (const auto& cells : CellsOf(model, csv)) {
        std::string& row = rows.emplace_back();
        for (const OutputCell& cell : cells) {
            if (!row.empty()) row += ' ';
            switch (cell.kind) {
                case OutputCell::Missing: row += '-'; break;
                case OutputCell::Number: AppendNumber(cell.number, row); break;
                case OutputCell::Text: row += cell.text; break;
            }
        }
    }
    return rows;
}

std::string Field(const std::string& name, const std::string& feature, const std::string& more = "")
{
    return "<OutputField name='" + name + "' feature='" + feature + "' " + more + "/>";
}
std::string Expression(const std::string& name, const std::string& expression,
                       const std::string& more = "")
{
    return "<OutputField name='" + name + "' feature='transformedValue' " + more + ">" +
           expression + "</OutputField>";
}

// y = 1 + 2 x + 10 [sex = m], standard error 2, 8 degrees of freedom.
std::string Linear(const std::string& output, const std::string& targets = "")
{
    TestModel model;
    model.afterSchema = "<Output>" + output + "</Output>" + targets;
    return model.Text();
}

const std::string kEveryFeature = Field("fit", "predictedValue") +
                                  Field("shown", "predictedDisplayValue") +
                                  Field("p", "probability") + Field("se", "standardError") +
                                  Field("r", "residual") + "<OutputField name='plain'/>";

TEST(OutputEvaluator, FillsWhatALinearModelHas)
{
    EXPECT_EQ(RowsOf(Linear(kEveryFeature), "x,sex,y\n2,m,18.5\n3,f,\n,f,1\n"),
              (Texts{"15 15 - 2 3.5 15", "7 7 - 2 - 7", "- - - - - -"}));
}

TEST(OutputEvaluator, LimitsLieAroundThePrediction)
{
    const LoadedModel model = Open(
        Linear(Field("low", "confidenceIntervalLower") + Field("high", "confidenceIntervalUpper")));
    const auto cells = CellsOf(model, "x,sex\n2,m\n");
    // Student's t for 8 degrees of freedom from a printed table
    EXPECT_NEAR(cells.at(0).at(0).number, 15 - 2 * 2.306004, 1e-5);
    EXPECT_NEAR(cells.at(0).at(1).number, 15 + 2 * 2.306004, 1e-5);
}

TEST(OutputEvaluator, WithoutCovariancesThereAreNoErrorsAndLimits)
{
    const std::string text =
        Linear(Field("fit", "predictedValue") + Field("se", "standardError") +
               Field("low", "confidenceIntervalLower") + Field("high", "confidenceIntervalUpper"));
    EXPECT_EQ(RowsOf(Without(text, "<PCovMatrix", "</PCovMatrix>"), "x,sex\n2,m\n"),
              Texts{"15 - - -"});
}

// 2 * prediction + 5, in the residual too; a case without a score has the default.
TEST(OutputEvaluator, ATargetChangesTheNumberAndHasADefault)
{
    const std::string target =
        "<Targets><Target field='y' rescaleFactor='2' rescaleConstant='5'>"
        "<TargetValue defaultValue='7'/></Target></Targets>";
    EXPECT_EQ(RowsOf(Linear(kEveryFeature, target), "x,sex,y\n2,m,36\n,m,36\n"),
              (Texts{"35 35 - 2 1 35", "7 7 - - - 7"}));
    const std::string without =
        "<Targets><Target field='y' rescaleFactor='2'><TargetValue/></Target></Targets>";
    EXPECT_EQ(RowsOf(Linear(kEveryFeature, without), "x,sex\n,m\n"), Texts{"- - - - - -"});
}

TEST(OutputEvaluator, ExpressionsSeeTheFieldsBeforeThemAndThenTheCase)
{
    const std::string twice =
        "<Apply function='*'><Constant>2</Constant><FieldRef field='fit'/></Apply>";
    const std::string less =
        "<Apply function='-'><FieldRef field='twice'/><FieldRef field='x'/></Apply>";
    // A field that is called like one of the case goes before it.
    const std::string output = Field("fit", "predictedValue") + Expression("twice", twice) +
                               Expression("less", less) +
                               Expression("sex", "<FieldRef field='fit'/>") +
                               Expression("copy", "<FieldRef field='sex'/>");
    EXPECT_EQ(RowsOf(Linear(output), "x,sex\n2,m\n3,f\n,f\n1,f\n"),
              (Texts{"15 30 28 15 15", "7 14 11 7 7", "- - - - -", "3 6 5 3 3"}));
}

// So they see what the model derives, by its name.
TEST(OutputEvaluator, ExpressionsSeeDerivedFields)
{
    TestModel model;
    model.afterSchema =
        "<Output>" + Field("fit", "predictedValue") +
        Expression("more",
                   "<Apply function='+'><FieldRef field='half'/><FieldRef field='fit'/></Apply>") +
        "</Output><LocalTransformations><DerivedField name='half' optype='continuous' "
        "dataType='double'><Apply function='/'><FieldRef field='x'/><Constant>2</Constant></Apply>"
        "</DerivedField></LocalTransformations>";
    std::string text =
        Replaced(model.Text(), "<Predictor name=\"x\"/>", "<Predictor name=\"half\"/>");
    text = Replaced(text, "predictorName=\"x\"", "predictorName=\"half\"");
    // 1 + 2 * 3, and 3 more.
    EXPECT_EQ(RowsOf(text, "x,sex\n6,f\n"), Texts{"7 10"});
}

// What a case left in a field isn't there for the next one.
TEST(OutputEvaluator, AnExpressionOfNothingIsNothing)
{
    const std::string output = Field("r", "residual") +
                               Expression("copy", "<FieldRef field='r'/>") +
                               Expression("label",
                                          "<MapValues outputColumn='out'><FieldColumnPair "
                                          "field='sex' column='in'/><InlineTable><row><in>m</in>"
                                          "<out>man</out></row></InlineTable></MapValues>");
    EXPECT_EQ(RowsOf(Linear(output), "x,sex,y\n2,m,16\n2,f,\n2,m,15\n"),
              (Texts{"1 1 man", "- - -", "0 0 man"}));
}

// P(yes) = 3^x / (1 + 3^x).
std::string Classifying(const std::string& output, const std::string& targets = "")
{
    return ClassifyingText("<Output>" + output + "</Output>" + targets);
}

TEST(OutputEvaluator, FillsWhatAClassifyingModelHas)
{
    const LoadedModel model = Open(Classifying(
        Field("class", "predictedValue") + Field("shown", "predictedDisplayValue") +
        Field("p", "probability") + Field("pYes", "probability", "value='yes'") +
        Field("pNo", "probability", "value='no'") +
        Field("pOther", "probability", "value='other'") + Field("se", "standardError")));
    struct Row {
        std::string name, shown;
        double p, pYes, pNo;
    };
    const Row expected[] = {{"yes", "granted", 0.75, 0.75, 0.25},
                            {"no", "refused", 0.75, 0.25, 0.75}};
    const auto cells = CellsOf(model, "x\n1\n-1\n");
    for (size_t row = 0; row < 2; ++row) {
        const auto& found = cells.at(row);
        EXPECT_EQ(found[0].text, expected[row].name);
        EXPECT_TRUE(found[0].isLabel);
        EXPECT_EQ(found[1].text, expected[row].shown);
        EXPECT_FALSE(found[1].isLabel);
        EXPECT_NEAR(found[2].number, expected[row].p, 1e-15);
        EXPECT_NEAR(found[3].number, expected[row].pYes, 1e-15);
        EXPECT_NEAR(found[4].number, expected[row].pNo, 1e-15);
        EXPECT_EQ(found[5].kind, OutputCell::Missing);
        EXPECT_EQ(found[6].kind, OutputCell::Missing);
    }
    EXPECT_FALSE(
        CellsOf(Open(Linear(Field("fit", "predictedValue"))), "x,sex\n2,m\n")[0][0].isLabel);
}

// A category of numbers is found however it is written, its prior too.
TEST(OutputEvaluator, NumbersThatAreCategoriesMayBeWrittenOtherwise)
{
    std::string text = Classifying(
        Field("p", "probability", "value='1'") + Field("same", "probability", "value='1.0'") +
            Field("other", "probability", "value='2'") + Field("r", "residual", "value='1.0'"),
        "<Targets><Target field='t'><TargetValue value='1' priorProbability='0.625'/>"
        "<TargetValue value='0' priorProbability='0.375'/></Target></Targets>");
    text = Replaced(text, "dataType='string'", "dataType='integer'");
    for (int i = 0; i < 2; ++i) text = Replaced(text, "'no'", "'0'");
    for (int i = 0; i < 3; ++i) text = Replaced(text, "'yes'", "'1'");
    const auto cells = CellsOf(Open(text), "x,t\n1,1\n").at(0);
    EXPECT_NEAR(cells[0].number, 0.75, 1e-15);
    EXPECT_EQ(cells[1].number, cells[0].number);
    EXPECT_EQ(cells[2].kind, OutputCell::Missing);
    EXPECT_NEAR(cells[3].number, 0.25, 1e-15);
    EXPECT_EQ(RowsOf(text, "x,t\n,1\n"), Texts{"0.625 0.625 - -"});
    // Of texts it is another one.
    const std::string texts = Replaced(text, "dataType='integer'", "dataType='string'");
    EXPECT_EQ(RowsOf(texts, "x,t\n,1\n"), Texts{"0.625 - - -"});
}

// 1 or 0 as the category was observed or not, minus its probability.
TEST(OutputEvaluator, ResidualsOfCategories)
{
    const LoadedModel model = Open(Classifying(
        Field("r", "residual") + Field("rYes", "residual", "value='yes'") +
        Field("rNo", "residual", "value='no'") + Field("rOther", "residual", "value='other'")));
    const auto cells = CellsOf(model, "x,t\n1,yes\n1,no\n-1,yes\n");
    const double expected[][3] = {{0.25, 0.25, -0.25}, {-0.75, -0.75, 0.75}, {-0.75, 0.75, -0.75}};
    for (size_t row = 0; row < 3; ++row) {
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(cells.at(row)[i].number, expected[row][i], 1e-15) << row << " " << i;
        }
        EXPECT_EQ(cells[row][3].kind, OutputCell::Missing);
    }
    // Without an observed value there is none.
    for (const char* const table : {"x,t\n1,\n", "x\n1\n"}) {
        const auto row = CellsOf(model, table).at(0);
        for (const OutputCell& cell : row) EXPECT_EQ(cell.kind, OutputCell::Missing) << table;
    }
}

// The category of the largest prior, and the priors.
TEST(OutputEvaluator, PriorsStandForACaseWithoutAScore)
{
    const std::string targets =
        "<Targets><Target field='t' optype='categorical'>"
        "<TargetValue value='no' priorProbability='0.375' displayValue='declined'/>"
        "<TargetValue value='yes' priorProbability='0.625'/></Target></Targets>";
    const std::string output =
        Field("class", "predictedValue") + Field("shown", "predictedDisplayValue") +
        Field("p", "probability") + Field("pNo", "probability", "value='no'") +
        Field("pOther", "probability", "value='other'") + Field("se", "standardError") +
        Expression("copy", "<FieldRef field='class'/>", "dataType='string'");
    EXPECT_EQ(RowsOf(Classifying(output, targets), "x\n\n"),
              Texts{"yes granted 0.625 0.375 - - -"});
    // The Target's word for a category goes before the field's.
    EXPECT_EQ(RowsOf(Classifying(Field("shown", "predictedDisplayValue"), targets), "x\n-1\n1\n"),
              (Texts{"declined", "granted"}));
}

// 2^x times the baseline's 1 at time 6; the prediction itself would be the survival.
TEST(OutputEvaluator, WhatACoxModelPredictsIsTheCumulativeHazard)
{
    const std::string text =
        Replaced(CoxText(), "<ParameterList>",
                 "<Output>" + Field("hazard", "predictedValue") + "</Output><ParameterList>");
    const auto cells = CellsOf(Open(text), "time,x\n6,1\n6,0\n1,0\n");
    EXPECT_NEAR(cells.at(0).at(0).number, 2.0, 1e-15);
    EXPECT_EQ(cells.at(1).at(0).number, 1.0);
    EXPECT_EQ(cells.at(2).at(0).number, 0.0);
}

TEST(OutputSection, ReadsOnlyWhatItNeeds)
{
    struct Row {
        std::string output;
        Texts inputs;
    };
    const Row rows[] = {
        {Field("fit", "predictedValue"), {}},
        {Field("r", "residual"), {"y"}},
        {Expression("copy", "<FieldRef field='x'/>"), {"x"}},
        {Field("r", "residual") +
             Expression("sum",
                        "<Apply function='+'><FieldRef field='x'/><FieldRef field='r'/>"
                        "</Apply>"),
         {"x", "y"}},
    };
    for (const Row& row : rows) {
        const LoadedModel model = Open(Linear(row.output));
        EXPECT_EQ(model.Output()->inputs, row.inputs) << row.output;
    }
}

// Where neither field nor expression has a type the expression's kind tells.
TEST(OutputSection, FieldsHaveTheTypesOfTheirExpressions)
{
    const std::string map =
        "<MapValues outputColumn='out'><FieldColumnPair field='sex' column='in'/><InlineTable>"
        "<row><in>m</in><out>1</out></row></InlineTable></MapValues>";
    const std::string output =
        Expression("number", "<FieldRef field='x'/>") + Expression("text", map) +
        Expression("said", map, "dataType='double'") +
        Expression("inside", "<Constant dataType='string'>7</Constant>") +
        Expression("truth",
                   "<Apply function='equal'><FieldRef field='x'/><Constant>2</Constant>"
                   "</Apply>",
                   "dataType='boolean'");
    const LoadedModel model = Open(Linear(output));
    const auto cells = CellsOf(model, "x,sex\n2,m\n").at(0);
    const OutputCell::Kind kinds[] = {OutputCell::Number, OutputCell::Text, OutputCell::Number,
                                      OutputCell::Text, OutputCell::Text};
    for (size_t i = 0; i < cells.size(); ++i) EXPECT_EQ(cells[i].kind, kinds[i]) << i;
    EXPECT_EQ(cells[1].text, "1");
    EXPECT_EQ(cells[2].number, 1.0);
    EXPECT_EQ(cells[4].text, "true");
}

// As the table has them; what follows sees the date or time itself.
TEST(OutputSection, DatesAndTimesAreWrittenAsTexts)
{
    const std::string days =
        "<Apply function='dateDaysSinceYear'><FieldRef field='due'/>"
        "<Constant>1960</Constant></Apply>";
    const std::string output =
        Expression("due", "<Constant dataType='date'>1960-01-11</Constant>", "dataType='date'") +
        Expression("at", "<Constant dataType='string'>23:59</Constant>", "dataType='time'") +
        Expression("both", "<FieldRef field='due'/>", "dataType='dateTime'") +
        Expression("since", "<FieldRef field='due'/>", "dataType='dateDaysSince[1960]'") +
        Expression("days", days) +
        Expression("again", "<FieldRef field='due'/>", "dataType='date'") +
        Expression("none", "<FieldRef field='sex'/>", "dataType='date'");
    const std::string row = "1960-01-11 23:59:00 1960-01-11T00:00:00 10 10 1960-01-11 -";
    EXPECT_EQ(RowsOf(Linear(output), "x,sex\n2,m\n3,f\n"), (Texts{row, row}));
    // What counts days is a number.
    const auto cells = CellsOf(Open(Linear(output)), "x,sex\n2,m\n").at(0);
    EXPECT_EQ(cells.at(3).kind, OutputCell::Number);
    EXPECT_EQ(cells.at(0).kind, OutputCell::Text);
}

TEST(OutputSection, ARefusedExpressionHasItsPlace)
{
    const std::string field =
        "<OutputField name='a' feature='decision'><FieldRef field='q'/></OutputField>";
    try {
        Open(Linear(field));
        ADD_FAILURE() << "taken";
    } catch (const DocumentFailure& failure) {
        EXPECT_TRUE(failure.ElementPath().ends_with("Output/OutputField/FieldRef"))
            << failure.ElementPath();
        EXPECT_NE(std::string(failure.what()).find("q"), std::string::npos);
        EXPECT_GT(failure.Line(), 1UL);
    }
}

TEST(OutputSection, ARefusalNamesTheField)
{
    struct Row {
        std::string field;
        int code;
        Texts arguments;
    };
    const Row rows[] = {
        {Field("who", "clusterId"), kOutputFeature, {"clusterId", "who"}},
        {Field("why", "decision"), kExpressionMissing, {"why"}},
        {Field("fit", "residual"), kDuplicateField, {"fit"}},
        {"<OutputField name='d' feature='decision'><Extension/><Value value='1'/><Decisions/>"
         "</OutputField>",
         kExpressionMissing,
         {"d"}},
    };
    for (const Row& row : rows) {
        try {
            Open(Linear("<OutputField name='fit'/>" + row.field));
            ADD_FAILURE() << "taken: " << row.field;
        } catch (const DocumentFailure& failure) {
            EXPECT_EQ(failure.Code(), row.code) << row.field;
            EXPECT_EQ(failure.Arguments(), row.arguments) << row.field;
            EXPECT_GT(failure.Line(), 1UL) << row.field;
            EXPECT_NE(failure.ElementPath().find("Output/OutputField[2]"), std::string::npos)
                << failure.ElementPath();
        }
    }
}

}  // namespace
}  // namespace MCVelscore_850
