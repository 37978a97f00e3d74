// Documents as models: what is told of them, what is set on them, and why one is refused.
#include "engine/documents/loadedmodel.h"

#include <sstream>

#include <gtest/gtest.h>

#include "engine/documents/documentloader.h"
#include "engine/documents/outputfield.h"
#include "host/messages/messages.h"
#include "host/model/scoremodel.h"
#include "tests/engine/smallmodels.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

TEST(LoadedModel, TellsWhatItIs)
{
    const LoadedModel model = OpenText(TestModel().Text());
    EXPECT_EQ(model.File(), "model.pmml");
    EXPECT_EQ(model.Version(), "4.4");
    EXPECT_EQ(model.Columns(), (Texts{"sex", "x"}));
    EXPECT_EQ(model.Description().target, "y");
    EXPECT_EQ(model.Description().className, "GLRModel");
    EXPECT_TRUE(model.Adaptations().empty());
    EXPECT_TRUE(model.Notices().empty());
    EXPECT_EQ(model.Output(), nullptr);
    EXPECT_EQ(model.Verification(), nullptr);
    EXPECT_EQ(model.Sha256(), "");
    std::ostringstream told;
    model.Display(told);
    EXPECT_NE(told.str().find("p2"), std::string::npos) << told.str();
}

// The digest is sha256sum's of a file with these bytes.
TEST(LoadedModel, KeepsDigestAndTextWhereTheyAreAskedFor)
{
    const ScratchFolder folder;
    const std::string bytes = CoxText();
    const std::string path = folder.Write("cox.pmml", bytes);
    const auto plugin = std::make_shared<Plugin>(VELSCORE_PLUGIN);
    std::string text;
    const LoadedModel ofFile(path, plugin, {.digest = true, .text = &text});
    EXPECT_EQ(ofFile.File(), path);
    EXPECT_EQ(ofFile.Sha256(), "5351cc0849a89352cec4618c6deeb3255c15ae6bbd7073c7e51f24733041c1fd");
    EXPECT_EQ(text, bytes);
    text.clear();
    const LoadedModel ofText(DocumentText{bytes, "cox"}, plugin, {.digest = true, .text = &text});
    EXPECT_EQ(ofText.Sha256(), ofFile.Sha256());
    EXPECT_EQ(text, bytes);
    Document document = LoadDocumentText(bytes, "tree.pmml");
    const LoadedModel ofTree(document, plugin, {});
    EXPECT_EQ(ofTree.File(), "tree.pmml");
    EXPECT_EQ(ofTree.Columns(), (Texts{"x", "time"}));
    // Also of a document that is refused.
    text.clear();
    const std::string faulty = Replaced(bytes, "<Predictor name='x'/>", "<Predictor name='q'/>");
    EXPECT_THROW(OpenText(faulty, {.text = &text}), DocumentFailure);
    EXPECT_EQ(text, faulty);
}

// Twice x through a chain of derived fields, and x itself.
TEST(LoadedModel, ColumnsHaveTheFieldsThatDerivedOnesAreComputedFrom)
{
    TestModel model;
    model.afterSchema =
        "<LocalTransformations>"
        "<DerivedField name='d' optype='continuous' dataType='double'><Apply function='+'>"
        "<FieldRef field='e'/><FieldRef field='x'/></Apply></DerivedField>"
        "<DerivedField name='e' optype='continuous' dataType='double'>"
        "<FieldRef field='z'/></DerivedField></LocalTransformations>";
    std::string text = Replaced(model.Text(), "<Predictor name=\"x\"/>", "<Predictor name=\"d\"/>");
    text = Replaced(text, "predictorName=\"x\"", "predictorName=\"d\"");
    text = Replaced(text, "<DataField name=\"x\"",
                    "<DataField name=\"z\" optype=\"continuous\" dataType=\"double\"/>"
                    "<DataField name=\"x\"");
    text = Replaced(text, "<MiningField name=\"x\"",
                    "<MiningField name=\"z\"/><MiningField name=\"x\"");
    const LoadedModel opened = OpenText(text);
    EXPECT_EQ(opened.Columns(), (Texts{"sex", "z", "x"}));
    ModelDescription fewer;
    fewer.variables = {"d", "nobody", "x"};
    EXPECT_EQ(opened.ColumnsOf(fewer), (Texts{"z", "x"}));
}

TEST(LoadedModel, PolicyIsTheModels)
{
    LoadedModel model = OpenText(TestModel().Text());
    EXPECT_TRUE(model.Substitutes());
    const struct {
        MissingPolicy policy;
        ScoreModel::MVPolicy ofModel;
        bool substitutes;
    } rows[] = {{MissingPolicy::SysmisResult, ScoreModel::MV_SYSMIS_RESULT, false},
                {MissingPolicy::Substitute, ScoreModel::MV_SUBSTITUTE, true},
                {MissingPolicy::StatusOnly, ScoreModel::MV_STATUS_ONLY, false}};
    for (const auto& row : rows) {
        model.SetPolicy(row.policy);
        EXPECT_EQ(model.Model().GetMissingValuePolicy(), row.ofModel);
        EXPECT_EQ(model.Substitutes(), row.substitutes);
    }
}

