// The contrast matrix of a factor, in each of its forms and with each of its refusals.

#include <gtest/gtest.h>

#include "host/messages/messages.h"
#include "models/blrmodel.h"
#include "models/glrmodel.h"
#include "models/mlrmodel.h"
#include "readers/generalregressiontranslator.h"
#include "tests/models/modelfixture.h"
#include "tests/readers/logisticdocument.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;
using Matrix = RegressionModel::Matrix;
using Texts = std::vector<std::string>;

const char kSum[] =
    "<Array n='2' type='real'>1 0</Array><Array n='2' type='real'>0 1</Array>"
    "<Array n='2' type='real'>-1 -1</Array>";

// A predictor's contrast matrix, as text, of the factor f with the categories u, v, w.
std::string Typed(const std::string& inner)
{
    return "<Predictor name='f' contrastMatrixType='sum'>" + inner + "</Predictor>";
}
std::string Untyped(const std::string& inner)
{
    return "<Predictor name='f'>" + inner + "</Predictor>";
}
std::string Categories(const Texts& names)
{
    std::string text = "<Categories>";
    for (const std::string& name : names) text += "<Category value='" + name + "'/>";
    return text + "</Categories>";
}
std::string MatrixOf(const std::string& size, const std::string& rows)
{
    return "<Matrix " + size + ">" + rows + "</Matrix>";
}
const std::string kSize = "nbRows='3' nbCols='2'";
std::string Basis(const std::string& tag, const Texts& names = {"u", "v", "w"})
{
    const char* rows[] = {"1 0", "0 1", "-1 -1"};
    std::string text = "<" + tag + " " + kSize + ">";
    for (size_t i = 0; i < names.size(); ++i) {
        text += "<Row value='" + names[i] + "'>" + rows[i % 3] + "</Row>";
    }
    return text + "</" + tag + ">";
}
std::string InExtension(const std::string& inner, const std::string& name = "contrastMatrix")
{
    return "<Extension name='" + name + "'>" + inner + "</Extension>";
}

LogisticDocument WithFactor(const std::string& predictor)
{
    LogisticDocument document;
    document.factors = predictor;
    return document;
}

ModelDescription::Contrast ContrastOf(const LogisticDocument& document)
{
    ModelDescription about;
    ReadModel(document.Text())->Describe(about);
    EXPECT_EQ(about.contrasts.size(), 1u);
    return about.contrasts.empty() ? ModelDescription::Contrast{} : about.contrasts.front();
}

TEST(ContrastMatrix, IsReadInEachForm)
{
    const std::pair<const char*, std::string> forms[] = {
        {"with categories", Typed(Categories({"u", "v", "w"}) + MatrixOf(kSize, kSum))},
        {"without categories", Typed(MatrixOf(kSize, kSum))},
        {"behind another element", Typed("<Extension/>" + MatrixOf(kSize, kSum))},
        {"a row a category", Untyped(Basis("xBasis"))},
        {"in an extension", Untyped(InExtension(Basis("X-Basis")))},
    };
    for (const auto& [what, predictor] : forms) {
        const ModelDescription::Contrast contrast = ContrastOf(WithFactor(predictor));
        EXPECT_EQ(contrast.predictor, "f") << what;
        EXPECT_EQ(contrast.categories, (Texts{"u", "v", "w"})) << what;
        EXPECT_EQ(contrast.rows, (Matrix{{1, 0}, {0, 1}, {-1, -1}})) << what;
    }
}

TEST(ContrastMatrix, RowsGoWithTheCategoriesThatTheDocumentNames)
{
    for (const std::string& predictor : {Typed(Categories({"w", "u", "v"}) + MatrixOf(kSize, kSum)),
                                         Untyped(Basis("xBasis", {"w", "u", "v"})),
                                         Untyped(InExtension(Basis("X-Basis", {"w", "u", "v"})))}) {
        const ModelDescription::Contrast contrast = ContrastOf(WithFactor(predictor));
        EXPECT_EQ(contrast.categories, (Texts{"w", "u", "v"}));
        EXPECT_EQ(contrast.rows[0], (std::vector<double>{1, 0}));
    }
}

