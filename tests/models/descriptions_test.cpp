// What models tell of themselves, whole: each family's description and the outline of its
// explanations as text, line by line. The texts are written from the documents that the models
// stand for; a standard error is the root of the variance that the test gives.

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "host/model/caseexplanation.h"
#include "host/model/modeldescription.h"
#include "models/blrmodel.h"
#include "models/clrmodel.h"
#include "models/coxregrmodel.h"
#include "models/glrmodel.h"
#include "models/gzlrmodel.h"
#include "models/lrmodel.h"
#include "models/mlrmodel.h"
#include "models/normalizedmodel.h"
#include "models/ogzlrmodel.h"
#include "models/ormodel.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

std::string NumberOrNone(double number)
{
    return std::isnan(number) ? "none" : NumericValue(number).GetString();
}

// A description as lines; what it leaves empty or false has none.
class Lines {
public:
    std::string Get() const { return out_.str(); }

    void Tell(const ModelDescription& about)
    {
        Text("family", about.family);
        Text("class", about.className);
        out_ << "results: " << about.resultType << "\n";
        Flag("ignores the status-only policy", !about.takesStatusOnly);
        Text("target", about.target);
        List("categories", about.targetCategories);
        Text("reference", about.referenceCategory);
        if (about.hasCutoff) out_ << "cut-off: " << about.cutoff << "\n";
        Text("cut-off is for", about.cutoffCategory);
        Text("link", about.link);
        if (about.hasLinkParameter) out_ << "k: " << about.linkParameter << "\n";
        Text("distribution", about.distribution);
        Text("mean", about.mean);
        Text("offset", about.offset);
        Text("unchecked offset", about.uncheckedOffset);
        Text("trials", about.trials);
        out_ << "df: " << about.degreesOfFreedom << "\n";
        Flag("covariances", about.hasCovariances);
        Flag("errors of probabilities", about.hasProbabilityErrors);
        Flag("confidence level", about.hasConfidenceLevel);
        Flag("Student's t", about.hasStudentEstimates);
        List("factors", about.factors);
        List("covariates", about.covariates);
        List("variables", about.variables);
        for (const auto& equation : about.equations) Tell(equation);
        for (const auto& coefficient : about.coefficients) Tell(coefficient);
        for (const auto& contrast : about.contrasts) Tell(contrast);
        Text("strata by", about.stratumVariable);
        Text("end time", about.endTimeVariable);
        for (const auto& stratum : about.strata) {
            out_ << "stratum '" << stratum.value << "': " << stratum.cells << " cells, "
                 << NumberOrNone(stratum.minTime) << " to " << NumberOrNone(stratum.maxTime)
                 << "\n";
        }
        List("events", about.eventValues);
        for (const auto& quantity : about.quantities) {
            out_ << quantity.column << ": " << quantity.meaning
                 << (quantity.lacksCovariances ? " (lacks covariances)\n" : "\n");
        }
    }
    void Tell(const ExplanationOutline& outline)
    {
        using Kind = ExplanationOutline::Term::Kind;
        for (const auto& equation : outline.equations) {
            Head("explained", equation.category, equation.isCumulative);
            for (const auto& term : equation.terms) {
                const char* const kind = term.kind == Kind::Offset            ? " (offset)"
                                         : term.kind == Kind::Threshold       ? " (threshold)"
                                         : term.kind == Kind::LinearPredictor ? " (sum)"
                                                                              : "";
                out_ << "  " << term.name << kind << " " << term.beta;
                Reference(term.referencePoint);
            }
        }
    }

private:
    void Text(const char* name, const std::string& text)
    {
        if (!text.empty()) out_ << name << ": " << text << "\n";
    }
    void Flag(const char* name, bool is)
    {
        if (is) out_ << name << "\n";
    }
    void List(const char* name, const std::vector<std::string>& texts)
    {
        if (texts.empty()) return;
        out_ << name << ":";
        for (const std::string& text : texts) out_ << " " << text;
        out_ << "\n";
    }
    void Head(const char* name, const std::string& category, bool isCumulative)
    {
        out_ << name << (category.empty() ? "" : " " + category)
             << (isCumulative ? " and below\n" : "\n");
    }
    void Reference(const std::optional<double>& point)
    {
        if (point) out_ << " from " << *point;
        out_ << "\n";
    }
    void Tell(const ModelDescription::Equation& equation)
    {
        Head("equation", equation.category, equation.isCumulative);
        for (const auto& term : equation.terms) {
            out_ << "  " << term.parameter << " [" << term.label << "] " << term.beta;
            for (const auto& factor : term.factors) {
                out_ << " * " << factor.predictor << "^" << factor.exponent;
                if (factor.isCategory) out_ << "=" << factor.category;
            }
            Reference(term.referencePoint);
        }
    }
    void Tell(const ModelDescription::Coefficient& coefficient)
    {
        out_ << "estimate " << (coefficient.category.empty() ? "" : coefficient.category + " ")
             << coefficient.parameter << " [" << coefficient.label << "] " << coefficient.estimate
             << " (" << NumberOrNone(coefficient.standardError) << ")"
             << (coefficient.isConstant ? " constant\n" : "\n");
    }
    void Tell(const ModelDescription::Contrast& contrast)
    {
        out_ << "contrasts of " << contrast.predictor << ":";
        for (size_t i = 0; i < contrast.categories.size(); ++i) {
            out_ << " " << contrast.categories[i] << "(";
            for (const double number : contrast.rows.at(i)) out_ << " " << number;
            out_ << " )";
        }
        out_ << "\n";
    }

