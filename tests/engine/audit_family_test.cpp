// Each row changes one thing of a sound document; its neighbours, which stay silent, stand below.

#include <filesystem>

#include "engine/documents/loadedmodel.h"
#include "tests/engine/auditrows.h"
#include "tests/readers/legacyparts.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

constexpr const char* kModel = "GeneralRegressionModel";
constexpr const char* kExtension = "GeneralRegressionModel/Extension";
constexpr const char* kSecond = "GeneralRegressionModel/Extension[2]";
constexpr const char* kThird = "GeneralRegressionModel/Extension[3]";
constexpr const char* kGamma = "glz-gamma-inverse-cars";     // gamma, power, linkParameter -1
constexpr const char* kLogit = "glz-logit-birthwt";          // two categories, binomial, logit
constexpr const char* kTrials = "glz-trials-value-budworm";  // binomial, probit, 20
constexpr const char* kTrialsVariable = "glz-trials-variable-menarche";
constexpr const char* kOffset = "glz-poisson-offset-insurance";    // poisson, log
constexpr const char* kExtensions = "glz-poisson-extensions-3.2";  // the same as extensions
constexpr const char* kNegbin = "glz-negbin-quine";                // log, distParameter
constexpr const char* kOrdinal = "ordinal-probit-airquality";      // both links are probit
constexpr const char* kGeneralizedOrdinal = "ordinal-gzlm-cauchit-housing";
constexpr const char* kBinary = "blr-birthwt-cutoff";
constexpr const char* kLinear = "lm-swiss";  // modelDF 41, covariances
constexpr const char* kGeneralLinear = "glm-mtcars-interaction";
constexpr const char* kMultinomial = "mlr-birthwt-race";  // reference white
constexpr const char* kForm = "glz-multinomial-form-probit";
constexpr const char* kCox = "cox-veteran-strata";

void ExpectEach(std::initializer_list<AuditRow> rows)
{
    for (const AuditRow& row : rows) ExpectFound(row, FamilyRules());
}

TEST(FamilyRules, OfLinks)
{
    ExpectEach(
        {{kOffset, " linkFunction=\"log\"", "", "missing-link", kModel, "linkFunction"},
         {kExtensions, "name=\"linkFunction\"", "name=\"x\"", "missing-link", kModel,
          "linkFunction"},
         {kOrdinal, "cumulativeLink=\"probit\" linkFunction=\"probit\"", "", "unnamed-link", kModel,
          "cumulativeLink", "", Answer::Notice},
         {kGeneralizedOrdinal, "cumulativeLink=\"cauchit\"", "", "unnamed-link", kModel,
          "cumulativeLink", "", Answer::Notice},
         // Of a generalized ordinal model linkFunction isn't read; logit is what it would be.
         {kGeneralizedOrdinal, "cumulativeLink=\"cauchit\"", "linkFunction=\"probit\"",
          "missing-link", kModel, "cumulativeLink"},
         {kGeneralizedOrdinal, "cumulativeLink=\"cauchit\"", "linkFunction=\"logit\""},
         {kGeneralizedOrdinal, "cumulativeLink=\"cauchit\"", "cumulativeLink=\"probit\""},
         {kOrdinal, "linkFunction=\"probit\"", ""},

         {kLinear, "modelDF=", "linkFunction=\"log\" modelDF=", "link-of-another-family", kModel,
          "linkFunction", "log"},
         {kGeneralLinear, "modelDF=", "linkFunction=\"log\" modelDF=", "link-of-another-family",
          kModel, "linkFunction", "log"},
         {kGeneralLinear, "modelDF=", "linkFunction=\"identity\" modelDF="},
         {kMultinomial, "functionName", "linkFunction=\"probit\" functionName",
          "link-of-another-family", kModel, "linkFunction", "probit"},
         {kMultinomial, "functionName", "linkFunction=\"logit\" functionName"},
         // That of categories in their order, whatever the word.
         {kMultinomial, "functionName", "cumulativeLink=\"logit\" functionName",
          "link-of-another-family", kModel, "cumulativeLink", "logit"},
         {kBinary, "functionName", "linkFunction=\"cloglog\" functionName",
          "link-of-another-family", kModel, "linkFunction", "cloglog"},
         {kCox, "functionName", "linkFunction=\"log\" functionName", "link-of-another-family",
          kModel, "linkFunction", "log"},
         {kOrdinal, "linkFunction=\"probit\"", "linkFunction=\"log\"", "link-of-another-family",
          kModel, "linkFunction", "log"},
         {kLogit, "linkFunction=\"logit\"", "linkFunction=\"cauchit\"", "link-of-another-family",
          kModel, "linkFunction", "cauchit"},
         // A multinomial form whose link makes it a generalized linear model has that family's
         // links.
         {kForm, "linkFunction=\"probit\"", "linkFunction=\"cloglog\""},

         {kOrdinal, "cumulativeLink=\"probit\"", "cumulativeLink=\"loglog\"", "contradicting-links",
          kModel, "cumulativeLink", "loglog"},
         {kGeneralizedOrdinal, "functionName", "linkFunction=\"probit\" functionName",
          "contradicting-links", kModel, "linkFunction", "probit"},
         {kGeneralizedOrdinal, "functionName", "linkFunction=\"cauchit\" functionName"},
         {kExtensions, "functionName", "linkFunction=\"identity\" functionName",
          "contradicting-links", kSecond, "value", "log"},
         {kExtensions, "functionName", "linkFunction=\"log\" functionName"},
         {kGeneralizedOrdinal, "<MiningSchema>",
          "<Extension name=\"linkFunction\" value=\"cumcauchit\"/><MiningSchema>"},
         {kGeneralizedOrdinal, "<MiningSchema>",
          "<Extension name=\"linkFunction\" value=\"cumlogit\"/><MiningSchema>",
          "contradicting-links", kExtension, "value", "cumlogit"}});
}