// Among other results than a linear one's it could change the prediction.
TEST(LoadedModel, PredictionOnlyIsForModelsWithStandardErrors)
{
    for (const auto& [text, expected] :
         {std::pair(TestModel().Text(), true), std::pair(ClassifyingText(), false),
          std::pair(CoxText(), false)}) {
        LoadedModel model = OpenText(text);
        EXPECT_FALSE(model.Model().GetPredictionOnly());
        model.WantPredictionOnly();
        EXPECT_EQ(model.Model().GetPredictionOnly(), expected) << model.Description().className;
    }
}

TEST(LoadedModel, LimitsTellTheirLevel)
{
    LoadedModel model = OpenText(TestModel().Text());
    const auto meaning = [&] {
        for (const auto& quantity : model.Description().quantities) {
            if (quantity.column == "ci_lower") return quantity.meaning;
        }
        return std::string();
    };
    EXPECT_NE(meaning().find("95%"), std::string::npos) << meaning();
    model.SetConfidenceLevel(0.9);
    EXPECT_EQ(model.Model().GetConfidenceLevel(), 0.9);
    EXPECT_NE(meaning().find("90%"), std::string::npos) << meaning();
    EXPECT_EQ(model.Description().variables.size(), 2U);  // described anew, not more
}

constexpr char kRegression[] =
    "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'><Header/><DataDictionary>"
    "<DataField name='y' optype='continuous' dataType='double'/>"
    "<DataField name='x' optype='continuous' dataType='double'/></DataDictionary>"
    "<RegressionModel functionName='regression'><MiningSchema>"
    "<MiningField name='y' usageType='target'/><MiningField name='x'/></MiningSchema>"
    "<RegressionTable intercept='1'><NumericPredictor name='x' coefficient='2'/>"
    "</RegressionTable></RegressionModel></PMML>";

TEST(LoadedModel, ARegressionModelIsCalledWhatItIs)
{
    LoadedModel model = OpenText(kRegression);
    EXPECT_EQ(model.Description().className, "RegressionModel");
    EXPECT_EQ(model.Description().distribution, "");
    EXPECT_NE(model.Description().family, "");
    EXPECT_EQ(model.Adaptations().size(), 1U);
    // As the document is, nothing reads it.
    EXPECT_THROW(OpenText(kRegression, {.asIs = true}), Failure);
}

// A binary model whose betas are of its first category: the adapter declares that one last, and
// columns come as the document has them.
TEST(LoadedModel, ColumnsKeepTheDocumentsOrderOfCategories)
{
    std::string text = Replaced(ClassifyingText(), "targetReferenceCategory='no'",
                                "algorithmName='contrastLogistic'");
    for (int i = 0; i < 2; ++i) {
        text = Replaced(text, "targetCategory='yes'", "targetCategory='no'");
    }
    const LoadedModel model = OpenText(text);
    ASSERT_EQ(model.DocumentFindings().Kept().size(), 1U);
    EXPECT_EQ(model.DocumentFindings().Kept()[0].rule->name, "beta-category-last");
    EXPECT_EQ(model.Description().targetCategories, (Texts{"no", "yes"}));
    Texts columns;
    for (const auto& quantity : model.Description().quantities) columns.push_back(quantity.column);
    EXPECT_EQ(columns, (Texts{"prediction", "probability(no)", "probability(yes)"}));
}

TEST(LoadedModel, AFactorsCategoriesMayBeThoseOfTheCells)
{
    TestModel model;
    model.sexField = "<DataField name='sex' optype='categorical' dataType='string'/>";
    EXPECT_EQ(OpenText(model.Text()).ListedByCells(), Texts{"sex"});
    EXPECT_EQ(OpenText(TestModel().Text()).ListedByCells(), Texts{});
}