    std::ostringstream out_;
};

std::string Told(const ScoreModel& model)
{
    ModelDescription about;
    model.Describe(about);
    Lines lines;
    lines.Tell(about);
    return lines.Get();
}

std::string Explained(const ScoreModel& model)
{
    ExplanationOutline outline;
    model.OutlineExplanations(outline);
    Lines lines;
    lines.Tell(outline);
    return lines.Get();
}

// p0 + pf [f = v] + px x^2 + pfx [f = v] x, the last with a beta of 0. A label of blanks tells
// nothing, and one that two parameters have doesn't tell which.
template <class Model>
class Rig : public Built<Model> {
public:
    static constexpr bool kIsOrdinal = std::is_base_of_v<CumulativeLinkModel, Model>;

    explicit Rig(std::unique_ptr<DictVar> target) : Built<Model>(std::move(target))
    {
        this->Factor("f", {"u", "v"});
        this->Covariate("x");
        this->model.AddParameter("p0", kIsOrdinal ? "threshold" : "   ");
        this->model.AddParameter("pf", "f is v");
        this->model.AddParameter("px", "same");
        this->model.AddParameter("pfx", "same");
    }
    DictVar& Other(std::unique_ptr<DictVar> var)
    {
        DictVar& added = *var;
        this->Dictionary().AddVar(added.GetName(), var.release());
        return added;
    }
    void WriteCells()
    {
        EXPECT_TRUE(this->SetUp());
        this->Cell("pf", "f", "v");
        this->Cell("px", "x", "2");
        this->Cell("pfx", "f", "v");
        this->Cell("pfx", "x", "1");
    }
    void Betas(const std::string& category, double scale = 1.0)
    {
        if (!kIsOrdinal) this->Beta(category, "p0", 1.5 * scale);
        this->Beta(category, "pf", -2.0 * scale);
        this->Beta(category, "px", 0.25 * scale);
    }
    void Variances()
    {
        PCovMatrix& v = *this->model.CreatePCovMatrix();
        if (!kIsOrdinal) v.SetCell("p0", "p0", 4.0);
        v.SetCell("pf", "pf", 9.0);
        v.SetCell("px", "px", 0.25);
    }
    Model& Ready(const std::string& category)
    {
        WriteCells();
        Betas(category);
        Variances();
        this->model.FinishSetup();
        return this->model;
    }
};

constexpr char kInputs[] =
    "factors: f\n"
    "covariates: x\n"
    "variables: f x\n";
constexpr char kTerms[] =
    "  p0 [   ] 1.5\n"
    "  pf [f is v] -2 * f^1=v\n"
    "  px [same] 0.25 * x^2\n"
    "  pfx [same] 0 * f^1=v * x^1\n";
constexpr char kEstimates[] =
    "estimate p0 [] 1.5 (2) constant\n"
    "estimate pf [f is v] -2 (3)\n"
    "estimate px [same] 0.25 (0.5)\n"
    "estimate pfx [same] 0 (none)\n";
constexpr char kExplainedTerms[] =
    "  p0 1.5\n"
    "  f is v -2\n"
    "  px 0.25\n"
    "  pfx 0\n";

