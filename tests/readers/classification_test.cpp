// Documents of the families that predict a category, and of conditional logistic regression.

#include <gtest/gtest.h>

#include <cmath>

#include "host/messages/messages.h"
#include "models/blrmodel.h"
#include "models/clrmodel.h"
#include "models/mlrmodel.h"
#include "models/ogzlrmodel.h"
#include "models/ormodel.h"
#include "tests/models/modelfixture.h"
#include "tests/readers/logisticdocument.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;
using Texts = std::vector<std::string>;
using Matrix = RegressionModel::Matrix;

constexpr double kRounding = 1e-15;
double Logistic(double lp) { return 1.0 / (1.0 + std::exp(-lp)); }

// The covariates x and w, two parameters, no factor.
void UseTwoCovariates(LogisticDocument& document)
{
    document.fields =
        "<DataField name='x' optype='continuous' dataType='double'/>"
        "<DataField name='w' optype='continuous' dataType='double'/>";
    document.schema =
        "<MiningField name='y' usageType='target'/><MiningField name='x'/>"
        "<MiningField name='w'/>";
    document.parameters = "<Parameter name='p0'/><Parameter name='p1'/>";
    document.factors = "";
}

// Target y (a, b, c), covariate x, parameters p0 and p1.
LogisticDocument ThreeCategories()
{
    LogisticDocument document;
    document.selector = "";
    document.target =
        "<DataField name='y' optype='ordinal' dataType='string'>"
        "<Value value='a'/><Value value='b'/><Value value='c'/></DataField>";
    UseTwoCovariates(document);
    document.cells = "<PPCell value='1' predictorName='x' parameterName='p1'/>";
    document.betas =
        "<PCell targetCategory='a' parameterName='p0' beta='-0.5'/>"
        "<PCell targetCategory='b' parameterName='p0' beta='1'/>"
        "<PCell parameterName='p1' beta='2'/>";
    return document;
}

LogisticDocument Multinomial(const std::string& selector = "")
{
    LogisticDocument document = ThreeCategories();
    document.selector = selector;
    document.betas =
        "<PCell targetCategory='b' parameterName='p0' beta='-0.5'/>"
        "<PCell targetCategory='b' parameterName='p1' beta='2'/>"
        "<PCell targetCategory='c' parameterName='p1' beta='1'/>";
    return document;
}

LogisticDocument OrdinalDocument(const std::string& selector = "ordinalRegression")
{
    LogisticDocument document = ThreeCategories();
    document.modelType = "ordinalMultinomial";
    document.selector = selector;
    return document;
}

LogisticDocument Conditional()
{
    LogisticDocument document;
    document.selector = "conditionalLogistic";
    UseTwoCovariates(document);
    document.covariates = "<Predictor name='x'/><Predictor name='w'/>";
    document.cells =
        "<PPCell value='1' predictorName='x' parameterName='p0'/>"
        "<PPCell value='1' predictorName='w' parameterName='p1'/>";
    document.betas =
        "<PCell targetCategory='no' parameterName='p0' beta='1'/>"
        "<PCell targetCategory='no' parameterName='p1' beta='2'/>";
    return document;
}

void Refuses(const LogisticDocument& document, int code, const Texts& arguments)
{
    const VSException refusal = RefusalOf(document.Text());
    EXPECT_EQ(refusal.GetErrorCode(), code) << refusal.GetText();
    EXPECT_EQ(refusal.GetArguments(), arguments);
}

template <class Model>
std::unique_ptr<Model> Read(const LogisticDocument& document)
{
    std::unique_ptr<RegressionModel> model = ReadModel(document.Text());
    Model* exact = dynamic_cast<Model*>(model.get());
    EXPECT_NE(exact, nullptr);
    model.release();
    return std::unique_ptr<Model>(exact);
}

// Binary.

TEST(BinaryDocument, IsScored)
{
    const auto model = Read<BLRModel>(LogisticDocument());
    Slot slot;
    struct Row {
        const char* f;
        double x;
        double lp;
    };
    for (const Row& row : {Row{"u", 1, 5.5}, Row{"v", -0.5, -2.0}, Row{"w", 0, -0.5}}) {
        Case c;
        c.With("f", row.f).With("x", row.x);
        ASSERT_TRUE(model->GetScore(&c.Record(), slot.result, true).IsOK());
        EXPECT_NEAR(slot.Percent("yes"), Logistic(row.lp), kRounding) << row.f;
    }
}

