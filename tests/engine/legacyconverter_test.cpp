// Documents of the older form in the published one: what is written, what is left out, what is
// refused.

#include "engine/documents/legacyconverter.h"

#include <algorithm>
#include <map>

#include <gtest/gtest.h>

#include "engine/documents/documenttree.h"
#include "engine/documents/loadedmodel.h"
#include "engine/documents/plugin.h"
#include "engine/documents/treefields.h"
#include "host/messages/messages.h"
#include "tests/engine/adapted.h"
#include "tests/readers/legacyparts.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

const Plugin& ThePlugin()
{
    static const Plugin plugin(VELSCORE_PLUGIN);
    return plugin;
}

PublishedForm ConvertText(const std::string& text)
{
    return ConvertLegacyDocument(LoadDocumentText(text, "old.xml"), ThePlugin());
}
PublishedForm Convert(const LegacyParts& parts) { return ConvertText(parts.Text()); }

// The result as a tree, and as text by which pieces are found.
struct Published {
    explicit Published(const LegacyParts& parts)
        : form(Convert(parts)), document(LoadDocumentText(form.text, "new.pmml"))
    {
        Write(Root(), text);
    }
    Element Root() const { return document.Root(); }
    bool Has(std::string_view piece) const { return text.find(piece) != std::string::npos; }

    PublishedForm form;
    Document document;
    std::string text;
};

// The DataField of a variable x that the regression y = 1 + 2 x + 3 w or another model uses.
std::string FieldOf(const LegacyParts& parts, const std::string& name)
{
    const Published published(parts);
    for (const Element field : DataFields(published.Root())) {
        std::string text;
        Write(field, text);
        if (field.Text("name") == name) return text;
    }
    return "none";
}

// The parts of the linear regression with another x.
LegacyParts WithX(const std::string& storage, const std::string& level, const std::string& content)
{
    LegacyParts parts;
    parts.variables = OldVariable("y", "NUMERIC", "CONTINUOUS") +
                      OldVariable("x", storage, level, content) +
                      OldVariable("w", "NUMERIC", "CONTINUOUS");
    return parts;
}

// The parts of the conditional model with another factor g, whose cell names `category`.
LegacyParts WithG(const std::string& storage, const std::string& level, const std::string& content,
                  const std::string& category = "2")
{
    LegacyParts parts = ConditionalParts();
    parts.variables = OldVariable("c", "STRING", "NOMINAL", OldCategories({"case", "control"})) +
                      OldVariable("g", storage, level, content) +
                      OldVariable("x", "NUMERIC", "CONTINUOUS");
    parts.cells =
        "<pp-cell parameter-name='px' predictor-name='x' value='1'/>\n"
        "<pp-cell parameter-name='pg' predictor-name='g' value='" +
        category + "'/>";
    return parts;
}

constexpr char kMissing9[] = "<missing-values><value value='9'/></missing-values>";
constexpr char kMissingAbove7[] =
    "<missing-values><range minimum='7' maximum='HIGHEST'/></missing-values>";