std::string Joined(const std::vector<std::string>& pieces)
{
    std::string text;
    for (const std::string& piece : pieces) text += piece;
    return text;
}

// Slope i belongs to predictor i, and the sum begins with the intercept.
TEST(Descriptions, OfLinearRegression)
{
    Built<LRModel> built;
    built.Covariate("a");
    built.Covariate("b");
    built.Parameters({"pa", "pb", "p0"});
    built.model.SetDF(20);
    ASSERT_TRUE(built.SetUp());
    built.Cell("pa", "b", "3");  // no part of the equation
    for (const auto& [name, beta] : {std::pair{"pa", 2.0}, {"pb", -1.0}, {"p0", 5.0}}) {
        built.Beta(name, beta);
    }
    built.model.FinishSetup();
    const std::string head =
        "family: linear regression\nclass: LRModel\nresults: 5\ntarget: y\ndf: 20\n";
    const std::string terms =
        "covariates: a b\nvariables: a b\n"
        "equation\n  pa [pa] 2 * a^1\n  pb [pb] -1 * b^1\n  p0 [p0] 5\n";
    EXPECT_EQ(Told(built.model),
              head + "Student's t\n" + terms +
                  "estimate pa [pa] 2 (none)\n"
                  "estimate pb [pb] -1 (none)\n"
                  "estimate p0 [p0] 5 (none) constant\n"
                  "prediction: mean of the target\n"
                  "std_dev: standard error of the mean (lacks covariances)\n"
                  "ci_lower: lower 95% confidence limit of the mean (Student's t) (lacks "
                  "covariances)\n"
                  "ci_upper: upper 95% confidence limit of the mean (Student's t) (lacks "
                  "covariances)\n");
    built.model.GetPCovMatrix()->SetCell("pb", "pb", 0.25);
    EXPECT_EQ(Told(built.model), head + "covariances\nconfidence level\nStudent's t\n" + terms +
                                     "estimate pa [pa] 2 (0)\n"
                                     "estimate pb [pb] -1 (0.5)\n"
                                     "estimate p0 [p0] 5 (0) constant\n"
                                     "prediction: mean of the target\n"
                                     "std_dev: standard error of the mean\n"
                                     "ci_lower: lower 95% confidence limit of the mean "
                                     "(Student's t)\n"
                                     "ci_upper: upper 95% confidence limit of the mean "
                                     "(Student's t)\n");
    EXPECT_EQ(Explained(built.model), "explained\n  p0 5\n  pa 2\n  pb -1\n");
}

TEST(Descriptions, OfALinearRegressionWithoutAnIntercept)
{
    Built<LRModel> built;
    built.Covariate("a");
    built.Parameters({"pa"});
    ASSERT_TRUE(built.SetUp());
    built.Beta("pa", 2.0);
    built.model.FinishSetup();
    EXPECT_EQ(Explained(built.model), "explained\n  pa 2\n");
}