TEST(ContrastMatrix, ArrayWithoutALengthIsTaken)
{
    const std::string rows = "<Array>1 0</Array><Array n=''>0 1</Array><Array n='2'>5 5</Array>";
    EXPECT_EQ(
        ContrastOf(WithFactor(Typed(Categories({"u", "v", "w"}) + MatrixOf(kSize, rows)))).rows,
        (Matrix{{1, 0}, {0, 1}, {5, 5}}));
}

TEST(ContrastMatrix, LengthOfAnArrayIsNotLookedAtWithoutCategories)
{
    const std::string rows = "<Array n='9'>1 0</Array><Array>0 1</Array><Array>5 5</Array>";
    EXPECT_EQ(ContrastOf(WithFactor(Typed(MatrixOf(kSize, rows)))).rows.size(), 3u);
}

TEST(ContrastMatrix, NumericFactorIsFoundByItsNumbers)
{
    LogisticDocument document;
    document.fields = With(document.fields,
                           "dataType='string'><Value value='u'/><Value value='v'/>"
                           "<Value value='w'/>",
                           "dataType='integer'><Value value='10'/><Value value='20'/>"
                           "<Value value='30'/>");
    document.cells = With(document.cells, "value='u'", "value='10'");
    document.cells = With(document.cells, "value='v'", "value='20'");
    document.factors = Typed(Categories({"30", "10.0", "20"}) + MatrixOf(kSize, kSum));
    EXPECT_EQ(ContrastOf(document).categories, (Texts{"30", "10", "20"}));
    document.factors = Typed(MatrixOf(kSize, kSum));
    EXPECT_EQ(ContrastOf(document).categories, (Texts{"10", "20", "30"}));
}

TEST(ContrastMatrix, DateFactorIsCountedFromTheOriginOfItsType)
{
    LogisticDocument document;
    document.fields = With(document.fields,
                           "dataType='string'><Value value='u'/><Value value='v'/>"
                           "<Value value='w'/>",
                           "dataType='dateDaysSince[1980]'><Value value='1980-01-02'/>"
                           "<Value value='1980-01-03'/><Value value='1980-02-01'/>");
    document.cells = "";
    document.factors = Typed(MatrixOf(kSize, kSum));
    EXPECT_EQ(ContrastOf(document).categories, (Texts{"1", "2", "31"}));
    document.factors = Untyped(Basis("xBasis", {"1980-02-01", "1980-01-02", "1980-01-03"}));
    EXPECT_EQ(ContrastOf(document).categories, (Texts{"31", "1", "2"}));
    // A cell of such a factor is a number, which is no value of it.
    document.cells = "<PPCell value='1' predictorName='f' parameterName='pu'/>";
    const VSException refusal = RefusalOf(document.Text());
    EXPECT_EQ(refusal.GetErrorCode(), 260127);
    EXPECT_EQ(refusal.GetArguments(), (Texts{"1", "f"}));
}

TEST(ContrastMatrix, OpenFactorTakesItsCategoriesFromTheList)
{
    LogisticDocument document;
    document.fields =
        With(document.fields, "<Value value='u'/><Value value='v'/><Value value='w'/>", "");
    document.factors = Typed(Categories({"w", "u", "v"}) + MatrixOf(kSize, kSum));
    const auto model = ReadModel(document.Text());
    EXPECT_EQ(model->GetDictionary()->GetVar("f")->GetNumCategories(), 3);
    EXPECT_FALSE(model->GetDictionary()->GetVar("f")->HasOpenCategories());
    EXPECT_EQ(ContrastOf(document).categories, (Texts{"w", "u", "v"}));
    // The other forms count before they name: there the factor has no category.
    for (const std::string& predictor : {Typed(MatrixOf(kSize, kSum)), Untyped(Basis("xBasis"))}) {
        document.factors = predictor;
        const VSException refusal = RefusalOf(document.Text());
        EXPECT_EQ(refusal.GetErrorCode(), 260249);
        EXPECT_EQ(refusal.GetArguments(), (Texts{"3", "nbRows", "0", "f"}));
    }
}