TEST(LegacyConverter, WritesALinearRegression)
{
    LegacyParts parts;
    parts.covariances =
        "<pcov-cell p-row='(Constant)' p-col='(Constant)' value='1e0'/>"
        "<pcov-cell p-row='bx' p-col='(Constant)' value='0.50'/>";
    std::string text;
    Write(Published(parts).Root(), text);
    EXPECT_EQ(text,
              "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'>"
              "<Header description='Converted from the older form'>"
              "<Application name='velscore'></></>"
              "<DataDictionary numberOfFields='3'>"
              "<DataField dataType='double' name='y' optype='continuous'></>"
              "<DataField dataType='double' name='x' optype='continuous'></>"
              "<DataField dataType='double' name='w' optype='continuous'></></>"
              "<GeneralRegressionModel functionName='regression' modelDF='5' "
              "modelType='regression' targetVariableName='y'>"
              "<MiningSchema><MiningField name='y' usageType='target'></>"
              "<MiningField name='x' usageType='active'></>"
              "<MiningField name='w' usageType='active'></></>"
              "<ParameterList><Parameter name='bx'></><Parameter name='bw'></>"
              "<Parameter name='(Constant)'></></>"
              "<CovariateList><Predictor name='x'></><Predictor name='w'></></>"
              "<PPMatrix><PPCell parameterName='bx' predictorName='x' value='1'></>"
              "<PPCell parameterName='bw' predictorName='w' value='1'></></>"
              "<PCovMatrix>"
              "<PCovCell pCol='(Constant)' pRow='(Constant)' value='1e0'></>"
              "<PCovCell pCol='(Constant)' pRow='bx' value='0.50'></></>"
              "<ParamMatrix><PCell beta='1' df='1' parameterName='(Constant)'></>"
              "<PCell beta='2' df='1' parameterName='bx'></>"
              "<PCell beta='3' df='1' parameterName='bw'></></></></>");
    EXPECT_EQ(Convert(parts).notes, Texts());
    EXPECT_EQ(Convert(parts).file, "old.xml");
}

TEST(LegacyConverter, WritesTheFamilyInTheWordsOfThePublishedForm)
{
    const Published multinomial(MultinomialParts());
    EXPECT_TRUE(
        multinomial.Has("<GeneralRegressionModel functionName='classification' "
                        "modelType='multinomialLogistic' targetVariableName='c'>"));
    EXPECT_TRUE(multinomial.Has("<PCell beta='2' df='1' parameterName='pfx' targetCategory='b'>"));
    EXPECT_TRUE(multinomial.Has("<PPCell parameterName='pf' predictorName='f' value='v'>"));
    const Published conditional(ConditionalParts());
    EXPECT_TRUE(
        conditional.Has("<GeneralRegressionModel algorithmName='conditionalLogistic' "
                        "functionName='classification' modelType='multinomialLogistic' "
                        "targetVariableName='c'>"));
}

// The order of children in the published schema, version 4.4.
TEST(LegacyConverter, KeepsTheOrderOfThePublishedSchema)
{
    const std::map<std::string, Texts> kOrder{
        {"PMML",
         {"Header", "MiningBuildTask", "DataDictionary", "TransformationDictionary",
          "GeneralRegressionModel", "Extension"}},
        {"Header", {"Extension", "Application", "Annotation", "Timestamp"}},
        {"DataDictionary", {"Extension", "DataField", "Taxonomy"}},
        {"DataField", {"Extension", "Interval", "Value"}},
        {"GeneralRegressionModel",
         {"Extension", "MiningSchema", "Output", "ModelStats", "ModelExplanation", "Targets",
          "LocalTransformations", "ParameterList", "FactorList", "CovariateList", "PPMatrix",
          "PCovMatrix", "ParamMatrix", "EventValues", "BaseCumHazardTables", "ModelVerification"}},
        {"MiningSchema", {"Extension", "MiningField"}},
        {"ParameterList", {"Extension", "Parameter"}},
        {"FactorList", {"Extension", "Predictor"}},
        {"CovariateList", {"Extension", "Predictor"}},
        {"PPMatrix", {"Extension", "PPCell"}},
        {"PCovMatrix", {"Extension", "PCovCell"}},
        {"ParamMatrix", {"Extension", "PCell"}},
    };
    const Texts kRequired{"MiningSchema", "ParameterList", "PPMatrix", "ParamMatrix"};

    LegacyParts linear = WithX("NUMERIC", "CONTINUOUS",
                               "<missing-values><value value='3'/><range minimum='7' "
                               "maximum='8'/></missing-values>");
    linear.covariances = "<pcov-cell p-row='bx' p-col='bx' value='1'/>";
    LegacyParts bare;
    bare.parameters.clear();
    bare.covariates.clear();
    bare.betas.clear();
    bare.cells.clear();
    for (const LegacyParts& parts :
         {linear, bare, MultinomialParts(), ConditionalParts(),
          WithG("STRING", "NOMINAL", "", "north"), WithG("NUMERIC", "CONTINUOUS", kMissing9)}) {
        const Published published(parts);
        Texts met;
        const auto check = [&](const auto& self, Element element) -> void {
            const std::string tag = element.Tag();
            met.push_back(tag);
            const auto order = kOrder.find(tag);
            size_t reached = 0;
            for (const Element child : element.Children()) {
                const std::string name = child.Tag();
                ASSERT_NE(order, kOrder.end()) << tag << " has no " << name;
                const auto found = std::find(order->second.begin(), order->second.end(), name);
                ASSERT_NE(found, order->second.end()) << tag << " has no " << name;
                const auto place = static_cast<size_t>(found - order->second.begin());
                EXPECT_GE(place, reached) << name << " in " << tag;
                reached = place;
                self(self, child);
            }
        };
        check(check, published.Root());
        for (const std::string& tag : kRequired) {
            EXPECT_EQ(std::count(met.begin(), met.end(), tag), 1) << tag;
        }
    }
}