TEST(FamilyRules, OfDistributions)
{
    ExpectEach(
        {{kOffset, "linkFunction=\"log\"", "linkFunction=\"logit\"", "link-against-distribution",
          kModel, "linkFunction", "logit"},
         {kGamma, "linkFunction=\"power\"", "linkFunction=\"oddspower\"",
          "link-against-distribution", kModel, "linkFunction", "oddspower"},
         {kNegbin, "linkFunction=\"log\"", "linkFunction=\"probit\"", "link-against-distribution",
          kModel, "linkFunction", "probit"},
         {kOffset, "linkFunction=\"log\"", "linkFunction=\"negbin\" linkParameter=\"1\"",
          "link-against-distribution", kModel, "linkFunction", "negbin"},
         {kExtensions, "value=\"log\"", "value=\"nloglog\"", "link-against-distribution", kSecond,
          "value", "nloglog"},
         {kNegbin, "linkFunction=\"log\"", "linkFunction=\"negbin\""},
         {kOffset, "linkFunction=\"log\"", "linkFunction=\"identity\""},
         {kTrials, "linkFunction=\"probit\"", "linkFunction=\"log\""},
         {kOffset, "distribution=\"poisson\"", "distribution=\"tweedie\""},
         {"glz-normal-log-orange", "linkFunction=\"log\"", "linkFunction=\"logit\""},

         {kTrials, "distribution=\"binomial\"", "", "missing-distribution", kModel, "distribution"},
         {kTrials, "distribution=\"binomial\" linkFunction=\"probit\" trialsValue=\"20\"",
          "linkFunction=\"probit\" trialsValue=\"1\""},
         {kOffset, "distribution=\"poisson\"", ""},
         {kLogit, "distribution=\"binomial\"", ""},
         {kLogit,
          "functionName=\"classification\" algorithmName=\"GZLM\" distribution=\"binomial\"",
          "functionName=\"regression\" algorithmName=\"GZLM\"", "missing-distribution", kModel,
          "distribution"},

         {kGeneralLinear, "modelDF=", "distribution=\"poisson\" modelDF=",
          "distribution-of-another-family", kModel, "distribution", "poisson"},
         {kGeneralLinear, "modelDF=", "distribution=\"normal\" modelDF="},
         {kCox, "functionName", "distribution=\"normal\" functionName",
          "distribution-of-another-family", kModel, "distribution", "normal"},
         {kMultinomial, "functionName", "distribution=\"multinomial\" functionName"},
         {kLogit, "distribution=\"binomial\" linkFunction=\"logit\"",
          "distribution=\"normal\" linkFunction=\"logit\"", "distribution-of-categories", kModel,
          "distribution", "normal"}});
}

TEST(FamilyRules, NameTheDistributionThatALinkIsAgainst)
{
    const auto found =
        FoundIn(Changed(CaseText(kOffset), "linkFunction=\"log\"", "linkFunction=\"logit\""),
                FamilyRules());
    ASSERT_EQ(found.size(), 1u);
    EXPECT_NE(found[0].text.find("poisson"), std::string::npos) << found[0].text;
}

