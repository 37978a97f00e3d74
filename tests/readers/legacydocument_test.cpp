// Documents of the older form: the models that their reader makes of them, and what it refuses.

#include <gtest/gtest.h>

#include <cmath>

#include "host/messages/messages.h"
#include "host/model/versioninfo.h"
#include "host/variables/valueset.h"
#include "models/clrmodel.h"
#include "models/lrmodel.h"
#include "models/lrresult.h"
#include "models/mlrmodel.h"
#include "models/mlrresult.h"
#include "readers/generalregressiontranslator.h"
#include "readers/regressiontranslator.h"
#include "tests/allocations.h"
#include "tests/models/modelfixture.h"
#include "tests/readers/legacyparts.h"
#include "tests/readers/readdocument.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;
using Texts = std::vector<std::string>;

std::unique_ptr<RegressionModel> Read(const LegacyParts& parts) { return ReadModel(parts.Text()); }

double Score(RegressionModel& model, Case& c)
{
    Slot slot;
    EXPECT_TRUE(model.GetScore(&c.Record(), slot.result, false).IsOK());
    return slot.Number();
}

double Score(const LegacyParts& parts, double x, double w)
{
    const auto model = Read(parts);
    Case c;
    c.With("x", x).With("w", w);
    return Score(*model, c);
}

// The probability of a category under MultinomialParts() and its like.
double Probability(RegressionModel& model, Case& c, const std::string& category)
{
    Slot slot;
    EXPECT_TRUE(model.GetScore(&c.Record(), slot.result, false).IsOK());
    for (const auto& [value, percent] : slot.As<MLRResult>().GetAllValuePercent()) {
        if (value->GetString() == category) return percent;
    }
    ADD_FAILURE() << category;
    return -1.0;
}

TEST(LegacyDocument, ModelTypeChoosesTheClass)
{
    EXPECT_NE(dynamic_cast<LRModel*>(Read({}).get()), nullptr);
    EXPECT_NE(dynamic_cast<MLRModel*>(Read(MultinomialParts()).get()), nullptr);
    EXPECT_NE(dynamic_cast<CLRModel*>(Read(ConditionalParts()).get()), nullptr);
}

TEST(LegacyDocument, LinearRegressionScoresAsItsEquationSays)
{
    LegacyParts parts;
    parts.covariances =
        "<pcov-cell p-row='(Constant)' p-col='(Constant)' value='1'/>"
        "<pcov-cell p-row='bx' p-col='(Constant)' value='0.5'/>"
        "<pcov-cell p-row='bx' p-col='bx' value='4'/>"
        "<pcov-cell p-row='bw' p-col='bx' value='0.25'/>";
    const auto model = Read(parts);
    Case c;
    c.With("x", 2).With("w", 10);
    Slot slot;
    ASSERT_TRUE(model->GetScore(&c.Record(), slot.result, false).IsOK());
    EXPECT_EQ(slot.Number(), 1.0 + 2.0 * 2.0 + 3.0 * 10.0);
    // 1 + 2 * 0.5 * 2 + 4 * 2^2 + 2 * 0.25 * 2 * 10: one triangle stands for both
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), std::sqrt(1.0 + 2.0 + 16.0 + 10.0));
}

TEST(LegacyDocument, CovarianceOnTheDiagonalIsWrittenOnce)
{
    LegacyParts parts;
    parts.covariances = "<pcov-cell p-row='bw' p-col='bw' value='7'/>";
    const auto model = Read(parts);
    EXPECT_EQ(model->GetPCovMatrix()->GetCell("bw", "bw"), 7.0);
    EXPECT_EQ(model->GetPCovMatrix()->GetCell("bw", "bx"), 0.0);
}

TEST(LegacyDocument, MultinomialScoresAsItsEquationsSay)
{
    const auto model = Read(MultinomialParts());
    Case c;
    c.With("f", "v").With("x", 1.5);
    const double a = std::exp(0.5 + 1.0 - 0.25 * 1.5);
    const double b = std::exp(-1.0 + 2.0 * 1.5 * 1.5);
    EXPECT_NEAR(Probability(*model, c, "a"), a / (a + b + 1.0), 1e-15);
    EXPECT_NEAR(Probability(*model, c, "b"), b / (a + b + 1.0), 1e-15);
}

