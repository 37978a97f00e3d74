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

}  // namespace

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