TEST(Descriptions, OfAGeneralLinearModel)
{
    struct Row {
        const char* algorithm;
        bool sigma, percentile, covariances;
        const char* flags;
        const char* quantities;
    };
    constexpr char kByCovariances[] =
        "std_dev: standard error of the mean\n"
        "ci_lower: lower 95% confidence limit of the mean (Student's t)\n"
        "ci_upper: upper 95% confidence limit of the mean (Student's t)\n";
    constexpr char kLacking[] =
        "std_dev: standard error of the mean (lacks covariances)\n"
        "ci_lower: lower 95% confidence limit of the mean (Student's t) (lacks covariances)\n"
        "ci_upper: upper 95% confidence limit of the mean (Student's t) (lacks covariances)\n";
    constexpr char kBySigma[] =
        "std_dev: sigma of the document\n"
        "ci_lower: lower 95% confidence limit of the mean (Student's t)\n"
        "ci_upper: upper 95% confidence limit of the mean (Student's t)\n";
    constexpr char kByPercentile[] =
        "std_dev: standard error of the mean\n"
        "ci_lower: prediction minus the percentile of the document\n"
        "ci_upper: prediction plus the percentile of the document\n";
    constexpr char kByPercentileAlone[] =
        "std_dev: standard error of the mean (lacks covariances)\n"
        "ci_lower: prediction minus the percentile of the document\n"
        "ci_upper: prediction plus the percentile of the document\n";
    // Sigma and percentile count for one algorithm alone.
    const Row rows[] = {
        {"", false, false, true, "covariances\nconfidence level\n", kByCovariances},
        {"", true, true, true, "covariances\nconfidence level\n", kByCovariances},
        {"", true, true, false, "", kLacking},
        {"linearSVM", false, false, false, "", kLacking},
        {"linearSVM", true, false, false, "confidence level\n", kBySigma},
        {"linearSVM", false, true, true, "covariances\n", kByPercentile},
        {"linearSVM", false, true, false, "", kByPercentileAlone},
    };
    for (const Row& row : rows) {
        Rig<GLRModel> rig(Continuous("y"));
        rig.model.SetAlgorithmName(row.algorithm);
        if (row.sigma) rig.model.SetSigmaValue(0.75);
        if (row.percentile) rig.model.SetPercentileValue(1.25);
        rig.model.SetDF(7.5);
        rig.WriteCells();
        rig.Betas("GLRdummy");
        if (row.covariances) rig.Variances();
        rig.model.FinishSetup();
        const std::string none =
            "estimate p0 [] 1.5 (none) constant\n"
            "estimate pf [f is v] -2 (none)\n"
            "estimate px [same] 0.25 (none)\n"
            "estimate pfx [same] 0 (none)\n";
        EXPECT_EQ(Told(rig.model),
                  Joined({"family: general linear model\nclass: GLRModel\nresults: 5\ntarget: y\n",
                          "df: 7.5\n", row.flags, "Student's t\n", kInputs, "equation\n", kTerms,
                          row.covariances ? kEstimates : none, "prediction: mean of the target\n",
                          row.quantities}));
        EXPECT_EQ(Explained(rig.model), Joined({"explained\n", kExplainedTerms}));
    }
}

TEST(Descriptions, OfAGeneralizedLinearModelOfANumber)
{
    struct Row {
        double k;
        double offset;
        const char* mean;
        const char* lower;
        const char* upper;
    };
    // A falling link turns the limits round.
    const Row rows[] = {
        {-2.0, -1.5, "eta^(1/k), eta = linear predictor - 1.5, k = -2", "upper", "lower"},
        {2.0, 0.0, "eta^(1/k), eta = linear predictor + 0, k = 2", "lower", "upper"},
        {0.0, 0.5, "exp(eta), eta = linear predictor + 0.5", "lower", "upper"},
    };
    for (const Row& row : rows) {
        Rig<GZLRModel> rig(Continuous("y"));
        rig.model.SetLinkFunction(GZLRModel::LINK_POWER);
        rig.model.SetLinkParameter(row.k);
        rig.model.SetDistType(GZLRModel::DIST_TWEEDIE);
        rig.model.SetOffsetValue(row.offset);
        rig.Ready("GZLRdummy");
        std::ostringstream k;
        k << "k: " << row.k << "\n";
        const std::string offset = NumericValue(row.offset).GetString();
        const auto at = [](const char* side) {
            return Joined(
                {"mean at the ", side, " 95% confidence limit of the linear predictor\n"});
        };
        EXPECT_EQ(
            Told(rig.model),
            Joined({"family: generalized linear model\nclass: GZLRModel\nresults: 5\n",
                    "target: y\nlink: Power\n", k.str(), "distribution: Tweedie\nmean: ", row.mean,
                    "\noffset: ", offset, "\ndf: 0\ncovariances\nconfidence level\n", kInputs,
                    "equation\n", kTerms, kEstimates, "prediction: mean of the target\n",
                    "std_dev: standard error of the linear predictor\n",
                    "ci_lower: ", at(row.lower), "ci_upper: ", at(row.upper)}));
        EXPECT_EQ(Explained(rig.model),
                  Joined({"explained\n", kExplainedTerms, "  offset (offset) 1\n"}));
    }
}