TEST(LegacyConverter, FieldsTakeTheTypeThatTheirUseAsksFor)
{
    const struct {
        LegacyParts parts;
        const char* name;
        const char* field;
    } kRows[] = {
        {WithX("NUMERIC", "ORDINAL", ""), "x",
         "<DataField dataType='double' name='x' optype='continuous'></>"},
        {WithX("NUMERIC", "NOMINAL", OldCategories({"1", "2"})), "x",
         "<DataField dataType='double' name='x' optype='continuous'><Value value='1'></>"
         "<Value value='2'></></>"},
        {WithG("NUMERIC", "ORDINAL", OldCategories({"1", "2"})), "g",
         "<DataField dataType='double' name='g' optype='ordinal'><Value value='1'></>"
         "<Value value='2'></></>"},
        {WithG("NUMERIC", "NOMINAL", ""), "g",
         "<DataField dataType='double' name='g' optype='categorical'></>"},
        {WithG("NUMERIC", "UNKNOWN", ""), "g",
         "<DataField dataType='double' name='g' optype='categorical'></>"},
        {WithG("STRING", "UNKNOWN", OldCategories({"n", "s"}), "s"), "g",
         "<DataField dataType='string' name='g' optype='categorical'><Value value='n'></>"
         "<Value value='s'></></>"},
        {MultinomialParts(), "c",
         "<DataField dataType='string' name='c' optype='categorical'><Value value='a'></>"
         "<Value value='b'></><Value value='d'></></>"},
    };
    for (const auto& row : kRows) EXPECT_EQ(FieldOf(row.parts, row.name), row.field);
}

TEST(LegacyConverter, TargetOfALinearRegressionIsContinuous)
{
    LegacyParts parts;
    parts.variables = OldVariable("y", "NUMERIC", "NOMINAL", kMissingAbove7) +
                      OldVariable("x", "NUMERIC", "CONTINUOUS") +
                      OldVariable("w", "NUMERIC", "CONTINUOUS");
    EXPECT_EQ(FieldOf(parts, "y"),
              "<DataField dataType='double' name='y' optype='continuous'>"
              "<Interval closure='openOpen' rightMargin='7'></></>");
}

TEST(LegacyConverter, LabelsBecomeDisplayNames)
{
    LegacyParts parts;
    parts.variables =
        "<variable name='y' storage-type='NUMERIC' label='Yield &lt;t&gt;'/>" +
        OldVariable("x", "NUMERIC", "CONTINUOUS") +
        OldVariable(
            "w", "NUMERIC", "NOMINAL",
            "<categories><category value='1' display-value='one &amp; only'/></categories>");
    EXPECT_EQ(FieldOf(parts, "y"),
              "<DataField dataType='double' displayName='Yield <t>' name='y' "
              "optype='continuous'></>");
    EXPECT_EQ(FieldOf(parts, "w"),
              "<DataField dataType='double' name='w' optype='continuous'>"
              "<Value displayValue='one & only' value='1'></></>");
}