// Of an ordinal model the distribution is that of its categories.
TEST(FamilyRules, OfDistributionsOfCategories)
{
    ExpectEach({{kOrdinal, "functionName", "distribution=\"multinomial\" functionName"},
                {kGeneralizedOrdinal, "functionName", "distribution=\"multinomial\" functionName"},
                {kMultinomial, "functionName", "distribution=\"multinomial\" functionName"}});
}

TEST(FamilyRules, OfOffsetsAndTrials)
{
    ExpectEach(
        {{kLinear, "modelDF=", "offsetValue=\"3\" modelDF=", "offset-not-counted", kModel,
          "offsetValue", "3"},
         {kLinear, "modelDF=", "offsetValue=\"0\" modelDF="},
         {kCox, "functionName", "offsetVariable=\"karno\" functionName", "offset-not-counted",
          kModel, "offsetVariable", "karno"},
         {kOrdinal, "<MiningSchema>", "<Extension name=\"offsetValue\" value=\"1\"/><MiningSchema>",
          "offset-not-counted", kExtension, "value", "1"},
         {kOrdinal, "functionName", "offsetValue=\"1\" functionName"},
         {kGeneralizedOrdinal, "functionName", "offsetValue=\"1\" functionName"},
         {kGeneralizedOrdinal, "functionName", "offsetVariable=\"Cont\" functionName",
          "offset-not-counted", kModel, "offsetVariable", "Cont"},

         {kLinear, "modelDF=", "trialsValue=\"3\" modelDF=", "trials-not-counted", kModel,
          "trialsValue", "3"},
         {kLinear, "modelDF=", "trialsValue=\"1\" modelDF="},
         {kOffset, "linkFunction", "trialsValue=\"3\" linkFunction", "trials-not-counted", kModel,
          "trialsValue", "3"},
         {kLogit, "linkFunction", "trialsValue=\"3\" linkFunction", "trials-not-counted", kModel,
          "trialsValue", "3"},
         {kTrials, "trialsValue=\"20\"", "trialsValue=\"0\"", "trials-below-one", kModel,
          "trialsValue", "0"},
         {kTrials, "trialsValue=\"20\"", "trialsValue=\"-3\"", "trials-below-one", kModel,
          "trialsValue", "-3"},
         {kTrials, "trialsValue=\"20\"", "trialsValue=\"1\""},

         {kOffset, "offsetVariable=\"log_holders\"", "offsetVariable=\"Group\"", "text-variable",
          kModel, "offsetVariable", "Group"},
         {kExtensions, "value=\"log_holders\"", "value=\"Group\"", "text-variable", kThird, "value",
          "Group"},
         {kCox, "endTimeVariable=\"time\"", "endTimeVariable=\"celltype\"", "text-variable", kModel,
          "endTimeVariable", "celltype"},
         {kCox, "endTimeVariable=\"time\"", "endTimeVariable=\"trt\"", "text-variable", kModel,
          "endTimeVariable", "trt"},
         {kCox, "endTimeVariable=\"time\"", "endTimeVariable=\"karno\""},
         {kLinear, "modelDF=", "linkParameter=\"2\" modelDF=", "unused-link-parameter", kModel,
          "linkParameter", "2", Answer::Notice},

         {kOffset, "offsetVariable", "offsetValue=\"1\" offsetVariable", "contradicting-options",
          kModel, "offsetVariable", "log_holders"},
         {kOffset, "offsetVariable=\"log_holders\"", "offsetVariable=\"\"", "empty-option", kModel,
          "offsetVariable", "", Answer::Notice},
         {kTrialsVariable, "trialsVariable", "trialsValue=\"5\" trialsVariable",
          "contradicting-options", kModel, "trialsVariable", "Total"},
         {kExtensions, "functionName", "offsetVariable=\"log_holders\" functionName"},
         {kExtensions, "functionName", "distribution=\"tweedie\" functionName",
          "contradicting-options", kModel, "distribution", "tweedie"},
         {kLinear, "<MiningSchema>", "<Extension name=\"modelDF\" value=\"40\"/><MiningSchema>",
          "contradicting-options", kModel, "modelDF", "41"},
         {kLinear, "<MiningSchema>", "<Extension name=\"modelDF\" value=\"41.0\"/><MiningSchema>"},
         {kNegbin, "linkFunction=\"log\"", "linkFunction=\"negbin\" linkParameter=\"2\"",
          "contradicting-options", kModel, "distParameter", "0.73435619256338014"},
         {kOffset, "linkFunction=\"log\"", "linkFunction=\"log\" linkParameter=\"2\"",
          "unused-link-parameter", kModel, "linkParameter", "2", Answer::Notice},
         {kNegbin, "linkFunction=\"log\"", "linkFunction=\"log\" linkParameter=\"2\""}});
}