// The readers as another reader of documents calls them: rows and values to fill, the variable as
// it stands in a dictionary. What is in the values is the caller's.
TEST(ContrastMatrix, ReadersAreThereForOthers)
{
    using Reader = void (GeneralRegressionTranslator::*)(
        xercesc::DOMElement*, Matrix&, std::vector<ScoreValue*>&, const ScoreDictVar*);
    const struct {
        Reader read;
        std::string element;
        Texts categories;
    } kRows[] = {
        {&GeneralRegressionTranslator::HandleContrastMatrix,
         Basis("any", {"w", "u", "v"}),
         {"w", "u", "v"}},
        {&GeneralRegressionTranslator::HandleContrastMatrixEx,
         MatrixOf(kSize, kSum),
         {"u", "v", "w"}},
        {&GeneralRegressionTranslator::HandleContrastMatrix41,
         Typed(MatrixOf(kSize, kSum)),
         {"u", "v", "w"}},
        {&GeneralRegressionTranslator::HandleContrastMatrix41,
         Typed(Categories({"v", "u", "w"}) + MatrixOf(kSize, kSum)),
         {"v", "u", "w"}},
    };
    const std::unique_ptr<const ScoreDictVar> variable = Categorical("f", {"u", "v", "w"});
    for (const auto& row : kRows) {
        ParsedText text(row.element);
        GeneralRegressionTranslator reader;
        Matrix contrastRows;
        std::vector<ScoreValue*> contrastValues;
        (reader.*row.read)(text.Get()->getDocumentElement(), contrastRows, contrastValues,
                           variable.get());
        EXPECT_EQ(contrastRows, (Matrix{{1, 0}, {0, 1}, {-1, -1}})) << row.element;
        Texts categories;
        for (const ScoreValue* value : contrastValues) {
            categories.push_back(value == nullptr ? "none" : value->GetString());
            delete value;
        }
        EXPECT_EQ(categories, row.categories) << row.element;
    }
    const auto open = Categorical("f", {});
    ParsedText text(Typed(Categories({"b", "a"}) +
                          MatrixOf("nbRows='2' nbCols='1'", "<Array>1</Array><Array>0</Array>")));
    Matrix rows;
    std::vector<ScoreValue*> values;
    GeneralRegressionTranslator().HandleContrastMatrix41(text.Get()->getDocumentElement(), rows,
                                                         values, open.get());
    EXPECT_EQ(open->GetNumCategories(), 2);
    for (const ScoreValue* value : values) delete value;
}

TEST(ContrastMatrix, TooFewRowsLeaveACategoryThatMatchesNothing)
{
    const std::string two = "<Array>1 0</Array><Array>0 1</Array>";
    for (const std::string& predictor :
         {Typed(MatrixOf(kSize, two)), Untyped(Basis("xBasis", {"u", "v"}))}) {
        const auto model = ReadModel(WithFactor(predictor).Text());
        Slot slot;
        for (const char* f : {"u", "v", "w"}) {
            Case c;
            c.With("f", f).With("x", 1);
            const auto status = model->GetScore(&c.Record(), slot.result, true);
            EXPECT_EQ(status.GetErrorCode(), *f == 'w' ? 90017 : 0) << f;
        }
    }
    // With categories the row is named and holds zeros: u and v are 0 for it.
    const auto model =
        ReadModel(WithFactor(Typed(Categories({"u", "v", "w"}) + MatrixOf(kSize, two))).Text());
    Slot slot;
    Case c;
    c.With("f", "w").With("x", 0);
    EXPECT_TRUE(model->GetScore(&c.Record(), slot.result, true).IsOK());
}

TEST(ContrastMatrix, CategoryWithoutARowIsNoNumberAtAll)
{
    // Not even -1, which is the number of what has no place elsewhere.
    LogisticDocument document =
        WithFactor(Typed(MatrixOf(kSize, "<Array>1 0</Array><Array>0 1</Array>")));
    document.fields = With(document.fields,
                           "dataType='string'><Value value='u'/><Value value='v'/>"
                           "<Value value='w'/>",
                           "dataType='integer'><Value value='10'/><Value value='20'/>"
                           "<Value value='-1'/>");
    document.cells = With(document.cells, "value='u'", "value='10'");
    document.cells = With(document.cells, "value='v'", "value='20'");
    const auto model = ReadModel(document.Text());
    Slot slot;
    for (const double f : {10.0, 20.0, -1.0}) {
        Case c;
        c.With("f", f).With("x", 1);
        EXPECT_EQ(model->GetScore(&c.Record(), slot.result, true).GetErrorCode(),
                  f < 0 ? 90017 : 0);
    }
}