TEST(LegacyConverter, MissingValuesStandAmongTheOthersInTheirOrder)
{
    const std::string categories = OldCategories({"1", "9"});
    EXPECT_EQ(FieldOf(WithX("NUMERIC", "NOMINAL", kMissing9 + categories), "x"),
              "<DataField dataType='double' name='x' optype='continuous'>"
              "<Value property='missing' value='9'></><Value value='1'></></>");
    EXPECT_EQ(FieldOf(WithX("NUMERIC", "NOMINAL", categories + kMissing9), "x"),
              "<DataField dataType='double' name='x' optype='continuous'><Value value='1'></>"
              "<Value value='9'></></>");
}

TEST(LegacyConverter, MissingRangesBecomeTheIntervalsAroundThem)
{
    const struct {
        const char* ranges;
        const char* intervals;
    } kRows[] = {
        {"<range minimum='2.50' maximum='4'/>",
         "<Interval closure='openOpen' rightMargin='2.50'></>"
         "<Interval closure='openOpen' leftMargin='4'></>"},
        {"<range minimum='LOWEST' maximum='0'/>",
         "<Interval closure='openOpen' leftMargin='0'></>"},
        {"<range minimum='7' maximum='HIGHEST'/>",
         "<Interval closure='openOpen' rightMargin='7'></>"},
        {"<range minimum='7' maximum='HIGHEST'/><range minimum='LOWEST' maximum='-7'/>",
         "<Interval closure='openOpen' leftMargin='-7' rightMargin='7'></>"},
        {"<range minimum='5' maximum='5'/>",
         "<Interval closure='openOpen' rightMargin='5'></>"
         "<Interval closure='openOpen' leftMargin='5'></>"},
        // overlapping, nested and touching ones leave no gap
        {"<range minimum='1' maximum='9'/><range minimum='2' maximum='3'/>"
         "<range minimum='8' maximum='11'/><range minimum='11' maximum='12'/>",
         "<Interval closure='openOpen' rightMargin='1'></>"
         "<Interval closure='openOpen' leftMargin='12'></>"},
        {"<range minimum='4' maximum='2'/>", ""},  // holds nothing
    };
    for (const auto& row : kRows) {
        const std::string ranges =
            std::string("<missing-values>") + row.ranges + "</missing-values>";
        EXPECT_EQ(FieldOf(WithX("NUMERIC", "CONTINUOUS", ranges), "x"),
                  std::string("<DataField dataType='double' name='x' optype='continuous'>") +
                      row.intervals + "</>");
        // a covariate whose list is open takes any number too
        EXPECT_EQ(FieldOf(WithX("NUMERIC", "NOMINAL", ranges), "x"),
                  std::string("<DataField dataType='double' name='x' optype='continuous'>") +
                      row.intervals + "</>");
    }
}

TEST(LegacyConverter, ARangeAroundAListSaysNothingMore)
{
    EXPECT_EQ(FieldOf(WithG("NUMERIC", "NOMINAL", OldCategories({"1", "2"}) + kMissingAbove7), "g"),
              "<DataField dataType='double' name='g' optype='categorical'><Value value='1'></>"
              "<Value value='2'></></>");
}

TEST(LegacyConverter, NumbersMayHaveAPlusSign)
{
    EXPECT_EQ(FieldOf(WithG("NUMERIC", "NOMINAL", OldCategories({"1", "+2"}), "+3"), "g"),
              "<DataField dataType='double' name='g' optype='categorical'><Value value='1'></>"
              "<Value value='+2'></><Value value='+3'></></>");
    EXPECT_EQ(FieldOf(WithG("NUMERIC", "NOMINAL", OldCategories({"1", "+2"}), "2"), "g"),
              "<DataField dataType='double' name='g' optype='categorical'><Value value='1'></>"
              "<Value value='+2'></></>");
}

