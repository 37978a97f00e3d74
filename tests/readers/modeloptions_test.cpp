// The options of the generalized families and of the general linear model: leading extensions and
// attributes of the model element.

#include <cmath>

#include <gtest/gtest.h>

#include "host/messages/messages.h"
#include "models/blrmodel.h"
#include "models/glrmodel.h"
#include "models/gzlrmodel.h"
#include "models/lrresult.h"
#include "models/mlrresult.h"
#include "models/ogzlrmodel.h"
#include "tests/models/modelfixture.h"
#include "tests/readers/readdocument.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

using Arguments = std::vector<std::string>;

const std::string kGeneralizedLinearType =
    "modelType=\"generalizedLinear\" modelName=\"GZLM\" functionName=\"regression\"";
const std::string kGeneralizedOrdinalType =
    "modelType=\"ordinalMultinomial\" modelName=\"GZLM\" functionName=\"classification\"";
const std::string kGeneralLinearType =
    "modelType=\"generalLinear\" modelName=\"generalLinearModel\" functionName=\"regression\"";
const std::string kBinaryType =
    "modelType=\"multinomialLogistic\" modelName=\"contrastLogistic\" "
    "functionName=\"classification\"";

std::string Extension(const std::string& name, const std::string& value)
{
    return "<Extension name=\"" + name + "\" value=\"" + value + "\"/>";
}

std::string Attribute(const std::string& name, const std::string& value)
{
    return " " + name + "=\"" + value + "\"";
}

// A document of a type with options in either spelling: eta = 2 + 3 x, with active fields n and o,
// a field u that the mining schema doesn't name, and a derived field d.
std::string Document(const std::string& type, const std::string& attributes = "",
                     const std::string& extensions = "")
{
    const bool classes = type.find("classification") != std::string::npos;
    const std::string target =
        classes ? "optype=\"ordinal\" dataType=\"string\"><Value value=\"a\"/><Value value=\"b\"/>"
                : "optype=\"continuous\" dataType=\"double\">";
    const std::string category = classes ? " targetCategory=\"a\"" : "";
    return "<PMML version=\"4.2\"><DataDictionary><DataField name=\"y\" " + target +
           R"xml(</DataField>
 <DataField name="x" optype="continuous" dataType="double"/>
 <DataField name="n" optype="continuous" dataType="double"/>
 <DataField name="o" optype="continuous" dataType="double"/>
 <DataField name="u" optype="continuous" dataType="double"/>
</DataDictionary>
<TransformationDictionary>
 <DerivedField name="d" optype="continuous" dataType="double"><FieldRef field="x"/></DerivedField>
</TransformationDictionary>
<GeneralRegressionModel )xml" +
           type + attributes + ">" + extensions + R"xml(
 <MiningSchema>
  <MiningField name="y" usageType="target"/>
  <MiningField name="x"/>
  <MiningField name="n"/>
  <MiningField name="o"/>
 </MiningSchema>
 <ParameterList><Parameter name="p0"/><Parameter name="p1"/></ParameterList>
 <CovariateList><Predictor name="x"/></CovariateList>
 <PPMatrix><PPCell value="1" predictorName="x" parameterName="p1"/></PPMatrix>
 <ParamMatrix>
  <PCell parameterName="p0" beta="2")xml" +
           category + "/><PCell parameterName=\"p1\" beta=\"3\"" + category +
           "/></ParamMatrix></GeneralRegressionModel></PMML>";
}

// The spellings of an option.
std::string AsExtension(const std::string& type, const std::string& name, const std::string& value)
{
    return Document(type, "", Extension(name, value));
}
std::string AsAttribute(const std::string& type, const std::string& name, const std::string& value)
{
    return Document(type, Attribute(name, value));
}
using Spelling = std::string (*)(const std::string&, const std::string&, const std::string&);
constexpr Spelling kSpellings[] = {AsExtension, AsAttribute};

// The attribute that holds an option's value.
std::string HolderOf(Spelling spell, const std::string& name)
{
    return spell == AsExtension ? "value" : name;
}

std::unique_ptr<RegressionModel> Read(const std::string& document) { return ReadModel(document); }

const GZLRModel& Generalized(const std::unique_ptr<RegressionModel>& model)
{
    EXPECT_EQ(model->GetModelType(), ScoreModel::TYPE_GZLR);
    return static_cast<const GZLRModel&>(*model);
}

const OGZLRModel& Ordinal(const std::unique_ptr<RegressionModel>& model)
{
    EXPECT_EQ(model->GetModelType(), ScoreModel::TYPE_ORDINAL);
    return static_cast<const OGZLRModel&>(*model);
}