TEST(FamilyRules, OfCategories)
{
    ExpectEach(
        {{kMultinomial, "targetReferenceCategory=\"white\"", "targetReferenceCategory=\"White\"",
          "unknown-reference-category", kModel, "targetReferenceCategory", "White"},
         {kLogit, "linkFunction", "targetReferenceCategory=\"nosuch\" linkFunction",
          "unknown-reference-category", kModel, "targetReferenceCategory", "nosuch"},
         {kLogit, "linkFunction", "targetReferenceCategory=\"normal\" linkFunction"},
         {"mlr-birthwt-visits-numeric", "targetReferenceCategory=\"0\"",
          "targetReferenceCategory=\"0.0\""},
         {kLinear, "modelDF", "targetReferenceCategory=\"x\" modelDF"},

         {kLogit, "value=\"low\" optype", "value=\"Low\" optype", "unknown-output-category",
          "OutputField[1]", "value", "Low", Answer::Notice},
         {kLogit, "feature=\"probability\" value=\"low\"", "feature=\"residual\" value=\"none\"",
          "unknown-output-category", "OutputField[1]", "value", "none", Answer::Notice},
         {kLogit, "feature=\"probability\" value=\"low\"",
          "feature=\"standardError\" value=\"none\""},

         {kBinary, "value=\"0.3\"", "value=\"0\"", "cutoff-out-of-range", kExtension, "value", "0"},
         {kBinary, "value=\"0.3\"", "value=\"1.5\"", "cutoff-out-of-range", kExtension, "value",
          "1.5"},
         {kBinary, "value=\"0.3\"", "value=\"1\""},
         {kBinary, " targetReferenceCategory=\"low\"", "", "cutoff-without-category", kExtension,
          "value", "0.3"},
         {kBinary, "version=\"4.4\"", "version=\"3.2\"", "cutoff-without-category", kExtension,
          "value", "0.3"},
         {kMultinomial, "<MiningSchema>",
          "<Extension name=\"cutoff\" value=\"0.3\"/><MiningSchema>", "cutoff-not-counted",
          kExtension, "value", "0.3"},

         {kLinear, "modelDF=\"41\"", "modelDF=\"-1\"", "negative-degrees-of-freedom", kModel,
          "modelDF", "-1"},
         {kLinear, "modelDF=\"41\"", "modelDF=\"0\""},
         {kLinear, " modelDF=\"41\"", "", "missing-degrees-of-freedom", kModel, "modelDF", "",
          Answer::Notice},
         {"xform-functions-mtcars-glm", "", ""},  // no covariances
         {kMultinomial, "beta=\"0.093237511133028861\" df=\"1\"",
          "beta=\"0.093237511133028861\" df=\"-1\"", "negative-degrees-of-freedom", "PCell[1]",
          "df", "-1"}});
}

// ---- what the finished model shows

// The faults that loading the document ends with.
std::vector<Finding> FaultsOf(const std::string& text)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("m.pmml", text);
    try {
        const LoadedModel model(path, std::make_shared<const Plugin>(VELSCORE_PLUGIN));
    } catch (const DocumentFaults& faults) {
        return faults.Found().Kept();
    }
    return {};
}