TEST(LegacyDocument, ConditionalScoresAsItsEquationSays)
{
    const auto model = Read(ConditionalParts());
    Case c;
    c.With("g", 2.0).With("x", 3.0);
    EXPECT_NEAR(Score(*model, c), 1.0 / (1.0 + std::exp(-(0.75 * 3.0 - 1.5))), 1e-15);
}

TEST(LegacyDocument, ConstantIsTheLastParameterWhereverItStands)
{
    for (const char* parameters :
         {"<parameter name='(Constant)'/><parameter name='bx'/><parameter name='bw'/>",
          "<parameter name='bx'/><parameter name='(Constant)'/><parameter name='bw'/>",
          "<parameter name='bx'/><parameter name='bw'/><parameter name='(Constant)'/>",
          "<parameter name='(Constant)'/><parameter name='bx'/><parameter name='(Constant)'/>"
          "<parameter name='bw'/>"}) {
        LegacyParts parts;
        parts.parameters = parameters;
        const auto model = Read(parts);
        EXPECT_EQ(model->GetParameterMap().size(), 3u) << parameters;
        EXPECT_EQ(model->GetParameterIndex("bx"), 0) << parameters;
        EXPECT_EQ(model->GetParameterIndex("(Constant)"), 2) << parameters;
        EXPECT_EQ(model->GetParamLabels(), (Texts{" ", " ", " "})) << parameters;
    }
}

TEST(LegacyDocument, ConstantIsKnownByItsExactNameAlone)
{
    LegacyParts parts;
    parts.parameters = "<parameter name='(constant)'/><parameter name='bx'/>";
    const auto model = Read(parts);
    EXPECT_EQ(model->GetParameterIndex("(constant)"), 0);
    EXPECT_EQ(model->GetParameterIndex("(Constant)"), -1);
}

TEST(LegacyDocument, RegressionGetsNoConstantThatItDoesNotList)
{
    LegacyParts parts;
    parts.parameters = "<parameter name='bx'/><parameter name='bw'/>";
    EXPECT_EQ(Read(parts)->GetParameterMap().size(), 2u);
    EXPECT_EQ(Score(parts, 1, 1), 2.0 + 3.0);  // the constant's cell names no parameter
}

TEST(LegacyDocument, SlopesBelongToPredictorsByPosition)
{
    LegacyParts parts;
    parts.cells =
        "<pp-cell parameter-name='bx' predictor-name='w' value='2'/>"
        "<pp-cell parameter-name='(Constant)' predictor-name='x' value='1'/>";
    EXPECT_EQ(Score(parts, 10, 100), 1.0 + 20.0 + 300.0);
    parts.cells.clear();
    EXPECT_EQ(Score(parts, 10, 100), 1.0 + 20.0 + 300.0);
}

TEST(LegacyDocument, WithoutPredictorsTheConstantAloneIsScored)
{
    LegacyParts parts;
    parts.parameters = "<parameter name='(Constant)'/>";
    parts.covariates.clear();
    parts.cells.clear();
    const auto model = Read(parts);
    EXPECT_TRUE(model->GetPredictorMap().empty());
    Case c;
    EXPECT_EQ(Score(*model, c), 1.0);
}

TEST(LegacyDocument, DegreesOfFreedomAreOptional)
{
    LegacyParts parts;
    EXPECT_EQ(Read(parts)->GetDF(), 5.0);
    parts.head = "target-variable-name='y' model-type='regression' model-df=''";
    EXPECT_EQ(Read(parts)->GetDF(), 0.0);
    parts.head = "target-variable-name='y' model-type='regression'";
    EXPECT_EQ(Read(parts)->GetDF(), 0.0);
}

TEST(LegacyDocument, CellWithoutDfHasNone)
{
    LegacyParts parts;
    parts.betas =
        "<p-cell parameter-name='(Constant)' beta='1'/><p-cell parameter-name='bx' beta='2' df=''/>"
        "<p-cell parameter-name='bw' beta='3' df='4'/>";
    const auto model = Read(parts);
    const auto df = [&](const char* parameter) {
        return model->GetParamTable()->GetCell("LRdummy", parameter)->GetDf();
    };
    EXPECT_EQ(df("(Constant)"), 0);
    EXPECT_EQ(df("bx"), 0);
    EXPECT_EQ(df("bw"), 4);
}