void ExpectRefused(const std::string& document, int code, const Arguments& arguments)
{
    const VSException refusal = RefusalOf(document);
    EXPECT_EQ(refusal.GetErrorCode(), code) << refusal.GetText();
    EXPECT_EQ(refusal.GetArguments(), arguments);
}

const Arguments kUnknown{"q", "DataDictionary", "TransformationDictionary"};

TEST(TrialsVariable, IsAPredictorOfTheGeneralizedLinearModelInEitherSpelling)
{
    for (const Spelling spell : kSpellings) {
        const auto model = Read(spell(kGeneralizedLinearType, "trialsVariable", "n"));
        ASSERT_NE(Generalized(model).GetTrialsVar(), nullptr);
        EXPECT_EQ(Generalized(model).GetTrialsVar()->GetName(), "n");
        ExpectRefused(spell(kGeneralizedLinearType, "trialsVariable", "q"), 260125, kUnknown);
        ExpectRefused(spell(kGeneralizedLinearType, "trialsVariable", "u"), 260161, {"u"});
        ExpectRefused(spell(kGeneralizedLinearType, "trialsVariable", "y"), 260161, {"y"});
    }
}

TEST(TrialsVariable, IsRefusedByTheOrdinalModelOnceItIsAPredictor)
{
    for (const Spelling spell : kSpellings) {
        ExpectRefused(spell(kGeneralizedOrdinalType, "trialsVariable", "n"), 260223,
                      {"trialsVariable", "n"});
        ExpectRefused(spell(kGeneralizedOrdinalType, "trialsVariable", "u"), 260161, {"u"});
        ExpectRefused(spell(kGeneralizedOrdinalType, "trialsVariable", "q"), 260125, kUnknown);
    }
}

TEST(OffsetVariable, NeedsARoleFromTheMiningSchemaAsAnExtensionOnly)
{
    for (const std::string& type : {kGeneralizedLinearType, kGeneralizedOrdinalType}) {
        ExpectRefused(AsExtension(type, "offsetVariable", "u"), 260161, {"u"});
        ExpectRefused(AsExtension(type, "offsetVariable", "q"), 260125, kUnknown);
        ExpectRefused(AsAttribute(type, "offsetVariable", "q"), 260125, kUnknown);
        EXPECT_EQ(Read(AsExtension(type, "offsetVariable", "o"))->GetVarRole("o"),
                  ScoreModel::ROLE_PREDICTOR);
        for (const char* name : {"o", "u"}) {
            EXPECT_EQ(Read(AsAttribute(type, "offsetVariable", name))->GetVarRole(name),
                      ScoreModel::ROLE_OFFSET);
        }
    }
    EXPECT_EQ(Generalized(Read(AsAttribute(kGeneralizedLinearType, "offsetVariable", "u")))
                  .GetOffsetVar()
                  ->GetName(),
              "u");
    EXPECT_EQ(Ordinal(Read(AsExtension(kGeneralizedOrdinalType, "offsetVariable", "o")))
                  .GetOffsetVar()
                  ->GetName(),
              "o");
}

TEST(OffsetVariable, ThatIsACovariateTooEndsAsACovariate)
{
    for (const Spelling spell : kSpellings) {
        const auto model = Read(spell(kGeneralizedLinearType, "offsetVariable", "x"));
        EXPECT_EQ(model->GetVarRole("x"), ScoreModel::ROLE_COVARIATE);
        Slot slot;
        Case c;
        c.With("x", 5.0);
        ASSERT_TRUE(model->GetScore(&c.Record(), slot.result, true).IsOK());
        EXPECT_EQ(slot.Number(), 2.0 + 3.0 * 5.0 + 5.0);
    }
}

TEST(OffsetVariable, MayBeDerived)
{
    EXPECT_FALSE(
        Read(AsAttribute(kGeneralizedLinearType, "offsetVariable", "o"))->NeedDerivedPredictor());
    const auto model = Read(AsAttribute(kGeneralizedLinearType, "offsetVariable", "d"));
    EXPECT_TRUE(model->NeedDerivedPredictor());
    Slot slot;
    Case c;
    c.With("x", 5.0);
    ASSERT_TRUE(model->GetScore(&c.Record(), slot.result, false).IsOK());
    EXPECT_EQ(slot.Number(), 2.0 + 3.0 * 5.0 + 5.0);  // d is x
}

