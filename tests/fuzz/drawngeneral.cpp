#include <algorithm>

#include "tests/fuzz/drawnparts.h"

namespace MCVelscore_850::fuzz {

namespace {

// Which parameters the models of a family have, and which categories their betas name.
enum class Design { Linear, OneEquation, ByCategory, FirstCategory, Thresholds, NoIntercept };

struct Family {
    const char* modelType;
    const char* selector;  ///< algorithmName or modelName
    Outcome outcome;
    Design design;
};

constexpr Family kFamilies[] = {
    {"regression", "", Outcome::Number, Design::Linear},
    {"generalLinear", "", Outcome::Number, Design::OneEquation},
    {"generalLinear", "automaticLinearModel", Outcome::Number, Design::OneEquation},
    {"generalizedLinear", "GZLM", Outcome::Number, Design::OneEquation},
    {"generalizedLinear", "GEE", Outcome::Number, Design::OneEquation},
    {"generalizedLinear", "GZLM", Outcome::TwoCategories, Design::FirstCategory},
    {"generalizedLinear", "GLMM", Outcome::TwoCategories, Design::FirstCategory},
    {"multinomialLogistic", "", Outcome::Categories, Design::ByCategory},
    {"multinomialLogistic", "", Outcome::TwoCategories, Design::ByCategory},
    {"multinomialLogistic", "GZLM", Outcome::TwoCategories, Design::FirstCategory},
    {"multinomialLogistic", "contrastLogistic", Outcome::TwoCategories, Design::FirstCategory},
    {"multinomialLogistic", "conditionalLogistic", Outcome::TwoCategories, Design::NoIntercept},
    {"ordinalMultinomial", "", Outcome::OrderedCategories, Design::Thresholds},
    {"ordinalMultinomial", "ordinalRegression", Outcome::OrderedCategories, Design::Thresholds},
    {"ordinalMultinomial", "GZLM", Outcome::OrderedCategories, Design::Thresholds},
    {"CoxRegression", "", Outcome::Event, Design::NoIntercept},
    {"CoxRegression", "", Outcome::Event, Design::NoIntercept},
    {"generalizedLinear", "CSCox", Outcome::Event, Design::NoIntercept},
};

class GeneralDrawing : DocumentDrawing {
public:
    explicit GeneralDrawing(unsigned seed) : DocumentDrawing(seed) {}

    std::string Text()
    {
        family_ = draws_.OneIn(kFamilies);
        DrawFields(family_.outcome);
        if (family_.outcome == Outcome::TwoCategories && draws_.Seldom(12)) target_.values.clear();
        const bool isNumber =
            family_.outcome == Outcome::Number || family_.outcome == Outcome::Event;
        Node model{"GeneralRegressionModel",
                   {{"modelType", family_.modelType},
                    {"functionName", isNumber ? "regression" : "classification"}}};
        if (*family_.selector != '\0') {
            model.attributes.emplace_back(draws_.Seldom(4) ? "modelName" : "algorithmName",
                                          family_.selector);
        }
        if (version_ == "3.0" || draws_.Seldom(8)) {
            model.attributes.emplace_back("targetVariableName", std::string(kTarget));
        }
        if (draws_.Seldom(3)) Option(model, "modelDF", "9");
        if (!target_.values.empty() && draws_.Seldom(3)) {
            model.attributes.emplace_back("targetReferenceCategory",
                                          draws_.Seldom(3) ? Category() : target_.values.back());
        }
        AddOptions(model);
        if (IsCox()) AddBaselines(model);
        AddSections(model, std::move(extensions_));
        DrawParameters();
        AddDesign(model);
        if (draws_.Seldom(2)) model.children.push_back(Covariances());
        model.children.push_back(Betas());
        for (Node& node : atEnd_) model.children.push_back(std::move(node));
        if (draws_.Seldom(10)) model.children.push_back(Verification());
        return Published(std::move(model));
    }

private:
    struct Parameter {
        std::string name;
        std::vector<std::pair<const Field*, std::string>> cells;
    };