TEST(LegacyConverter, CategoriesThatOnlyCellsNameAreListed)
{
    LegacyParts parts = WithG("NUMERIC", "NOMINAL", OldCategories({"1", "2"}), "3");
    parts.cells +=
        "<pp-cell parameter-name='ghost' predictor-name='g' value='4'/>"
        "<pp-cell parameter-name='pg' predictor-name='g' value='2.0'/>";
    EXPECT_EQ(FieldOf(parts, "g"),
              "<DataField dataType='double' name='g' optype='categorical'><Value value='1'></>"
              "<Value value='2'></><Value value='3'></><Value value='4'></></>");
}

TEST(LegacyConverter, AFactorThatTakesAnyValueSaysSo)
{
    const std::string accepts =
        "<Extension extender='velscore' name='unlistedCategories' value='accept'></>";
    EXPECT_EQ(FieldOf(WithG("STRING", "NOMINAL", "", "north"), "g"),
              "<DataField dataType='string' name='g' optype='categorical'>" + accepts +
                  "<Value value='north'></></>");
    EXPECT_EQ(FieldOf(WithG("NUMERIC", "CONTINUOUS", kMissing9), "g"),
              "<DataField dataType='double' name='g' optype='categorical'>" + accepts +
                  "<Value property='missing' value='9'></></>");
    // missing values make no list
    EXPECT_EQ(FieldOf(WithG("STRING", "NOMINAL", kMissing9, "north"), "g"),
              "<DataField dataType='string' name='g' optype='categorical'>" + accepts +
                  "<Value property='missing' value='9'></><Value value='north'></></>");
    EXPECT_EQ(FieldOf(WithG("NUMERIC", "ORDINAL", kMissing9), "g"),
              "<DataField dataType='double' name='g' optype='ordinal'>" + accepts +
                  "<Value property='missing' value='9'></></>");
}

TEST(LegacyConverter, AMissingNameStaysTheEmptyName)
{
    LegacyParts parts;
    parts.parameters = "<parameter/><parameter name='bw'/><parameter name='(Constant)'/>";
    parts.betas = "<p-cell beta='2'/>";
    parts.covariances = "<pcov-cell p-row='bw' value='3'/>";
    const Published published(parts);
    EXPECT_TRUE(published.Has("<Parameter name=''>"));
    EXPECT_TRUE(published.Has("<PCell beta='2' parameterName=''>"));
    EXPECT_TRUE(published.Has("<PCovCell pCol='' pRow='bw' value='3'>"));
    EXPECT_TRUE(published.Has("<PPCell parameterName='' predictorName='x' value='1'>"));
}

TEST(LegacyConverter, FieldsThatNoModelReadsNeverRefuse)
{
    LegacyParts parts;
    parts.variables +=
        OldVariable("z", "NUMERIC", "NOMINAL", OldCategories({"1", "8"}) + kMissingAbove7) +
        OldVariable("t", "STRING", "ORDINAL");
    EXPECT_EQ(FieldOf(parts, "z"),
              "<DataField dataType='double' name='z' optype='categorical'><Value value='1'></>"
              "<Value value='8'></></>");
    EXPECT_EQ(FieldOf(parts, "t"), "<DataField dataType='string' name='t' optype='ordinal'></>");
    EXPECT_FALSE(Published(parts).Has("<MiningField name='z'"));
}

TEST(LegacyConverter, NamesThatAreListedAgainCountOnce)
{
    LegacyParts parts;
    parts.parameters += "<parameter name='bx'/><parameter name='(Constant)'/>";
    parts.covariates += "<predictor name='x'/>";
    const Published published(parts);
    EXPECT_TRUE(
        published.Has("<ParameterList><Parameter name='bx'></><Parameter name='bw'></>"
                      "<Parameter name='(Constant)'></></>"));
    EXPECT_TRUE(published.Has("<Predictor name='x'></><Predictor name='w'></></>"));
}