TEST(TrialsValue, IsAWholeNumberAndNothingToAnOrdinalModel)
{
    for (const Spelling spell : kSpellings) {
        EXPECT_EQ(
            Generalized(Read(spell(kGeneralizedLinearType, "trialsValue", "20"))).GetTrialsValue(),
            20);
        // None or less is dropped without a word.
        EXPECT_EQ(
            Generalized(Read(spell(kGeneralizedLinearType, "trialsValue", "0"))).GetTrialsValue(),
            -1);
        ExpectRefused(spell(kGeneralizedLinearType, "trialsValue", "2.5"), kNotAnInteger,
                      {"2.5", HolderOf(spell, "trialsValue")});
        EXPECT_EQ(RefusalOf(spell(kGeneralizedOrdinalType, "trialsValue", "2.5")).GetErrorCode(),
                  0);
    }
}

TEST(OffsetValue, IsANumberOfBothFamilies)
{
    for (const Spelling spell : kSpellings) {
        EXPECT_EQ(
            Generalized(Read(spell(kGeneralizedLinearType, "offsetValue", "2.5"))).GetOffsetValue(),
            2.5);
        EXPECT_EQ(
            Ordinal(Read(spell(kGeneralizedOrdinalType, "offsetValue", "2.5"))).GetOffsetValue(),
            2.5);
        ExpectRefused(spell(kGeneralizedLinearType, "offsetValue", "x"), kNotANumber,
                      {"x", HolderOf(spell, "offsetValue")});
        ExpectRefused(spell(kGeneralizedOrdinalType, "offsetValue", "x"), kNotANumber,
                      {"x", HolderOf(spell, "offsetValue")});
    }
}

TEST(Link, OfTheGeneralizedLinearModelByItsWords)
{
    struct Row {
        const char* extension;
        const char* attribute;
        GZLRModel::LinkFunction link;
        bool needsParameter;
    };
    const Row rows[] = {
        {"identity", "identity", GZLRModel::LINK_IDENTITY, false},
        {"probit", "probit", GZLRModel::LINK_PROBIT, false},
        {"nloglog", "loglog", GZLRModel::LINK_NLOGLOG, false},
        {"logit", "logit", GZLRModel::LINK_LOGIT, false},
        {"cloglog", "cloglog", GZLRModel::LINK_CLOGLOG, false},
        {"log", "log", GZLRModel::LINK_LOG, false},
        {"logc", "logc", GZLRModel::LINK_LOGC, false},
        {"negbin", "negbin", GZLRModel::LINK_NEGBIN, true},
        {"oddspower", "oddspower", GZLRModel::LINK_ODDSPOWER, true},
        {"power", "power", GZLRModel::LINK_POWER, true},
    };
    for (const Row& row : rows) {
        for (const bool extension : {true, false}) {
            const std::string option = extension ? Extension("linkFunction", row.extension)
                                                 : Attribute("linkFunction", row.attribute);
            const std::string parameter = Attribute("linkParameter", "0.5");
            const std::string bare = extension ? Document(kGeneralizedLinearType, "", option)
                                               : Document(kGeneralizedLinearType, option);
            const std::string full = extension
                                         ? Document(kGeneralizedLinearType, parameter, option)
                                         : Document(kGeneralizedLinearType, option + parameter);
            const auto model = Read(full);
            EXPECT_EQ(Generalized(model).GetLinkFunction(), row.link) << row.attribute;
            EXPECT_EQ(Generalized(model).GetLinkParameter(), 0.5);
            if (row.needsParameter) {
                ExpectRefused(bare, 260115, {"linkParameter", "GeneralRegressionModel"});
            } else {
                EXPECT_EQ(RefusalOf(bare).GetErrorCode(), 0) << row.attribute;
            }
        }
    }
}

TEST(Link, OfTheOrdinalModelByItsWords)
{
    struct Row {
        const char* extension;
        const char* attribute;
        CumulativeLinkModel::CumulLinkFunction link;
    };
    const Row rows[] = {
        {"cumcauchit", "cauchit", CumulativeLinkModel::CUM_CAUCHIT},
        {"cumprobit", "probit", CumulativeLinkModel::CUM_PROBIT},
        {"cumlogit", "logit", CumulativeLinkModel::CUM_LOGIT},
        {"cumloglog", "loglog", CumulativeLinkModel::CUM_LOGLOG},
        {"cumcloglog", "cloglog", CumulativeLinkModel::CUM_CLOGLOG},
    };
    for (const Row& row : rows) {
        const auto extension =
            Read(AsExtension(kGeneralizedOrdinalType, "linkFunction", row.extension));
        EXPECT_EQ(Ordinal(extension).GetLinkFunction(), row.link) << row.extension;
        const auto attribute =
            Read(AsAttribute(kGeneralizedOrdinalType, "cumulativeLink", row.attribute));
        EXPECT_EQ(Ordinal(attribute).GetLinkFunction(), row.link) << row.attribute;
    }
}

