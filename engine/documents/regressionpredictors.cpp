#include "engine/documents/regressionpredictors.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "engine/documents/treefields.h"
#include "host/documents/documentplace.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kDataType = "dataType";
const std::string kBoolean = "boolean";
const std::string kString = "string";
const std::string kTrue = "true";
const std::string kFalse = "false";

bool IsWholePower(double exponent) { return exponent >= 1.0 && std::trunc(exponent) == exponent; }

void AddFieldRef(Element parent, const std::string& field, Element source)
{
    AppendFor(parent, "FieldRef", source).SetText("field", field);
}

}  // namespace

std::string CategoryKeyOf(Element field, const std::string& text)
{
    if (field.Text(kDataType) == kBoolean) {
        if (const auto truth = TruthOf(text)) return *truth ? kTrue : kFalse;
    }
    return CategoryKey(field, text);
}

// The category as the field lists it; nothing where it doesn't.
std::optional<std::string> RegressionPredictors::Field::Listed(const std::string& category) const
{
    const auto found = categories.find(CategoryKeyOf(element, category));
    if (found == categories.end()) return std::nullopt;
    return found->second;
}

RegressionPredictors::RegressionPredictors(Element root, Element model,
                                           const std::vector<RegressionTable>& tables,
                                           bool takesFactors)
    : model_(model), takesFactors_(takesFactors)
{
    ReadFields(root);
    for (const RegressionTable& table : tables) {
        for (const RegressionTerm& term : table.terms) {
            for (const TermFactor& factor : term.factors) {
                if (!factor.category) FieldOf(factor.field, term.element).isNumber = true;
            }
        }
    }
}

void RegressionPredictors::ReadFields(Element root)
{
    for (const Element element : DataFields(root)) {
        Field field{element, false, element.Text(kDataType)};
        for (const Element value : ValidValues(element)) {
            const std::string category = value.Text(Tags::XML_ATT_VALUE);
            field.categories.emplace(CategoryKeyOf(element, category), category);
        }
        fields_.emplace(element.Text(Tags::XML_ATT_NAME), std::move(field));
    }
    AddDerivedOf(root.Child(Tags::XML_ELE_TRANSFORMATION));
    AddDerivedOf(model_.Child(Tags::XML_ELE_LOCALTRANSFORMATIONS));
    for (const Element mining : model_.Child(Tags::XML_ELE_MININGSCHEMA).Children()) {
        const auto field = fields_.find(mining.Text(Tags::XML_ATT_MININGFIELD_NAME));
        if (field == fields_.end()) continue;
        field->second.takenAsIs = mining.Text("invalidValueTreatment") == "asIs";
    }
}

void RegressionPredictors::AddDerivedOf(Element section)
{
    for (const Element element : section.Children("DerivedField")) {
        fields_.insert_or_assign(element.Text(Tags::XML_ATT_NAME),
                                 Field{element, true, element.Text(kDataType)});
    }
}

RegressionPredictors::Field& RegressionPredictors::FieldOf(const std::string& name, Element element)
{
    const auto found = fields_.find(name);
    if (found == fields_.end()) {
        RefuseAt(element, kUnknownTermField, name.c_str(), element.Tag().c_str());
    }
    return found->second;
}

std::optional<std::vector<RegressionPredictors::Cell>> RegressionPredictors::CellsOf(
    const RegressionTerm& term)
{
    std::vector<Cell> cells;
    std::vector<std::pair<std::string, double>> powers;  // a field may multiply itself
    for (const TermFactor& factor : term.factors) {
        if (factor.category) {
            auto cell = CategoryCell(factor.field, *factor.category, term.element);
            if (!cell) return std::nullopt;
            cells.push_back(std::move(*cell));
            continue;
        }
        const std::string predictor = NumberPredictor(factor, term.element);
        const double exponent = IsWholePower(factor.exponent) ? factor.exponent : 1.0;
        const auto known = std::find_if(powers.begin(), powers.end(),
                                        [&](const auto& each) { return each.first == predictor; });
        if (known == powers.end()) {
            powers.emplace_back(predictor, exponent);
        } else {
            known->second += exponent;
        }
    }
    for (const auto& [predictor, exponent] : powers) {
        cells.push_back({predictor, fmt::format("{}", exponent)});
    }
    return cells;
}

// Factors of this family have a list of categories, or take any text.
bool RegressionPredictors::IsFactor(const Field& field) const
{
    if (!takesFactors_ || field.derived || field.isNumber) return false;
    if (field.element.Text(Tags::XML_ATT_DATAFIELD_OPTYPE) == Tags::XML_VAL_OT_CONTINUOUS) {
        return false;
    }
    if (field.dataType == kString) return true;
    const bool isNumeric = field.dataType == kBoolean || IsNumericType(field.dataType);
    return isNumeric && !field.categories.empty() && !field.takenAsIs;
}

