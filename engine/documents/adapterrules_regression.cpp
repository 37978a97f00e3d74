#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "engine/documents/adapterrules.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/names.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kNormalizationMethod = "normalizationMethod";

// Null beside a GeneralRegressionModel, which is read then.
Element RegressionModelOf(Element root)
{
    return ModelElement(root) ? Element() : root.Child("RegressionModel");
}

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

// Parts of names of algorithms whose predictions are no linear predictor.
constexpr std::string_view kWordsOfLinks[] = {"poisson",          "gamma",    "tweedie", "negbin",
                                              "negativebinomial", "logistic", "logit",   "probit"};

// What makes two terms of a table the same; a term of several fields has none.
std::string KeyOfTerm(Element term)
{
    if (term.Is("NumericPredictor")) {
        const double exponent = term.Number("exponent").value_or(1.0);
        return fmt::format("{}\n^{}", term.Text(Tags::XML_ATT_NAME), exponent);
    }
    if (!term.Is("CategoricalPredictor")) return {};
    return fmt::format("{}\n={}", term.Text(Tags::XML_ATT_NAME), term.Text(Tags::XML_ATT_VALUE));
}

// The methods that make a number between 0 and 1 of an equation.
constexpr std::string_view kProbabilityMethods[] = {"logit",  "probit",  "cloglog",
                                                    "loglog", "cauchit", "softmax"};
constexpr std::string_view kCategoryOptypes[] = {"categorical", "ordinal"};

// The optype of a RegressionModel's target: the mining field's, else the data field's.
std::string TargetOptype(Element root, Element model)
{
    std::string name = model.Text("targetFieldName");
    const ElementRange fields =
        model.Child(Tags::XML_ELE_MININGSCHEMA).Children(Tags::XML_ELE_MININGFIELD);
    for (const Element field : fields) {
        const std::string usage = field.Text(Tags::XML_ATT_MININGFIELD_USAGETYPE);
        if (usage != Tags::XML_ATT_MF_FUT_TARGET && usage != Tags::XML_ATT_MF_FUT_PREDICTED) {
            continue;
        }
        if (field.Has(Tags::XML_ATT_DATAFIELD_OPTYPE)) {
            return field.Text(Tags::XML_ATT_DATAFIELD_OPTYPE);
        }
        name = field.Text(Tags::XML_ATT_MININGFIELD_NAME);
        break;
    }
    for (const Element field : DataFields(root)) {
        if (field.Text(Tags::XML_ATT_NAME) == name) {
            return field.Text(Tags::XML_ATT_DATAFIELD_OPTYPE);
        }
    }
    return {};
}

// An option that an Extension of the model tells, as the translation of a RegressionModel leaves
// them; empty without it.
std::string OptionOf(Element model, const std::string& name)
{
    for (const Element extension : model.Children(Tags::XML_ELE_EXTENSION)) {
        if (extension.Text(Tags::XML_ATT_EXT_NAME) == name) {
            return extension.Text(Tags::XML_ATT_EXT_VALUE);
        }
    }
    return {};
}

constexpr std::string_view kAsTheyAre = "the equations give them as they are";

constexpr struct {
    std::string_view link;
    std::string_view reason;
} kUnboundedLinks[] = {
    {"identity", kAsTheyAre},
    {"log", "exp(eta) isn't held below 1"},
    {"logc", "1 - exp(eta) isn't held above 0"},
    {"power", "a power of eta isn't held below 1"},
};

// Of a generalized linear model of two categories, where the inverse of its link has no bounds.
std::string_view ReasonOfLink(Element model)
{
    std::string link = model.Text(Tags::XML_ATT_LINKFUNCTION);
    if (link.empty()) link = OptionOf(model, Tags::XML_VAL_RM_EXT_NAME_LINK);
    for (const auto& row : kUnboundedLinks) {
        if (link == row.link) return row.reason;
    }
    return {};
}