TEST(Link, WordOfTheOtherSpellingOrFamilyIsRefused)
{
    const auto refused = [](const std::string& document, const char* word, const char* name) {
        ExpectRefused(document, 260153, {word, "value", name});
    };
    for (const char* word : {"loglog", "cauchit", "Log", "cumlogit", ""}) {
        refused(AsExtension(kGeneralizedLinearType, "linkFunction", word), word, "linkFunction");
    }
    for (const char* word : {"nloglog", "cauchit", "Log", "cumlogit"}) {
        refused(AsAttribute(kGeneralizedLinearType, "linkFunction", word), word, "linkFunction");
    }
    for (const char* word : {"logit", "log", ""}) {
        refused(AsExtension(kGeneralizedOrdinalType, "linkFunction", word), word, "linkFunction");
    }
    for (const char* word : {"cumlogit", "log"}) {
        refused(AsAttribute(kGeneralizedOrdinalType, "cumulativeLink", word), word,
                "cumulativeLink");
    }
}

TEST(Link, AttributeIsReadInItsOwnFamilyAlone)
{
    // Neither name says anything to the other family, whatever its value.
    EXPECT_EQ(RefusalOf(AsAttribute(kGeneralizedLinearType, "cumulativeLink", "x")).GetErrorCode(),
              0);
    EXPECT_EQ(RefusalOf(AsAttribute(kGeneralizedOrdinalType, "linkFunction", "x")).GetErrorCode(),
              0);
}

TEST(LinkParameter, OfAnOrdinalModelIsReadAndDropped)
{
    for (const Spelling spell : kSpellings) {
        EXPECT_EQ(RefusalOf(spell(kGeneralizedOrdinalType, "linkParameter", "2")).GetErrorCode(),
                  0);
        ExpectRefused(spell(kGeneralizedOrdinalType, "linkParameter", "x"), kNotANumber,
                      {"x", HolderOf(spell, "linkParameter")});
        ExpectRefused(spell(kGeneralizedLinearType, "linkParameter", "x"), kNotANumber,
                      {"x", HolderOf(spell, "linkParameter")});
    }
    // An empty attribute is none; an empty extension is no number.
    EXPECT_EQ(RefusalOf(AsAttribute(kGeneralizedLinearType, "linkParameter", "")).GetErrorCode(),
              0);
    ExpectRefused(AsExtension(kGeneralizedLinearType, "linkParameter", ""), kNotANumber,
                  {"", "value"});
}

TEST(LinkParameter, OfZeroIsOneToo)
{
    for (const char* link : {"power", "oddspower", "negbin"}) {
        const auto model =
            Read(Document(kGeneralizedLinearType,
                          Attribute("linkFunction", link) + Attribute("linkParameter", "0")));
        EXPECT_EQ(Generalized(model).GetLinkParameter(), 0.0) << link;
    }
}

TEST(LinkParameter, IsNeededByALinkThatALaterSpellingReplaces)
{
    const std::string power = Extension("linkFunction", "power");
    ExpectRefused(Document(kGeneralizedLinearType, Attribute("linkFunction", "log"), power), 260115,
                  {"linkParameter", "GeneralRegressionModel"});
    // Either spelling of the parameter serves either spelling of the link.
    EXPECT_EQ(RefusalOf(Document(kGeneralizedLinearType, Attribute("linkFunction", "power"),
                                 Extension("linkParameter", "2")))
                  .GetErrorCode(),
              0);
}

TEST(Distribution, ByItsWords)
{
    const std::pair<const char*, GZLRModel::DistType> rows[] = {
        {"normal", GZLRModel::DIST_NORMAL},   {"binomial", GZLRModel::DIST_BINOMIAL},
        {"gamma", GZLRModel::DIST_GAMMA},     {"igauss", GZLRModel::DIST_IGAUSS},
        {"negbin", GZLRModel::DIST_NEGBIN},   {"poisson", GZLRModel::DIST_POISSON},
        {"tweedie", GZLRModel::DIST_TWEEDIE},
    };
    for (const Spelling spell : kSpellings) {
        for (const auto& [word, type] : rows) {
            EXPECT_EQ(Generalized(Read(spell(kGeneralizedLinearType, "distribution", word)))
                          .GetDistType(),
                      type);
        }
        EXPECT_EQ(Ordinal(Read(spell(kGeneralizedOrdinalType, "distribution", "multinomial")))
                      .GetDistType(),
                  OGZLRModel::DIST_MULTINOMIAL);
        ExpectRefused(spell(kGeneralizedLinearType, "distribution", "multinomial"), 260153,
                      {"multinomial", "value", "distribution"});
        ExpectRefused(spell(kGeneralizedOrdinalType, "distribution", "normal"), 260153,
                      {"normal", "value", "distribution"});
    }
}