TEST(LegacyConverter, CellsOfUnknownNamesAreLeftOutAndSaid)
{
    LegacyParts parts;
    parts.betas +=
        "\n<p-cell parameter-name='ghost' beta='1'/><p-cell parameter-name='g' beta='1'/>";
    parts.covariances =
        "<pcov-cell p-row='bx' p-col='bx' value='1'/><pcov-cell p-row='bx' p-col='g' value='1'/>";
    const Published published(parts);
    EXPECT_FALSE(published.Has("ghost"));
    EXPECT_FALSE(published.Has("'g'"));
    EXPECT_TRUE(published.Has("<PCovCell pCol='bx' pRow='bx' value='1'>"));
    const auto line = [&](const std::string& piece) {
        const std::string text = parts.Text();
        return std::to_string(
            1 + std::count(text.begin(),
                           text.begin() + static_cast<std::ptrdiff_t>(text.find(piece)), '\n'));
    };
    const std::string why =
        " that name a parameter or category which the model doesn't have, the first in line ";
    EXPECT_EQ(published.form.notes,
              (Texts{"left out 1 cell of the pcov-matrix" + why + line("p-col='g'"),
                     "left out 2 cells of the p-table" + why + line("'ghost'")}));

    LegacyParts multinomial = MultinomialParts();
    multinomial.betas += "<p-cell target-category='e' parameter-name='px' beta='9'/>";
    multinomial.cells += "<pp-cell parameter-name='ghost' predictor-name='x' value='1'/>";
    EXPECT_EQ(Convert(multinomial).notes.size(), 2u);
    EXPECT_FALSE(Published(multinomial).Has("'9'"));

    // of a conditional model only the first category has betas
    LegacyParts conditional = ConditionalParts();
    conditional.betas += "<p-cell target-category='control' parameter-name='px' beta='9'/>";
    EXPECT_EQ(Convert(conditional).notes.size(), 1u);
}

TEST(LegacyConverter, AConstantThatIsNotListedGetsNoCells)
{
    LegacyParts parts;
    parts.parameters = "<parameter name='bx'/><parameter name='bw'/>";
    parts.covariances = "<pcov-cell p-row='(Constant)' p-col='(Constant)' value='4'/>";
    const Published published(parts);
    EXPECT_FALSE(published.Has("(Constant)"));  // the reader of the published form has one always
    EXPECT_FALSE(published.Has("PCovMatrix"));
    EXPECT_EQ(published.form.notes.size(), 2u);
}

TEST(LegacyConverter, SaysWhatElseItLeavesOut)
{
    LegacyParts pairs;
    pairs.cells = "<pp-cell parameter-name='bx' predictor-name='w' value='1'/>";
    ASSERT_EQ(Convert(pairs).notes.size(), 1u);
    EXPECT_NE(Convert(pairs).notes[0].find("pp-matrix"), std::string::npos);
    EXPECT_TRUE(Published(pairs).Has("<PPCell parameterName='bx' predictorName='x' value='1'>"));
    pairs.cells.clear();
    EXPECT_EQ(Convert(pairs).notes, Texts());

    const LegacyParts means = WithX("NUMERIC", "CONTINUOUS", "<var-stats mean='3'/>");
    ASSERT_EQ(Convert(means).notes.size(), 1u);
    EXPECT_NE(Convert(means).notes[0].find("means"), std::string::npos);

    LegacyParts covariances = MultinomialParts();
    covariances.covariances = "<pcov-cell p-row='px' p-col='px' value='1'/>";
    ASSERT_EQ(Convert(covariances).notes.size(), 1u);
    EXPECT_NE(Convert(covariances).notes[0].find("pcov-matrix"), std::string::npos);
    EXPECT_FALSE(Published(covariances).Has("PCov"));
}