std::optional<RegressionPredictors::Cell> RegressionPredictors::CategoryCell(
    const std::string& name, const std::string& category, Element element)
{
    Field& field = FieldOf(name, element);
    std::string value = category;
    if (!field.categories.empty()) {
        if (const auto listed = field.Listed(category)) {
            value = *listed;
        } else if (field.takenAsIs) {
            AppendFor(field.element, Tags::XML_ELE_VALUE, element)
                .SetText(Tags::XML_ATT_VALUE, category);
            field.categories.emplace(CategoryKeyOf(field.element, category), category);
        } else {
            neverMet_.push_back(fmt::format("{} \"{}\"", name, category));
            return std::nullopt;
        }
    } else if (field.dataType == kBoolean) {
        if (const auto truth = TruthOf(category)) value = *truth ? kTrue : kFalse;
    }
    if (IsFactor(field)) {
        if (listed_.insert(name).second) factors_.push_back({name, element});
        return Cell{name, value, true};
    }
    const std::string indicator =
        Derived(fmt::format("{}[{}]", name, value), element, [&](Element derived) {
            const Element norm = AppendFor(derived, "NormDiscrete", element);
            norm.SetText("field", name);
            norm.SetText(Tags::XML_ATT_VALUE, value);
            norm.SetText("mapMissingTo", "0");
        });
    return Cell{Covariate(indicator, element), "1"};
}

// The covariate that holds the factor's number, to the first power or to a whole one.
std::string RegressionPredictors::NumberPredictor(const TermFactor& factor, Element element)
{
    const Field& field = FieldOf(factor.field, element);
    std::string name = factor.field;
    if (field.dataType == kBoolean) {
        name = Derived(fmt::format("number({})", name), element, [&](Element derived) {
            const Element norm = AppendFor(derived, "NormDiscrete", element);
            norm.SetText("field", factor.field);
            norm.SetText(Tags::XML_ATT_VALUE, field.Listed(kTrue).value_or(kTrue));
            if (factor.mapMissingTo) norm.SetText("mapMissingTo", *factor.mapMissingTo);
        });
    } else if (field.dataType == kString) {
        RefuseAt(element, kTextInEquation, name.c_str(), field.dataType.c_str(),
                 element.Tag().c_str());
    } else if (factor.mapMissingTo) {
        name = Derived(fmt::format("{} or {}", name, *factor.mapMissingTo), element,
                       [&](Element derived) {
                           const Element reference = AppendFor(derived, "FieldRef", element);
                           reference.SetText("field", factor.field);
                           reference.SetText("mapMissingTo", *factor.mapMissingTo);
                       });
    } else if (field.element.Text(Tags::XML_ATT_DATAFIELD_OPTYPE) != Tags::XML_VAL_OT_CONTINUOUS) {
        field.element.SetText(Tags::XML_ATT_DATAFIELD_OPTYPE, Tags::XML_VAL_OT_CONTINUOUS);
    }
    if (!IsWholePower(factor.exponent)) {
        const std::string base = name;
        name = Derived(fmt::format("{}^{}", base, factor.exponent), element, [&](Element derived) {
            const Element apply = AppendFor(derived, "Apply", element);
            apply.SetText("function", "pow");
            AddFieldRef(apply, base, element);
            const Element exponent = AppendFor(apply, "Constant", element);
            exponent.SetText(kDataType, "double");
            exponent.SetContent(fmt::format("{}", factor.exponent));
        });
    }
    return Covariate(name, element);
}

std::string RegressionPredictors::Covariate(const std::string& name, Element element)
{
    if (listed_.insert(name).second) covariates_.push_back({name, element});
    return name;
}

template <class Make>
std::string RegressionPredictors::Derived(const std::string& wanted, Element element, Make make)
{
    const auto known = derived_.find(wanted);
    if (known != derived_.end()) return known->second;
    std::string name = wanted;
    while (fields_.contains(name)) name += "'";
    Element section = model_.Child(Tags::XML_ELE_LOCALTRANSFORMATIONS);
    if (!section) section = AppendFor(model_, Tags::XML_ELE_LOCALTRANSFORMATIONS, element);
    const Element derived = AppendFor(section, "DerivedField", element);
    derived.SetText(Tags::XML_ATT_NAME, name);
    derived.SetText(Tags::XML_ATT_DATAFIELD_OPTYPE, Tags::XML_VAL_OT_CONTINUOUS);
    derived.SetText(kDataType, "double");
    make(derived);
    fields_.emplace(name, Field{derived, true, "double"});
    derived_.emplace(wanted, name);
    return name;
}

}  // namespace MCVelscore_850