// Offset and trials stand once each, though the offset is a predictor too.
TEST(Descriptions, OfAGeneralizedLinearModelWithVariables)
{
    Rig<GZLRModel> rig(Continuous("y"));
    rig.model.SetLinkFunction(GZLRModel::LINK_LOG);
    rig.model.SetDistType(GZLRModel::DIST_BINOMIAL);
    rig.model.SetOffsetVar(rig.Dictionary().GetVar("x"));
    rig.model.SetTrialsVar(&rig.Other(Continuous("n")));
    rig.WriteCells();
    rig.Betas("GZLRdummy");
    rig.model.FinishSetup();
    EXPECT_EQ(
        Told(rig.model),
        Joined({"family: generalized linear model\nclass: GZLRModel\nresults: 5\n",
                "target: y\nlink: Log\ndistribution: Binomial\n",
                "mean: n * exp(eta), eta = linear predictor + x\n", "offset: x\ntrials: n\ndf: 0\n",
                "factors: f\ncovariates: x\nvariables: f x n\nequation\n", kTerms,
                "estimate p0 [] 1.5 (none) constant\n", "estimate pf [f is v] -2 (none)\n",
                "estimate px [same] 0.25 (none)\n", "estimate pfx [same] 0 (none)\n",
                "prediction: mean of the target\n",
                "std_dev: standard error of the linear predictor (lacks covariances)\n",
                "ci_lower: mean at the lower 95% confidence limit of the linear predictor "
                "(lacks covariances)\n",
                "ci_upper: mean at the upper 95% confidence limit of the linear predictor "
                "(lacks covariances)\n"}));
    EXPECT_EQ(Explained(rig.model),
              Joined({"explained\n", kExplainedTerms, "  offset(x) (offset) 1\n"}));
}

TEST(Descriptions, OfAGeneralizedLinearModelOfTwoCategories)
{
    Rig<GZLRModel> rig(Categorical("y", {"no", "yes"}));
    rig.model.SetLinkFunction(GZLRModel::LINK_LOGIT);
    rig.model.SetDistType(GZLRModel::DIST_BINOMIAL);
    rig.WriteCells();
    rig.model.UpdateResAndRefCat("yes");
    rig.Betas("yes");
    rig.Variances();
    rig.model.FinishSetup();
    const std::string estimates =
        "estimate yes p0 [] 1.5 (2) constant\n"
        "estimate yes pf [f is v] -2 (3)\n"
        "estimate yes px [same] 0.25 (0.5)\n"
        "estimate yes pfx [same] 0 (none)\n";
    EXPECT_EQ(Told(rig.model),
              Joined({"family: generalized linear model\nclass: GZLRModel\nresults: 3\n",
                      "target: y\ncategories: no yes\nreference: no\nlink: Logit\n",
                      "distribution: Binomial\n",
                      "mean: exp(eta) / (1 + exp(eta)), eta = linear predictor\ndf: 0\n",
                      "covariances\nerrors of probabilities\n", kInputs, "equation yes\n", kTerms,
                      estimates,
                      "prediction: yes where the mean is 0.5 or more, else no\n"
                      "probability(no): 1 - mean\n"
                      "probability(yes): mean\n"}));
    EXPECT_EQ(Explained(rig.model), Joined({"explained yes\n", kExplainedTerms}));
}

TEST(Descriptions, OfConditionalLogisticRegression)
{
    Rig<CLRModel> rig(Categorical("y", {"no", "yes"}));
    rig.Ready("no");
    EXPECT_EQ(
        Told(rig.model),
        Joined({"family: conditional logistic regression\nclass: CLRModel\nresults: 4\n",
                "ignores the status-only policy\ntarget: y\nlink: logit\ndf: 0\n", "covariances\n",
                kInputs, "equation no\n", kTerms, kEstimates, "prediction: probability of no\n"}));
    EXPECT_EQ(Explained(rig.model), Joined({"explained no\n", kExplainedTerms}));
    rig.Betas("CLRdummy", 2.0);
    rig.model.FinishSetup();
    EXPECT_EQ(Explained(rig.model),
              Joined({"explained no\n", kExplainedTerms,
                      "explained other\n  p0 3\n  f is v -4\n  px 0.5\n  pfx 0\n"}));
}