TEST(LegacyConverter, TextsComeThroughWhole)
{
    LegacyParts parts = WithG("STRING", "NOMINAL",
                              "<categories><category value='&lt;&amp;&quot;&apos;&gt;'/>"
                              "<category value='tab&#9;line&#10;return&#13;'/>"
                              "<category value='\xE2\x82\xAC'/></categories>",
                              "\xE2\x82\xAC");
    const Published published(parts);
    const Element field = DataFields(published.Root()).First().NextSibling();
    Texts values;
    for (const Element value : field.Children("Value")) {
        values.push_back(value.Text("value"));
    }
    EXPECT_EQ(values, (Texts{"<&\"'>", "tab\tline\nreturn\r", "\xE2\x82\xAC"}));
}

struct Fault {
    const char* what;
    LegacyParts parts;
    int code;
    Texts arguments;
};

LegacyParts With(LegacyParts parts, std::string LegacyParts::*part, const std::string& text)
{
    parts.*part = text;
    return parts;
}

std::vector<Fault> Faults()
{
    using P = LegacyParts;
    const std::string both = "<predictor name='x'/><predictor name='g'/>";
    const std::string three = OldCategories({"1", "2", "8"});
    const std::string everything =
        "<missing-values><range minimum='0' maximum='HIGHEST'/><range minimum='LOWEST' "
        "maximum='1'/></missing-values>";
    LegacyParts open = MultinomialParts();
    open.variables = OldVariable("c", "STRING", "NOMINAL", OldCategories({"a", "b", "d"})) +
                     OldVariable("f", "STRING", "NOMINAL") +
                     OldVariable("x", "NUMERIC", "CONTINUOUS");
    LegacyParts texts = ConditionalParts();
    texts.variables = OldVariable("c", "STRING", "NOMINAL", OldCategories({"case", "control"})) +
                      OldVariable("g", "NUMERIC", "NOMINAL") +
                      OldVariable("x", "STRING", "NOMINAL");
    LegacyParts target = ConditionalParts();
    target.variables =
        OldVariable("c", "NUMERIC", "NOMINAL", OldCategories({"1", "8"}) + kMissingAbove7) +
        OldVariable("g", "NUMERIC", "NOMINAL") + OldVariable("x", "NUMERIC", "CONTINUOUS");
    target.betas = "<p-cell target-category='1' parameter-name='px' beta='0.75'/>";
    return {
        {"a slope too few",
         With({}, &P::parameters, "<parameter name='bx'/>"),
         kUnpairedParameters,
         {"1", "2"}},
        {"a constant of another name",
         With({}, &P::parameters,
              "<parameter name='bx'/><parameter name='bw'/><parameter name='b0'/>"),
         kUnpairedParameters,
         {"3", "2"}},
        {"no predictors",
         With(With({}, &P::covariates, ""), &P::cells, ""),
         kUnpairedParameters,
         {"2", "0"}},
        {"factor of a linear regression",
         With(With({}, &P::covariates, "<predictor name='x'/>"), &P::factors,
              "<predictor name='w'/>"),
         kFactorOfLinear,
         {"w"}},
        {"conditional model with the constant",
         With(ConditionalParts(), &P::parameters,
              "<parameter name='px'/><parameter name='pg'/><parameter name='(Constant)'/>"),
         kConditionalConstant,
         {"(Constant)"}},
        {"conditional model with a parameter without cells",
         With(ConditionalParts(), &P::parameters,
              "<parameter name='px'/><parameter name='pg'/><parameter name='p0'/>"),
         kConditionalConstant,
         {"p0"}},
        {"factor and covariate",
         With(ConditionalParts(), &P::covariates, both),
         kTwoUses,
         {"g", "a factor", "a covariate"}},
        {"target and covariate",
         With({}, &P::covariates,
              "<predictor name='x'/><predictor name='w'/><predictor name='y'/>"),
         kTwoUses,
         {"y", "the target", "a predictor"}},
        {"covariate of texts", texts, kTextsAsNumbers, {"x", "covariate"}},
        {"linear regression of texts",
         With({}, &P::variables,
              OldVariable("y", "STRING", "NOMINAL") + OldVariable("x", "NUMERIC", "CONTINUOUS") +
                  OldVariable("w", "NUMERIC", "CONTINUOUS")),
         kTextsAsNumbers,
         {"y", "target"}},
        {"multinomial model with a factor without a list", open, kOpenFactor, {"f"}},
        {"factor without a list and the word for missing",
         WithG("STRING", "NOMINAL", "", "NA"),
         kOpenFactor,
         {"g"}},
        {"cell of a missing value",
         WithG("NUMERIC", "NOMINAL", three + kMissingAbove7, "9"),
         kFactorCell,
         {"9", "g"}},
        {"cell of a value declared missing",
         WithG("STRING", "NOMINAL",
               OldCategories({"n"}) + "<missing-values><value value='s'/></missing-values>", "s"),
         kFactorCell,
         {"s", "g"}},
        {"cell of no text",
         WithG("STRING", "NOMINAL", OldCategories({"n"}), ""),
         kFactorCell,
         {"", "g"}},
        {"cell of a value that a continuous list lacks",
         WithG("NUMERIC", "CONTINUOUS", OldCategories({"1"}), "2"),
         kFactorCell,
         {"2", "g"}},
        {"range over a listed category",
         WithG("NUMERIC", "NOMINAL", three + kMissingAbove7),
         kMissingRangeOfList,
         {"g"}},
        {"range over a category of the target", target, kMissingRangeOfList, {"c"}},
        {"range over a listed value of a covariate",
         WithX("NUMERIC", "CONTINUOUS", three + kMissingAbove7),
         kMissingRangeOfList,
         {"x"}},
        {"range over a listed value with a plus sign",
         WithX("NUMERIC", "CONTINUOUS", OldCategories({"1", "+8"}) + kMissingAbove7),
         kMissingRangeOfList,
         {"x"}},
        {"range of a factor without a list",
         WithG("NUMERIC", "NOMINAL", kMissingAbove7),
         kMissingRangeOfList,
         {"g"}},
        {"ranges that leave nothing",
         WithX("NUMERIC", "CONTINUOUS", everything),
         kMissingRangeOfList,
         {"x"}},
        {"betas of the made-up category",
         With(ConditionalParts(), &P::betas,
              "<p-cell target-category='CLRdummy' parameter-name='px' beta='1'/>"),
         kPublishedFormRefused,
         {"CLRdummy is not a valid value of c"}},
        {"what the reader of the older form refuses",
         With({}, &P::head, "target-variable-name='z' model-type='regression'"),
         260124,
         {"z", "dictionary"}},
    };
}

