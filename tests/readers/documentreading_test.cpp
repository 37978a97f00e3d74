// What a document becomes: the model that a reader makes of it, and its scores.

#include <gtest/gtest.h>

#include <cmath>

#include "host/expressions/transformvar.h"
#include "host/model/modeldescription.h"
#include "host/model/versioninfo.h"
#include "host/values/stringvalue.h"
#include "host/variables/caserecord.h"
#include "host/variables/dictvar.h"
#include "host/variables/targetdeclaration.h"
#include "models/glrmodel.h"
#include "models/lrmodel.h"
#include "models/lrresult.h"
#include "readers/generalregressiontranslator.h"
#include "tests/models/modelfixture.h"
#include "tests/readers/readdocument.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

double Score(RegressionModel& model, Case& c, double* stdDev = nullptr)
{
    Slot slot;
    const auto status = model.GetScore(&c.Record(), slot.result, false);
    EXPECT_TRUE(status.IsOK()) << status.GetErrorCode();
    if (stdDev != nullptr) *stdDev = slot.As<LRResult>().GetStdDev();
    return slot.Number();
}

TEST(GeneralLinearDocument, ScoresAsItsEquationSays)
{
    const auto model = ReadModel(kGeneralLinearDocument);
    Case c;
    c.With("f", "b").With("x", 2).With("w", 4);
    double se = 0.0;
    EXPECT_EQ(Score(*model, c, &se), 1.0 + 2.0 + 3.0 * 4.0 + 0.5 * 4.0);
    EXPECT_EQ(se, std::sqrt(1.0 + 2 * 0.5 + 4.0));
    EXPECT_EQ(model->GetDF(), 5.0);
}

TEST(GeneralLinearDocument, GetsNoConstantOfItsOwn)
{
    const auto model = ReadModel(kGeneralLinearDocument);
    EXPECT_EQ(model->GetParamTable()->GetNumOfParameters(), 4);
    EXPECT_EQ(model->GetParameterIndex("(Constant)"), -1);
}

TEST(LinearDocument, ConstantInFirstPlaceEndsUpLastUnderItsOwnLabel)
{
    const auto model = ReadModel(kLinearDocument);
    EXPECT_EQ(model->GetParameterIndex("bx"), 0);
    EXPECT_EQ(model->GetParameterIndex("(Constant)"), 2);
    EXPECT_EQ(model->GetParamLabels().back(), "(Constant)");
    Case c;
    c.With("x", 10).With("w", 100);
    EXPECT_EQ(Score(*model, c), 1.0 + 20.0 + 300.0);
}

TEST(LinearDocument, WithoutAConstantGetsOneThatItsCellsMayName)
{
    const std::string unlisted =
        With(kLinearDocument, "<Parameter name=\"(Constant)\" label=\"lost\"/>", "");
    const auto model = ReadModel(unlisted);
    EXPECT_EQ(model->GetParameterIndex("(Constant)"), 2);
    Case c;
    c.With("x", 0).With("w", 0);
    EXPECT_EQ(Score(*model, c), 1.0);
}

TEST(LinearDocument, WithoutParamMatrixEveryBetaIsZero)
{
    std::string bare = kLinearDocument;
    const size_t from = bare.find("<ParamMatrix>");
    bare.erase(from, bare.find("</ParamMatrix>") + 14 - from);
    const auto model = ReadModel(bare);
    Case c;
    c.With("x", 10).With("w", 100);
    EXPECT_EQ(Score(*model, c), 0.0);
}

TEST(Document, VersionRecordKeepsTheVersionAsWritten)
{
    EXPECT_EQ(ReadModel(kLinearDocument)->GetVersionInfo()->GetVersion(), "4.2");
}

TEST(Document, AlgorithmNameOfTheHeadGoesToTheBaseAlone)
{
    const auto model = ReadModel(
        With(kGeneralLinearDocument, "modelDF=\"5\"", "modelDF=\"5\" algorithmName=\"linearSVM\""));
    EXPECT_EQ(static_cast<const BaseModel&>(*model).GetAlgorithmName(), "linearSVM");
    EXPECT_EQ(static_cast<const GLRModel&>(*model).GetAlgorithmName(), "");
    EXPECT_EQ(model->GetMiningFunction(), BaseModel::FUNC_REGRESSION);
}

