#include <algorithm>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "engine/documents/adapterrules.h"
#include "engine/documents/treefields.h"
#include "engine/documents/treetext.h"
#include "host/documents/documentplace.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

// The one name by which the reader of a linear regression knows the constant.
const std::string kConstant = "(Constant)";
// From this version on a selector decides among the families of a general linear model.

// A cell of the PPMatrix that says something about its parameter.
struct Cell {
    std::string predictor;
    bool isExponentOne;
};

std::vector<std::string> NamesIn(const xercesc::DOMElement* list, const std::string& tag)
{
    std::vector<std::string> names;
    for (const auto* element : ChildElements(list, tag)) {
        names.push_back(AttributeText(element, Tags::XML_ATT_NAME));
    }
    return names;
}

bool IsNumber(const std::string& text, double expected)
{
    double number = 0.0;
    return ReadNumber(text, number) == NumberText::Number && number == expected;  // both exact
}

// How a document of modelType "regression" ties its parameters to its predictors.
class RegressionLayout {
public:
    explicit RegressionLayout(const xercesc::DOMElement* model)
        : parameters_(NamesIn(ChildElement(model, Tags::XML_ELE_PARAM_LIST), Tags::XML_ELE_PARAM)),
          factors_(NamesIn(ChildElement(model, Tags::XML_ELE_FAC_LIST), Tags::XML_ELE_PREDICTOR)),
          covariates_(
              NamesIn(ChildElement(model, Tags::XML_ELE_COV_LIST), Tags::XML_ELE_PREDICTOR)),
          cells_(ChildElements(ChildElement(model, Tags::XML_ELE_PP_MATRIX), Tags::XML_ELE_PP_CELL))
    {}

    bool HasCells() const { return !cells_.empty(); }
    bool ListsConstant() const
    {
        return std::find(parameters_.begin(), parameters_.end(), kConstant) != parameters_.end();
    }

    // A power of 0 is 1 whatever the covariate: the cell says nothing.
    std::vector<xercesc::DOMElement*> ZeroCells() const
    {
        std::vector<xercesc::DOMElement*> zero;
        for (auto* cell : cells_) {
            if (IsZeroPower(cell)) zero.push_back(cell);
        }
        return zero;
    }