TEST(LoadedModel, LacksWhatIsAskedForAndIsNotThere)
{
    struct Row {
        LoadOptions options;
        int code;
    };
    const Row rows[] = {{{.output = OutputColumns::Document}, kNoOutputSection},
                        {{.verification = true}, kNoVerification}};
    for (const Row& row : rows) {
        try {
            OpenText(TestModel().Text(), row.options);
            ADD_FAILURE() << "taken";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), row.code);
            EXPECT_EQ(failure.Kind(), FailureKind::Document);
            EXPECT_EQ(failure.Arguments(), Texts{"model.pmml"});
        }
    }
    EXPECT_EQ(OpenText(TestModel().Text(), {.output = OutputColumns::DocumentIfAny}).Output(),
              nullptr);
    TestModel model;
    model.afterSchema = "<Output><OutputField name='fit'/></Output>";
    EXPECT_EQ(OpenText(model.Text()).Output(), nullptr);
    for (const OutputColumns columns : {OutputColumns::DocumentIfAny, OutputColumns::Document}) {
        const LoadedModel opened = OpenText(model.Text(), {.output = columns});
        ASSERT_NE(opened.Output(), nullptr);
        EXPECT_EQ(opened.Output()->fields.size(), 1U);
    }
}

template <class Refusal>
const Refusal RefusalOf(const std::string& text, const LoadOptions& options = {})
{
    try {
        OpenText(text, options);
    } catch (const Refusal& refusal) {
        return refusal;
    }
    throw std::runtime_error("taken");
}

// The first by place is told first, but a misspelt name before all others.
TEST(DocumentFaults, AMisspeltNameGoesBeforeWhatComesOfIt)
{
    const std::string twice =
        Replaced(Replaced(TestModel().Text(), "parameterName=\"p1\"/>", "parameterName=\"q\"/>"),
                 "predictorName=\"sex\" parameterName", "predictorName=\"other\" parameterName");
    const auto first = RefusalOf<DocumentFaults>(twice);
    EXPECT_EQ(first.Code(), kDocumentFault);
    EXPECT_EQ(first.File(), "model.pmml");
    EXPECT_EQ(first.Found().CountOf(Answer::Fault), first.Found().Kept().size());
    const auto& kept = first.Found().Kept();
    ASSERT_GE(kept.size(), 2U);
    EXPECT_EQ(first.Line(), kept[0].place.line);
    EXPECT_EQ(first.Column(), kept[0].place.column);
    EXPECT_EQ(first.ElementPath(), kept[0].place.path);
    EXPECT_EQ(first.Arguments(), (Texts{kept[0].text, std::string(kept[0].rule->name)}));
    EXPECT_TRUE(first.Remedy().starts_with(kept[0].remedy)) << first.Remedy();
    EXPECT_LT(kept[0].place.line, kept[1].place.line);
    EXPECT_NE(kept[0].text.find("\"q\""), std::string::npos) << kept[0].text;

    const auto misspelt = RefusalOf<DocumentFaults>(
        Replaced(twice, "<PCell parameterName=\"p0\"", "<PCel parameterName=\"p0\""));
    EXPECT_NE(misspelt.Arguments().at(0).find("PCel"), std::string::npos)
        << misspelt.Arguments().at(0);
}

TEST(DocumentFaults, AreNoticesWhereTheyAreAllowed)
{
    const std::string text =
        Replaced(TestModel().Text(), "name=\"sex\" usageType", "name=\"sex\" usagetype");
    const auto refusal = RefusalOf<DocumentFaults>(text);
    const std::string rule = refusal.Arguments().at(1);
    EXPECT_EQ(rule, "misspelt-attribute");
    const LoadedModel allowed = OpenText(text, {.allowed = {rule}});
    ASSERT_EQ(allowed.Notices().size(), 1U);
    EXPECT_NE(allowed.Notices()[0].find("usagetype"), std::string::npos);
    EXPECT_TRUE(allowed.Adaptations().empty());
    EXPECT_TRUE(OpenText(text, {.asIs = true}).Notices().empty());
}

// What the reader refuses has its place; what was noticed before it is told beside it.
TEST(DocumentFailure, OfTheReaderTellsItsPlaceAndWhatWasFound)
{
    TestModel model;
    model.afterSchema = "<Output><OutputField name='who' feature='clusterId'/></Output>";
    const std::string text = Replaced(model.Text(), "version=\"4.4\"", "version=\"4.4.1\"");
    const auto refusal = RefusalOf<DocumentFailure>(text, {.output = OutputColumns::Document});
    EXPECT_EQ(refusal.Code(), kOutputFeature);
    EXPECT_EQ(refusal.File(), "model.pmml");
    EXPECT_EQ(refusal.ElementPath(), "PMML/GeneralRegressionModel/Output/OutputField");
    // Its line and column in the text as it stands.
    const size_t at = text.find("<OutputField");
    const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<long>(at), '\n');
    EXPECT_EQ(refusal.Line(), static_cast<unsigned long>(line));
    EXPECT_EQ(refusal.Column(), at - text.rfind('\n', at));
    ASSERT_EQ(refusal.Found().Kept().size(), 1U);
    EXPECT_EQ(refusal.Found().Kept()[0].rule->name, "short-version");
    EXPECT_EQ(refusal.Found().Kept()[0].answer, Answer::Adapted);
}

}  // namespace
}  // namespace MCVelscore_850