TEST(Document, LeadingExtensionOverwritesModelDf)
{
    const std::string schema = " <MiningSchema>";
    const std::string extension = " <Extension name=\"modelDF\" value=\"7.5\"/>\n";
    EXPECT_EQ(ReadModel(With(kLinearDocument, schema, extension + schema))->GetDF(), 7.5);
    // Behind a child of another kind it is never seen.
    EXPECT_EQ(ReadModel(With(kLinearDocument, " <ParameterList>", extension + " <ParameterList>"))
                  ->GetDF(),
              5.0);
    // An empty value and an unknown name change nothing.
    EXPECT_EQ(ReadModel(With(kLinearDocument, schema,
                             "<Extension name=\"modelDF\" value=\"\"/>"
                             "<Extension name=\"other\" value=\"x\"/>" +
                                 schema))
                  ->GetDF(),
              5.0);
}

TEST(Document, AllowMissingFactorsTakesTheExactWordTrue)
{
    const auto with = [](const char* value) {
        return ReadModel(With(kGeneralLinearDocument, " <MiningSchema>",
                              std::string(" <Extension name=\"allowMissingFactors\" value=\"") +
                                  value + "\"/><MiningSchema>"));
    };
    EXPECT_TRUE(with("true")->GetAllowMissingFactors());
    EXPECT_FALSE(with("TRUE")->GetAllowMissingFactors());
    EXPECT_FALSE(with("1")->GetAllowMissingFactors());
}

TEST(Document, CategoryThatOnlyACellNamesIsAddedToItsVariable)
{
    const auto model = ReadModel(With(kGeneralLinearDocument,
                                      "value=\"b\" predictorName=\"f\" parameterName=\"p3\"",
                                      "value=\"c\" predictorName=\"f\" parameterName=\"p3\""));
    EXPECT_EQ(model->GetDictionary()->GetVar("f")->GetNumCategories(), 3);
    Case c;
    c.With("f", "c").With("x", 0).With("w", 4);
    EXPECT_EQ(Score(*model, c), 1.0 + 0.5 * 4.0);
}

TEST(Document, CellsFillTheCategoriesOfAClosedVariableAlone)
{
    GeneralRegressionTranslator reader;
    int index = -1;
    EXPECT_FALSE(reader.FillCateValuesToDataDict(nullptr, "a", index));
    const auto open = Categorical("open", {});
    EXPECT_FALSE(reader.FillCateValuesToDataDict(open.get(), "a", index));
    EXPECT_TRUE(open->HasOpenCategories());
    EXPECT_EQ(index, -1);
    const auto closed = Categorical("closed", {"a", "b"});
    EXPECT_TRUE(reader.FillCateValuesToDataDict(closed.get(), "b", index));
    EXPECT_EQ(index, 1);
    EXPECT_EQ(closed->GetNumCategories(), 2);
    EXPECT_TRUE(reader.FillCateValuesToDataDict(closed.get(), "c", index));
    EXPECT_EQ(index, 2);
    EXPECT_EQ(closed->GetNumCategories(), 3);
    const auto numeric = Categorical("numeric", {"1"}, ScoreDictVar::NUMERIC);
    EXPECT_TRUE(reader.FillCateValuesToDataDict(numeric.get(), "two", index));
    EXPECT_EQ(numeric->GetNumCategories(), 1);  // no number, no category
    EXPECT_EQ(index, 2);                        // and no position
    const auto covariate = Continuous("x");
    index = -1;
    EXPECT_TRUE(reader.FillCateValuesToDataDict(covariate.get(), "2", index));
    EXPECT_EQ(index, -1);
}

TEST(Document, ReaderKeepsNothingOfTheDocumentBefore)
{
    GeneralRegressionTranslator reader;
    ParsedText broken(With(kLinearDocument, "beta=\"2\"", "beta=\"two\""));
    EXPECT_THROW(reader.ParseFromTree(broken.Get(), ""), VSException);
    // At 3.0 the target attribute is needed; the version of the next document counts anew.
    ParsedText old(With(kLinearDocument, "version=\"4.2\"", "version=\"3.0\""));
    EXPECT_THROW(reader.ParseFromTree(old.Get(), ""), VSException);
    ParsedText good(kLinearDocument);
    const std::unique_ptr<ScoreModel> model(reader.ParseFromTree(good.Get(), ""));
    EXPECT_EQ(model->GetModelType(), ScoreModel::TYPE_LR);
}