TEST(BothSpellings, AttributeOverwritesTheExtension)
{
    const auto model =
        Read(Document(kGeneralizedLinearType,
                      Attribute("linkFunction", "power") + Attribute("linkParameter", "3") +
                          Attribute("distribution", "gamma"),
                      Extension("linkFunction", "log") + Extension("linkParameter", "2") +
                          Extension("distribution", "normal")));
    EXPECT_EQ(Generalized(model).GetLinkFunction(), GZLRModel::LINK_POWER);
    EXPECT_EQ(Generalized(model).GetLinkParameter(), 3.0);
    EXPECT_EQ(Generalized(model).GetDistType(), GZLRModel::DIST_GAMMA);
}

TEST(BothSpellings, OffsetAndTrialsKeepTheFirst)
{
    const auto model = Read(Document(
        kGeneralizedLinearType, Attribute("trialsVariable", "n") + Attribute("offsetVariable", "o"),
        Extension("trialsValue", "7") + Extension("offsetValue", "1")));
    EXPECT_EQ(Generalized(model).GetTrialsValue(), 7);
    EXPECT_EQ(Generalized(model).GetTrialsVar(), nullptr);
    EXPECT_EQ(Generalized(model).GetOffsetValue(), 1.0);
    EXPECT_EQ(Generalized(model).GetOffsetVar(), nullptr);
}

// The negative binomial's ancillary under its own name, read where distribution and link are both
// negative binomial.
std::string NegativeBinomial(const std::string& attributes)
{
    return Document(kGeneralizedLinearType, Attribute("distribution", "negbin") +
                                                Attribute("linkFunction", "negbin") + attributes);
}

TEST(DistributionParameter, IsTheLinkParameterUnderTheNegativeBinomialLink)
{
    const auto own = Read(NegativeBinomial(Attribute("distParameter", "0.5")));
    EXPECT_EQ(Generalized(own).GetLinkParameter(), 0.5);
    const auto both =
        Read(NegativeBinomial(Attribute("distParameter", "0.5") + Attribute("linkParameter", "2")));
    EXPECT_EQ(Generalized(both).GetLinkParameter(), 0.5);
    const auto link = Read(NegativeBinomial(Attribute("linkParameter", "2")));
    EXPECT_EQ(Generalized(link).GetLinkParameter(), 2.0);
    ExpectRefused(NegativeBinomial(""), 260115, {"distParameter", "GeneralRegressionModel"});
    ExpectRefused(NegativeBinomial(Attribute("distParameter", "x")), kNotANumber,
                  {"x", "distParameter"});
}

TEST(DistributionParameter, IsReadAfterTheExtensionsToo)
{
    const std::string extensions =
        Extension("distribution", "negbin") + Extension("linkFunction", "negbin");
    EXPECT_EQ(Generalized(Read(Document(kGeneralizedLinearType, Attribute("distParameter", "0.5"),
                                        extensions)))
                  .GetLinkParameter(),
              0.5);
    ExpectRefused(Document(kGeneralizedLinearType, "", extensions), 260115,
                  {"distParameter", "GeneralRegressionModel"});
    // As an extension it says nothing.
    ExpectRefused(
        Document(kGeneralizedLinearType, "", extensions + Extension("distParameter", "0.5")),
        260115, {"distParameter", "GeneralRegressionModel"});
}

TEST(DistributionParameter, SaysNothingUnderAnotherLinkOrDistribution)
{
    const std::string parameter = Attribute("distParameter", "x");  // isn't even a number
    const std::string log = Attribute("linkFunction", "log");
    const std::string negbin =
        Attribute("linkFunction", "negbin") + Attribute("linkParameter", "2");
    EXPECT_EQ(RefusalOf(Document(kGeneralizedLinearType,
                                 Attribute("distribution", "negbin") + log + parameter))
                  .GetErrorCode(),
              0);
    EXPECT_EQ(RefusalOf(Document(kGeneralizedLinearType,
                                 Attribute("distribution", "poisson") + negbin + parameter))
                  .GetErrorCode(),
              0);
    // The power link takes no distribution parameter in place of its own.
    ExpectRefused(Document(kGeneralizedLinearType,
                           Attribute("linkFunction", "power") + Attribute("distParameter", "2")),
                  260115, {"linkParameter", "GeneralRegressionModel"});
}

