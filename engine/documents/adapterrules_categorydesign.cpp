#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "engine/documents/adapterrules.h"
#include "engine/documents/element.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/names.h"
#include "engine/documents/treefields.h"
#include "host/documents/documentplace.h"
#include "host/documents/pmmlmodeltags.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

// More cells than a document may have elements aren't made of one.
constexpr size_t kMostCells = 1000000;

// A PPCell.
struct Cell {
    Element element;
    std::string predictor;
    std::string value;
};

// What a parameter is made of in one equation: of each predictor the cell that says how.
using Design = std::map<std::string, const Cell*>;

// A text that two designs share when they are the same.
std::string TextOf(const Design& design)
{
    std::string text;
    for (const auto& [predictor, cell] : design) {
        for (const std::string* part : {&predictor, &cell->value}) {
            text += std::to_string(part->size()) + ":" + *part;
        }
    }
    return text;
}

// Categories of one design.
struct Group {
    Design design;
    std::string category;  ///< the first one's key
    std::string name;      ///< of the parameter that stands for it
};

struct Parameter {
    std::vector<Cell> cells;                                      ///< of every equation
    std::unordered_map<std::string, std::vector<Cell>> ownCells;  ///< of a category's alone, by key
    Elements betas;                                               ///< its PCells
    std::vector<Group> groups;
    std::unordered_map<std::string, size_t> groupOf;  ///< by key of the category
};

// A model some of whose PPCells name categories, taken apart by parameters.
class CategoryDesigns {
public:
    explicit CategoryDesigns(Element root)
        : model_(root.Child(Tags::XML_ELE_REGRESSMODEL)), field_(TargetDataField(root))
    {
        for (const Element value : ValidValues(field_)) {
            const std::string text = value.Text(Tags::XML_ATT_VALUE);
            categories_.emplace(Key(text), text);
        }
        const Element matrix = model_.Child(Tags::XML_ELE_PP_MATRIX);
        for (const Element cell : matrix.Children(Tags::XML_ELE_PP_CELL)) {
            Parameter& parameter = parameters_[cell.Text(Tags::XML_ATT_PPC_PARAMNAME)];
            const std::string category = cell.Text(Tags::XML_ATT_PC_TARGET_CAT);
            auto& cells = category.empty() ? parameter.cells : parameter.ownCells[Key(category)];
            cells.push_back(
                {cell, cell.Text(Tags::XML_ATT_PPC_PREDNAME), cell.Text(Tags::XML_ATT_PPC_VALUE)});
            if (category.empty()) continue;
            namesStrangers_ |= !categories_.contains(Key(category));
            if (!first_) first_ = cell;
        }
        if (!first_) return;
        for (const Element cell :
             model_.Child(Tags::XML_ELE_PARAM_MATRIX).Children(Tags::XML_ELE_PCELL)) {
            const auto named = parameters_.find(cell.Text(Tags::XML_ATT_PC_PARAMNAME));
            if (named != parameters_.end()) named->second.betas.push_back(cell);
        }
    }

    Element First() const { return first_; }

    // False where the cells leave a doubt: they name unknown categories, contradict each other, or
    // leave a beta without any term; and where there would be too many.
    bool Plan()
    {
        if (namesStrangers_) return false;
        for (auto& [name, parameter] : parameters_) {
            if (!parameter.ownCells.empty() && !PlanGroups(parameter)) return false;
        }
        return true;
    }