TEST(ContrastMatrix, WithoutElementsIsReadAndMatchesNothing)
{
    const auto model = ReadModel(WithFactor(Typed(MatrixOf(kSize, ""))).Text());
    Slot slot;
    Case c;
    c.With("f", "u").With("x", 1);
    EXPECT_EQ(model->GetScore(&c.Record(), slot.result, true).GetErrorCode(), 90017);
}

struct RefusalRow {
    const char* what;
    std::string predictor;
    int code;
    Texts arguments;
};

TEST(ContrastMatrix, RefusalsNameCodeAndArguments)
{
    const Texts all{"u", "v", "w"};
    const RefusalRow rows[] = {
        {"type and nothing else",
         "<Predictor name='f' contrastMatrixType='sum'/>",
         260115,
         {"xBasis", "Predictor"}},
        {"type without a matrix", Typed("<Extension/>"), 260115, {"Matrix", "xBasis"}},
        {"categories alone", Typed(Categories(all)), 260115, {"Matrix", "Predictor"}},
        {"categories before another element",
         Typed(Categories(all) + "<Extension/>" + MatrixOf(kSize, kSum)),
         260115,
         {"Matrix", "Predictor"}},
        {"category of another tag",
         Typed("<Categories><Cat value='u'/></Categories>"),
         260178,
         {"Cat", "Category", "Categories"}},
        {"category without value",
         Typed("<Categories><Category/></Categories>"),
         260115,
         {"value", "Category"}},
        {"category that f hasn't", Typed(Categories({"u", "z"})), 260127, {"z", "f"}},
        {"empty category", Typed(Categories({"u", ""})), 260127, {"", "f"}},
        {"no rows stated",
         Typed(Categories(all) + MatrixOf("nbCols='2'", kSum)),
         260115,
         {"nbRows", "Matrix"}},
        {"no columns stated",
         Typed(Categories(all) + MatrixOf("nbRows='3'", kSum)),
         260115,
         {"nbCols", "Matrix"}},
        {"rows no whole number",
         Typed(MatrixOf("nbRows='x' nbCols='2'", kSum)),
         kNotAnInteger,
         {"x", "nbRows"}},
        {"columns below 0",
         Typed(MatrixOf("nbRows='3' nbCols='-1'", kSum)),
         kNotAnInteger,
         {"-1", "nbCols"}},
        {"rows and f's categories",
         Typed(Categories(all) + MatrixOf("nbRows='2' nbCols='2'", kSum)),
         260249,
         {"2", "nbRows", "3", "f"}},
        {"rows and f's categories, no list",
         Typed(MatrixOf("nbRows='4' nbCols='2'", kSum)),
         260249,
         {"4", "nbRows", "3", "f"}},
        {"rows and f's categories, row a category",
         Untyped("<xBasis nbRows='2' nbCols='2'/>"),
         260249,
         {"2", "nbRows", "3", "f"}},
        {"rows and f's categories, extension",
         Untyped(InExtension("<X-Basis nbRows='2' nbCols='2'/>")),
         260249,
         {"2", "nbRows", "3", "f"}},
        {"rows and the list",
         Typed(Categories({"u", "v"}) + MatrixOf(kSize, kSum)),
         260246,
         {"3", "nbRows", "2", "Category", "Categories"}},
        {"length of an array",
         Typed(Categories(all) + MatrixOf(kSize, "<Array n='3'>1 0 0</Array>")),
         260214,
         {"3", "n", "Matrix", "2", "nbCols", "Matrix"}},
        {"numbers of an array",
         Typed(Categories(all) + MatrixOf(kSize, "<Array>1 0 0</Array>")),
         kArrayLength,
         {"3", "2"}},
        {"numbers of an array, no list",
         Typed(MatrixOf(kSize, "<Array>1</Array>")),
         kArrayLength,
         {"1", "2"}},
        {"no number",
         Typed(MatrixOf(kSize, "<Array>1 one</Array>")),
         kNotANumber,
         {"one", "Array"}},
        {"row too many",
         Typed(Categories(all) + MatrixOf(kSize, std::string(kSum) + "<Array>1 1</Array>")),
         kTooManyContrastRows,
         {"4", "3", "f"}},
        {"row too many, no list",
         Typed(MatrixOf(kSize, std::string(kSum) + "<Array>1 1</Array>")),
         260292,
         {"3", "f"}},
        {"row too many, row a category",
         Untyped(Basis("xBasis", {"u", "v", "w", "u"})),
         kTooManyContrastRows,
         {"4", "3", "f"}},
        {"row too many, extension",
         Untyped(InExtension(Basis("X-Basis", {"u", "v", "w", "u"}))),
         kTooManyContrastRows,
         {"4", "3", "f"}},
        {"row of a category that f hasn't",
         Untyped(Basis("xBasis", {"u", "z"})),
         260127,
         {"z", "f"}},
        {"row without a category",
         Untyped("<xBasis nbRows='3' nbCols='2'><Row>1 0</Row></xBasis>"),
         260115,
         {"value", "Row"}},
        {"row a category: no columns stated",
         Untyped("<xBasis nbRows='3'/>"),
         260115,
         {"nbCols", "xBasis"}},
        {"extension without a name",
         Untyped("<Extension><X-Basis/></Extension>"),
         260115,
         {"name", "Extension"}},
    };
    for (const RefusalRow& row : rows) {
        const VSException refusal = RefusalOf(WithFactor(row.predictor).Text());
        EXPECT_EQ(refusal.GetErrorCode(), row.code) << row.what << ": " << refusal.GetText();
        EXPECT_EQ(refusal.GetArguments(), row.arguments) << row.what;
    }
}