// Options in a family that doesn't have them: passed over, whatever they say.
TEST(Options, OfOtherFamiliesArePassedOver)
{
    const char* const generalized[] = {"trialsVariable", "offsetVariable", "trialsValue",
                                       "offsetValue",    "linkFunction",   "linkParameter",
                                       "distribution"};
    for (const char* name : generalized) {
        for (const Spelling spell : kSpellings) {
            EXPECT_EQ(RefusalOf(spell(kGeneralLinearType, name, "?")).GetErrorCode(), 0) << name;
        }
    }
    for (const char* name : {"sigma", "percentile", "cutoff", "endTimeVariable", "anything"}) {
        EXPECT_EQ(RefusalOf(AsExtension(kGeneralizedLinearType, name, "?")).GetErrorCode(), 0);
        EXPECT_EQ(RefusalOf(AsExtension(kGeneralizedOrdinalType, name, "?")).GetErrorCode(), 0);
    }
    for (const char* name : {"sigma", "percentile"}) {
        EXPECT_EQ(RefusalOf(AsExtension(kBinaryType, name, "?")).GetErrorCode(), 0);
        EXPECT_EQ(RefusalOf(AsAttribute(kGeneralLinearType, name, "?")).GetErrorCode(), 0);
        ExpectRefused(AsExtension(kGeneralLinearType, name, "?"), kNotANumber, {"?", "value"});
    }
    EXPECT_EQ(RefusalOf(AsExtension(kGeneralLinearType, "cutoff", "?")).GetErrorCode(), 0);
}

TEST(Options, OfEveryFamily)
{
    for (const std::string& type :
         {kGeneralizedLinearType, kGeneralizedOrdinalType, kGeneralLinearType, kBinaryType}) {
        EXPECT_EQ(Read(AsExtension(type, "modelDF", "7.5"))->GetDF(), 7.5) << type;
        EXPECT_TRUE(
            Read(AsExtension(type, "allowMissingFactors", "true"))->GetAllowMissingFactors());
        EXPECT_FALSE(
            Read(AsExtension(type, "allowMissingFactors", "TRUE"))->GetAllowMissingFactors());
    }
}

TEST(Options, ExtensionBehindAnotherChildIsNotSeen)
{
    const std::string document = With(Document(kGeneralizedLinearType), "<ParameterList>",
                                      Extension("linkFunction", "log") + "<ParameterList>");
    EXPECT_EQ(Generalized(Read(document)).GetLinkFunction(), GZLRModel::LINK_IDENTITY);
}

// Two faults at once: the one that comes first in the order of reading is the one that is told.
TEST(Options, AreReadInTheirOrder)
{
    const std::string trialsVariable = Attribute("trialsVariable", "q");
    const std::string offsetVariable = Attribute("offsetVariable", "q2");
    const std::string trialsValue = Attribute("trialsValue", "a");
    const std::string offsetValue = Attribute("offsetValue", "b");
    const std::string link = Attribute("linkFunction", "c");
    const std::string parameter = Attribute("linkParameter", "e");
    const std::string distribution = Attribute("distribution", "f");
    struct Row {
        std::string attributes;
        int code;
        std::string argument;
    };
    const Row rows[] = {
        {offsetVariable + trialsVariable, 260125, "q"},
        {trialsValue + offsetVariable, 260125, "q2"},
        {offsetValue + trialsValue, kNotAnInteger, "a"},
        {link + offsetValue, kNotANumber, "b"},
        {parameter + link, 260153, "c"},
        {distribution + parameter, kNotANumber, "e"},
        // Distribution before the parameter of the distribution, both before the link's.
        {Attribute("linkFunction", "power") + distribution, 260153, "f"},
    };
    for (const Row& row : rows) {
        const VSException refusal = RefusalOf(Document(kGeneralizedLinearType, row.attributes));
        EXPECT_EQ(refusal.GetErrorCode(), row.code) << row.attributes;
        ASSERT_FALSE(refusal.GetArguments().empty());
        EXPECT_EQ(refusal.GetArguments()[0], row.argument) << row.attributes;
    }
    // Extensions come in the document's order, and before every attribute.
    ExpectRefused(Document(kGeneralizedLinearType, trialsVariable,
                           Extension("distribution", "f") + Extension("linkFunction", "c")),
                  260153, {"f", "value", "distribution"});
    // A link without its parameter is told before a factor list that is wrong.
    ExpectRefused(With(Document(kGeneralizedLinearType, Attribute("linkFunction", "power")),
                       "<CovariateList>", "<CovariateList><Wrong/>"),
                  260115, {"linkParameter", "GeneralRegressionModel"});
}