TEST(LegacyDocument, CellsOfUnknownNamesHaveNoEffect)
{
    LegacyParts parts;
    parts.betas += "<p-cell parameter-name='ghost' beta='9'/>";
    parts.cells += "<pp-cell parameter-name='ghost' predictor-name='x' value='1'/>";
    parts.covariances =
        "<pcov-cell p-row='ghost' p-col='bx' value='9'/>"
        "<pcov-cell p-row='bx' p-col='ghost' value='9'/>";
    const auto model = Read(parts);
    Case c;
    c.With("x", 1).With("w", 1);
    EXPECT_EQ(Score(*model, c), 6.0);
    EXPECT_EQ(model->GetPCovMatrix()->GetCell("bx", "bx"), 0.0);

    LegacyParts categories = MultinomialParts();
    const auto plain = Read(categories);
    categories.betas +=
        "<p-cell target-category='nowhere' parameter-name='px' beta='9'/>"
        "<p-cell parameter-name='px' beta='9'/>";
    const auto more = Read(categories);
    Case one;
    one.With("f", "u").With("x", 1);
    EXPECT_EQ(Probability(*more, one, "a"), Probability(*plain, one, "a"));
}

TEST(LegacyDocument, NameThatIsAbsentIsTheEmptyName)
{
    LegacyParts parts;
    parts.parameters = "<parameter/><parameter name='bw'/><parameter name='(Constant)'/>";
    parts.betas =
        "<p-cell parameter-name='(Constant)' beta='1'/><p-cell beta='2'/>"
        "<p-cell parameter-name='bw' beta='3'/>";
    parts.cells = "<pp-cell predictor-name='x' value='1'/>";
    parts.covariances = "<pcov-cell value='7'/><pcov-cell p-row='bw' value='5'/>";
    const auto model = Read(parts);
    EXPECT_EQ(model->GetParameterIndex(""), 0);
    EXPECT_EQ(model->GetPPCMatrix()->GetCell("", "x")->GetDouble(), 1.0);
    EXPECT_EQ(model->GetPCovMatrix()->GetCell(0, 0), 7.0);
    EXPECT_EQ(model->GetPCovMatrix()->GetCell(0, 1), 5.0);
    Case c;
    c.With("x", 10).With("w", 100);
    EXPECT_EQ(Score(*model, c), 1.0 + 20.0 + 300.0);
}

TEST(LegacyDocument, CellsWithoutNamesHaveNoEffectWhereNothingBearsTheEmptyName)
{
    LegacyParts parts;
    parts.betas += "<p-cell beta='9'/>";
    parts.cells += "<pp-cell predictor-name='x' value='1'/>";
    parts.covariances = "<pcov-cell p-row='bx' value='9'/><pcov-cell p-col='bx' value='9'/>";
    const auto model = Read(parts);
    Case c;
    c.With("x", 1).With("w", 1);
    EXPECT_EQ(Score(*model, c), 6.0);
    EXPECT_FALSE(model->GetPCovMatrix()->IsWritten());
}

TEST(LegacyDocument, CellOfATextFactorWithoutValueIsOneThatNoCaseMeets)
{
    LegacyParts parts = MultinomialParts();
    parts.cells = With(parts.cells, "predictor-name='f' value='v'", "predictor-name='f'");
    const auto model = Read(parts);
    EXPECT_EQ(model->GetPPCMatrix()->GetCell("pf", "f")->GetString(), "");
    EXPECT_EQ(model->GetNumericPPMatrix()[0][0], -1.0);
    EXPECT_EQ(model->GetDictionary()->GetVar("f")->GetNumCategories(), 2);
    Case c;
    c.With("f", "v").With("x", 0);
    const double a = std::exp(0.5);  // without the 1 of pf
    EXPECT_NEAR(Probability(*model, c, "a"), a / (a + std::exp(-1.0) + 1.0), 1e-15);
}