TEST(LegacyConverter, RefusesWhatThePublishedFormCantSay)
{
    for (const Fault& fault : Faults()) {
        SCOPED_TRACE(fault.what);
        try {
            Convert(fault.parts);
            ADD_FAILURE() << "not refused";
        } catch (const DocumentFailure& failure) {
            EXPECT_EQ(failure.Code(), fault.code) << failure.what();
            EXPECT_EQ(failure.what(), Messages::Format(fault.code, fault.arguments));
            EXPECT_EQ(failure.Kind(), FailureKind::Document);
            EXPECT_EQ(failure.File(), "old.xml");
        }
    }
}

TEST(LegacyConverter, SaysWhereItRefuses)
{
    try {
        Convert(WithG("NUMERIC", "NOMINAL", OldCategories({"1"}) + kMissing9, "9"));
        ADD_FAILURE() << "not refused";
    } catch (const DocumentFailure& failure) {
        EXPECT_EQ(failure.ElementPath(), "zelt-ml/model/regression-model/pp-matrix/pp-cell[2]");
        EXPECT_GT(failure.Line(), 0u);
    }
}

TEST(LegacyConverter, RefusesAPublishedDocument)
{
    try {
        ConvertText(Parts().Text());
        ADD_FAILURE() << "not refused";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), kAlreadyPublished);
        EXPECT_EQ(failure.what(), Messages::Format(kAlreadyPublished, {"old.xml"}));
        EXPECT_EQ(failure.Kind(), FailureKind::Document);
    }
}

}  // namespace
}  // namespace MCVelscore_850