TEST(Options, RefusalNamesTheExtensionsPlace)
{
    const VSException refusal = RefusalOf(AsExtension(kGeneralizedLinearType, "linkFunction", "c"));
    EXPECT_NE(refusal.GetPlace().path.find("Extension"), std::string::npos);
    // Of several the one that is refused.
    const VSException second =
        RefusalOf(With(AsExtension(kGeneralizedLinearType, "linkFunction", "c"), "<Extension",
                       "<Extension name=\"other\" value=\"1\"/><Extension"));
    EXPECT_EQ(second.GetPlace().path, "PMML/GeneralRegressionModel/Extension[2]");
}

TEST(Options, CutoffAndSigmaAreNumbersOfTheirOwnFamilies)
{
    const auto binary = Read(AsExtension(kBinaryType, "cutoff", "0.3"));
    EXPECT_EQ(static_cast<const BLRModel&>(*binary).GetCutoff(), 0.3);
    ExpectRefused(AsExtension(kBinaryType, "cutoff", "?"), kNotANumber, {"?", "value"});
    const auto linear = Read(
        Document(kGeneralLinearType, "", Extension("sigma", "1.5") + Extension("percentile", "2")));
    EXPECT_EQ(static_cast<GLRModel&>(*linear).GetSigmaValue(), 1.5);
    EXPECT_EQ(static_cast<GLRModel&>(*linear).GetPercentileValue(), 2.0);
}

// The linear support vector machine: a general linear document with a sigma and a percentile.
std::string SupportVectorMachine(const std::string& extensions)
{
    return With(Document(kGeneralLinearType, Attribute("algorithmName", "linearSVM"), extensions),
                "modelName=\"generalLinearModel\" ", "");
}

TEST(LinearSVM, ScoresWithTheSigmaAndPercentileOfItsExtensions)
{
    const auto model =
        Read(SupportVectorMachine(Extension("sigma", "1.5") + Extension("percentile", "2")));
    Slot slot;
    Case c;
    c.With("x", 4.0);
    ASSERT_TRUE(model->GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 14.0);
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), 1.5);
    EXPECT_EQ(slot.As<LRResult>().GetCIBottom(), 12.0);
    EXPECT_EQ(slot.As<LRResult>().GetCITop(), 16.0);
}

TEST(LinearSVM, IsLearntFromAnyExtensionButTheCommonOnes)
{
    const auto algorithm = [](const std::string& extensions) {
        const auto model = Read(SupportVectorMachine(extensions));
        return static_cast<const GLRModel&>(*model).GetAlgorithmName();
    };
    EXPECT_EQ(algorithm(Extension("anything", "")), "linearSVM");
    EXPECT_EQ(algorithm(Extension("sigma", "1")), "linearSVM");
    EXPECT_EQ(algorithm(""), "");
    EXPECT_EQ(algorithm(Extension("modelDF", "5")), "");
    EXPECT_EQ(algorithm(Extension("allowMissingFactors", "false")), "");
    // Without an algorithm in the document nothing is learnt.
    const auto model = Read(AsExtension(kGeneralLinearType, "sigma", "1"));
    EXPECT_EQ(static_cast<const GLRModel&>(*model).GetAlgorithmName(), "");
}

// A two-category document of the generalized linear model, logit link; `category` is what the
// cells name.
std::string TwoCategories(const std::string& values, const std::string& category,
                          const std::string& type = "string")
{
    std::string document = Document(
        "modelType=\"generalizedLinear\" modelName=\"GZLM\" functionName=\"classification\"",
        Attribute("linkFunction", "logit") + Attribute("distribution", "binomial"));
    document = With(document, "<Value value=\"a\"/><Value value=\"b\"/>", values);
    document = With(document, "dataType=\"string\"", "dataType=\"" + type + "\"");
    for (int cell = 0; cell < 2; ++cell) {
        document = With(document, "targetCategory=\"a\"", "targetCategory=\"" + category + "\"");
    }
    return document;
}

struct Classified {
    std::string prediction;
    std::vector<std::pair<std::string, double>> percents;
};

Classified Classify(const std::string& document, double x)
{
    const auto model = Read(document);
    EXPECT_EQ(model->GetModelType(), ScoreModel::TYPE_GZLR);
    Slot slot;
    Case c;
    c.With("x", x);
    EXPECT_TRUE(model->GetScore(&c.Record(), slot.result, true).IsOK());
    Classified answer{slot.result->GetPrediction()->GetString(), {}};
    for (const auto& [value, percent] : slot.As<MLRResult>().GetAllValuePercent()) {
        answer.percents.emplace_back(value->GetString(), percent);
    }
    return answer;
}