TEST(ContrastMatrix, WithoutOneABinaryModelIsNotSetUp)
{
    const std::pair<const char*, std::string> none[] = {
        {"nothing", "<Predictor name='f'/>"},
        {"extension of another name", Untyped(InExtension(Basis("X-Basis"), "other"))},
        {"extension without its element", Untyped(InExtension(""))},
        {"extension with another element", Untyped(InExtension(Basis("xBasis")))},
        {"matrix without a type", Untyped(MatrixOf(kSize, kSum))},
        {"only the first child counts", Untyped("<Other/>" + Basis("xBasis"))},
        {"another element", Untyped("<Other/>")},
    };
    for (const auto& [what, predictor] : none) {
        const VSException refusal = RefusalOf(WithFactor(predictor).Text());
        EXPECT_EQ(refusal.GetErrorCode(), 260304) << what << ": " << refusal.GetText();
        EXPECT_TRUE(refusal.GetArguments().empty()) << what;
    }
}

// The same factor in a multinomial model, which takes no contrasts.
std::string Multinomial(const std::string& predictor)
{
    LogisticDocument document = WithFactor(predictor);
    document.selector = "";
    return document.Text();
}

TEST(ContrastMatrix, TypedOneHasNoEffectOnAFamilyThatTakesNone)
{
    const auto model = ReadModel(Multinomial(Typed(MatrixOf(kSize, kSum))));
    EXPECT_EQ(model->GetModelType(), ScoreModel::TYPE_MLR);
    ModelDescription about;
    model->Describe(about);
    EXPECT_TRUE(about.contrasts.empty());
    // It is read all the same, and can refuse; the row's own element is refused outright.
    EXPECT_EQ(RefusalOf(Multinomial(Typed(MatrixOf("nbRows='2' nbCols='2'", kSum)))).GetErrorCode(),
              260249);
    const VSException refusal = RefusalOf(Multinomial(Untyped(Basis("xBasis"))));
    EXPECT_EQ(refusal.GetErrorCode(), 260302);
    EXPECT_EQ(refusal.GetArguments(), (Texts{"xBasis", "multinomialLogistic"}));
    // An extension, and a matrix without a type, are passed over.
    EXPECT_EQ(RefusalOf(Multinomial(Untyped(InExtension("<X-Basis/>")))).GetErrorCode(), 0);
    EXPECT_EQ(RefusalOf(Multinomial(Untyped("<Extension/>"))).GetErrorCode(), 0);
    EXPECT_EQ(RefusalOf(Multinomial(Untyped("<Matrix/>"))).GetErrorCode(), 0);
}

}  // namespace
}  // namespace MCVelscore_850