TEST(Document, ParameterGivenTwiceKeepsItsFirstIndexAndLabel)
{
    const auto model =
        ReadModel(With(kGeneralLinearDocument, "<Parameter name=\"p1\"/>",
                       "<Parameter name=\"p1\" label=\"first\"/><Parameter name=\"p1\"/>"));
    EXPECT_EQ(model->GetParameterIndex("p1"), 1);
    EXPECT_EQ(model->GetParameterIndex("p2"), 2);
    EXPECT_EQ(model->GetParamLabels().at(1), "first");
}

TEST(Document, CellWithoutDfHasNone)
{
    const auto model =
        ReadModel(With(kGeneralLinearDocument, "beta=\"2\" df=\"1\"", "beta=\"2\" df=\"\""));
    EXPECT_EQ(model->GetParamTable()->GetCell(0, 1)->GetDf(), 0);
    EXPECT_EQ(model->GetParamTable()->GetCell(0, 0)->GetDf(), 1);
}

TEST(Document, NumericFactorIsComparedByItsNumber)
{
    std::string numeric =
        With(kGeneralLinearDocument, "dataType=\"string\"><Value value=\"a\"/><Value value=\"b\"/>",
             "dataType=\"integer\"><Value value=\"1\"/><Value value=\"2\"/>");
    numeric = With(numeric, "value=\"b\"", "value=\"2.0\"");
    numeric = With(numeric, "value=\"b\"", "value=\"2\"");
    const auto model = ReadModel(numeric);
    Case c;
    c.With("f", 2).With("x", 0).With("w", 4);
    EXPECT_EQ(Score(*model, c), 1.0 + 2.0 + 0.5 * 4.0);
}

TEST(Document, PPCellSetTwiceKeepsTheLast)
{
    const auto model = ReadModel(With(kGeneralLinearDocument, "<PPMatrix>",
                                      "<PPMatrix><PPCell value=\"3\" predictorName=\"x\" "
                                      "parameterName=\"p2\"/>"));
    Case c;
    c.With("f", "a").With("x", 2).With("w", 0);
    EXPECT_EQ(Score(*model, c), 1.0 + 3.0 * 4.0);
}

// A global and a local section of derived fields.
std::string WithTransformations(const std::string& global, const std::string& local)
{
    std::string text = kGeneralLinearDocument;
    if (!global.empty()) {
        text = With(text, "<GeneralRegressionModel",
                    "<TransformationDictionary>" + global +
                        "</TransformationDictionary><GeneralRegressionModel");
    }
    if (!local.empty()) {
        text = With(text, " <ParameterList>",
                    "<LocalTransformations>" + local + "</LocalTransformations><ParameterList>");
    }
    return text;
}

std::string Sum(const std::string& name, const std::string& number)
{
    return "<DerivedField name=\"" + name +
           "\" optype=\"continuous\" dataType=\"double\"><Apply function=\"+\">"
           "<FieldRef field=\"x\"/><Constant>" +
           number + "</Constant></Apply></DerivedField>";
}

std::string UsingDerived(const std::string& document)
{
    std::string text =
        With(document, "<Predictor name=\"x\"/>", "<Predictor name=\"x\"/><Predictor name=\"d\"/>");
    return With(text, "value=\"2\" predictorName=\"x\"", "value=\"1\" predictorName=\"d\"");
}

TEST(Transformations, DerivedCovariateIsScored)
{
    const auto model = ReadModel(UsingDerived(WithTransformations(Sum("d", "10"), "")));
    EXPECT_TRUE(model->NeedDerivedPredictor());
    Case c;
    c.With("f", "a").With("x", 2).With("w", 0);
    EXPECT_EQ(Score(*model, c), 1.0 + 3.0 * 12.0);
}