TEST(BinaryDocument, CellsNameOneCategoryAndTheModelKeepsIt)
{
    const auto model = Read<BLRModel>(LogisticDocument());
    EXPECT_EQ(model->GetRefCategory()->GetString(), "yes");
    LogisticDocument document;
    document.betas = With(document.betas, "'yes' parameterName='pv'", "'no' parameterName='pv'");
    Refuses(document, 260127, {"no", "y"});
    document.betas =
        With(LogisticDocument().betas, "'yes' parameterName='pv'", "'maybe' parameterName='pv'");
    Refuses(document, 260127, {"maybe", "y"});
    document.betas = With(LogisticDocument().betas, "targetCategory='yes' parameterName='pv'",
                          "parameterName='pv'");
    Refuses(document, 260115, {"targetCategory", "PCell"});
}

TEST(BinaryDocument, NumericCategoriesAreOneWhateverTheirSpelling)
{
    LogisticDocument document;
    document.target =
        "<DataField name='y' optype='categorical' dataType='integer'>"
        "<Value value='0'/><Value value='1'/></DataField>";
    for (const char* spelling : {"1.0", "1", "1e0", " 1 "}) {
        document.betas = With(document.betas, "targetCategory='yes'",
                              std::string("targetCategory='") + spelling + "'");
    }
    const auto model = Read<BLRModel>(document);
    EXPECT_EQ(model->GetRefCategory()->GetString(), "1");
    EXPECT_EQ(model->GetParamTable()->GetCell("1", "px")->GetBeta(), 3.0);
}

TEST(BinaryDocument, TargetNeedsTwoCategories)
{
    const char* targets[] = {
        "<DataField name='y' optype='categorical' dataType='string'><Value value='no'/>"
        "<Value value='yes'/><Value value='maybe'/></DataField>",
        "<DataField name='y' optype='categorical' dataType='string'><Value value='yes'/>"
        "<Value value='no' property='missing'/></DataField>",
        "<DataField name='y' optype='continuous' dataType='double'/>",
    };
    for (const char* target : targets) {
        LogisticDocument document;
        document.target = target;
        Refuses(document, 260181, {"Value", "y"});
    }
    LogisticDocument open;
    open.target = "<DataField name='y' optype='categorical' dataType='string'/>";
    Refuses(open, 260126, {"y"});
}

TEST(BinaryDocument, TargetReferenceCategoryIsReadFrom40On)
{
    LogisticDocument document;
    document.attributes = "targetReferenceCategory='yes'";
    struct Row {
        const char* version;
        const char* category;
    };
    for (const Row& row : {Row{"4.0", "yes"}, Row{"4.4", "yes"}, Row{"3.2", ""}, Row{"3.1", ""}}) {
        document.version = row.version;
        EXPECT_EQ(Read<BLRModel>(document)->GetTargetReferenceCategory(), row.category)
            << row.version;
    }
    document.version = "4.0";
    document.attributes = "targetReferenceCategory=''";
    EXPECT_EQ(Read<BLRModel>(document)->GetTargetReferenceCategory(), "");
    document.attributes = "targetReferenceCategory='other'";  // not compared with the target
    EXPECT_EQ(Read<BLRModel>(document)->GetTargetReferenceCategory(), "other");
}

TEST(BinaryDocument, CutoffIsALeadingExtension)
{
    LogisticDocument document;
    document.leading = "<Extension name='cutoff' value='0.3'/>";
    EXPECT_EQ(Read<BLRModel>(document)->GetCutoff(), 0.3);
    document.leading = "<Extension name='Cutoff' value='0.3'/><Extension name='other' value='x'/>";
    EXPECT_EQ(Read<BLRModel>(document)->GetCutoff(), 0.0);
    document.leading = "<Other/><Extension name='cutoff' value='0.3'/>";
    EXPECT_EQ(Read<BLRModel>(document)->GetCutoff(), 0.0);
    document.leading = "<Extension name='cutoff' value='half'/>";
    Refuses(document, kNotANumber, {"half", "value"});
    document.leading = "<Extension name='cutoff'/>";
    Refuses(document, kNotANumber, {"", "Extension"});
    // No other family reads it, whatever it says.
    for (LogisticDocument other : {Multinomial(), OrdinalDocument(), Conditional()}) {
        other.leading = "<Extension name='cutoff' value='half'/>";
        EXPECT_EQ(RefusalOf(other.Text()).GetErrorCode(), 0) << other.modelType << other.selector;
    }
}