TEST(Descriptions, OfBinaryLogisticRegression)
{
    struct Row {
        const char* betas;  // the category whose row holds them
        const char* other;
        double cutoff;
        const char* told;
        const char* prediction;
    };
    const Row rows[] = {
        {"yes", "no", 0.0, "", "most probable category"},
        {"no", "yes", 0.25, "cut-off: 0.25\ncut-off is for: yes\n",
         "yes when its probability is above the cut-off, else the other"},
    };
    for (const Row& row : rows) {
        Rig<BLRModel> rig(Categorical("y", {"no", "yes"}));
        ASSERT_TRUE(rig.model.SetContrastMatrix("f", {{1, 0.5}, {0, -0.5}}, {1, 0}));
        rig.model.SetReferencedTargetCate(new StringValue(row.betas));
        rig.model.SetCutoff(row.cutoff);
        rig.model.SetTargetReferenceCategory("yes");
        rig.Ready(row.betas);
        const std::string category = row.betas;
        std::string estimates;
        for (const char* estimate : {" p0 [] 1.5 (2) constant\n", " pf [f is v] -2 (3)\n",
                                     " px [same] 0.25 (0.5)\n", " pfx [same] 0 (none)\n"}) {
            estimates += "estimate " + category + estimate;
        }
        EXPECT_EQ(
            Told(rig.model),
            Joined({"family: binary logistic regression\nclass: BLRModel\nresults: 3\n",
                    "target: y\ncategories: no yes\nreference: ", row.other, "\n", row.told,
                    "link: logit\ndf: 0\ncovariances\nerrors of probabilities\n", kInputs,
                    "equation " + category + "\n", kTerms, estimates,
                    "contrasts of f: v( 1 0.5 ) u( 0 -0.5 )\n", "prediction: ", row.prediction,
                    "\nprobability(no): probability of the category\n"
                    "probability(yes): probability of the category\n"}));
        const std::string zeros = "  p0 0\n  f is v 0\n  px 0\n  pfx 0\n";
        EXPECT_EQ(Explained(rig.model),
                  Joined({"explained no\n", category == "no" ? kExplainedTerms : zeros,
                          "explained yes\n", category == "yes" ? kExplainedTerms : zeros}));
    }
}

constexpr char kThreeProbabilities[] =
    "prediction: most probable category\n"
    "probability(no): probability of the category\n"
    "probability(yes): probability of the category\n"
    "probability(may): probability of the category\n";

TEST(Descriptions, OfMultinomialLogisticRegression)
{
    Rig<MLRModel> rig(Categorical("y", {"no", "yes", "may"}));
    rig.model.SetOffsetValue(0.5);
    rig.WriteCells();
    rig.Betas("yes");
    rig.Betas("may", -2.0);
    PCovMatrix& v = *rig.model.CreatePCovMatrix();
    v.SetCell("p0", "p0", "yes", "yes", 4.0);
    v.SetCell("pf", "pf", "yes", "yes", 9.0);
    v.SetCell("px", "px", "may", "may", 0.25);
    rig.model.FinishSetup();
    EXPECT_EQ(
        Told(rig.model),
        Joined({"family: multinomial logistic regression\nclass: MLRModel\nresults: 3\ntarget: y\n",
                "categories: no yes may\nreference: no\nlink: generalized logit\noffset: 0.5\n",
                "df: 0\ncovariances\nerrors of probabilities\n", kInputs,
                "equation no\nequation yes\n", kTerms,
                "equation may\n"
                "  p0 [   ] -3\n  pf [f is v] 4 * f^1=v\n  px [same] -0.5 * x^2\n"
                "  pfx [same] 0 * f^1=v * x^1\n"
                "estimate yes p0 [] 1.5 (2) constant\n"
                "estimate yes pf [f is v] -2 (3)\n"
                "estimate yes px [same] 0.25 (0)\n"
                "estimate yes pfx [same] 0 (none)\n"
                "estimate may p0 [] -3 (0) constant\n"
                "estimate may pf [f is v] 4 (0)\n"
                "estimate may px [same] -0.5 (0.5)\n"
                "estimate may pfx [same] 0 (none)\n",
                kThreeProbabilities}));
    EXPECT_EQ(Explained(rig.model),
              Joined({"explained no\n  offset (offset) 1\nexplained yes\n  offset (offset) 1\n",
                      kExplainedTerms, "explained may\n  offset (offset) 1\n",
                      "  p0 -3\n  f is v 4\n  px -0.5\n  pfx 0\n"}));
}

