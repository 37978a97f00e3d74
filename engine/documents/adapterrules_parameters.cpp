#include <algorithm>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/documents/adapterrules.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/names.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

// A cell of the PPMatrix that says something about its parameter.
struct Cell {
    std::string predictor;
    bool isExponentOne;
};

std::vector<std::string> NamesIn(ElementRange elements)
{
    std::vector<std::string> names;
    for (const Element element : elements) names.push_back(element.Text(Tags::XML_ATT_NAME));
    return names;
}

// How a document of modelType "regression" ties its parameters to its predictors.
class RegressionLayout {
public:
    explicit RegressionLayout(Element model)
        : parameters_(NamesIn(model.Child(Tags::XML_ELE_PARAM_LIST).Children(Tags::XML_ELE_PARAM))),
          factors_(NamesIn(model.Child(Tags::XML_ELE_FAC_LIST).Children(Tags::XML_ELE_PREDICTOR))),
          covariates_(
              NamesIn(model.Child(Tags::XML_ELE_COV_LIST).Children(Tags::XML_ELE_PREDICTOR))),
          cells_(model.Child(Tags::XML_ELE_PP_MATRIX).Children(Tags::XML_ELE_PP_CELL))
    {}

    bool HasCells() const { return !cells_.Empty(); }
    bool ListsConstant() const
    {
        return std::find(parameters_.begin(), parameters_.end(), kConstantParameter) !=
               parameters_.end();
    }

    // A power of 0 is 1 whatever the covariate: the cell says nothing.
    Elements ZeroCells() const
    {
        Elements zero;
        for (const Element cell : cells_) {
            if (IsZeroPower(cell)) zero.push_back(cell);
        }
        return zero;
    }

    // Why parameters and predictors can't be paired by position; empty when they can.
    std::string WhyUnordered() const
    {
        if (!factors_.empty()) return "factor " + Listed(factors_) + " among the predictors";
        std::unordered_map<std::string, std::vector<Cell>> cellsOf;
        for (const Element cell : cells_) {
            if (IsZeroPower(cell)) continue;
            cellsOf[cell.Text(Tags::XML_ATT_PPC_PARAMNAME)].push_back(
                {cell.Text(Tags::XML_ATT_PPC_PREDNAME),
                 cell.Number(Tags::XML_ATT_PPC_VALUE) == 1.0});
        }
        const std::vector<std::string> predictors = DistinctCovariates();
        size_t position = 0;
        for (const std::string& parameter : parameters_) {
            const std::string name = Listed({parameter});
            const std::vector<Cell>& cells = cellsOf[parameter];
            if (parameter == kConstantParameter) {
                if (!cells.empty()) return "parameter " + name + " depends on a predictor";
                continue;
            }
            if (cells.empty()) return "parameter " + name + " is a constant";
            if (cells.size() > 1) return "parameter " + name + " has several predictors";
            if (!cells.front().isExponentOne) return "parameter " + name + " belongs to a power";
            if (position >= predictors.size() || predictors[position] != cells.front().predictor) {
                return "the parameters stand in another order than the predictors";
            }
            ++position;
        }
        if (position < predictors.size()) {
            return "predictor " + Listed({predictors[position]}) + " has no parameter";
        }
        return {};
    }

private:
    bool IsZeroPower(Element cell) const
    {
        const std::string predictor = cell.Text(Tags::XML_ATT_PPC_PREDNAME);
        return std::find(factors_.begin(), factors_.end(), predictor) == factors_.end() &&
               cell.Number(Tags::XML_ATT_PPC_VALUE) == 0.0;
    }

    // The reader registers a name that is listed again once.
    std::vector<std::string> DistinctCovariates() const
    {
        std::vector<std::string> distinct;
        std::set<std::string> seen;
        for (const std::string& name : covariates_) {
            if (seen.insert(name).second) distinct.push_back(name);
        }
        return distinct;
    }

    std::vector<std::string> parameters_;
    std::vector<std::string> factors_;
    std::vector<std::string> covariates_;
    ElementRange cells_;
};

bool NamesConstant(Element model)
{
    for (const Element cell :
         model.Child(Tags::XML_ELE_PARAM_MATRIX).Children(Tags::XML_ELE_PCELL)) {
        if (cell.Text(Tags::XML_ATT_PC_PARAMNAME) == kConstantParameter) return true;
    }
    for (const Element cell :
         model.Child(Tags::XML_ELE_PCOV_MATRIX).Children(Tags::XML_ELE_PCOV_CELL)) {
        if (cell.Text(Tags::XML_ATT_PCC_PROW) == kConstantParameter ||
            cell.Text(Tags::XML_ATT_PCC_PCOL) == kConstantParameter) {
            return true;
        }
    }
    return false;
}