TEST(BinaryDocument, EmptyParameterListIsRefused)
{
    LogisticDocument document;
    document.parameters = "";
    Refuses(document, 260283, {"ParameterList"});
}

TEST(BinaryDocument, AllowedMissingFactorsAreReadOfEveryFamily)
{
    for (LogisticDocument document :
         {LogisticDocument(), Multinomial(), OrdinalDocument(), Conditional()}) {
        EXPECT_FALSE(ReadModel(document.Text())->GetAllowMissingFactors());
        document.leading = "<Extension name='allowMissingFactors' value='true'/>";
        document.attributes = "modelDF='12.5'";
        const auto model = ReadModel(document.Text());
        EXPECT_TRUE(model->GetAllowMissingFactors());
        EXPECT_EQ(model->GetDF(), 12.5);
    }
}

// Multinomial.

TEST(MultinomialDocument, IsScored)
{
    const auto model = Read<MLRModel>(Multinomial());
    EXPECT_EQ(model->GetPCovMatrix(), nullptr);
    Case c;
    c.With("x", 0.5).With("w", 0);
    Slot slot;
    ASSERT_TRUE(model->GetScore(&c.Record(), slot.result, true).IsOK());
    // linear predictors 0, -0.5 + 2 * 0.5, 0.5
    const double sum = 1.0 + 2.0 * std::exp(0.5);
    EXPECT_NEAR(slot.Percent("a"), 1.0 / sum, kRounding);
    EXPECT_NEAR(slot.Percent("b"), std::exp(0.5) / sum, kRounding);
    EXPECT_NEAR(slot.Percent("c"), std::exp(0.5) / sum, kRounding);
    EXPECT_EQ(slot.Text(), "b");
}

TEST(MultinomialDocument, OffsetAttributesAreNotRead)
{
    LogisticDocument document = Multinomial();
    document.attributes = "offsetValue='x' offsetVariable='nowhere'";
    const auto model = Read<MLRModel>(document);
    EXPECT_EQ(model->GetOffsetVar(), nullptr);
    EXPECT_EQ(model->GetOffsetValue(), 0.0);
}

TEST(MultinomialDocument, CellsNeedACategoryOfTheTarget)
{
    LogisticDocument document = Multinomial();
    document.betas = "<PCell parameterName='p0' beta='1'/>";
    Refuses(document, 260115, {"targetCategory", "PCell"});
    document.betas = "<PCell targetCategory='z' parameterName='p0' beta='1'/>";
    Refuses(document, 260127, {"z", "y"});
    document.betas = "<PCell targetCategory='a' parameterName='q' beta='1'/>";
    Refuses(document, 260258, {"a", "targetCategory", "q", "parameterName", "PCell"});
}

TEST(MultinomialDocument, TargetWithoutCategoriesIsRefused)
{
    for (const char* modelType : {"multinomialLogistic", "ordinalMultinomial"}) {
        LogisticDocument document = Multinomial();
        document.modelType = modelType;
        document.target = "<DataField name='y' optype='continuous' dataType='double'/>";
        document.parameters = "<Parameter name='p0'/>";
        document.covariates = "";
        document.cells = "";
        document.betas = "";
        Refuses(document, kTargetWithoutCategories, {"y", modelType});
        document.target = "<DataField name='y' optype='categorical' dataType='string'/>";
        Refuses(document, 260126, {"y"});
    }
}

// Conditional.