TEST(Descriptions, OfNormalizedRegression)
{
    struct Row {
        const char* word;
        bool ordered;
        std::string reference;  // without an equation; empty where each has one
        const char* link;
    };
    const Row rows[] = {{"logit", false, "yes", "logit"},
                        {"logit", true, "may", "logit, cumulative"},
                        {"simplemax", false, "", "simplemax"}};
    for (const Row& row : rows) {
        Rig<NormalizedModel> rig(Categorical("y", {"no", "yes", "may"}));
        ASSERT_TRUE(rig.model.SetNormalization(row.word));
        rig.model.SetRemainder("yes");
        if (row.ordered) rig.model.SetOrdered();
        rig.WriteCells();
        std::string equations, estimates, explained;
        for (const char* category : {"no", "yes", "may"}) {
            rig.Betas(category);
            if (row.reference == category) continue;
            const char* const below = row.ordered ? " and below\n" : "\n";
            equations += Joined({"equation ", category, below, kTerms});
            explained += Joined({"explained ", category, below, kExplainedTerms});
            for (const char* estimate : {" p0 [] 1.5 (none) constant\n", " pf [f is v] -2 (none)\n",
                                         " px [same] 0.25 (none)\n", " pfx [same] 0 (none)\n"}) {
                estimates += Joined({"estimate ", category, estimate});
            }
        }
        rig.model.FinishSetup();
        EXPECT_EQ(Told(rig.model),
                  Joined({"family: normalized regression\nclass: NormalizedModel\nresults: 3\n",
                          "target: y\ncategories: no yes may\n",
                          row.reference.empty() ? "" : Joined({"reference: ", row.reference, "\n"}),
                          "link: ", row.link, "\ndf: 0\n", kInputs, equations, estimates,
                          kThreeProbabilities}));
        EXPECT_EQ(Explained(rig.model), explained);
    }
}

// Both families: the sign of the linear predictor, who looks at the offset, and the names.
template <class Model>
void ExpectOrdinal(const char* head, const char* sign, const char* opposite)
{
    Rig<Model> rig(Categorical("y", {"lo", "mid", "hi"}));
    rig.model.SetLinkFunction(Model::CUM_PROBIT);
    rig.model.SetOffsetVar(&rig.Other(Continuous("o")));
    rig.WriteCells();
    rig.Beta("lo", "p0", -0.5);
    rig.Beta("mid", "p0", 1.0);
    rig.Betas("mid");
    rig.Variances();
    rig.model.GetPCovMatrix()->SetCell("p0", "p0", "lo", "lo", 0.0625);
    rig.model.GetPCovMatrix()->SetCell("p0", "p0", "mid", "mid", 4.0);
    rig.model.FinishSetup();
    const auto terms = [&](const char* threshold) {
        return Joined({"  p0 [threshold] ", threshold, "\n  pf [f is v] ", opposite,
                       "2 * f^1=v\n  px [same] ", sign, "0.25 * x^2\n",
                       "  pfx [same] 0 * f^1=v * x^1\n"});
    };
    EXPECT_EQ(Told(rig.model),
              Joined({head, "df: 0\ncovariances\nerrors of probabilities\n",
                      "factors: f\ncovariates: x\nvariables: f x o\n", "equation lo and below\n",
                      terms("-0.5"), "equation mid and below\n", terms("1"),
                      "estimate lo p0 [threshold] -0.5 (0.25) constant\n"
                      "estimate mid p0 [threshold] 1 (2) constant\n"
                      "estimate pf [f is v] -2 (3)\n"
                      "estimate px [same] 0.25 (0.5)\n"
                      "estimate pfx [same] 0 (none)\n"
                      "prediction: most probable category\n"
                      "probability(lo): probability of the category\n"
                      "probability(mid): probability of the category\n"
                      "probability(hi): probability of the category\n"}));
    const std::string boundary =
        Joined({" and below\n  linear_predictor (sum) ", sign, "1\n  threshold (threshold) 1\n"});
    EXPECT_EQ(Explained(rig.model),
              Joined({"explained\n  f is v -2\n  px 0.25\n  pfx 0\n  offset(o) (offset) 1\n",
                      "explained lo", boundary, "explained mid", boundary}));
}

TEST(Descriptions, OfOrdinalRegression)
{
    ExpectOrdinal<ORModel>(
        "family: ordinal regression\nclass: ORModel\nresults: 3\ntarget: y\n"
        "categories: lo mid hi\nlink: cumulative probit\noffset: o\nunchecked offset: o\n",
        "", "-");
    ExpectOrdinal<OGZLRModel>(
        "family: ordinal regression (generalized)\nclass: OGZLRModel\nresults: 3\ntarget: y\n"
        "categories: lo mid hi\nlink: cumulative probit\ndistribution: multinomial\n"
        "offset: o\n",
        "-", "");
}

