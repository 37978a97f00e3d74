#include <algorithm>

#include "tests/fuzz/drawnparts.h"

namespace MCVelscore_850::fuzz {

namespace {

class RegressionDrawing : DocumentDrawing {
public:
    explicit RegressionDrawing(unsigned seed) : DocumentDrawing(seed) {}

    std::string Text()
    {
        static constexpr const char* kMethods[] = {"none",   "softmax", "simplemax",
                                                   "logit",  "probit",  "cloglog",
                                                   "loglog", "cauchit", "exp"};
        static constexpr Outcome kOutcomes[] = {Outcome::Number, Outcome::TwoCategories,
                                                Outcome::Categories, Outcome::OrderedCategories};
        const Outcome outcome = draws_.OneIn(kOutcomes);
        DrawFields(outcome);
        const bool isNumber = outcome == Outcome::Number;
        if (isNumber && draws_.Seldom(8)) target_ = TargetOf(Outcome::TwoCategories);
        Node model{
            "RegressionModel",
            {{"functionName", isNumber || draws_.Seldom(8) ? "regression" : "classification"}}};
        if (!draws_.Seldom(6)) {
            model.attributes.emplace_back("normalizationMethod", draws_.OneIn(kMethods));
        }
        if (draws_.Seldom(8)) model.attributes.emplace_back("algorithmName", "Poisson");
        if (draws_.Seldom(4)) {
            model.attributes.emplace_back("targetFieldName", std::string(kTarget));
        }
        const Texts categories = target_.values;
        if (!isNumber && draws_.Seldom(8)) target_.values.clear();
        AddSections(model);
        if (isNumber) {
            model.children.push_back(Table());
        } else {
            const size_t left = draws_.Below(3) == 0 ? 1 : 0;
            for (size_t i = 0; i + left < std::max<size_t>(categories.size(), 1 + left); ++i) {
                Node table = Table();
                table.attributes.emplace_back("targetCategory", categories[i]);
                model.children.push_back(std::move(table));
            }
        }
        if (draws_.Seldom(10)) model.children.push_back(Verification());
        return Published(std::move(model));
    }

private:
    Node Table()
    {
        static constexpr const char* kExponents[] = {"1", "2", "0.5", "-1", "3", "0"};
        Node table{"RegressionTable"};
        if (!draws_.Seldom(8)) table.attributes.emplace_back("intercept", draws_.Number());
        if (draws_.Seldom(8)) return table;
        std::vector<const Field*> numbers;
        for (const Field& field : predictors_) {
            if (field.IsCovariate() || field.dataType == "boolean") numbers.push_back(&field);
            if (field.IsCovariate()) {
                Node node{"NumericPredictor", {{"name", field.name}}};
                if (draws_.Seldom(3)) {
                    node.attributes.emplace_back("exponent", draws_.OneIn(kExponents));
                }
                node.attributes.emplace_back("coefficient", draws_.Number());
                table.children.push_back(std::move(node));
                continue;
            }
            for (const std::string& value : field.Cells()) {
                if (draws_.Seldom(3)) continue;
                table.children.push_back(
                    {"CategoricalPredictor",
                     {{"name", field.name}, {"value", value}, {"coefficient", draws_.Number()}}});
            }
        }
        while (!numbers.empty() && draws_.Seldom(3)) {
            Node term{"PredictorTerm", {{"coefficient", draws_.Number()}}};
            const size_t count = 1 + draws_.Below(3);
            for (size_t i = 0; i < count; ++i) {
                Node part{"FieldRef", {{"field", draws_.OneIn(numbers)->name}}};
                if (draws_.Seldom(6)) part.attributes.emplace_back("mapMissingTo", draws_.Number());
                term.children.push_back(std::move(part));
            }
            table.children.push_back(std::move(term));
        }
        return table;
    }
};

}  // namespace

std::string DrawRegressionModel(unsigned seed) { return RegressionDrawing(seed).Text(); }

}  // namespace MCVelscore_850::fuzz