TEST(ConditionalDocument, IsScored)
{
    const auto model = Read<CLRModel>(Conditional());
    EXPECT_EQ(model->GetMissingValuePolicy(), ScoreModel::MV_SYSMIS_RESULT);
    Case c;
    c.With("x", 0.5).With("w", -1);
    Slot slot;
    ASSERT_TRUE(model->GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_NEAR(slot.Number(), Logistic(-1.5), kRounding);
}

TEST(ConditionalDocument, CellsNameTheFirstCategory)
{
    LogisticDocument document = Conditional();
    document.betas = "<PCell targetCategory='yes' parameterName='p0' beta='1'/>";
    Refuses(document, 260258, {"yes", "targetCategory", "p0", "parameterName", "PCell"});
    document.betas = "<PCell targetCategory='CLRdummy' parameterName='p0' beta='1'/>";
    Refuses(document, 260127, {"CLRdummy", "y"});
}

TEST(ConditionalDocument, InterceptIsRefused)
{
    const Texts arguments{"intercept", "label", "multinomialLogistic"};
    // By its label, be it the constant's.
    LogisticDocument labelled = Conditional();
    labelled.parameters = "<Parameter name='p0' label='Intercept'/><Parameter name='p1'/>";
    Refuses(labelled, 260192, arguments);
    labelled.parameters =
        "<Parameter name='p0'/><Parameter name='p1'/>"
        "<Parameter name='(Constant)' label='Intercept'/>";
    Refuses(labelled, 260192, arguments);
    labelled.parameters = "<Parameter name='p0' label='intercept'/><Parameter name='p1'/>";
    EXPECT_EQ(RefusalOf(labelled.Text()).GetErrorCode(), 0);
    // By counting: one cell fewer than parameters, whatever the cells name.
    LogisticDocument counted = Conditional();
    counted.cells = "<PPCell value='1' predictorName='x' parameterName='p0'/>";
    Refuses(counted, 260192, arguments);
    counted.parameters += "<Parameter name='p2'/><Parameter name='p3'/>";
    EXPECT_EQ(RefusalOf(counted.Text()).GetErrorCode(), 0);  // three fewer
    counted.cells =
        "<PPCell value='1' predictorName='x' parameterName='p0'/>"
        "<PPCell value='1' predictorName='w' parameterName='p0'/>"
        "<PPCell value='1' predictorName='w' parameterName='p0'/>";
    Refuses(counted, 260192, arguments);
    counted.cells += "<PPCell value='1' predictorName='w' parameterName='p1'/>";
    EXPECT_EQ(RefusalOf(counted.Text()).GetErrorCode(), 0);  // as many, though two have none
    counted.cells = "";
    EXPECT_EQ(RefusalOf(counted.Text()).GetErrorCode(), 0);
    // A target without a list counts alike.
    LogisticDocument continuous = Conditional();
    continuous.target = "<DataField name='y' optype='continuous' dataType='double'/>";
    Refuses(continuous, 260192, arguments);
}

TEST(ConditionalDocument, LabelOfTheConstantCountsAsAnyOther)
{
    // Three parameters and three cells: by counting there is no intercept.
    LogisticDocument document = Conditional();
    document.parameters =
        "<Parameter name='p0'/><Parameter name='p1'/><Parameter name='(Constant)'/>";
    document.cells += "<PPCell value='1' predictorName='x' parameterName='(Constant)'/>";
    EXPECT_EQ(RefusalOf(document.Text()).GetErrorCode(), 0);
    document.parameters =
        With(document.parameters, "'(Constant)'", "'(Constant)' label='Intercept'");
    Refuses(document, 260192, {"intercept", "label", "multinomialLogistic"});
    // The words in each other's place say nothing.
    document.parameters = With(document.parameters, "label='Intercept'", "label='(Constant)'");
    document.parameters += "<Parameter name='Intercept'/>";
    document.cells += "<PPCell value='1' predictorName='w' parameterName='Intercept'/>";
    EXPECT_EQ(RefusalOf(document.Text()).GetErrorCode(), 0);
    const auto model = Read<CLRModel>(document);
    EXPECT_EQ(model->GetParameterIndex("Intercept"), 2);
    EXPECT_EQ(model->GetParameterIndex("(Constant)"), 3);
}

TEST(ConditionalDocument, TargetThatDeclaresNoValidValueHasNoList)
{
    LogisticDocument document = Conditional();
    document.target = With(document.target, "value='no'", "value='no' property='missing'");
    document.target = With(document.target, "value='yes'", "value='yes' property='missing'");
    Refuses(document, 260192, {"intercept", "label", "multinomialLogistic"});
}

TEST(ConditionalDocument, WithoutPredictorsIsNotSetUp)
{
    LogisticDocument document = Conditional();
    document.covariates = "";
    document.cells = "";
    Refuses(document, 260304, {});
    document = Conditional();
    document.target = With(document.target, "'no'", "'CLRdummy'");
    Refuses(document, 260304, {});
}

TEST(OtherDocuments, InterceptLabelIsNoFault)
{
    for (LogisticDocument document : {LogisticDocument(), Multinomial(), OrdinalDocument()}) {
        document.parameters = With(document.parameters, "name='p0'", "name='p0' label='Intercept'");
        EXPECT_EQ(RefusalOf(document.Text()).GetErrorCode(), 0) << document.modelType;
    }
}

// Ordinal.

Matrix BetasOf(const RegressionModel& model)
{
    Matrix betas;
    for (int c = 0; c < static_cast<int>(model.GetCategoryMap().size()); ++c) {
        betas.emplace_back();
        for (int p = 0; p < model.GetParamTable()->GetNumOfParameters(); ++p) {
            betas.back().push_back(model.GetParamTable()->GetCell(c, p)->GetBeta());
        }
    }
    return betas;
}

TEST(OrdinalDocumentCells, FirstOnesAreThresholdsAndTheRestFallToTheLastCategoryNamed)
{
    for (const char* selector : {"ordinalRegression", "GZLM"}) {
        const auto model = ReadModel(OrdinalDocument(selector).Text());
        EXPECT_EQ(BetasOf(*model), (Matrix{{-0.5, 0}, {1, 2}, {0, 0}})) << selector;
        // A category of a later cell is not looked at, not even whether it is one.
        LogisticDocument named = OrdinalDocument(selector);
        for (const char* category : {"a", "c", "nonsense"}) {
            named.betas =
                With(OrdinalDocument().betas, "<PCell parameterName='p1'",
                     std::string("<PCell targetCategory='") + category + "' parameterName='p1'");
            EXPECT_EQ(BetasOf(*ReadModel(named.Text())), (Matrix{{-0.5, 0}, {1, 2}, {0, 0}}))
                << category;
        }
    }
}

TEST(OrdinalDocumentCells, AreCountedAndNotTheirCategories)
{
    // Two cells of one category are two: the threshold of b then falls to a.
    LogisticDocument document = OrdinalDocument();
    document.betas =
        "<PCell targetCategory='a' parameterName='p0' beta='-0.5'/>"
        "<PCell targetCategory='a' parameterName='p1' beta='7'/>"
        "<PCell targetCategory='b' parameterName='p0' beta='1'/>"
        "<PCell targetCategory='b' parameterName='p1' beta='2'/>";
    EXPECT_EQ(BetasOf(*ReadModel(document.Text())), (Matrix{{1, 2}, {0, 0}, {0, 0}}));
    // Any parameter counts.
    document.betas =
        "<PCell targetCategory='a' parameterName='p0' beta='-0.5'/>"
        "<PCell targetCategory='b' parameterName='p1' beta='2'/>"
        "<PCell targetCategory='a' parameterName='p0' beta='1'/>";
    EXPECT_EQ(BetasOf(*ReadModel(document.Text())), (Matrix{{-0.5, 0}, {1, 2}, {0, 0}}));
}

TEST(OrdinalDocumentCells, ThresholdsNeedTheirCategory)
{
    LogisticDocument document = OrdinalDocument();
    document.betas =
        "<PCell targetCategory='a' parameterName='p0' beta='-0.5'/>"
        "<PCell parameterName='p0' beta='1'/>";
    Refuses(document, 260115, {"targetCategory", "PCell"});
    document.betas = "<PCell targetCategory='d' parameterName='p0' beta='-0.5'/>";
    Refuses(document, 260127, {"d", "y"});
    document.betas =
        "<PCell targetCategory='a' parameterName='p0' beta='-0.5'/>"
        "<PCell targetCategory='b' parameterName='p0' beta='1'/>"
        "<PCell parameterName='q' beta='1'/>";
    Refuses(document, 260258, {"b", "targetCategory", "q", "parameterName", "PCell"});
}

TEST(OrdinalDocumentCells, ExtensionsAmongThemAreNotCounted)
{
    LogisticDocument document = OrdinalDocument();
    document.betas = "<Extension/>" + document.betas;
    EXPECT_EQ(BetasOf(*ReadModel(document.Text())), (Matrix{{-0.5, 0}, {1, 2}, {0, 0}}));
}

TEST(OrdinalDocumentCells, NumericCategoriesAreFoundByTheirNumber)
{
    LogisticDocument document = OrdinalDocument();
    document.target =
        "<DataField name='y' optype='ordinal' dataType='integer'>"
        "<Value value='1'/><Value value='2'/><Value value='3'/></DataField>";
    document.betas =
        "<PCell targetCategory='1.0' parameterName='p0' beta='-0.5'/>"
        "<PCell targetCategory='2.00' parameterName='p0' beta='1'/>"
        "<PCell parameterName='p1' beta='2'/>";
    EXPECT_EQ(BetasOf(*ReadModel(document.Text())), (Matrix{{-0.5, 0}, {1, 2}, {0, 0}}));
}

TEST(OrdinalDocument, TargetOfOneCategoryHasNoRowForPredictors)
{
    for (const char* selector : {"ordinalRegression", "GZLM"}) {
        LogisticDocument document = OrdinalDocument(selector);
        document.target =
            "<DataField name='y' optype='ordinal' dataType='string'>"
            "<Value value='a'/></DataField>";
        document.betas = "";
        Refuses(document, kOrdinalTarget, {"y", "1"});
        document.parameters = "<Parameter name='p0'/>";
        document.cells = "";
        document.covariates = "";
        EXPECT_EQ(RefusalOf(document.Text()).GetErrorCode(), 0);
    }
}

TEST(OrdinalDocument, LinkIsTakenByItsWord)
{
    struct Row {
        const char* word;
        int link;
    };
    for (const Row& row : {Row{"logit", 0}, Row{"cauchit", 1}, Row{"cloglog", 2}, Row{"loglog", 3},
                           Row{"probit", 4}, Row{"", 0}, Row{"Probit", 0}, Row{"other", 0}}) {
        LogisticDocument document = OrdinalDocument();
        document.attributes = std::string("linkFunction='") + row.word + "'";
        EXPECT_EQ(Read<ORModel>(document)->GetLinkFunction(), row.link) << row.word;
    }
    LogisticDocument document = OrdinalDocument();
    document.attributes = "cumulativeLink='probit'";  // not where this family looks
    EXPECT_EQ(Read<ORModel>(document)->GetLinkFunction(), 0);
}

TEST(OrdinalDocument, OffsetIsAValueOrAVariable)
{
    LogisticDocument document = OrdinalDocument();
    document.attributes = "offsetValue='0.75'";
    EXPECT_EQ(Read<ORModel>(document)->GetOffsetValue(), 0.75);
    document.attributes = "offsetVariable='w'";
    auto model = Read<ORModel>(document);
    EXPECT_EQ(model->GetOffsetVar()->GetName(), "w");
    EXPECT_EQ(model->GetVarRole("w"), ScoreModel::ROLE_PREDICTOR);  // the schema's
    // Both: the value is read first and stays, the variable is still looked up.
    document.attributes = "offsetValue='0.75' offsetVariable='w'";
    model = Read<ORModel>(document);
    EXPECT_EQ(model->GetOffsetVar(), nullptr);
    EXPECT_EQ(model->GetOffsetValue(), 0.75);
    document.attributes = "offsetValue='' offsetVariable=''";
    EXPECT_EQ(Read<ORModel>(document)->GetOffsetVar(), nullptr);
}

TEST(OrdinalDocument, OffsetRefusals)
{
    LogisticDocument document = OrdinalDocument();
    document.attributes = "offsetValue='much'";
    Refuses(document, kNotANumber, {"much", "offsetValue"});
    document.attributes = "offsetVariable='nowhere'";
    Refuses(document, 260125, {"nowhere", "DataDictionary", "TransformationDictionary"});
    document.attributes = "offsetVariable='y'";
    Refuses(document, 260179, {"ordinal", "optype", "y", "continuous"});
    document.fields = With(document.fields, "name='w' optype='continuous' dataType='double'",
                           "name='w' optype='categorical' dataType='string'");
    document.attributes = "offsetValue='1' offsetVariable='w'";
    Refuses(document, 260179, {"categorical", "optype", "w", "continuous"});
}

TEST(OrdinalDocument, DerivedOffsetAsksForNoDerivedRecord)
{
    LogisticDocument document = OrdinalDocument();
    document.transformations =
        "<TransformationDictionary><DerivedField name='d' optype='continuous' dataType='double'>"
        "<Apply function='+'><FieldRef field='w'/><Constant>1</Constant></Apply></DerivedField>"
        "</TransformationDictionary>";
    document.attributes = "offsetVariable='d'";
    const auto model = Read<ORModel>(document);
    EXPECT_TRUE(model->GetOffsetVar()->IsDerived());
    EXPECT_FALSE(model->NeedDerivedPredictor());
}

TEST(OrdinalDocument, OtherFamiliesDoNotReadItsOffset)
{
    for (LogisticDocument document : {LogisticDocument(), Conditional()}) {
        document.attributes = "offsetValue='much' offsetVariable='nowhere'";
        EXPECT_EQ(RefusalOf(document.Text()).GetErrorCode(), 0);
    }
}

// Covariance cells: what the two categories of one mean.

std::string CovarianceCell(const std::string& parameters, const std::string& categories)
{
    return "<PCovCell " + parameters + " " + categories + " value='7'/>";
}

struct CovarianceFamily {
    const char* what;
    LogisticDocument document;
};

std::vector<CovarianceFamily> CovarianceFamilies()
{
    LogisticDocument binary;
    binary.parameters = "<Parameter name='p0'/><Parameter name='p1'/>";
    binary.factors = "";
    binary.cells = "<PPCell value='1' predictorName='x' parameterName='p1'/>";
    binary.betas = "<PCell targetCategory='yes' parameterName='p1' beta='1'/>";
    binary.target = With(binary.target, "'no'/><Value value='yes'", "'a'/><Value value='b'");
    binary.betas = With(binary.betas, "'yes'", "'b'");
    LogisticDocument conditional = Conditional();
    conditional.target = binary.target;
    conditional.betas = With(conditional.betas, "'no'", "'a'");
    conditional.betas = With(conditional.betas, "'no'", "'a'");
    return {{"0", Multinomial()}, {"1", Multinomial("GZLM")}, {"5", conditional},
            {"6", binary},        {"7", OrdinalDocument()},   {"9", OrdinalDocument("GZLM")}};
}

// The place of the cell with the value 7, row and column with row <= column; or the refusal.
std::string Outcome(const LogisticDocument& document)
{
    const VSException refusal = RefusalOf(document.Text());
    if (refusal.GetErrorCode() != 0) {
        std::string text = std::to_string(refusal.GetErrorCode());
        for (const std::string& argument : refusal.GetArguments()) text += " " + argument;
        return text;
    }
    const auto model = ReadModel(document.Text());
    const auto& cells = model->GetPCovMatrix()->GetCells();
    std::string places = std::to_string(cells.size()) + ":";
    for (size_t r = 0; r < cells.size(); ++r) {
        for (size_t c = r; c < cells.size(); ++c) {
            if (cells[r][c] != 7.0) continue;
            EXPECT_EQ(cells[c][r], 7.0);
            places += " " + std::to_string(r) + "," + std::to_string(c);
        }
    }
    return places;
}

TEST(CovarianceCells, GoWhereTheFamilyPutsThem)
{
    struct Row {
        const char* parameters;
        const char* categories;
        std::map<std::string, std::string> outcomes;  // by family
    };
    const std::string noMultinomial = "260188 tCol tRow multinomialLogistic";
    const std::string column = "260191 tCol multinomialLogistic";
    const std::string row = "260191 tRow multinomialLogistic";
    const std::string notTaken = "260258 p0 pCol p1 pRow PCovCell";
    const Row rows[] = {
        // Neither category. The multinomial form of 1 has no such cells, and refuses them itself.
        {"pRow='p1' pCol='p0'",
         "",
         {{"0", noMultinomial},
          {"1", notTaken},
          {"5", "2: 0,1"},
          {"6", "2: 0,1"},
          {"7", "3: 1,2"},
          {"9", "3: 1,2"}}},
        // An empty one counts as none.
        {"pRow='p1' pCol='p0'",
         "tRow='' tCol=''",
         {{"0", noMultinomial}, {"5", "2: 0,1"}, {"7", "3: 1,2"}}},
        // The column's alone: its threshold, and the row's parameter.
        {"pRow='p1' pCol='p0'",
         "tCol='a'",
         {{"0", column},
          {"1", column},
          {"5", column},
          {"6", column},
          {"7", "3: 0,2"},
          {"9", "3: 0,2"}}},
        // The row's alone.
        {"pRow='p0' pCol='p1'",
         "tRow='b'",
         {{"0", row}, {"1", row}, {"5", row}, {"6", row}, {"7", "3: 1,2"}, {"9", "3: 1,2"}}},
        // Both: parameter of category in the multinomial form (p0 of b and p1 of a: the row's
        // category goes with the column's parameter), two thresholds in the ordinal one.
        {"pRow='p1' pCol='p0'",
         "tRow='b' tCol='a'",
         {{"0", "6: 1,2"},
          {"1", "6: 1,2"},
          {"5", "2: 0,1"},
          {"6", "2: 0,1"},
          {"7", notTaken},
          {"9", notTaken}}},
        {"pRow='p0' pCol='p0'",
         "tRow='b' tCol='a'",
         {{"0", "6: 0,2"},
          {"1", "6: 0,2"},
          {"5", "2: 0,0"},
          {"6", "2: 0,0"},
          {"7", "3: 0,1"},
          {"9", "3: 0,1"}}},
        // A category that the target hasn't.
        {"pRow='p0' pCol='p0'",
         "tRow='z' tCol='a'",
         {{"0", "260258 p0 pCol p0 pRow PCovCell"},
          {"5", "2: 0,0"},
          {"6", "2: 0,0"},
          {"7", "260258 p0 pCol p0 pRow PCovCell"}}},
    };
    for (const CovarianceFamily& family : CovarianceFamilies()) {
        for (const Row& r : rows) {
            const auto wanted = r.outcomes.find(family.what);
            if (wanted == r.outcomes.end()) continue;
            LogisticDocument document = family.document;
            document.covariances = CovarianceCell(r.parameters, r.categories);
            EXPECT_EQ(Outcome(document), wanted->second)
                << "family " << family.what << ": " << r.parameters << " " << r.categories;
        }
    }
}

TEST(CovarianceCells, ExtensionsAmongThemArePassedOver)
{
    for (const CovarianceFamily& family : CovarianceFamilies()) {
        LogisticDocument document = family.document;
        document.covariances = CovarianceCell("pRow='p0' pCol='p0'", "tRow='b' tCol='a'");
        const std::string plain = Outcome(document);
        document.covariances = "<Extension name='x'/>" + document.covariances + "<Extension/>";
        EXPECT_EQ(Outcome(document), plain) << family.what;
        EXPECT_NE(plain.find(": 0,"), std::string::npos) << plain;
    }
}

TEST(CovarianceCells, FamiliesOfOneEquationRefuseCategories)
{
    const std::string cell = "<PCovCell pRow=\"(Constant)\" pCol=\"(Constant)\"";
    for (const char* categories : {" tRow=\"1\" tCol=\"1\"", " tCol=\"1\""}) {
        const VSException refusal = RefusalOf(With(kLinearDocument, cell, cell + categories));
        EXPECT_EQ(refusal.GetErrorCode(), 260191) << categories;
        EXPECT_EQ(refusal.GetArguments(), (Texts{"tCol", "regression"})) << categories;
    }
}

TEST(OrdinalDocument, GeneralizedOneIsAFamilyOfItsOwn)
{
    const auto model = Read<OGZLRModel>(OrdinalDocument("GZLM"));
    Case c;
    c.With("x", 0.5).With("w", 0);
    Slot slot;
    ASSERT_TRUE(model->GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_NEAR(slot.Percent("a"), Logistic(-0.5 - 1.0), kRounding);
    const auto plain = Read<ORModel>(OrdinalDocument());
    Slot other;
    ASSERT_TRUE(plain->GetScore(&c.Record(), other.result, true).IsOK());
    EXPECT_NEAR(other.Percent("a"), Logistic(-0.5 + 1.0), kRounding);
}

}  // namespace
}  // namespace MCVelscore_850