// An offset that is a predictor is looked at as such.
TEST(Descriptions, OfAnOffsetThatIsAPredictor)
{
    Rig<ORModel> rig(Categorical("y", {"lo", "hi"}));
    rig.model.SetOffsetVar(rig.Dictionary().GetVar("f"));  // the first predictor
    rig.WriteCells();
    rig.model.FinishSetup();
    EXPECT_EQ(Told(rig.model).find("unchecked"), std::string::npos);
}

TEST(Descriptions, OfCoxRegression)
{
    Rig<CoxRegModel> rig(Continuous("status"));
    rig.Other(Continuous("time"));
    rig.Other(Categorical("s", {"north", "south"}));
    rig.model.SetEndTimeVariableName("time");
    rig.model.SetCumHazardTable({{{1.0, 0.1}, {4.0, 0.3}}, {}}, {"north", "south"}, "s");
    rig.model.SetMinMaxTime({1.0, kSysmis}, {5.0});
    rig.model.SetBasePointTable({0.0, 0.5, 3.0, 1.0});
    rig.model.SetTargetString("1,dead,");
    rig.Ready("CoxRegDummy");
    EXPECT_EQ(Told(rig.model),
              Joined({"family: Cox regression\nclass: CoxRegModel\nresults: 17\ntarget: status\n",
                      "df: 0\ncovariances\nfactors: f\ncovariates: x\nvariables: f x time s\n",
                      "equation\n",
                      "  p0 [   ] 1.5 from 0\n"
                      "  pf [f is v] -2 * f^1=v from 0.5\n"
                      "  px [same] 0.25 * x^2 from 3\n"
                      "  pfx [same] 0 * f^1=v * x^1 from 1\n",
                      kEstimates,
                      "strata by: s\nend time: time\n"
                      "stratum 'north': 2 cells, 1 to 5\n"
                      "stratum 'south': 0 cells, none to none\n"
                      "events: 1 dead\n"
                      "prediction: probability to survive the case's end time\n"
                      "cum_hazard: cumulative hazard up to the case's end time\n"}));
    EXPECT_EQ(Explained(rig.model),
              "explained\n  p0 1.5 from 0\n  f is v -2 from 0.5\n  px 0.25 from 3\n"
              "  pfx 0 from 1\n");
}

// A base point of another length centres nothing; covariates have no contrasts.
TEST(Descriptions, OfCoxRegressionWithContrasts)
{
    Rig<CoxRegModel> rig(Continuous("status"));
    rig.Other(Continuous("time"));
    rig.model.SetEndTimeVariableName("time");
    rig.model.SetCumHazardTable({{{1.0, 0.1}}}, {}, "");
    rig.model.SetMinMaxTime({1.0}, {2.0});
    rig.model.SetBasePointTable({0.5});
    ASSERT_TRUE(rig.model.SetContrastMatrix("f", {{1, 0.5}, {0, -0.5}},
                                            {new StringValue("v"), new StringValue("u")}));
    rig.Ready("CoxRegDummy");
    EXPECT_EQ(Told(rig.model),
              Joined({"family: Cox regression\nclass: CoxRegModel\nresults: 17\ntarget: status\n",
                      "df: 0\ncovariances\nfactors: f\ncovariates: x\nvariables: f x time\n",
                      "equation\n", kTerms, kEstimates, "contrasts of f: v( 1 0.5 ) u( 0 -0.5 )\n",
                      "end time: time\n"
                      "stratum '': 1 cells, 1 to 2\n"
                      "prediction: probability to survive the case's end time\n"
                      "cum_hazard: cumulative hazard up to the case's end time\n"}));
    EXPECT_EQ(Explained(rig.model), Joined({"explained\n", kExplainedTerms}));
}

// An offset whose role is a covariate's is told among them, also where it is no predictor.
TEST(Descriptions, OfAGeneralizedLinearModelWhoseOffsetIsACovariate)
{
    Rig<GZLRModel> rig(Continuous("y"));
    DictVar& o = rig.Other(Continuous("o"));
    rig.model.SetVarRole(&o, ScoreModel::ROLE_COVARIATE);
    rig.model.SetOffsetVar(&o);
    rig.WriteCells();
    rig.model.FinishSetup();
    ModelDescription about;
    rig.model.Describe(about);
    EXPECT_EQ(about.covariates, (std::vector<std::string>{"x", "o"}));
    EXPECT_EQ(about.variables, (std::vector<std::string>{"f", "x", "o"}));
}

}  // namespace
}  // namespace MCVelscore_850
