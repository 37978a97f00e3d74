#include "engine/documents/regressionforms.h"

#include <algorithm>
#include <optional>

#include <fmt/format.h>

#include "engine/documents/vocabulary.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using Shape = RegressionShape;
using Counts = CountedTables;
using Form = RegressionForm;

constexpr std::string_view kNormalizationMethod = "normalizationMethod";
constexpr const char* kNone = "none";

// Of each shape, in messages.
constexpr const char* kShapes[] = {"a regression", "a classification into two categories",
                                   "a classification into more than two categories",
                                   "a target of ordered categories"};

const RegressionWay kLinear{
    .modelType = Tags::XML_VAL_MT_GLIN, .algorithm = Tags::XML_VAL_MN_GLIN, .takesFactors = true};
const RegressionWay kGeneralized{.modelType = Tags::XML_VAL_MT_GDLIN,
                                 .algorithm = Tags::XML_VAL_MN_GZLM,
                                 .namesDistribution = true};
const RegressionWay kMultinomialLogistic{
    .modelType = Tags::XML_VAL_MT_MLR, .algorithm = Tags::XML_VAL_MT_MLR, .takesFactors = true};
const RegressionWay kOrdinalLogistic{.modelType = Tags::XML_VAL_MT_ORDINAL,
                                     .algorithm = Tags::XML_VAL_MN_ORDINAL};
const RegressionWay kNormalizedEquations{.modelType = Tags::XML_VAL_MT_MLR,
                                         .algorithm = Tags::XML_VAL_MN_NORMALIZED,
                                         .takesFactors = true,
                                         .namesNormalization = true};

// The first one that fits.
const Form kForms[] = {
    {Shape::Number, Counts::All, "none", kLinear, "", "linear regression"},
    {Shape::Number, Counts::All, "exp", kGeneralized, "log", "generalized linear model"},
    {Shape::Number, Counts::All, "softmax", kGeneralized, "logit", "generalized linear model"},
    {Shape::Number, Counts::All, "logit", kGeneralized, "logit", "generalized linear model"},
    {Shape::Number, Counts::All, "probit", kGeneralized, "probit", "generalized linear model"},
    {Shape::Number, Counts::All, "cloglog", kGeneralized, "cloglog", "generalized linear model"},
    {Shape::Number, Counts::All, "loglog", kGeneralized, "loglog", "generalized linear model"},

    {Shape::TwoCategories, Counts::First, "none", kGeneralized, "identity", "binary regression"},
    {Shape::TwoCategories, Counts::All, "simplemax", kNormalizedEquations, "", "binary regression"},
    {Shape::TwoCategories, Counts::All, "softmax", kMultinomialLogistic, "",
     "binary logistic regression"},
    {Shape::TwoCategories, Counts::First, "logit", kMultinomialLogistic, "",
     "binary logistic regression"},
    {Shape::TwoCategories, Counts::First, "probit", kGeneralized, "probit", "binary regression"},
    {Shape::TwoCategories, Counts::First, "cloglog", kGeneralized, "cloglog", "binary regression"},
    {Shape::TwoCategories, Counts::First, "loglog", kGeneralized, "loglog", "binary regression"},
    {Shape::TwoCategories, Counts::First, "cauchit", kNormalizedEquations, "", "binary regression"},

    {Shape::Categories, Counts::All, "softmax", kMultinomialLogistic, "",
     "multinomial logistic regression"},
    {Shape::Categories, Counts::All, "simplemax", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "none", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "logit", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "probit", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "cloglog", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "loglog", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "cauchit", kNormalizedEquations, "",
     "multinomial regression"},

    {Shape::OrderedCategories, Counts::All, "softmax", kMultinomialLogistic, "",
     "multinomial logistic regression"},
    {Shape::OrderedCategories, Counts::All, "simplemax", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::OrderedCategories, Counts::SharedSlopes, "logit", kOrdinalLogistic, "logit",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::SharedSlopes, "probit", kOrdinalLogistic, "probit",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::SharedSlopes, "cloglog", kOrdinalLogistic, "cloglog",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::SharedSlopes, "loglog", kOrdinalLogistic, "loglog",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::SharedSlopes, "cauchit", kOrdinalLogistic, "cauchit",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "none", kNormalizedEquations, "",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "logit", kNormalizedEquations, "",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "probit", kNormalizedEquations, "",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "cloglog", kNormalizedEquations, "",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "loglog", kNormalizedEquations, "",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "cauchit", kNormalizedEquations, "",
     "ordinal regression"},
};

// True where the equations of all categories but the last have the same terms.
bool HasSharedSlopes(const std::vector<RegressionTable>& tables,
                     const std::vector<std::string>& categories)
{
    std::optional<std::vector<std::string>> shared;
    for (const RegressionTable& table : tables) {
        if (table.category == categories.back()) continue;
        std::vector<std::string> terms;
        for (const RegressionTerm& term : table.terms) {
            std::string text = fmt::format("{}", term.element.Number("coefficient").value_or(0.0));
            for (const TermFactor& factor : term.factors) {
                text += fmt::format("\n{}\n{}\n{}\n{}", factor.field, factor.exponent,
                                    factor.category.value_or(""), factor.mapMissingTo.value_or(""));
            }
            terms.push_back(std::move(text));
        }
        std::sort(terms.begin(), terms.end());
        if (shared && *shared != terms) return false;
        shared = std::move(terms);
    }
    return true;
}

}  // namespace

std::string NormalizationOf(Element model)
{
    std::string word = model.Text(kNormalizationMethod);
    if (word.empty()) return kNone;
    const auto known = WordsOf(model.Tag(), kNormalizationMethod);
    if (std::find(known.begin(), known.end(), word) == known.end()) {
        RefuseAt(model, kUnknownNormalization, word.c_str());
    }
    return word;
}

const RegressionForm& FormOf(Element model, RegressionShape shape,
                             const std::vector<RegressionTable>& tables,
                             const std::vector<std::string>& categories)
{
    const std::string normalization = NormalizationOf(model);
    for (const Form& form : kForms) {
        if (form.shape != shape || form.normalization != normalization) continue;
        if (form.counts != Counts::SharedSlopes || HasSharedSlopes(tables, categories)) return form;
    }
    RefuseAt(model, kNormalizationNotTaken, normalization.c_str(),
             kShapes[static_cast<size_t>(shape)]);
}

}  // namespace MCVelscore_850