    bool IsCox() const { return family_.outcome == Outcome::Event; }
    // Binary logistic regression, as long as there is a factor.
    bool IsContrast() const
    {
        return IsSelected("contrastLogistic") &&
               std::any_of(predictors_.begin(), predictors_.end(),
                           [](const Field& field) { return !field.IsCovariate(); });
    }
    bool IsSelected(std::string_view selector) const { return family_.selector == selector; }

    // An attribute, or an Extension that says the same.
    void Option(Node& model, const char* name, const std::string& value)
    {
        if (draws_.Seldom(6)) {
            extensions_.push_back(
                {"Extension", {{"extender", "velscore"}, {"name", name}, {"value", value}}});
        } else {
            model.attributes.emplace_back(name, value);
        }
    }
    void AddVariable(Node& model, const char* attribute, std::string_view name)
    {
        Option(model, attribute, std::string(name));
        const bool isOther = draws_.Seldom(12);
        others_.push_back(
            {std::string(name), "continuous", isOther ? "integer" : "double", {}, kNumberCells});
    }
    void AddOptions(Node& model)
    {
        static constexpr const char* kLinks[] = {"identity", "log",    "logit", "probit",
                                                 "cloglog",  "loglog", "power", "oddspower",
                                                 "logc",     "negbin"};
        static constexpr const char* kDistributions[] = {"normal", "gamma",   "igauss",  "poisson",
                                                         "negbin", "tweedie", "binomial"};
        static constexpr const char* kCumulative[] = {"logit", "probit", "cloglog", "loglog",
                                                      "cauchit"};
        static constexpr const char* kParameters[] = {"0.5", "2", "-1", "0.3333", "1", "0"};
        const bool isGeneralized = IsSelected("GZLM") || IsSelected("GEE") || IsSelected("GLMM");
        if (family_.design == Design::Thresholds) {
            Option(model,
                   IsSelected("GZLM") || draws_.Seldom(2) ? "cumulativeLink" : "linkFunction",
                   draws_.OneIn(kCumulative));
            if (draws_.Seldom(2)) model.attributes.emplace_back("distribution", "multinomial");
        } else if (isGeneralized) {
            const bool isBinary = family_.outcome == Outcome::TwoCategories;
            const std::string link = isBinary && draws_.Seldom(2) ? "logit" : draws_.OneIn(kLinks);
            Option(model, "linkFunction", link);
            if (link == "power" || link == "oddspower" || draws_.Seldom(12)) {
                Option(model, "linkParameter", draws_.OneIn(kParameters));
            }
            const std::string distribution = isBinary ? "binomial" : draws_.OneIn(kDistributions);
            Option(model, "distribution", distribution);
            if (link == "negbin") model.attributes.emplace_back("distParameter", "0.5");
            if (distribution == "binomial" && !isBinary && draws_.Seldom(2)) {
                if (draws_.Seldom(2)) {
                    AddVariable(model, "trialsVariable", kTrials);
                } else {
                    Option(model, "trialsValue", "20");
                }
            }
        }
        if (isGeneralized && draws_.Seldom(3)) {
            if (draws_.Seldom(2)) {
                AddVariable(model, "offsetVariable", kOffset);
            } else {
                Option(model, "offsetValue", draws_.Number());
            }
        }
        if (IsContrast() && draws_.Seldom(3)) Option(model, "cutoff", "0.3");
        if (draws_.Seldom(12)) Option(model, "allowMissingFactors", "true");
    }

