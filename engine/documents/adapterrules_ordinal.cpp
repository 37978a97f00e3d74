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
#include "host/messages/messages.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using xercesc::DOMElement;

// The reader moves a parameter of this name behind the others.
const std::string kConstant = "(Constant)";

std::string Name(const DOMElement* parameter)
{
    return AttributeText(parameter, Tags::XML_ATT_PARAM_NAME);
}

// The one parameter without a predictor, whose cells are the thresholds; null when there is none
// or several.
DOMElement* ThresholdParameter(const DOMElement* model, const std::vector<DOMElement*>& parameters)
{
    std::set<std::string> withPredictor;
    for (const auto* cell :
         ChildElements(ChildElement(model, Tags::XML_ELE_PP_MATRIX), Tags::XML_ELE_PP_CELL)) {
        withPredictor.insert(AttributeText(cell, Tags::XML_ATT_PPC_PARAMNAME));
    }
    DOMElement* threshold = nullptr;
    for (auto* parameter : parameters) {
        if (withPredictor.contains(Name(parameter))) continue;
        if (threshold != nullptr) return nullptr;
        threshold = parameter;
    }
    return threshold;
}

bool SameNumber(const std::string& a, const std::string& b)
{
    double x = 0.0;
    double y = 0.0;
    return ReadNumber(a, x) == NumberText::Number && ReadNumber(b, y) == NumberText::Number &&
           x == y;
}

// The cells in the order that the reader counts on: the thresholds by category, then one cell for
// each other parameter. Empty when the thresholds aren't one for each category but the last.
std::vector<DOMElement*> CellsInOrder(const DOMElement* root, const std::string& threshold,
                                      const std::vector<DOMElement*>& cells)
{
    const DOMElement* field = TargetDataField(root);
    const auto values = ValidValues(field);
    if (values.size() < 2) return {};
    std::unordered_map<std::string, size_t> positions;
    for (size_t i = 0; i < values.size(); ++i) {
        positions.emplace(CategoryKey(field, AttributeText(values[i], Tags::XML_ATT_VALUE)), i);
    }
    std::vector<DOMElement*> ordered(values.size(), nullptr);
    std::unordered_map<std::string, const DOMElement*> slopes;
    for (auto* cell : cells) {
        const std::string name = AttributeText(cell, Tags::XML_ATT_PC_PARAMNAME);
        if (name != threshold) {
            const auto [first, isNew] = slopes.emplace(name, cell);
            if (isNew) {
                ordered.push_back(cell);
            } else if (!SameNumber(AttributeText(first->second, Tags::XML_ATT_PC_BETA),
                                   AttributeText(cell, Tags::XML_ATT_PC_BETA))) {
                RefuseAt(cell, kSeveralSlopes, name.c_str());
            }
            continue;
        }
        const auto position =
            positions.find(CategoryKey(field, AttributeText(cell, Tags::XML_ATT_PC_TARGET_CAT)));
        if (position == positions.end()) return {};
        DOMElement*& place = ordered[position->second];
        if (place != nullptr) return {};
        place = cell;
    }
    // The cumulative probability of the last category is 1 whatever its cell says.
    const auto last = ordered.begin() + static_cast<std::ptrdiff_t>(values.size()) - 1;
    if (std::find(ordered.begin(), last, nullptr) != last) return {};
    ordered.erase(last);
    return ordered;
}

// Gives the parameter a name that the reader leaves in its place.
void Rename(const DOMElement* model, DOMElement* parameter,
            const std::vector<DOMElement*>& parameters)
{
    std::string name = "Intercept";
    std::set<std::string> taken;
    for (const auto* other : parameters) taken.insert(Name(other));
    while (taken.contains(name)) name += "'";
    const std::string before = Name(parameter);
    SetAttributeText(parameter, Tags::XML_ATT_PARAM_NAME, name);
    struct Use {
        const std::string& list;
        const std::string& cell;
        const std::string& attribute;
    };
    const Use uses[] = {
        {Tags::XML_ELE_PARAM_MATRIX, Tags::XML_ELE_PCELL, Tags::XML_ATT_PC_PARAMNAME},
        {Tags::XML_ELE_PCOV_MATRIX, Tags::XML_ELE_PCOV_CELL, Tags::XML_ATT_PCC_PROW},
        {Tags::XML_ELE_PCOV_MATRIX, Tags::XML_ELE_PCOV_CELL, Tags::XML_ATT_PCC_PCOL},
    };
    for (const Use& use : uses) {
        for (auto* cell : ChildElements(ChildElement(model, use.list), use.cell)) {
            if (AttributeText(cell, use.attribute) == before) {
                SetAttributeText(cell, use.attribute, name);
            }
        }
    }
}

}  // namespace

std::optional<Change> PutThresholdsFirst(DOMElement* root)
{
    DOMElement* model = ModelElement(root);
    if (model == nullptr ||
        AttributeText(model, Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_ORDINAL) {
        return std::nullopt;
    }
    DOMElement* list = ChildElement(model, Tags::XML_ELE_PARAM_LIST);
    const auto parameters = ChildElements(list, Tags::XML_ELE_PARAM);
    DOMElement* threshold = ThresholdParameter(model, parameters);
    if (threshold == nullptr) return std::nullopt;
    const std::string name = Name(threshold);
    DOMElement* matrix = ChildElement(model, Tags::XML_ELE_PARAM_MATRIX);
    const auto cells = ChildElements(matrix, Tags::XML_ELE_PCELL);
    const auto ordered = CellsInOrder(root, name, cells);
    if (ordered.empty()) return std::nullopt;

    const bool moves = threshold != parameters.front();
    const bool renames = name == kConstant && parameters.size() > 1;
    if (!moves && !renames && ordered == cells) return std::nullopt;
    const DocumentPlace place = PlaceOf(ordered == cells ? threshold : matrix);
    if (moves) list->insertBefore(threshold, parameters.front());
    if (renames) Rename(model, threshold, parameters);
    for (auto* cell : cells) matrix->removeChild(cell);
    for (auto* cell : ordered) matrix->appendChild(cell);
    const std::set<DOMElement*> kept(ordered.begin(), ordered.end());
    for (auto* cell : cells) {
        if (!kept.contains(cell)) cell->release();
    }
    return Change{place, "parameter " + Listed({name}) +
                             " holds the thresholds: it is read as the first one, its cells before "
                             "the others, each of which counts once"};
}

}  // namespace MCVelscore_850
