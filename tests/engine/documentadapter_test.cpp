#include "engine/documents/documentadapter.h"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "engine/documents/documentloader.h"
#include "engine/documents/documenttree.h"
#include "engine/documents/treetext.h"
#include "host/veltranscoder.h"

namespace MCVelscore_850 {
namespace {

// A tree as text: tags, attributes by name, and what lies within, without the blanks between.
void Write(const xercesc::DOMElement* element, std::string& out)
{
    out += "<" + Utf8FromXml(element->getTagName());
    std::map<std::string, std::string> attributes;
    const xercesc::DOMNamedNodeMap* map = element->getAttributes();
    for (XMLSize_t i = 0; i < map->getLength(); ++i) {
        attributes[Utf8FromXml(map->item(i)->getNodeName())] =
            Utf8FromXml(map->item(i)->getNodeValue());
    }
    for (const auto& [name, text] : attributes) out += " " + name + "='" + text + "'";
    out += ">";
    for (const auto* child = element->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
        Write(child, out);
    }
    out += "</>";
}

struct Adapted {
    explicit Adapted(const std::string& text) : document(LoadDocumentText(text, "m.pmml"))
    {
        before = Text();
        adaptations = AdaptDocument(document);
        after = Text();
    }

    const xercesc::DOMElement* Root() const { return document.GetTree().dom->getDocumentElement(); }
    std::string Text() const
    {
        std::string text;
        Write(Root(), text);
        return text;
    }
    bool Untouched() const { return adaptations.empty() && before == after; }
    // The rules that did something, in order.
    std::string Rules() const
    {
        std::string rules;
        for (const Adaptation& adaptation : adaptations) {
            rules += (rules.empty() ? "" : " ") + adaptation.rule;
        }
        return rules;
    }
    bool Has(std::string_view piece) const { return after.find(piece) != std::string::npos; }

    Document document;
    std::string before, after;
    std::vector<Adaptation> adaptations;
};

// The parts of a document that a test cares about; the rest is as the reader takes it.
struct Parts {
    std::string root = "PMML version='4.4'";
    std::string fields =
        "<DataField name='y' optype='continuous' dataType='double'/>"
        "<DataField name='a' optype='continuous' dataType='double'/>"
        "<DataField name='b' optype='continuous' dataType='double'/>";
    std::string model = "modelType='regression' functionName='regression'";
    std::string schema =
        "<MiningField name='y' usageType='target'/><MiningField name='a'/><MiningField name='b'/>";
    std::string parameters =
        "<Parameter name='(Constant)'/><Parameter name='pa'/><Parameter name='pb'/>";
    std::string factors;
    std::string covariates = "<Predictor name='a'/><Predictor name='b'/>";
    std::string cells = "<PPCell parameterName='pa' predictorName='a' value='1'/>"
                        "<PPCell parameterName='pb' predictorName='b' value='1'/>";
    std::string betas = "<PCell parameterName='(Constant)' beta='3'/>"
                        "<PCell parameterName='pa' beta='1'/><PCell parameterName='pb' beta='2'/>";
    std::string before;  // children of the model ahead of the others
    std::string covariances;