    // Times and hazards that rise, now and then beyond what can be survived.
    std::vector<Node> Baseline(const char* tag)
    {
        std::vector<Node> cells;
        double time = 0.0;
        double hazard = 0.0;
        const size_t count = 1 + draws_.Below(4);
        for (size_t i = 0; i < count; ++i) {
            time += static_cast<double>(1 + draws_.Below(8));
            hazard += draws_.Seldom(12) ? 800.0 : 0.125 * static_cast<double>(draws_.Below(4));
            cells.push_back(
                {tag, {{"time", std::to_string(time)}, {"cumHazard", std::to_string(hazard)}}});
        }
        return cells;
    }
    void AddBaselines(Node& model)
    {
        static const std::vector<Field> kStrata{
            {std::string(kStratum), "categorical", "string", {"u", "v"}},
            {std::string(kStratum), "categorical", "integer", {"1", "2"}},
            {std::string(kStratum), "continuous", "double", {}, {"1", "2.5"}},
            {std::string(kStratum), "categorical", "string", {}, {"u", "v"}},
        };
        AddVariable(model, "endTimeVariable", kTime);
        const bool hasStrata = draws_.Seldom(2);
        const Field stratum = draws_.OneIn(kStrata);
        if (hasStrata) others_.push_back(stratum);
        if (draws_.Seldom(2)) {
            Node tables{"BaseCumHazardTables"};
            if (hasStrata) {
                model.attributes.emplace_back("baselineStrataVariable", stratum.name);
                for (const std::string& value : stratum.Cells()) {
                    tables.children.push_back({"BaselineStratum",
                                               {{"value", value}, {"maxTime", "99"}},
                                               Baseline("BaselineCell")});
                }
            } else {
                tables.attributes.emplace_back("maxTime", "99");
                tables.children = Baseline("BaselineCell");
            }
            atEnd_.push_back(std::move(tables));
            return;
        }
        Node extension{"Extension", {{"extender", "velscore"}, {"name", "X-BaseCumHazardTables"}}};
        const Node latest{"X-BaseMaxTime", {{"value", "99"}}};
        if (hasStrata) {
            for (const std::string& value : stratum.Cells()) {
                Node table{"X-BaseCumHazardTable", {}, Baseline("X-Baseline")};
                if (draws_.Seldom(2)) {
                    table.children.insert(table.children.begin(), latest);
                    extension.children.push_back(
                        {"X-Stratum", {{"varName", stratum.name}, {"value", value}}, {table}});
                } else {
                    extension.children.push_back({"X-Stratum",
                                                  {{"varName", stratum.name}, {"value", value}},
                                                  {latest, table}});
                }
            }
        } else {
            extension.children.push_back(latest);
            extension.children.push_back({"X-BaseCumHazardTable", {}, Baseline("X-Baseline")});
        }
        extensions_.push_back(std::move(extension));
    }