    void Apply()
    {
        const Element list = model_.Child(Tags::XML_ELE_PARAM_LIST);
        const Elements listed = list.Children(Tags::XML_ELE_PARAM).List();
        for (const Element element : listed) names_.insert(element.Text(Tags::XML_ATT_PARAM_NAME));
        for (const Element element : listed) {
            const std::string name = element.Text(Tags::XML_ATT_PARAM_NAME);
            const auto found = parameters_.find(name);
            if (found == parameters_.end() || found->second.ownCells.empty()) continue;
            NameGroups(name, found->second);
            AddParameters(element, found->second);
            RenameBetas(found->second);
        }
        RenameCovariances();
        for (auto& [name, parameter] : parameters_) {
            if (!parameter.ownCells.empty()) ReplaceCells(parameter);
        }
    }

    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& [name, parameter] : parameters_) {
            if (!parameter.ownCells.empty()) names.push_back(name);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::string Key(const std::string& category) const { return CategoryKey(field_, category); }

    std::string KeyOf(Element beta) const { return Key(beta.Text(Tags::XML_ATT_PC_TARGET_CAT)); }

    // Nothing where two cells of the equation contradict each other.
    static std::optional<Design> DesignFor(const Parameter& parameter, const std::string& key)
    {
        Design design;
        const auto add = [&design](const std::vector<Cell>& cells) {
            return std::all_of(cells.begin(), cells.end(), [&design](const Cell& cell) {
                return design.emplace(cell.predictor, &cell).first->second->value == cell.value;
            });
        };
        const auto own = parameter.ownCells.find(key);
        if (!add(parameter.cells)) return std::nullopt;
        if (own != parameter.ownCells.end() && !add(own->second)) return std::nullopt;
        return design;
    }

    // Only categories with a beta have an equation in which the parameter counts.
    bool PlanGroups(Parameter& parameter)
    {
        std::unordered_map<std::string, size_t> known;
        for (const Element beta : parameter.betas) {
            const std::string key = KeyOf(beta);
            auto design = DesignFor(parameter, key);
            if (!design || !categories_.contains(key)) return false;
            if (design->empty()) {
                if (beta.Number(Tags::XML_ATT_PC_BETA) != 0.0) return false;
                continue;
            }
            cellCount_ += design->size();
            if (cellCount_ > kMostCells) return false;
            const auto [group, isNew] = known.emplace(TextOf(*design), parameter.groups.size());
            if (isNew) parameter.groups.push_back({std::move(*design), key, {}});
            parameter.groupOf.emplace(key, group->second);
        }
        return true;
    }

    // The first one keeps the parameter's own name.
    void NameGroups(const std::string& name, Parameter& parameter)
    {
        for (Group& group : parameter.groups) {
            group.name = name;
            if (&group == &parameter.groups.front()) continue;
            group.name += " of " + categories_.at(group.category);
            while (!names_.insert(group.name).second) group.name += "'";
        }
    }

    void AddParameters(Element element, const Parameter& parameter) const
    {
        const std::string label = element.Text(Tags::XML_ATT_PARAM_LABEL);
        for (size_t i = 1; i < parameter.groups.size(); ++i) {
            const Element added = element.Parent().Append(Tags::XML_ELE_PARAM);
            CopyPlace(element.Dom(), added.Dom());
            added.SetText(Tags::XML_ATT_PARAM_NAME, parameter.groups[i].name);
            if (!label.empty()) added.SetText(Tags::XML_ATT_PARAM_LABEL, label);
        }
    }

    static const Group* GroupOf(const Parameter& parameter, const std::string& key)
    {
        const auto found = parameter.groupOf.find(key);
        return found == parameter.groupOf.end() ? nullptr : &parameter.groups[found->second];
    }

    void RenameBetas(const Parameter& parameter) const
    {
        for (const Element beta : parameter.betas) {
            const Group* group = GroupOf(parameter, KeyOf(beta));
            if (group != nullptr) beta.SetText(Tags::XML_ATT_PC_PARAMNAME, group->name);
        }
        if (parameter.groups.size() < 2) return;
        // A df of 0 says that the betas of the other categories are left out on purpose.
        for (const Group& group : parameter.groups) {
            const Group& other = &group == &parameter.groups.front() ? parameter.groups.back()
                                                                     : parameter.groups.front();
            const Element source = parameter.betas.front();
            const Element zero = source.Parent().Append(Tags::XML_ELE_PCELL);
            CopyPlace(source.Dom(), zero.Dom());
            zero.SetText(Tags::XML_ATT_PC_TARGET_CAT, categories_.at(other.category));
            zero.SetText(Tags::XML_ATT_PC_PARAMNAME, group.name);
            zero.SetText(Tags::XML_ATT_PC_BETA, "0");
            zero.SetText(Tags::XML_ATT_PC_DF, "0");
        }
    }

    void RenameCovariances() const
    {
        const std::pair<const std::string&, const std::string&> sides[] = {
            {Tags::XML_ATT_PCC_PROW, Tags::XML_ATT_PCC_TROW},
            {Tags::XML_ATT_PCC_PCOL, Tags::XML_ATT_PCC_TCol}};
        for (const Element cell :
             model_.Child(Tags::XML_ELE_PCOV_MATRIX).Children(Tags::XML_ELE_PCOV_CELL)) {
            for (const auto& [parameter, category] : sides) {
                const auto named = parameters_.find(cell.Text(parameter));
                if (named == parameters_.end()) continue;
                const Group* group = GroupOf(named->second, Key(cell.Text(category)));
                if (group != nullptr) cell.SetText(parameter, group->name);
            }
        }
    }

    static void ReplaceCells(Parameter& parameter)
    {
        for (const Group& group : parameter.groups) {
            for (const auto& [predictor, cell] : group.design) {
                const Element added = cell->element.Parent().Append(Tags::XML_ELE_PP_CELL);
                CopyPlace(cell->element.Dom(), added.Dom());
                added.SetText(Tags::XML_ATT_PPC_PARAMNAME, group.name);
                added.SetText(Tags::XML_ATT_PPC_PREDNAME, predictor);
                added.SetText(Tags::XML_ATT_PPC_VALUE, cell->value);
            }
        }
        for (Cell& cell : parameter.cells) cell.element.Erase();
        for (auto& [category, cells] : parameter.ownCells) {
            for (Cell& cell : cells) cell.element.Erase();
        }
    }

    Element model_;
    Element field_;
    std::unordered_map<std::string, std::string> categories_;  // by key, as the target lists them
    std::unordered_map<std::string, Parameter> parameters_;    // those with cells
    std::unordered_set<std::string> names_;  // of all parameters, the new ones too
    Element first_;
    size_t cellCount_ = 0;  // of those that are to be made
    bool namesStrangers_ = false;
};

// Families with an equation for a category; the thresholds of an ordinal model share one.
bool HasEquations(Element root)
{
    const auto family = FamilyOfModel(root, ModelElement(root));
    return family == kMultinomial || family == kMultinomialGeneralized || family == kBinary ||
           family == kConditional || family == kGeneralizedLinear;
}

}  // namespace

std::optional<Change> ReadDesignsOfCategories(Element root)
{
    if (!ModelElement(root) || !HasEquations(root)) return std::nullopt;
    CategoryDesigns designs(root);
    if (!designs.First()) return std::nullopt;
    Change change{designs.First().Place(),
                  "parameter " + Listed(designs.Names()) +
                      " has PPCells for single categories: it is read as a parameter for each "
                      "design that its categories have"};
    if (!designs.Plan()) return std::nullopt;
    designs.Apply();
    return change;
}

}  // namespace MCVelscore_850