    std::string Text() const
    {
        return "<" + root + "><DataDictionary>" + fields + "</DataDictionary>\n" +
               "<GeneralRegressionModel " + model + ">" + before + "<MiningSchema>" + schema +
               "</MiningSchema>\n<ParameterList>" + parameters + "</ParameterList>\n<FactorList>" +
               factors + "</FactorList><CovariateList>" + covariates +
               "</CovariateList>\n<PPMatrix>" + cells + "</PPMatrix><PCovMatrix>" + covariances +
               "</PCovMatrix><ParamMatrix>" + betas +
               "</ParamMatrix></GeneralRegressionModel></PMML>";
    }
};

TEST(DocumentAdapter, LeavesADocumentOfTheDialectUntouched)
{
    EXPECT_TRUE(Adapted(Parts().Text()).Untouched());
}

TEST(DocumentAdapter, LeavesTheOlderFormUntouched)
{
    EXPECT_TRUE(Adapted("<zelt-ml version='1.2.3'><MiningSchema><MiningField name='a'/>"
                        "<MiningField name='a'/></MiningSchema></zelt-ml>").Untouched());
}

TEST(DocumentAdapter, LeavesADocumentWithoutItsModelToTheReader)
{
    EXPECT_TRUE(Adapted("<PMML version='4.4'/>").Untouched());
    EXPECT_TRUE(Adapted("<PMML version='4.4'><DataDictionary/><TreeModel/></PMML>").Untouched());
    EXPECT_TRUE(Adapted("<PMML version='4.4'><GeneralRegressionModel modelType='regression'/>"
                        "</PMML>").Untouched());
}

TEST(DocumentAdapter, SaysPlaceAndRuleInOneLine)
{
    const Adapted adapted("<!-- -->\n<PMML version='4.4.1'/>");
    ASSERT_EQ(adapted.adaptations.size(), 1u);
    EXPECT_EQ(adapted.adaptations[0].ToString(),
              "line 2, column 1: version \"4.4.1\" is read as \"4.4\" [short-version]");
}

TEST(NamespacePrefix, IsDroppedFromEveryPmmlElement)
{
    const Adapted adapted("<p:PMML version='4.4' xmlns:p='http://www.dmg.org/PMML-4_4'>"
                          "<p:Header><p:Application name='x:y'/></p:Header></p:PMML>");
    EXPECT_EQ(adapted.Rules(), "namespace-prefix");
    EXPECT_EQ(adapted.after, "<PMML version='4.4' xmlns:p='http://www.dmg.org/PMML-4_4'>"
                             "<Header><Application name='x:y'></></></>");
}

TEST(NamespacePrefix, IsFoundBelowARootWithoutOne)
{
    const Adapted adapted("<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'>"
                          "<q:Header xmlns:q='http://www.dmg.org/PMML-4_4'><q:A/></q:Header></PMML>");
    EXPECT_EQ(adapted.Rules(), "namespace-prefix");
    EXPECT_TRUE(adapted.Has("<A></>"));
}

TEST(NamespacePrefix, OfAnotherVocabularyStays)
{
    EXPECT_TRUE(Adapted("<PMML version='4.4' xmlns:x='http://example.com/x'>"
                        "<Extension><x:Value/></Extension></PMML>").Untouched());
}

TEST(NamespacePrefix, GoesBeforeTheOtherRulesLook)
{
    const Adapted adapted("<p:PMML version='4.4.1' xmlns:p='http://www.dmg.org/PMML-4_4'>"
                          "<p:GeneralRegressionModel><p:MiningSchema><p:MiningField name='a'/>"
                          "<p:MiningField name='a'/></p:MiningSchema></p:GeneralRegressionModel>"
                          "</p:PMML>");
    EXPECT_EQ(adapted.Rules(), "namespace-prefix short-version repeated-mining-field");
}

TEST(VersionFromNamespace, IsTakenWhenTheRootHasNone)
{
    const Adapted adapted("<PMML xmlns='http://www.dmg.org/PMML-4_2'/>");
    EXPECT_EQ(adapted.Rules(), "version-from-namespace");
    EXPECT_EQ(AttributeText(adapted.Root(), "version"), "4.2");
    const Adapted prefixed("<p:PMML version='' xmlns:p='http://www.dmg.org/PMML-3_1'/>");
    EXPECT_EQ(AttributeText(prefixed.Root(), "version"), "3.1");
}

TEST(VersionFromNamespace, IsNotTakenOverAVersionOrFromElsewhere)
{
    EXPECT_TRUE(Adapted("<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_2'/>").Untouched());
    EXPECT_TRUE(Adapted("<PMML/>").Untouched());
    EXPECT_TRUE(Adapted("<PMML xmlns='http://www.dmg.org/PMML'/>").Untouched());
    EXPECT_TRUE(Adapted("<PMML xmlns='http://www.dmg.org/PMML-4_x'/>").Untouched());
    EXPECT_TRUE(Adapted("<PMML xmlns='http://example.com/PMML-4_2'/>").Untouched());
}

TEST(ShortVersion, HasTwoParts)
{
    EXPECT_EQ(AttributeText(Adapted("<PMML version='4.4.1'/>").Root(), "version"), "4.4");
    EXPECT_EQ(AttributeText(Adapted("<PMML version='3.2.1.0'/>").Root(), "version"), "3.2");
}

TEST(ShortVersion, LeavesNumbersAndWhatIsNoVersion)
{
    for (const char* version : {"4.4", "4", "4.", ".4", "4..1", "4.4.x", "4.4.1-beta", "v4.4.1"}) {
        EXPECT_TRUE(Adapted("<PMML version='" + std::string(version) + "'/>").Untouched())
            << version;
    }
}

TEST(RepeatedMiningField, CountsOnceWhenAlike)
{
    Parts parts;
    parts.schema = "<MiningField name='y' usageType='target'/>"
                   "<MiningField name='a' lowValue='1'/><MiningField name='b'/>"
                   "<MiningField lowValue='1' name='a'/><MiningField name='a' lowValue='1'/>";
    const Adapted adapted(parts.Text());
    EXPECT_EQ(adapted.Rules(), "repeated-mining-field");
    EXPECT_TRUE(adapted.Has("<MiningSchema><MiningField name='y' usageType='target'></>"
                            "<MiningField lowValue='1' name='a'></><MiningField name='b'></></>"));
}

TEST(RepeatedMiningField, StaysWhenItDiffers)
{
    // which of the two is meant only the author knows; the reader refuses the second
    for (const char* other : {"<MiningField name='a' lowValue='2'/>", "<MiningField name='a'/>",
                              "<MiningField name='a' highValue='1'/>",
                              "<MiningField name='a' lowValue='1' highValue='1'/>",
                              "<MiningField name='a' lowValue='1'><Extension/></MiningField>"}) {
        Parts parts;
        parts.schema = "<MiningField name='y' usageType='target'/>"
                       "<MiningField name='a' lowValue='1'/><MiningField name='b'/>" +
                       std::string(other);
        EXPECT_TRUE(Adapted(parts.Text()).Untouched()) << other;
    }
}

TEST(NumericCovariate, BecomesContinuous)
{
    for (const char* type : {"integer", "float", "double"}) {
        Parts parts;
        parts.fields = "<DataField name='y' optype='continuous' dataType='double'/>"
                       "<DataField name='a' optype='categorical' dataType='" + std::string(type) +
                       "'/><DataField name='b' optype='continuous' dataType='double'/>";
        const Adapted adapted(parts.Text());
        EXPECT_EQ(adapted.Rules(), "numeric-covariate") << type;
        EXPECT_TRUE(adapted.Has("name='a' optype='continuous'")) << type;
    }
}

TEST(NumericCovariate, LeavesTextFactorsAndFieldsOfOtherUse)
{
    const auto withField = [](const std::string& attributes) {
        Parts parts;
        parts.fields += "<DataField name='c' " + attributes + "/>";
        return parts;
    };
    // no covariate
    EXPECT_TRUE(Adapted(withField("optype='categorical' dataType='integer'").Text()).Untouched());
    // a covariate of text: the reader refuses it
    Parts text = withField("optype='categorical' dataType='string'");
    text.covariates += "<Predictor name='c'/>";
    text.model = "modelType='generalLinear'";
    EXPECT_TRUE(Adapted(text.Text()).Untouched());
    // a numeric factor
    Parts factor = withField("optype='categorical' dataType='integer'");
    factor.factors = "<Predictor name='c'/>";
    factor.model = "modelType='generalLinear'";
    EXPECT_TRUE(Adapted(factor.Text()).Untouched());
    // both at once is no document that can be mended
    factor.covariates += "<Predictor name='c'/>";
    EXPECT_TRUE(Adapted(factor.Text()).Untouched());
}

TEST(ReplacementNoNumber, IsDroppedFromAContinuousField)
{
    for (const char* text : {"NA", "NaN", "INF", "mean", "1,5", "0x10", " "}) {
        Parts parts;
        parts.schema = "<MiningField name='y' usageType='target'/>"
                       "<MiningField name='a' missingValueReplacement='" + std::string(text) +
                       "'/><MiningField name='b' missingValueReplacement='2'/>";
        const Adapted adapted(parts.Text());
        EXPECT_EQ(adapted.Rules(), "replacement-no-number") << text;
        EXPECT_TRUE(adapted.Has("<MiningField name='a'></>")) << text;
        EXPECT_TRUE(adapted.Has("<MiningField missingValueReplacement='2' name='b'></>")) << text;
    }
}

TEST(ReplacementNoNumber, StaysWhereItIsANumberOrTheFieldIsNone)
{
    for (const char* text : {"0", "-1.5", "+2", "1e-400", " 3 ", ""}) {
        Parts parts;
        parts.schema = "<MiningField name='y' usageType='target'/><MiningField name='b'/>"
                       "<MiningField name='a' missingValueReplacement='" + std::string(text) + "'/>";
        EXPECT_TRUE(Adapted(parts.Text()).Untouched()) << text;
    }
    // too large a number is one all the same: dropping it would hide a fault
    Parts large;
    large.schema += "<MiningField name='c' missingValueReplacement='1e999'/>";
    large.fields += "<DataField name='c' optype='continuous' dataType='double'/>";
    EXPECT_TRUE(Adapted(large.Text()).Untouched());

    Parts category;
    category.schema += "<MiningField name='c' missingValueReplacement='none'/>";
    category.fields += "<DataField name='c' optype='categorical' dataType='string'/>";
    EXPECT_TRUE(Adapted(category.Text()).Untouched());
}

TEST(ReplacementNoNumber, SeesDerivedFieldsAndCovariatesMadeContinuous)
{
    Parts parts;
    parts.fields = "<DataField name='y' optype='continuous' dataType='double'/>"
                   "<DataField name='a' optype='categorical' dataType='double'/>"
                   "<DataField name='b' optype='continuous' dataType='double'/>";
    parts.before = "<LocalTransformations><DerivedField name='d' optype='continuous' "
                   "dataType='double'/></LocalTransformations>";
    parts.schema = "<Extension extender='velscore' name='derivedField'>"
                   "<MiningField name='d' missingValueReplacement='none'/></Extension>"
                   "<MiningField name='y' usageType='target'/><MiningField name='b'/>"
                   "<MiningField name='a' missingValueReplacement='none'/>";
    const Adapted adapted(parts.Text());
    EXPECT_EQ(adapted.Rules(), "numeric-covariate replacement-no-number");
    EXPECT_FALSE(adapted.Has("missingValueReplacement"));
}

// Whether a linear regression of these parts is read as a general linear model.
bool BecomesGeneralLinear(const Parts& parts)
{
    const Adapted adapted(parts.Text());
    if (adapted.Untouched()) return false;
    EXPECT_EQ(adapted.Rules(), "regression-order");
    EXPECT_TRUE(adapted.Has("modelType='generalLinear'"));
    return true;
}

TEST(RegressionOrder, StaysWhereEachParameterStandsWithItsPredictor)
{
    Parts parts;
    for (const char* parameters :
         {"<Parameter name='(Constant)'/><Parameter name='pa'/><Parameter name='pb'/>",
          "<Parameter name='pa'/><Parameter name='(Constant)'/><Parameter name='pb'/>",
          "<Parameter name='pa'/><Parameter name='pb'/><Parameter name='(Constant)'/>",
          "<Parameter name='pa'/><Parameter name='pb'/>"}) {  // the reader appends the constant
        parts.parameters = parameters;
        EXPECT_FALSE(BecomesGeneralLinear(parts)) << parameters;
    }
    // the cells may stand in any order, and write 1 in any way
    parts.cells = "<PPCell parameterName='pb' predictorName='b' value='1.0'/>"
                  "<PPCell parameterName='pa' predictorName='a' value='1e0'/>";
    EXPECT_FALSE(BecomesGeneralLinear(parts));
    // a predictor that is listed again counts once, in the reader too
    parts.covariates = "<Predictor name='a'/><Predictor name='a'/><Predictor name='b'/>";
    EXPECT_FALSE(BecomesGeneralLinear(parts));
}

TEST(RegressionOrder, StaysWhereNoCellTellsTheOrder)
{
    Parts parts;
    parts.cells.clear();
    EXPECT_FALSE(BecomesGeneralLinear(parts));
    parts.parameters = "<Parameter name='p0'/><Parameter name='pb'/><Parameter name='pa'/>";
    EXPECT_FALSE(BecomesGeneralLinear(parts));
}

TEST(RegressionOrder, ACellOfPowerZeroSaysNothing)
{
    Parts parts;
    parts.cells += "<PPCell parameterName='(Constant)' predictorName='a' value='0'/>"
                   "<PPCell parameterName='pa' predictorName='b' value='0.0'/>";
    EXPECT_FALSE(BecomesGeneralLinear(parts));
}

TEST(RegressionOrder, AConstantOfAnotherNameNeedsAGeneralLinearModel)
{
    for (const char* parameters :
         {"<Parameter name='p0'/><Parameter name='pa'/><Parameter name='pb'/>",
          "<Parameter name='pa'/><Parameter name='pb'/><Parameter name='(Intercept)'/>",
          "<Parameter name='(Constant)'/><Parameter name='pa'/><Parameter name='p0'/>"
          "<Parameter name='pb'/>"}) {
        Parts parts;
        parts.parameters = parameters;
        parts.betas = "<PCell parameterName='pa' beta='1'/>";
        EXPECT_TRUE(BecomesGeneralLinear(parts)) << parameters;
    }
}

TEST(RegressionOrder, ParametersInAnotherOrderNeedAGeneralLinearModel)
{
    Parts swapped;
    swapped.parameters =
        "<Parameter name='(Constant)'/><Parameter name='pb'/><Parameter name='pa'/>";
    EXPECT_TRUE(BecomesGeneralLinear(swapped));
    Parts covariates;
    covariates.covariates = "<Predictor name='b'/><Predictor name='a'/>";
    EXPECT_TRUE(BecomesGeneralLinear(covariates));
}

TEST(RegressionOrder, PowersAndProductsNeedAGeneralLinearModel)
{
    Parts power;
    power.cells = "<PPCell parameterName='pa' predictorName='a' value='2'/>"
                  "<PPCell parameterName='pb' predictorName='b' value='1'/>";
    EXPECT_TRUE(BecomesGeneralLinear(power));
    Parts product;
    product.cells += "<PPCell parameterName='pb' predictorName='a' value='1'/>";
    EXPECT_TRUE(BecomesGeneralLinear(product));
    Parts constant;
    constant.cells += "<PPCell parameterName='(Constant)' predictorName='a' value='1'/>";
    EXPECT_TRUE(BecomesGeneralLinear(constant));
}

TEST(RegressionOrder, APredictorWithoutParameterNeedsAGeneralLinearModel)
{
    // the constant would be taken for its slope
    Parts parts;
    parts.fields += "<DataField name='c' optype='continuous' dataType='double'/>";
    parts.covariates += "<Predictor name='c'/>";
    EXPECT_TRUE(BecomesGeneralLinear(parts));
}

TEST(RegressionOrder, FactorsNeedAGeneralLinearModel)
{
    Parts parts;
    parts.fields += "<DataField name='f' optype='categorical' dataType='string'/>";
    parts.factors = "<Predictor name='f'/>";
    parts.parameters += "<Parameter name='pf'/>";
    parts.cells += "<PPCell parameterName='pf' predictorName='f' value='x'/>";
    EXPECT_TRUE(BecomesGeneralLinear(parts));
}

TEST(RegressionOrder, KeepsCellsOfPowerZeroOutOfAGeneralLinearModel)
{
    // there they would drop their parameter wherever the covariate is 0; 0 as a factor's category
    // is something else
    Parts parts;
    parts.fields += "<DataField name='f' optype='categorical' dataType='integer'/>";
    parts.factors = "<Predictor name='f'/>";
    parts.parameters += "<Parameter name='pf'/>";
    parts.cells += "<PPCell parameterName='pf' predictorName='f' value='0'/>"
                   "<PPCell parameterName='pf' predictorName='a' value='0'/>";
    const Adapted adapted(parts.Text());
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='pf' predictorName='f' value='0'></>"));
    EXPECT_FALSE(adapted.Has("<PPCell parameterName='pf' predictorName='a' value='0'></>"));
}

TEST(RegressionOrder, ListsAConstantThatOnlyItsBetaNames)
{
    // a linear regression has it unasked, a general linear model hasn't
    Parts parts;
    parts.parameters = "<Parameter name='pb'/><Parameter name='pa'/>";
    EXPECT_TRUE(Adapted(parts.Text()).Has("<ParameterList><Parameter name='pb'></>"
                                          "<Parameter name='pa'></><Parameter name='(Constant)'></></>"));
    parts.betas = "<PCell parameterName='pa' beta='1'/><PCell parameterName='pb' beta='2'/>";
    EXPECT_FALSE(Adapted(parts.Text()).Has("(Constant)"));
    parts.covariances = "<PCovCell pRow='(Constant)' pCol='pa' value='1'/>";
    EXPECT_TRUE(Adapted(parts.Text()).Has("<Parameter name='(Constant)'></>"));
}

TEST(RegressionOrder, StaysAGeneralLinearModelWhateverItsNames)
{
    Parts parts;
    parts.parameters = "<Parameter name='p0'/><Parameter name='pa'/><Parameter name='pb'/>";
    // under "regression" these names choose nothing; under "generalLinear" they would
    for (const char* names : {"algorithmName='GZLM'", "modelName='Cox'",
                              "algorithmName='' modelName='CSCox'", "algorithmName='GLMM'"}) {
        parts.model = "modelType='regression' " + std::string(names);
        EXPECT_TRUE(Adapted(parts.Text()).Has("algorithmName='generalLinearModel'")) << names;
    }
    parts.model = "modelType='regression' algorithmName='lm' modelName='Cox'";
    EXPECT_TRUE(Adapted(parts.Text()).Has("algorithmName='lm'"));
}

TEST(RegressionOrder, LooksAtLinearRegressionsAlone)
{
    Parts parts;
    parts.parameters = "<Parameter name='p0'/><Parameter name='pb'/><Parameter name='pa'/>";
    for (const char* type : {"generalLinear", "generalizedLinear", "multinomialLogistic"}) {
        parts.model = "modelType='" + std::string(type) + "'";
        EXPECT_TRUE(Adapted(parts.Text()).Untouched()) << type;
    }
}

// A Cox document; its points are on pa alone.
Parts Cox()
{
    Parts parts;
    parts.model = "modelType='CoxRegression' endTimeVariable='y'";
    parts.parameters = "<Parameter name='pa' referencePoint='2'/><Parameter name='pb'/>"
                       "<Parameter name='pc' referencePoint=''/>";
    return parts;
}

TEST(ReferencePoints, AreCompletedByZero)
{
    const Adapted adapted(Cox().Text());
    EXPECT_EQ(adapted.Rules(), "reference-points");
    EXPECT_TRUE(adapted.Has("<ParameterList><Parameter name='pa' referencePoint='2'></>"
                            "<Parameter name='pb' referencePoint='0'></>"
                            "<Parameter name='pc' referencePoint='0'></></>"));
}

TEST(ReferencePoints, AreCompletedWhereASelectorMakesACoxModel)
{
    Parts parts = Cox();
    for (const char* selector : {"algorithmName='Cox'", "modelName='CSCox'"}) {
        parts.model = "modelType='generalLinear' " + std::string(selector);
        parts.root = "PMML version='3.1'";
        EXPECT_EQ(Adapted(parts.Text()).Rules(), "reference-points") << selector;
        parts.root = "PMML version='3.0'";  // no selectors yet
        EXPECT_TRUE(Adapted(parts.Text()).Untouched()) << selector;
    }
}

TEST(ReferencePoints, StayWhereAllOrNoneHaveOneOrTheModelIsAnother)
{
    Parts none = Cox();
    none.parameters = "<Parameter name='pa'/><Parameter name='pb' referencePoint=''/>";
    EXPECT_TRUE(Adapted(none.Text()).Untouched());
    Parts all = Cox();
    all.parameters = "<Parameter name='pa' referencePoint='1'/>"
                     "<Parameter name='pb' referencePoint='0'/>";
    EXPECT_TRUE(Adapted(all.Text()).Untouched());
    Parts other = Cox();
    other.model = "modelType='generalLinear'";
    EXPECT_TRUE(Adapted(other.Text()).Untouched());
}

TEST(ReferencePoints, LeaveThoseThatAnExtensionGives)
{
    Parts parts = Cox();
    parts.before = "<Extension name='referencePoint'>"
                   "<X-BasePoint parameterName='pb' value='7'/></Extension>";
    const Adapted adapted(parts.Text());
    EXPECT_TRUE(adapted.Has("<Parameter name='pb'></>"));
    EXPECT_TRUE(adapted.Has("<Parameter name='pc' referencePoint='0'></>"));
}

}  // namespace
}  // namespace MCVelscore_850