std::string ChangedEverywhere(std::string text, const std::string& from, const std::string& to)
{
    for (size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

TEST(FallingThresholds, AreAFaultOfBothOrdinalFamilies)
{
    struct Row {
        const char* document;
        const char* from;  // of the second threshold
        const char* to;
        const char* found;  // empty where they rise
    };
    constexpr Row kRows[] = {
        {kOrdinal, "9.5437599133603523", "7.67", ""},
        {kOrdinal, "9.5437599133603523", "7.66689453188831", "7.66689453188831"},
        {kOrdinal, "9.5437599133603523", "-9.5", "-9.5"},
        {kGeneralizedOrdinal, "0.593838794915112", "-0.46", ""},
        {kGeneralizedOrdinal, "0.593838794915112", "-0.593838794915112", "-0.593838794915112"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(std::string(row.document) + " " + row.to);
        const auto faults = FaultsOf(Changed(CaseText(row.document), row.from, row.to));
        ASSERT_EQ(faults.size(), *row.found == 0 ? 0u : 1u);
        if (faults.empty()) continue;
        EXPECT_EQ(faults[0].rule->name, "falling-thresholds");
        EXPECT_EQ(faults[0].found, row.found);
        EXPECT_EQ(faults[0].attribute, "beta");
        EXPECT_TRUE(faults[0].place.path.ends_with("PCell[2]")) << faults[0].place.path;
    }
}

TEST(CutoffCategory, IsSpeltAsTheTargetSpellsIt)
{
    // The model compares texts: 1.0 would be the category 1 to nobody, and no row above the
    // cut-off.
    std::string text = CaseText(kBinary);
    text = ChangedEverywhere(text, "\"low\"", "\"1\"");
    text = ChangedEverywhere(text, "\"normal\"", "\"0\"");
    text = Changed(text, "dataType=\"string\"", "dataType=\"integer\"");
    EXPECT_TRUE(FaultsOf(text).empty());
    const auto faults =
        FaultsOf(Changed(text, "targetReferenceCategory=\"1\"", "targetReferenceCategory=\"1.0\""));
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0].rule->name, "cutoff-category-spelling");
    EXPECT_EQ(faults[0].found, "0.3");
    EXPECT_EQ(faults[0].expected, "\"0\", \"1\"");
}

TEST(BetaOfOtherCategory, IsToldWhereTheModelHasOneEquation)
{
    const std::string text = CaseText("glz-logit-birthwt");
    const std::string low = "targetCategory=\"low\" parameterName=\"p1\"";
    const std::string normal = "targetCategory=\"normal\" parameterName=\"p1\"";
    EXPECT_TRUE(FaultsOf(text).empty());
    const auto faults = FaultsOf(Changed(text, low, normal));
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_EQ(faults[0].rule->name, "beta-of-other-category");
    EXPECT_EQ(faults[0].found, "normal");
    EXPECT_NE(faults[0].ToString().find("that of \"low\""), std::string::npos);
    EXPECT_EQ(faults[0].attribute, "targetCategory");
    EXPECT_TRUE(faults[0].place.path.ends_with("ParamMatrix/PCell[2]")) << faults[0].place.path;
    // A beta of 0 is none.
    const std::string cell = "<ParamMatrix><PCell targetCategory=\"normal\" parameterName=\"p1\" ";
    EXPECT_TRUE(FaultsOf(Changed(text, "<ParamMatrix>", cell + "beta=\"0\"/>")).empty());
    EXPECT_EQ(FaultsOf(Changed(text, "<ParamMatrix>", cell + "beta=\"3\"/>")).size(), 1u);
    // A truth value in another word: its betas would be those of no category.
    std::string truths = ChangedEverywhere(text, "\"low\"", "\"true\"");
    truths = ChangedEverywhere(truths, "\"normal\"", "\"false\"");
    truths = Changed(truths, "dataType=\"string\"", "dataType=\"boolean\"");
    EXPECT_TRUE(FaultsOf(truths).empty());
    EXPECT_FALSE(
        FaultsOf(ChangedEverywhere(truths, "targetCategory=\"true\"", "targetCategory=\"TRUE\""))
            .empty());
}

TEST(SoundDocuments, HaveNoFaultOfFamilyBaselineOrContrasts)
{
    std::vector<std::string> paths;
    for (const char* folder : {"tests/data", "examples"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (entry.path().extension() == ".pmml") paths.push_back(entry.path().string());
        }
    }
    ASSERT_GT(paths.size(), 70u);
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        const std::string text = FileText(path);
        for (const auto table : {FamilyRules, BaselineRules, ContrastRules}) {
            for (const Finding& finding : FoundIn(text, table())) {
                // What some of them are about: a counting process, covariances without limits.
                EXPECT_TRUE(finding.rule->name == "start-time-unused" ||
                            finding.rule->name == "missing-degrees-of-freedom")
                    << finding.ToString();
            }
        }
    }
}

// The older form has no modelDF to leave out.
TEST(MissingDegreesOfFreedom, AreTheNewerForms)
{
    LegacyParts parts;
    parts.head = "target-variable-name='y' model-type='regression'";
    parts.covariances = "<pcov-cell parameter-row-name='bx' parameter-column-name='bx' value='1'/>";
    EXPECT_FALSE(Audited(parts.Text()).Has("missing-degrees-of-freedom"));
    EXPECT_EQ(FoundIn(Changed(CaseText(kLinear), "modelDF=\"41\"", ""), FamilyRules()).size(), 1u);
}

}  // namespace
}  // namespace MCVelscore_850
