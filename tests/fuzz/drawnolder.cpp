#include <algorithm>

#include "tests/fuzz/drawnparts.h"

namespace MCVelscore_850::fuzz {

namespace {

class OlderDrawing : DocumentDrawing {
public:
    explicit OlderDrawing(unsigned seed) : DocumentDrawing(seed) {}

    std::string Text()
    {
        static constexpr const char* kTypes[] = {"regression", "multinomial-logistic",
                                                 "conditional-logistic"};
        const std::string type = draws_.OneIn(kTypes);
        const bool isLinear = type == "regression";
        DrawFields(isLinear ? Outcome::Number : Outcome::Categories);
        if (target_.dataType == "date") target_.dataType = "string";
        std::erase_if(predictors_, [&](const Field& field) {
            return field.dataType.find("date") != std::string::npos || field.dataType == "time" ||
                   (isLinear && !field.IsCovariate());
        });
        Node dictionary{"dictionary"};
        dictionary.children.push_back(Variable(target_));
        for (const Field& field : predictors_) dictionary.children.push_back(Variable(field));
        Node model{"regression-model",
                   {{"target-variable-name", std::string(kTarget)}, {"model-type", type}}};
        if (draws_.Seldom(3)) model.attributes.emplace_back("model-df", "9");
        AddModel(model, isLinear, type == "conditional-logistic");
        const Node root{"zelt-ml", {{"version", "1.0"}}, {dictionary, {"model", {}, {model}}}};
        return XmlOf(root);
    }

private:
    Node Variable(const Field& field)
    {
        const bool isText =
            field.dataType == "string" || field.dataType == "boolean" || field.dataType == "date";
        Node node{"variable",
                  {{"name", field.name}, {"storage-type", isText ? "STRING" : "NUMERIC"}}};
        if (!draws_.Seldom(8)) {
            const char* level = field.optype == "ordinal" ? "ORDINAL" : "NOMINAL";
            node.attributes.emplace_back("measurement-level",
                                         field.IsCovariate() && !isText ? "CONTINUOUS" : level);
        }
        if (!field.values.empty()) {
            Node list{"categories"};
            for (const std::string& value : field.values) {
                list.children.push_back({"category", {{"value", value}}});
            }
            node.children.push_back(std::move(list));
        }
        if (draws_.Seldom(4)) {
            static constexpr const char* kLower[] = {"LOWEST", "-1", "0", "2"};
            static constexpr const char* kUpper[] = {"HIGHEST", "0", "2", "9"};
            Node missing{"missing-values", {}, {{"value", {{"value", Cell(field)}}}}};
            if (draws_.Seldom(2)) {
                missing.children.push_back(
                    {"range",
                     {{"minimum", draws_.OneIn(kLower)}, {"maximum", draws_.OneIn(kUpper)}}});
            }
            node.children.push_back(std::move(missing));
        }
        if (draws_.Seldom(4)) node.children.push_back({"var-stats", {{"mean", draws_.Number()}}});
        return node;
    }
    void AddModel(Node& model, bool isLinear, bool isConditional)
    {
        Node list{"parameter-list"};
        Node factors{"factor-list"};
        Node covariates{"covariate-list"};
        Node cells{"pp-matrix"};
        Node betas{"p-table"};
        Texts categories{""};
        if (!isLinear) {
            categories = {target_.values.begin(),
                          std::prev(target_.values.end(), target_.values.size() > 1 ? 1 : 0)};
            if (isConditional) categories.resize(1);
            if (draws_.Seldom(8)) categories.push_back(target_.values.back());
        }
        Texts names;
        const auto add = [&](const std::string& name) {
            names.push_back(name);
            list.children.push_back({"parameter", {{"name", name}}});
            for (const std::string& category : categories) {
                Node beta{"p-cell"};
                if (!isLinear) beta.attributes.emplace_back("target-category", category);
                beta.attributes.emplace_back("parameter-name", name);
                beta.attributes.emplace_back("beta", draws_.Number());
                if (draws_.Seldom(2)) beta.attributes.emplace_back("df", "1");
                betas.children.push_back(std::move(beta));
            }
        };
        const auto addCell = [&](const std::string& name, const std::string& predictor,
                                 const std::string& value) {
            cells.children.push_back(
                {"pp-cell",
                 {{"parameter-name", name}, {"predictor-name", predictor}, {"value", value}}});
        };
        const bool isFirst = draws_.Seldom(2);
        const bool hasConstant = !isConditional && !draws_.Seldom(8);
        if (hasConstant && isFirst) add("(Constant)");
        for (const Field& field : predictors_) {
            Node& kind = field.IsCovariate() ? covariates : factors;
            kind.children.push_back({"predictor", {{"name", field.name}}});
            if (field.IsCovariate()) {
                add(field.name);
                addCell(field.name, field.name, draws_.Seldom(4) ? "2" : "1");
                continue;
            }
            for (const std::string& value : field.Cells()) {
                if (draws_.Seldom(3)) continue;
                add(field.name + value);
                addCell(names.back(), field.name, value);
            }
        }
        if (hasConstant && !isFirst) add("(Constant)");
        model.children = {list, factors, covariates, betas, cells};
        if (isLinear && draws_.Seldom(2)) {
            Node covariances{"pcov-matrix"};
            for (size_t row = 0; row < names.size(); ++row) {
                for (size_t column = 0; column <= row; ++column) {
                    covariances.children.push_back(
                        {"pcov-cell",
                         {{"p-row", names[row]},
                          {"p-col", names[column]},
                          {"value", row == column ? "0.25" : "0.0625"}}});
                }
            }
            model.children.push_back(std::move(covariances));
        }
    }
};

}  // namespace

std::string DrawOlderForm(unsigned seed) { return OlderDrawing(seed).Text(); }

}  // namespace MCVelscore_850::fuzz