    bool HasConstant() const { return family_.design != Design::NoIntercept; }
    void AddParameter(std::vector<std::pair<const Field*, std::string>> cells)
    {
        parameters_.push_back({"p" + std::to_string(parameters_.size()), std::move(cells)});
    }
    void DrawParameters()
    {
        static constexpr const char* kPowers[] = {"2", "0.5", "-1", "3", "0"};
        const bool isLinear = family_.design == Design::Linear;
        hasContrasts_ = IsSelected("contrastLogistic") || draws_.Seldom(IsCox() ? 3 : 16);
        if (isLinear) {
            std::erase_if(predictors_, [](const Field& field) { return !field.IsCovariate(); });
        }
        if (HasConstant() && !isLinear && !draws_.Seldom(8)) AddParameter({});
        for (const Field& field : predictors_) {
            if (field.IsCovariate()) {
                const bool isOne = isLinear || !draws_.Seldom(4);
                AddParameter({{&field, isOne ? "1" : draws_.OneIn(kPowers)}});
                continue;
            }
            // All categories, or all but one that the others are compared to.
            const size_t without =
                hasContrasts_ ? field.Cells().size() - 1 : draws_.Below(field.Cells().size() + 1);
            for (size_t i = 0; i < field.Cells().size(); ++i) {
                if (i == without && field.Cells().size() > 1) continue;
                AddParameter({{&field, field.Cells()[i]}});
            }
        }
        if (isLinear) AddParameter({});
        if (!isLinear && parameters_.size() > 2 && draws_.Seldom(3)) {
            std::vector<std::pair<const Field*, std::string>> cells;
            for (int i = 0; i < 3; ++i) {
                const Parameter& one = draws_.OneIn(parameters_);
                for (const auto& cell : one.cells) {
                    const bool isThere = std::any_of(
                        cells.begin(), cells.end(),
                        [&](const auto& other) { return other.first->name == cell.first->name; });
                    if (!isThere) cells.push_back(cell);
                }
            }
            AddParameter(std::move(cells));
        }
    }
    void AddDesign(Node& model)
    {
        Node list{"ParameterList"};
        for (const Parameter& parameter : parameters_) {
            Node node{"Parameter", {{"name", parameter.name}}};
            if (draws_.Seldom(6)) node.attributes.emplace_back("label", "of " + parameter.name);
            if (IsCox() && draws_.Seldom(3)) {
                node.attributes.emplace_back("referencePoint", draws_.Number());
            }
            list.children.push_back(std::move(node));
        }
        Node factors{"FactorList"};
        Node covariates{"CovariateList"};
        for (const Field& field : predictors_) {
            Node node{"Predictor", {{"name", field.name}}};
            if (field.IsCovariate()) {
                covariates.children.push_back(std::move(node));
                continue;
            }
            if (hasContrasts_) AddContrasts(node, field);
            factors.children.push_back(std::move(node));
        }
        Node cells{"PPMatrix"};
        for (const Parameter& parameter : parameters_) {
            for (const auto& [field, value] : parameter.cells) {
                cells.children.push_back({"PPCell",
                                          {{"value", value},
                                           {"predictorName", field->name},
                                           {"parameterName", parameter.name}}});
            }
        }
        for (Node* node : {&list, &factors, &covariates, &cells}) {
            if (node == &list || !node->children.empty())
                model.children.push_back(std::move(*node));
        }
    }
    void AddContrasts(Node& predictor, const Field& field)
    {
        static constexpr const char* kEntries[] = {"0", "1", "-1", "0.5"};
        const Texts& categories = field.Cells();
        predictor.attributes.emplace_back("contrastMatrixType", "simple");
        Node list{"Categories"};
        for (const std::string& category : categories) {
            list.children.push_back({"Category", {{"value", category}}});
        }
        const size_t rows = categories.size();
        const bool isSquare = draws_.Seldom(3);
        const size_t columns = isSquare || rows == 1 ? rows : rows - 1;
        Node matrix{"Matrix",
                    {{"nbRows", std::to_string(rows)}, {"nbCols", std::to_string(columns)}}};
        if (isSquare && draws_.Seldom(2)) {
            const bool isDiagonal = draws_.Seldom(2);
            matrix.attributes.emplace_back("kind", isDiagonal ? "diagonal" : "symmetric");
            matrix.attributes.emplace_back("diagDefault", "1");
            matrix.attributes.emplace_back("offDiagDefault", "0");
            if (isDiagonal) {
                Node array{"Array", {{"type", "real"}}};
                for (size_t i = 0; i < rows; ++i) array.text += "1 ";
                matrix.children.push_back(std::move(array));
            } else {
                for (size_t row = 1; row <= rows; ++row) {
                    Node array{"Array", {{"type", "real"}}};
                    for (size_t i = 0; i < row; ++i) {
                        array.text += draws_.OneIn(kEntries) + std::string(" ");
                    }
                    matrix.children.push_back(std::move(array));
                }
            }
        } else if (draws_.Seldom(6)) {
            matrix.attributes.emplace_back("offDiagDefault", "0");
            matrix.attributes.emplace_back("diagDefault", "1");
            matrix.children.push_back({"MatCell", {{"row", "1"}, {"col", "1"}}, {}, "-1"});
        } else {
            for (size_t row = 0; row < rows; ++row) {
                Node array{"Array", {{"type", "real"}, {"n", std::to_string(columns)}}};
                for (size_t i = 0; i < columns; ++i) {
                    array.text += (i == 0 ? "" : " ") + std::string(draws_.OneIn(kEntries));
                }
                matrix.children.push_back(std::move(array));
            }
        }
        predictor.children = {std::move(list), std::move(matrix)};
    }