TEST(TwoCategories, TheOneThatTheCellsNameIsTheEvent)
{
    const double event = 1.0 / (1.0 + std::exp(-5.0));  // eta = 2 + 3
    const std::string values = "<Value value=\"a\"/><Value value=\"b\"/>";
    for (const std::string name : {"a", "b"}) {
        const Classified answer = Classify(TwoCategories(values, name), 1.0);
        EXPECT_EQ(answer.prediction, name);
        ASSERT_EQ(answer.percents.size(), 2u);
        EXPECT_EQ(answer.percents[0].first, name);
        EXPECT_DOUBLE_EQ(answer.percents[0].second, event);
    }
}

// The cell is placed by the number, but the event is looked for by the text as written: "1.0" is
// no category's, so the first one stays the event, and its betas are all 0.
TEST(TwoCategories, NumberWrittenAnotherWayIsNotTheEvent)
{
    const std::string values = "<Value value=\"0\"/><Value value=\"1\"/>";
    const Classified plain = Classify(TwoCategories(values, "1", "double"), 1.0);
    EXPECT_EQ(plain.percents.at(0).first, "1");
    EXPECT_GT(plain.percents.at(0).second, 0.99);
    const Classified odd = Classify(TwoCategories(values, "1.0", "double"), 1.0);
    EXPECT_EQ(odd.percents.at(0).first, "0");
    EXPECT_EQ(odd.percents.at(0).second, 0.5);
}

TEST(TwoCategories, AreNeitherMoreNorFewer)
{
    for (const char* values :
         {"<Value value=\"a\"/>", "<Value value=\"a\"/><Value value=\"b\"/><Value value=\"c\"/>"}) {
        ExpectRefused(TwoCategories(values, "a"), 260181, {"Value", "y"});
    }
    ExpectRefused(With(Document(kGeneralizedLinearType), "name=\"y\" optype=\"continuous\"",
                       "name=\"y\" optype=\"categorical\""),
                  260126, {"y"});
}

TEST(TwoCategories, CategoricalTargetOfARegressionIsRefused)
{
    const std::string document =
        With(TwoCategories("<Value value=\"a\"/><Value value=\"b\"/>", "a"),
             "functionName=\"classification\"", "functionName=\"regression\"");
    ExpectRefused(document, 260184, {"continuous", "optype", "y"});
}

TEST(TwoCategories, BinomialMultinomialFormWithAnotherLinkIsGeneralized)
{
    const std::string document =
        With(With(TwoCategories("<Value value=\"a\"/><Value value=\"b\"/>", "a"),
                  "modelType=\"generalizedLinear\"", "modelType=\"multinomialLogistic\""),
             "linkFunction=\"logit\"", "linkFunction=\"probit\"");
    EXPECT_EQ(Generalized(Read(document)).GetLinkFunction(), GZLRModel::LINK_PROBIT);
    EXPECT_EQ(Read(With(document, "\"probit\"", "\"logit\""))->GetModelType(),
              ScoreModel::TYPE_MLR);
}

TEST(TwoCategories, CovarianceOfOneCategoryIsRefusedAndOfBothStored)
{
    const std::string document = TwoCategories("<Value value=\"a\"/><Value value=\"b\"/>", "a");
    const auto with = [&](const std::string& categories) {
        return With(document, "<ParamMatrix>",
                    "<PCovMatrix><PCovCell pRow=\"p0\" pCol=\"p1\" value=\"0.5\"" + categories +
                        "/></PCovMatrix><ParamMatrix>");
    };
    for (const std::string categories : {"", " tRow=\"a\" tCol=\"a\""}) {
        EXPECT_EQ(Read(with(categories))->GetPCovMatrix()->GetCell(1, 0), 0.5);
    }
    ExpectRefused(with(" tRow=\"a\""), 260191, {"tRow", "generalizedLinear"});
    ExpectRefused(with(" tCol=\"a\""), 260191, {"tCol", "generalizedLinear"});
}

TEST(NumericTarget, TakesCellsThatNameACategoryIntoItsOneRow)
{
    const std::string document = With(Document(kGeneralizedLinearType), "beta=\"3\"",
                                      "beta=\"3\" targetCategory=\"whatever\"");
    Slot slot;
    Case c;
    c.With("x", 1.0);
    const auto model = Read(document);
    ASSERT_TRUE(model->GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 5.0);
}

}  // namespace
}  // namespace MCVelscore_850