TEST(LegacyDocument, FactorWithMissingValuesAloneIsOpen)
{
    const std::string missing = "<missing-values><value value='9'/></missing-values>";
    LegacyParts parts = ConditionalParts();
    parts.variables =
        With(parts.variables, OldVariable("g", "NUMERIC", "NOMINAL", OldCategories({"1", "2"})),
             OldVariable("g", "STRING", "NOMINAL", missing));
    const auto model = Read(parts);
    EXPECT_TRUE(model->GetDictionary()->GetVar("g")->HasOpenCategories());  // the cell's 2 too
    for (const auto& [text, factor] : {std::pair("2", -1.5), {"other", 0.0}}) {
        Case c;
        c.With("g", text).With("x", 3.0);
        EXPECT_NEAR(Score(*model, c), 1.0 / (1.0 + std::exp(-(0.75 * 3.0 + factor))), 1e-15)
            << text;
    }
    Slot slot;
    Case bad;
    bad.With("g", "9").With("x", 3.0);
    EXPECT_FALSE(model->GetScore(&bad.Record(), slot.result, false).IsOK());

    // A multinomial model keeps no category of an open text, and so finds none.
    LegacyParts multinomial = MultinomialParts();
    multinomial.variables = With(multinomial.variables, OldCategories({"u", "v"}),
                                 "<missing-values><value value='9'/></missing-values>");
    const auto open = Read(multinomial);
    Slot other;
    Case c;
    c.With("f", "v").With("x", 0);
    EXPECT_EQ(open->GetScore(&c.Record(), other.result, false).GetErrorCode(), 90029);
}

TEST(LegacyDocument, OnlyALinearRegressionReadsItsCovariances)
{
    for (LegacyParts parts : {MultinomialParts(), ConditionalParts()}) {
        parts.covariances = "<pcov-cell p-row='px' p-col='px' value='3'/><nonsense/>";
        const auto model = Read(parts);
        const PCovMatrix* covariances = model->GetPCovMatrix();
        EXPECT_TRUE(covariances == nullptr || covariances->GetCell("px", "px") == 0.0);
    }
}

TEST(LegacyDocument, NumericTargetCategoriesAreComparedAsNumbers)
{
    LegacyParts parts = MultinomialParts();
    parts.variables = OldVariable("c", "NUMERIC", "NOMINAL", OldCategories({"1", "2.50", "3"})) +
                      OldVariable("x", "NUMERIC", "CONTINUOUS");
    parts.parameters = "<parameter name='px'/>";
    parts.factors.clear();
    parts.betas =
        "<p-cell target-category='1.0' parameter-name='px' beta='1'/>"
        "<p-cell target-category=' 2.5 ' parameter-name='px' beta='2'/>";
    parts.cells = "<pp-cell parameter-name='px' predictor-name='x' value='1'/>";
    const auto model = Read(parts);
    EXPECT_EQ(model->GetParamTable()->GetCell("1", "px")->GetBeta(), 1.0);
    EXPECT_EQ(model->GetParamTable()->GetCell("2.5", "px")->GetBeta(), 2.0);
}

TEST(LegacyDocument, CellsAddCategoriesToAListedFactor)
{
    LegacyParts parts = MultinomialParts();
    parts.cells += "<pp-cell parameter-name='pf' predictor-name='f' value='t'/>";
    const auto model = Read(parts);
    const auto& entries = model->GetDictionary()->GetVar("f")->GetValueSet()->GetEntries();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[2].GetEntryValue()->GetString(), "t");
    // the later cell took the place of the one for v
    EXPECT_EQ(model->GetNumericPPMatrix()[0][0], 2.0);
    EXPECT_EQ(model->GetPPCMatrix()->GetCell("pf", "f")->GetString(), "t");
}

TEST(LegacyDocument, FactorOfNumbersIsComparedByNumber)
{
    const auto model = Read(ConditionalParts());
    EXPECT_EQ(model->GetPPCMatrix()->GetCell("pg", "g")->GetDouble(), 2.0);
    EXPECT_EQ(model->GetVarRole("g"), ScoreModel::ROLE_FACTOR);
    EXPECT_EQ(model->GetVarRole("x"), ScoreModel::ROLE_COVARIATE);
}

TEST(LegacyDocument, VersionIsKeptAsWritten)
{
    LegacyParts parts;
    parts.root = "zelt-ml version='1.2.3 beta'";
    EXPECT_EQ(Read(parts)->GetVersionInfo()->GetVersion(), "1.2.3 beta");
    parts.root = "zelt-ml";
    EXPECT_EQ(Read(parts)->GetVersionInfo()->GetVersion(), "");
}