    // The categories that have betas: none for those of one equation.
    Texts BetaCategories()
    {
        const Texts& values = target_.values;
        switch (family_.design) {
            case Design::Thresholds:
            case Design::ByCategory:
                if (values.size() < 2) return values;
                return {values.begin(), std::prev(values.end())};
            case Design::FirstCategory:
            case Design::NoIntercept:
                if (values.empty()) return {IsCox() ? "" : "a"};
                return {IsCox() ? "" : draws_.Seldom(3) ? values.back() : values.front()};
            default: return {""};
        }
    }
    Node Betas()
    {
        Node matrix{"ParamMatrix"};
        const Texts categories = BetaCategories();
        const bool isByThreshold = family_.design == Design::Thresholds;
        int threshold = 0;
        for (const Parameter& parameter : parameters_) {
            for (const std::string& category : categories) {
                const bool isThreshold = isByThreshold && parameter.cells.empty();
                Node cell{"PCell"};
                if (!category.empty() && (!isByThreshold || isThreshold)) {
                    cell.attributes.emplace_back("targetCategory", category);
                }
                cell.attributes.emplace_back("parameterName", parameter.name);
                cell.attributes.emplace_back(
                    "beta", isThreshold ? std::to_string(threshold++) : draws_.Number());
                if (draws_.Seldom(2))
                    cell.attributes.emplace_back("df", draws_.Seldom(8) ? "0" : "1");
                matrix.children.push_back(std::move(cell));
                if (isByThreshold && !isThreshold) break;
            }
        }
        return matrix;
    }
    // The lower triangle, of each category's betas, or of thresholds and the other parameters.
    Node Covariances()
    {
        Node matrix{"PCovMatrix"};
        std::vector<std::pair<std::string, std::string>> places;
        const Texts categories = BetaCategories();
        for (const Parameter& parameter : parameters_) {
            for (const std::string& category : categories) {
                const bool isOther =
                    family_.design == Design::Thresholds && !parameter.cells.empty();
                places.emplace_back(parameter.name, isOther ? std::string() : category);
                if (isOther) break;
            }
        }
        constexpr size_t kMostPlaces = 6;
        if (places.size() > kMostPlaces) return matrix;
        const bool isNamed =
            family_.design == Design::ByCategory || family_.design == Design::Thresholds;
        const bool isWhole = draws_.Seldom(8);
        for (size_t row = 0; row < places.size(); ++row) {
            for (size_t column = 0; column < (isWhole ? places.size() : row + 1); ++column) {
                Node cell{"PCovCell",
                          {{"pRow", places[row].first}, {"pCol", places[column].first}}};
                if (isNamed && !places[row].second.empty()) {
                    cell.attributes.emplace_back("tRow", places[row].second);
                }
                if (isNamed && !places[column].second.empty()) {
                    cell.attributes.emplace_back("tCol", places[column].second);
                }
                cell.attributes.emplace_back("value", row == column ? "0.25" : "0.0625");
                matrix.children.push_back(std::move(cell));
            }
        }
        return matrix;
    }

    Family family_{};
    std::vector<Parameter> parameters_;
    bool hasContrasts_ = false;
    std::vector<Node> extensions_;
    std::vector<Node> atEnd_;
};

}  // namespace

std::string DrawGeneralModel(unsigned seed) { return GeneralDrawing(seed).Text(); }

}  // namespace MCVelscore_850::fuzz