    // Why parameters and predictors can't be paired by position; empty when they can.
    std::string WhyUnordered() const
    {
        if (!factors_.empty()) return "factor " + Listed(factors_) + " among the predictors";
        std::unordered_map<std::string, std::vector<Cell>> cellsOf;
        for (const auto* cell : cells_) {
            if (IsZeroPower(cell)) continue;
            cellsOf[AttributeText(cell, Tags::XML_ATT_PPC_PARAMNAME)].push_back(
                {AttributeText(cell, Tags::XML_ATT_PPC_PREDNAME),
                 IsNumber(AttributeText(cell, Tags::XML_ATT_PPC_VALUE), 1.0)});
        }
        const std::vector<std::string> predictors = DistinctCovariates();
        size_t position = 0;
        for (const std::string& parameter : parameters_) {
            const std::string name = Listed({parameter});
            const std::vector<Cell>& cells = cellsOf[parameter];
            if (parameter == kConstant) {
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
    bool IsZeroPower(const xercesc::DOMElement* cell) const
    {
        const std::string predictor = AttributeText(cell, Tags::XML_ATT_PPC_PREDNAME);
        return std::find(factors_.begin(), factors_.end(), predictor) == factors_.end() &&
               IsNumber(AttributeText(cell, Tags::XML_ATT_PPC_VALUE), 0.0);
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
    std::vector<xercesc::DOMElement*> cells_;
};

bool NamesConstant(const xercesc::DOMElement* model)
{
    for (const auto* cell :
         ChildElements(ChildElement(model, Tags::XML_ELE_PARAM_MATRIX), Tags::XML_ELE_PCELL)) {
        if (AttributeText(cell, Tags::XML_ATT_PC_PARAMNAME) == kConstant) return true;
    }
    for (const auto* cell :
         ChildElements(ChildElement(model, Tags::XML_ELE_PCOV_MATRIX), Tags::XML_ELE_PCOV_CELL)) {
        if (AttributeText(cell, Tags::XML_ATT_PCC_PROW) == kConstant ||
            AttributeText(cell, Tags::XML_ATT_PCC_PCOL) == kConstant) {
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

bool IsCox(const xercesc::DOMElement* root, const xercesc::DOMElement* model)
{
    const auto family = FamilyOfModel(root, model);
    return family == kCox || family == kCoxComplexSamples;
}

// The parameters whose reference point the extension gives, the older place for it.
std::set<std::string> PointsOfExtensions(const xercesc::DOMElement* model)
{
    std::set<std::string> names;
    for (const auto* extension : ChildElements(model, Tags::XML_ELE_EXTENSION)) {
        if (AttributeText(extension, Tags::XML_ATT_EXT_NAME) !=
            Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT) {
            continue;
        }
        const xercesc::DOMNodeList* points = extension->getElementsByTagName(
            XmlFromUtf8(Tags::XML_EXT_ELE_COXREG_BASEPOINT).c_str());
        for (XMLSize_t i = 0; i < points->getLength(); ++i) {
            names.insert(AttributeText(static_cast<const xercesc::DOMElement*>(points->item(i)),
                                       Tags::XML_EXT_ATT_COXREG_BASEPOINT_PARAMETERNAME));
        }
    }
    return names;
}

}  // namespace

std::optional<Change> MakeUnorderedRegressionGeneralLinear(xercesc::DOMElement* root)
{
    xercesc::DOMElement* model = ModelElement(root);
    if (model == nullptr) return std::nullopt;
    if (AttributeText(model, Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_REGRESS) {
        return std::nullopt;
    }
    const RegressionLayout layout(model);
    // Without cells nothing tells which predictor a parameter belongs to but its position.
    if (!layout.HasCells()) return std::nullopt;
    const std::string why = layout.WhyUnordered();
    if (why.empty()) return std::nullopt;

    SetAttributeText(model, Tags::XML_ATT_RM_MODEL_TYPE, Tags::XML_VAL_MT_GLIN);
    if (SelectsAnotherFamily(SelectorOf(model))) {
        SetAttributeText(model, Tags::XML_ATT_MODELALGO, Tags::XML_VAL_MN_GLIN);
    }
    // A general linear model would let such a cell drop its parameter where the covariate is 0.
    for (auto* cell : layout.ZeroCells()) cell->getParentNode()->removeChild(cell)->release();
    // Only a linear regression has a constant without being told.
    xercesc::DOMElement* list = ChildElement(model, Tags::XML_ELE_PARAM_LIST);
    if (list != nullptr && !layout.ListsConstant() && NamesConstant(model)) {
        xercesc::DOMElement* constant =
            root->getOwnerDocument()->createElement(XmlFromUtf8(Tags::XML_ELE_PARAM).c_str());
        SetAttributeText(constant, Tags::XML_ATT_PARAM_NAME, kConstant);
        list->appendChild(constant);
    }
    return Change{PlaceOf(model), "modelType \"regression\" is read as \"generalLinear\": " + why};
}

std::optional<Change> CompleteReferencePoints(xercesc::DOMElement* root)
{
    xercesc::DOMElement* model = ModelElement(root);
    if (model == nullptr || !IsCox(root, model)) return std::nullopt;
    const auto parameters =
        ChildElements(ChildElement(model, Tags::XML_ELE_PARAM_LIST), Tags::XML_ELE_PARAM);
    const auto hasPoint = [](const xercesc::DOMElement* parameter) {
        return !AttributeText(parameter, Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT).empty();
    };
    if (std::none_of(parameters.begin(), parameters.end(), hasPoint)) return std::nullopt;

    const std::set<std::string> elsewhere = PointsOfExtensions(model);
    std::vector<std::string> names;
    DocumentPlace place;
    for (auto* parameter : parameters) {
        const std::string name = AttributeText(parameter, Tags::XML_ATT_PARAM_NAME);
        if (hasPoint(parameter) || elsewhere.contains(name)) continue;
        SetAttributeText(parameter, Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT, "0");
        if (names.empty()) place = PlaceOf(parameter);
        names.push_back(name);
    }
    if (names.empty()) return std::nullopt;
    return Change{place, "parameter " + Listed(names) +
                             " has no referencePoint: 0, as the others "
                             "have one"};
}

std::optional<Change> NoteMissingEstimates(xercesc::DOMElement* root)
{
    const xercesc::DOMElement* model = ModelElement(root);
    if (model == nullptr || ChildElement(model, Tags::XML_ELE_PARAM_MATRIX) != nullptr) {
        return std::nullopt;
    }
    // With predictors it is a fault, which the audit tells.
    if (!Predictors(root, Tags::XML_ELE_FAC_LIST).empty() ||
        !Predictors(root, Tags::XML_ELE_COV_LIST).empty()) {
        return std::nullopt;
    }
    return Change{PlaceOf(model),
                  "no ParamMatrix: the model has no estimates, and every beta counts "
                  "as 0"};
}

}  // namespace MCVelscore_850