TEST(LegacyDocument, EncodingIsNotPassedOn)
{
    LegacyParts parts;
    parts.parameters = "<parameter name='\xC3\xA9'/>";
    ParsedText text(parts.Text());
    GeneralRegressionTranslator reader;
    const std::unique_ptr<RegressionModel> model(
        static_cast<RegressionModel*>(reader.ParseFromTree(text.Get(), "ISO-8859-1")));
    EXPECT_EQ(model->GetParameterIndex("\xC3\xA9"), 0);  // in UTF-8 all the same
}

TEST(LegacyDocument, TraceTellsEntryTypeAndExit)
{
    const struct {
        LegacyParts parts;
        const char* type;
    } kRows[] = {{MultinomialParts(), "The Model Type is 0."},
                 {ConditionalParts(), "The Model Type is 1."},
                 {LegacyParts(), "The Model Type is 2."}};
    for (const auto& row : kRows) {
        EXPECT_EQ(TraceOf(row.parts.Text(), 2), (Texts{"Entry:ParseFromTree", "Enter:ParseFromTree",
                                                       row.type, "Exit:ParseFromTree"}));
        EXPECT_EQ(TraceOf(row.parts.Text(), 1),
                  (Texts{"Entry:ParseFromTree", "Enter:ParseFromTree", "Exit:ParseFromTree"}));
    }
    LegacyParts refused;
    refused.head = "target-variable-name='y' model-type='general-linear'";
    EXPECT_EQ(TraceOf(refused.Text(), 2), (Texts{"Entry:ParseFromTree", "Enter:ParseFromTree"}));
}

struct Fault {
    const char* what;
    LegacyParts parts;
    const char* from;
    const char* to;
    int code;
    Texts arguments;
};