// Why the probabilities of a general form's model have no bounds; empty where they have.
std::string_view ReasonOfUnbounded(Element root, Element model)
{
    if (model.Text(Tags::XML_ATT_RM_FUNC_NAME) != Tags::XML_VAL_RM_FUNC_NAME_C) return {};
    const auto family = FamilyOfModel(root, model);
    if (family == kGeneralizedLinear || family == kMultinomialGeneralized) {
        return ReasonOfLink(model);
    }
    if (model.Text(Tags::XML_ATT_MODELALGO) != Tags::XML_VAL_MN_NORMALIZED) return {};
    const std::string method = OptionOf(model, Tags::XML_ATT_RM_EXT_NAME_NORMALIZATION);
    if (method == "none") return kAsTheyAre;
    if (method == "simplemax")
        return "the equations' numbers, of either sign, are divided by their sum";
    if (!OptionOf(model, Tags::XML_ATT_RM_EXT_NAME_ORDERED).empty()) {
        return "a category has the step from the one before it, which may fall";
    }
    if (ValidValues(TargetDataField(root)).size() <= 2) return {};  // p, and 1 - p
    return "one category has what the others leave of 1";
}

}  // namespace

std::optional<Change> NoteRegressionOfCategories(Element root)
{
    const Element model = RegressionModelOf(root);
    const std::string method = model.Text(kNormalizationMethod);
    if (model.Text(Tags::XML_ATT_FUNCTIONNAME) != Tags::XML_VAL_MT_REGRESS ||
        !IsOneOf(method, kProbabilityMethods) ||
        model.Children("RegressionTable").List().size() != 1 ||
        !IsOneOf(TargetOptype(root, model), kCategoryOptypes)) {
        return std::nullopt;
    }
    return Change{model.Place(),
                  fmt::format("functionName \"regression\" with normalizationMethod \"{}\" of a "
                              "categorical target, as of a quasi-binomial model: the prediction is "
                              "the mean of the target as a number, for 0 and 1 the probability of "
                              "1, and no category",
                              method)};
}

std::optional<Change> NoteUnboundedProbabilities(Element root)
{
    const Element model = ModelElement(root);
    const std::string_view reason = ReasonOfUnbounded(root, model);
    if (reason.empty()) return std::nullopt;
    return Change{model.Place(),
                  fmt::format("probabilities may lie below 0 or above 1: {}", reason)};
}

std::optional<Change> NoteMissingNormalization(Element root)
{
    const Element model = RegressionModelOf(root);
    const std::string method = model.Text(kNormalizationMethod);
    if (!model || !(method.empty() || method == "none")) return std::nullopt;
    for (const std::string& attribute :
         {Tags::XML_ATT_MODELALGO, Tags::XML_ATT_RM_MODEL_NAME, Tags::XML_ATT_RM_MODEL_TYPE}) {
        const std::string text = Lower(model.Text(attribute));
        const auto isIn = [&](std::string_view word) { return text.find(word) != text.npos; };
        if (std::none_of(std::begin(kWordsOfLinks), std::end(kWordsOfLinks), isIn)) continue;
        return Change{model.Place(),
                      fmt::format("{} \"{}\" names a model with a link, and normalizationMethod is "
                                  "none: predictions are what its equations give",
                                  attribute, model.Text(attribute))};
    }
    return std::nullopt;
}

std::optional<Change> NoteRepeatedTerms(Element root)
{
    std::optional<Change> change;
    std::vector<std::string> fields;
    for (const Element table : RegressionModelOf(root).Children("RegressionTable")) {
        std::set<std::string> keys;
        for (const Element term : table.Children()) {
            const std::string key = KeyOfTerm(term);
            if (key.empty() || keys.insert(key).second) continue;
            if (!change) change = Change{term.Place(), {}};
            const std::string field = term.Text(Tags::XML_ATT_NAME);
            if (std::find(fields.begin(), fields.end(), field) == fields.end()) {
                fields.push_back(field);
            }
        }
    }
    if (change) {
        change->text =
            fmt::format("a RegressionTable has the same term of {} twice, whose coefficients add",
                        Listed(fields));
    }
    return change;
}

}  // namespace MCVelscore_850