TEST(Transformations, LocalSectionTakesThePlaceOfTheGlobalOne)
{
    const auto model = ReadModel(UsingDerived(WithTransformations(Sum("d", "10"), Sum("d", "20"))));
    Case c;
    c.With("f", "a").With("x", 2).With("w", 0);
    EXPECT_EQ(Score(*model, c), 1.0 + 3.0 * 22.0);
    const VSException refusal =
        RefusalOf(UsingDerived(WithTransformations(Sum("d", "10"), Sum("e", "20"))));
    EXPECT_EQ(refusal.GetErrorCode(), 260125);
    EXPECT_EQ(refusal.GetArguments(),
              (std::vector<std::string>{"d", "DataDictionary", "TransformationDictionary"}));
}

TEST(Transformations, LocalSectionWithoutFieldsHidesTheGlobalOneFromTheReader)
{
    const std::string text = WithTransformations(Sum("d", "10"), "<Extension/>");
    EXPECT_EQ(RefusalOf(UsingDerived(text)).GetErrorCode(), 260125);
    EXPECT_NE(ReadModel(text)->GetTransformationDictionary(), nullptr);
}

TEST(Transformations, SectionWithoutFieldsLeavesNone)
{
    const auto model = ReadModel(WithTransformations("<Extension/>", ""));
    EXPECT_EQ(model->GetTransformationDictionary(), nullptr);
    EXPECT_FALSE(model->NeedDerivedPredictor());
}

TEST(Targets, AreReadFromBelowTheModelAndLeaveTheScoresToTheHost)
{
    const std::string targets =
        "<Targets><Target field=\"y\" max=\"5\" rescaleFactor=\"10\"/></Targets>";
    const std::string end = "</GeneralRegressionModel>";
    const auto declared = ReadModel(With(kGeneralLinearDocument, end, targets + end));
    const auto* var = static_cast<const DictVar*>(declared->GetTargetVar());
    ASSERT_NE(var->GetTargetDeclaration(), nullptr);
    EXPECT_EQ(var->GetTargetDeclaration()->maximum, 5.0);
    EXPECT_EQ(var->GetTargetDeclaration()->rescaleFactor, 10.0);
    Case c;
    c.With("f", "b").With("x", 2).With("w", 4);
    EXPECT_EQ(Score(*declared, c), 17.0);  // neither limited nor scaled

    // Below the root they aren't seen.
    const auto elsewhere = ReadModel(With(kGeneralLinearDocument, end, end + targets));
    EXPECT_EQ(static_cast<const DictVar*>(elsewhere->GetTargetVar())->GetTargetDeclaration(),
              nullptr);
}

TEST(Describe, TellsTheEquationAndWhatACaseIsReadFor)
{
    const auto model = ReadModel(UsingDerived(WithTransformations(Sum("d", "10"), "")));
    ModelDescription description;
    model->Describe(description);
    EXPECT_EQ(description.className, "GLRModel");
    EXPECT_EQ(description.target, "y");
    EXPECT_EQ(description.factors, std::vector<std::string>{"f"});
    EXPECT_EQ(description.covariates, (std::vector<std::string>{"x", "d", "w"}));
    EXPECT_EQ(description.variables, (std::vector<std::string>{"f", "x", "d", "w"}));
    EXPECT_TRUE(description.hasCovariances);
    ASSERT_EQ(description.equations.size(), 1u);
    const auto& terms = description.equations[0].terms;
    ASSERT_EQ(terms.size(), 4u);
    EXPECT_EQ(terms[0].label, "Intercept");
    EXPECT_TRUE(terms[0].factors.empty());
    ASSERT_EQ(terms[3].factors.size(), 2u);
    EXPECT_EQ(terms[3].factors[0].category, "b");
    EXPECT_TRUE(terms[3].factors[0].isCategory);
    EXPECT_EQ(terms[3].factors[1].predictor, "w");
    EXPECT_EQ(terms[3].beta, 0.5);
}

TEST(Describe, LinearModelPairsSlopesWithPredictorsByPosition)
{
    ModelDescription description;
    ReadModel(kLinearDocument)->Describe(description);
    const auto& terms = description.equations.at(0).terms;
    ASSERT_EQ(terms.size(), 3u);
    EXPECT_EQ(terms[0].factors.at(0).predictor, "x");
    EXPECT_EQ(terms[1].factors.at(0).predictor, "w");
    EXPECT_TRUE(terms[2].factors.empty());
}

}  // namespace
}  // namespace MCVelscore_850