// clang-format off: a row a fault
const std::vector<Fault> kFaults{
    {"model of another kind",
     {},
     "model-type='regression'",
     "model-type='general-linear'",
     260153,
     {"general-linear", "model-type", "regression-model"}},
    {"log-linear model",
     {},
     "model-type='regression'",
     "model-type='log-linear'",
     260153,
     {"log-linear", "model-type", "regression-model"}},
    {"model type in capitals",
     {},
     "model-type='regression'",
     "model-type='Regression'",
     260153,
     {"Regression", "model-type", "regression-model"}},
    {"no model type",
     {},
     "model-type='regression'",
     "",
     260153,
     {"", "model-type", "regression-model"}},
    {"df no number", {}, "model-df='5'", "model-df='five'", kNotANumber, {"five", "model-df"}},
    {"target unknown",
     {},
     "target-variable-name='y'",
     "target-variable-name='z'",
     260124,
     {"z", "dictionary"}},
    {"no target", {}, "target-variable-name='y'", "", 260124, {"", "dictionary"}},
    {"parameter of another tag",
     {},
     "<parameter name='bx'/>",
     "<param name='bx'/>",
     260153,
     {"param", "parameter", "parameter-list"}},
    {"factor of another tag",
     MultinomialParts(),
     "<predictor name='f'/>",
     "<factor name='f'/>",
     260153,
     {"factor", "predictor", "factor-list"}},
    {"factor unknown",
     MultinomialParts(),
     "<predictor name='f'/>",
     "<predictor name='q'/>",
     260124,
     {"q", "dictionary"}},
    {"covariate of another tag",
     {},
     "<predictor name='x'/>",
     "<covariate name='x'/>",
     260153,
     {"covariate", "predictor", "covariate-list"}},
    {"covariate unknown",
     {},
     "<predictor name='x'/>",
     "<predictor name='q'/>",
     260124,
     {"q", "dictionary"}},
    {"predictor without name",
     {},
     "<predictor name='x'/>",
     "<predictor/>",
     260124,
     {"", "dictionary"}},
    {"factor without name",
     MultinomialParts(),
     "<predictor name='f'/>",
     "<predictor/>",
     260124,
     {"", "dictionary"}},
    {"cell of another tag",
     {},
     "<p-cell parameter-name='bx'",
     "<cell parameter-name='bx'",
     260153,
     {"cell", "p-cell", "p-table"}},
    {"cell without beta", {}, "beta='2'", "", kNotANumber, {"", "beta"}},
    {"beta no number", {}, "beta='2'", "beta='two'", kNotANumber, {"two", "beta"}},
    {"beta too large", {}, "beta='2'", "beta='1e999'", kNumberTooLarge, {"1e999", "beta"}},
    {"df of a cell no whole number",
     {},
     "beta='2' df='1'",
     "beta='2' df='1.5'",
     kNotAnInteger,
     {"1.5", "df"}},
    {"predictor cell of another tag",
     {},
     "<pp-cell parameter-name='bx'",
     "<cell parameter-name='bx'",
     260153,
     {"cell", "pp-cell", "pp-matrix"}},
    {"predictor cell without predictor", {}, "predictor-name='x'", "", 260155, {""}},
    {"covariate's cell without value",
     {},
     "predictor-name='x' value='1'",
     "predictor-name='x'",
     kNotANumber,
     {"", "value"}},
    {"numeric factor's cell without value",
     ConditionalParts(),
     "predictor-name='g' value='2'",
     "predictor-name='g'",
     kNotANumber,
     {"", "value"}},
    {"exponent no number",
     {},
     "predictor-name='x' value='1'",
     "predictor-name='x' value='one'",
     kNotANumber,
     {"one", "value"}},
    {"predictor cell of the target", {}, "predictor-name='x'", "predictor-name='y'", 260155, {"y"}},
    {"predictor cell of an unknown variable",
     {},
     "predictor-name='x'",
     "predictor-name='q'",
     260155,
     {"q"}},
    {"category of a factor of numbers no number",
     ConditionalParts(),
     "predictor-name='g' value='2'",
     "predictor-name='g' value='two'",
     kNotANumber,
     {"two", "value"}},
    {"factor whose only category is missing before",
     MultinomialParts(),
     "<categories><category value='u'/><category value='v'/></categories>",
     "<missing-values><value value='v'/></missing-values>"
     "<categories><category value='v'/></categories>",
     260126,
     {"f"}},
    {"conditional model of a number",
     ConditionalParts(),
     "name='c' storage-type='STRING' measurement-level='NOMINAL'>"
     "<categories><category value='case'/><category value='control'/></categories>",
     "name='c' storage-type='NUMERIC' measurement-level='CONTINUOUS'>",
     260304,
     {}},
    {"conditional model of an open text",
     ConditionalParts(),
     "<categories><category value='case'/><category value='control'/></categories>",
     "",
     260304,
     {}},
    {"conditional model of the made-up category",
     ConditionalParts(),
     "category value='case'",
     "category value='CLRdummy'",
     260304,
     {}},
    {"conditional model without parameters",
     ConditionalParts(),
     "<parameter name='px'/><parameter name='pg'/>",
     "",
     260304,
     {}},
    {"multinomial model of an open text",
     MultinomialParts(),
     "<categories><category value='a'/><category value='b'/><category value='d'/></categories>",
     "",
     kTargetWithoutCategories,
     {"c", "multinomial-logistic"}},
    {"multinomial model of a number",
     MultinomialParts(),
     "name='c' storage-type='STRING' measurement-level='NOMINAL'>"
     "<categories><category value='a'/><category value='b'/><category value='d'/></categories>",
     "name='c' storage-type='NUMERIC' measurement-level='CONTINUOUS'>",
     kTargetWithoutCategories,
     {"c", "multinomial-logistic"}},
};
// clang-format on

TEST(LegacyRefusals, TellCodeAndArguments)
{
    for (const Fault& fault : kFaults) {
        SCOPED_TRACE(fault.what);
        const VSException refusal = RefusalOf(With(fault.parts.Text(), fault.from, fault.to));
        EXPECT_EQ(refusal.GetErrorCode(), fault.code) << refusal.GetText();
        EXPECT_EQ(refusal.GetArguments(), fault.arguments);
        // What the target lacks is told of the model, not of what was read before.
        if (fault.code == kTargetWithoutCategories) {
            EXPECT_EQ(refusal.GetPlace().path, "zelt-ml/model/regression-model");
        }
    }
}