// A selector that was of no account under "regression" and would make the model another family
// under "generalLinear".
bool SelectsAnotherFamily(const std::string& selector)
{
    return FindFamily(Tags::XML_VAL_MT_GLIN, kSelectorVersion, selector) != kGeneralLinear;
}

bool IsCox(Element root, Element model)
{
    const auto family = FamilyOfModel(root, model);
    return family == kCox || family == kCoxComplexSamples;
}

// The guard bounds the depth, and with it this recursion.
void AddReferencePoints(Element parent, std::set<std::string>& names)
{
    for (const Element child : parent.Children()) {
        if (child.Is(Tags::XML_EXT_ELE_COXREG_BASEPOINT)) {
            names.insert(child.Text(Tags::XML_EXT_ATT_COXREG_BASEPOINT_PARAMETERNAME));
        }
        AddReferencePoints(child, names);
    }
}

// The parameters whose reference point the extension gives, the older place for it.
std::set<std::string> PointsOfExtensions(Element model)
{
    std::set<std::string> names;
    for (const Element extension : model.Children(Tags::XML_ELE_EXTENSION)) {
        if (extension.Text(Tags::XML_ATT_EXT_NAME) == Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT) {
            AddReferencePoints(extension, names);
        }
    }
    return names;
}

}  // namespace

std::optional<Change> MakeUnorderedRegressionGeneralLinear(Element root)
{
    const Element model = ModelElement(root);
    if (model.Text(Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_REGRESS) {
        return std::nullopt;
    }
    const RegressionLayout layout(model);
    // Without cells nothing tells which predictor a parameter belongs to but its position.
    if (!layout.HasCells()) return std::nullopt;
    const std::string why = layout.WhyUnordered();
    if (why.empty()) return std::nullopt;

    model.SetText(Tags::XML_ATT_RM_MODEL_TYPE, Tags::XML_VAL_MT_GLIN);
    if (SelectsAnotherFamily(SelectorOf(model))) {
        model.SetText(Tags::XML_ATT_MODELALGO, Tags::XML_VAL_MN_GLIN);
    }
    // A general linear model would let such a cell drop its parameter where the covariate is 0.
    for (Element cell : layout.ZeroCells()) cell.Erase();
    // Only a linear regression has a constant without being told.
    const Element list = model.Child(Tags::XML_ELE_PARAM_LIST);
    if (list && !layout.ListsConstant() && NamesConstant(model)) {
        list.Append(Tags::XML_ELE_PARAM).SetText(Tags::XML_ATT_PARAM_NAME, kConstantParameter);
    }
    return Change{model.Place(), "modelType \"regression\" is read as \"generalLinear\": " + why};
}

std::optional<Change> CompleteReferencePoints(Element root)
{
    const Element model = ModelElement(root);
    if (!model || !IsCox(root, model)) return std::nullopt;
    const ElementRange parameters =
        model.Child(Tags::XML_ELE_PARAM_LIST).Children(Tags::XML_ELE_PARAM);
    const auto hasPoint = [](Element parameter) {
        return !parameter.Text(Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT).empty();
    };
    if (std::none_of(parameters.begin(), parameters.end(), hasPoint)) return std::nullopt;

    const std::set<std::string> elsewhere = PointsOfExtensions(model);
    std::vector<std::string> names;
    DocumentPlace place;
    for (const Element parameter : parameters) {
        const std::string name = parameter.Text(Tags::XML_ATT_PARAM_NAME);
        if (hasPoint(parameter) || elsewhere.contains(name)) continue;
        parameter.SetText(Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT, "0");
        if (names.empty()) place = parameter.Place();
        names.push_back(name);
    }
    if (names.empty()) return std::nullopt;
    return Change{place, "parameter " + Listed(names) +
                             " has no referencePoint: 0, as the others "
                             "have one"};
}

std::optional<Change> NoteMissingEstimates(Element root)
{
    const Element model = ModelElement(root);
    if (!model || model.Child(Tags::XML_ELE_PARAM_MATRIX)) return std::nullopt;
    // With predictors it is a fault, which the audit tells.
    if (!Predictors(root, Tags::XML_ELE_FAC_LIST).Empty() ||
        !Predictors(root, Tags::XML_ELE_COV_LIST).Empty()) {
        return std::nullopt;
    }
    return Change{model.Place(),
                  "no ParamMatrix: the model has no estimates, and every beta counts "
                  "as 0"};
}

}  // namespace MCVelscore_850
