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
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

std::string Name(Element parameter) { return parameter.Text(Tags::XML_ATT_PARAM_NAME); }

// The one parameter without a predictor, whose cells are the thresholds; null when there is none
// or several.
Element ThresholdParameter(Element model, const Elements& parameters)
{
    std::set<std::string> withPredictor;
    for (const Element cell :
         model.Child(Tags::XML_ELE_PP_MATRIX).Children(Tags::XML_ELE_PP_CELL)) {
        withPredictor.insert(cell.Text(Tags::XML_ATT_PPC_PARAMNAME));
    }
    Element threshold;
    for (const Element parameter : parameters) {
        if (withPredictor.contains(Name(parameter))) continue;
        if (threshold) return {};
        threshold = parameter;
    }
    return threshold;
}

bool HaveSameBeta(Element one, Element other)
{
    const std::optional<double> beta = one.Number(Tags::XML_ATT_PC_BETA);
    return beta && beta == other.Number(Tags::XML_ATT_PC_BETA);  // exact: both as written
}

// The cells in the order that the reader counts on: the thresholds by category, then one cell for
// each other parameter. Empty when the thresholds aren't one for each category but the last.
Elements CellsInOrder(Element root, const std::string& threshold, const Elements& cells)
{
    const Element field = TargetDataField(root);
    const Elements values = ValidValues(field);
    if (values.size() < 2) return {};
    std::unordered_map<std::string, size_t> positions;
    for (size_t i = 0; i < values.size(); ++i) {
        positions.emplace(CategoryKey(field, values[i].Text(Tags::XML_ATT_VALUE)), i);
    }
    Elements ordered(values.size());
    std::unordered_map<std::string, Element> slopes;
    for (const Element cell : cells) {
        const std::string name = cell.Text(Tags::XML_ATT_PC_PARAMNAME);
        if (name != threshold) {
            const auto [first, isNew] = slopes.emplace(name, cell);
            if (isNew) {
                ordered.push_back(cell);
            } else if (!HaveSameBeta(first->second, cell)) {
                RefuseAt(cell, kSeveralSlopes, name.c_str());
            }
            continue;
        }
        const auto position =
            positions.find(CategoryKey(field, cell.Text(Tags::XML_ATT_PC_TARGET_CAT)));
        if (position == positions.end()) return {};
        Element& place = ordered[position->second];
        if (place) return {};
        place = cell;
    }
    // The cumulative probability of the last category is 1 whatever its cell says.
    const auto last = ordered.begin() + static_cast<std::ptrdiff_t>(values.size()) - 1;
    if (std::find(ordered.begin(), last, Element()) != last) return {};
    ordered.erase(last);
    return ordered;
}

// Gives the parameter a name that the reader leaves in its place, which isn't the constant's.
void Rename(Element model, Element parameter, const Elements& parameters)
{
    std::string name = "Intercept";
    std::set<std::string> taken;
    for (const Element other : parameters) taken.insert(Name(other));
    while (taken.contains(name)) name += "'";
    const std::string before = Name(parameter);
    parameter.SetText(Tags::XML_ATT_PARAM_NAME, name);
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
        for (const Element cell : model.Child(use.list).Children(use.cell)) {
            if (cell.Text(use.attribute) == before) {
                cell.SetText(use.attribute, name);
            }
        }
    }
}

}  // namespace

std::optional<Change> PutThresholdsFirst(Element root)
{
    const Element model = ModelElement(root);
    if (model.Text(Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_ORDINAL) {
        return std::nullopt;
    }
    const Element list = model.Child(Tags::XML_ELE_PARAM_LIST);
    const Elements parameters = list.Children(Tags::XML_ELE_PARAM).List();
    const Element threshold = ThresholdParameter(model, parameters);
    if (!threshold) return std::nullopt;
    const std::string name = Name(threshold);
    const Element matrix = model.Child(Tags::XML_ELE_PARAM_MATRIX);
    const Elements cells = matrix.Children(Tags::XML_ELE_PCELL).List();
    const Elements ordered = CellsInOrder(root, name, cells);
    if (ordered.empty()) return std::nullopt;

    const bool moves = threshold != parameters.front();
    const bool renames = name == kConstantParameter && parameters.size() > 1;
    if (!moves && !renames && ordered == cells) return std::nullopt;
    const DocumentPlace place = (ordered == cells ? threshold : matrix).Place();
    if (moves) list.Insert(threshold, parameters.front());
    if (renames) Rename(model, threshold, parameters);
    for (const Element cell : ordered) matrix.Insert(cell, {});
    // Those that aren't among them stand first now.
    for (size_t i = ordered.size(); i < cells.size(); ++i) {
        matrix.Child(Tags::XML_ELE_PCELL).Erase();
    }
    return Change{place, "parameter " + Listed({name}) +
                             " holds the thresholds: it is read as the first one, its cells before "
                             "the others, each of which counts once"};
}

}  // namespace MCVelscore_850