// A cell of a parameter that isn't there is passed over, on purpose.
TEST(LegacyDocument, PassesOverACellOfNoParameter)
{
    LegacyParts parts = MultinomialParts();
    parts.cells += "<pp-cell parameter-name='nobody' predictor-name='x' value='3'/>";
    EXPECT_EQ(RefusalOf(parts.Text()).GetErrorCode(), 0);
}

// A reader that reads again knows nothing of the document before.
TEST(LegacyDocument, ARefusalHasNoPlaceOfTheDocumentBefore)
{
    RegressionTranslator reader;
    {
        ParsedText first(LegacyParts().Text());
        const std::unique_ptr<ScoreModel> model(reader.ParseFromTree(first.Get(), ""));
        ASSERT_NE(model, nullptr);
    }
    ParsedText second("<zelt-ml/>");
    try {
        reader.ParseFromTree(second.Get(), "");
        ADD_FAILURE() << "taken";
    } catch (const VSException& refusal) {
        EXPECT_EQ(refusal.GetErrorCode(), 260115);
        EXPECT_EQ(refusal.GetPlace().path, "zelt-ml");
    }
}

// An unknown target is told of the model, not of the dictionary that was read before.
TEST(LegacyRefusal, OfATargetIsTheModels)
{
    LegacyParts parts;
    parts.head = "target-variable-name='nobody' model-type='regression' model-df='5'";
    const VSException refusal = RefusalOf(parts.Text());
    EXPECT_NE(refusal.GetErrorCode(), 0);
    EXPECT_EQ(refusal.GetPlace().path, "zelt-ml/model/regression-model");
}

TEST(LegacyRefusals, SectionsThatAreRequired)
{
    const struct {
        const char* section;
        Texts arguments;
    } kRows[] = {
        {"parameter-list", {"parameter-list", "regression-model"}},
        {"p-table", {"p-table", "regression-model"}},
    };
    for (const auto& row : kRows) {
        const std::string open = std::string("<") + row.section + ">";
        const std::string close = std::string("</") + row.section + ">";
        std::string text = LegacyParts().Text();
        const size_t from = text.find(open);
        text.erase(from, text.find(close) + close.size() - from);
        EXPECT_EQ(RefusalOf(text).GetErrorCode(), 260115) << row.section;
        EXPECT_EQ(RefusalOf(text).GetArguments(), row.arguments);
    }
    EXPECT_EQ(RefusalOf("<zelt-ml/>").GetArguments(), (Texts{"model", "zelt-ml"}));
    EXPECT_EQ(RefusalOf("<zelt-ml><model/></zelt-ml>").GetArguments(),
              (Texts{"regression-model", "model"}));
    EXPECT_EQ(
        RefusalOf("<zelt-ml><model><regression-model model-type='regression'/></model></zelt-ml>")
            .GetArguments(),
        (Texts{"dictionary", "zelt-ml"}));
}

TEST(LegacyRefusals, UnexpectedCovarianceCellHasItsOwnCode)
{
    LegacyParts parts;
    parts.covariances = "<p-cell p-row='bx' p-col='bx' value='1'/>";
    EXPECT_EQ(RefusalOf(parts.Text()).GetErrorCode(), 260178);
    EXPECT_EQ(RefusalOf(parts.Text()).GetArguments(),
              (Texts{"p-cell", "pcov-cell", "pcov-matrix"}));
    const struct {
        const char* cell;
        int code;
        Texts arguments;
    } kRows[] = {
        {"<pcov-cell p-row='bx' p-col='bx'/>", kNotANumber, {"", "value"}},
        {"<pcov-cell p-row='bx' p-col='bx' value='much'/>", kNotANumber, {"much", "value"}},
    };
    for (const auto& row : kRows) {
        parts.covariances = row.cell;
        EXPECT_EQ(RefusalOf(parts.Text()).GetErrorCode(), row.code) << row.cell;
        EXPECT_EQ(RefusalOf(parts.Text()).GetArguments(), row.arguments) << row.cell;
    }
}

TEST(LegacyRefusals, ConditionalModelWithoutPredictorsCantBeSetUp)
{
    LegacyParts parts = ConditionalParts();
    parts.factors.clear();
    parts.covariates.clear();
    parts.cells.clear();
    EXPECT_EQ(RefusalOf(parts.Text()).GetErrorCode(), 260304);
}

TEST(LegacyRefusals, SayWhereInTheDocument)
{
    const VSException refusal = RefusalOf(With(LegacyParts().Text(), "beta='2'", "beta='two'"));
    EXPECT_EQ(refusal.GetPlace().path, "zelt-ml/model/regression-model/p-table/p-cell[2]");
}

TEST(LegacyRefusals, TablesThatTakeAllMemoryAreRefusedBeforeTheyAreMade)
{
    // 12,000 squared is more than 2^27.
    std::string parameters, variables, predictors;
    for (int i = 0; i < 12000; ++i) {
        const std::string n = std::to_string(i);
        parameters += "<parameter name='p" + n + "'/>";
        variables += OldVariable("z" + n, "NUMERIC", "CONTINUOUS");
        predictors += "<predictor name='z" + n + "'/>";
    }
    LegacyParts linear;
    linear.parameters = parameters + "<parameter name='(Constant)'/>";
    linear.variables += variables;
    linear.covariates = predictors;
    linear.betas = "<p-cell parameter-name='(Constant)' beta='1'/>";
    linear.cells = "<pp-cell parameter-name='p11999' predictor-name='z11999' value='1'/>";
    EXPECT_EQ(RefusalOf(linear.Text()).GetErrorCode(), 0);  // it needs none of them
    linear.covariances = "<pcov-cell p-row='p0' p-col='p1' value='1'/>";
    const VSException refusal = RefusalOf(linear.Text());
    EXPECT_EQ(refusal.GetErrorCode(), kTableTooLarge);
    EXPECT_EQ(refusal.GetArguments(), (Texts{"pcov-matrix", "12001", "12001"}));

    LegacyParts conditional = ConditionalParts();
    conditional.parameters += parameters;
    EXPECT_EQ(RefusalOf(conditional.Text()).GetErrorCode(), 0);

    LegacyParts multinomial = MultinomialParts();
    multinomial.parameters += parameters;
    multinomial.variables += variables;
    multinomial.covariates += predictors;
    EXPECT_EQ(RefusalOf(multinomial.Text()).GetArguments(), (Texts{"pp-matrix", "12004", "12002"}));
}

TEST(LegacyRefusals, ReleaseTheHalfBuiltModel)
{
    for (const Fault& fault : kFaults) {
        const std::string text = With(fault.parts.Text(), fault.from, fault.to);
        RefusalOf(text);  // what is made once and kept
        const long before = LiveAllocations();
        RefusalOf(text);
        EXPECT_EQ(LiveAllocations(), before) << fault.what;
    }
}

TEST(LegacyCategoriesOfCells, AreAddedToAListAlone)
{
    ParsedText text(MultinomialParts().Text());
    RegressionTranslator reader;
    const auto list = Categorical("f", {"a"});
    int index = -1;
    // before a parse there is nothing that turns the document's text into ours
    EXPECT_FALSE(reader.FillCateValuesToDataDict(list.get(), "b", index));
    const std::unique_ptr<ScoreModel> model(reader.ParseFromTree(text.Get(), ""));
    const ScoreDictVar* const given = list.get();  // as a dictionary gives it to others
    EXPECT_TRUE(reader.FillCateValuesToDataDict(given, "b", index));
    EXPECT_EQ(index, 1);
    EXPECT_TRUE(reader.FillCateValuesToDataDict(list.get(), "a", index));
    EXPECT_EQ(index, 0);
    EXPECT_EQ(list->GetNumCategories(), 2);

    index = -7;
    EXPECT_FALSE(reader.FillCateValuesToDataDict(list.get(), "", index));
    EXPECT_FALSE(reader.FillCateValuesToDataDict(nullptr, "b", index));
    const auto open = Categorical("o", {});
    EXPECT_FALSE(reader.FillCateValuesToDataDict(open.get(), "b", index));
    EXPECT_EQ(open->GetNumCategories(), 0);
    const auto number = Continuous("x");
    EXPECT_TRUE(reader.FillCateValuesToDataDict(number.get(), "2", index));
    EXPECT_EQ(index, -7);  // no encoder: it stays as it was
}

}  // namespace
}  // namespace MCVelscore_850
