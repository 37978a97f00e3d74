#include "engine/documents/treefields.h"

#include <bit>
#include <cstdint>

#include "engine/documents/names.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

// The words by which a mining schema marks its target, by version.
const std::string_view kTargetUsages[] = {Tags::XML_ATT_MF_FUT_TARGET,
                                          Tags::XML_ATT_MF_FUT_PREDICTED};
// A Value without a property is a valid one.
constexpr std::string_view kValidProperties[] = {"", "valid"};
constexpr std::string_view kNumericTypes[] = {"integer", "float", "double"};
constexpr std::string_view kUnlistedCategories = "unlistedCategories";

// The name of the mining schema's target, else of the model's.
std::string TargetName(Element root)
{
    for (const Element field : MiningFields(root)) {
        if (IsOneOf(field.Text(Tags::XML_ATT_MININGFIELD_USAGETYPE), kTargetUsages)) {
            return field.Text(Tags::XML_ATT_MININGFIELD_NAME);
        }
    }
    return ModelElement(root).Text(Tags::XML_ATT_RM_TARGET_VAR);
}

}  // namespace

ElementRange DataFields(Element root)
{
    return root.Child(Tags::XML_ELE_DATADICTIONARY).Children("DataField");
}

Elements DataAndDerivedFields(Element root)
{
    Elements fields = DataFields(root).List();
    for (const Element section : {root.Child(Tags::XML_ELE_TRANSFORMATION),
                                  ModelElement(root).Child(Tags::XML_ELE_LOCALTRANSFORMATIONS)}) {
        const ElementRange derived = section.Children("DerivedField");
        fields.insert(fields.end(), derived.begin(), derived.end());
    }
    return fields;
}

ElementRange MiningFields(Element root)
{
    return ModelElement(root).Child(Tags::XML_ELE_MININGSCHEMA).Children(Tags::XML_ELE_MININGFIELD);
}

ElementRange Predictors(Element root, std::string_view list)
{
    return ModelElement(root).Child(list).Children(Tags::XML_ELE_PREDICTOR);
}

std::set<std::string> NamesOf(ElementRange elements)
{
    std::set<std::string> names;
    for (const Element element : elements) names.insert(element.Text(Tags::XML_ATT_NAME));
    return names;
}

Element TargetDataField(Element root)
{
    if (!ModelElement(root)) return {};
    const std::string target = TargetName(root);
    for (const Element field : DataFields(root)) {
        if (field.Text(Tags::XML_ATT_NAME) == target) return field;
    }
    return {};
}

Elements ValidValues(Element field)
{
    Elements valid;
    for (const Element value : field.Children(Tags::XML_ELE_VALUE)) {
        if (IsOneOf(value.Text("property"), kValidProperties)) valid.push_back(value);
    }
    return valid;
}

std::string CategoryKey(Element field, const std::string& text)
{
    return CategoryKey(field.Text("dataType"), text);
}

std::string CategoryKey(const std::string& dataType, const std::string& text)
{
    double number = 0.0;
    if (!IsNumericType(dataType) || ReadNumber(text, number) != NumberText::Number) return text;
    // its bits, since no shorter text tells all numbers apart; adding 0 makes -0 the plain one
    return std::to_string(std::bit_cast<uint64_t>(number + 0.0));
}

bool IsNumericType(std::string_view dataType) { return IsOneOf(dataType, kNumericTypes); }

Element AppendFor(Element parent, std::string_view tag, Element source)
{
    const Element added = parent.Append(tag);
    CopyPlace(source.Dom(), added.Dom());
    return added;
}

void AcceptUnlisted(Element field)
{
    const Element extension = field.Append(Tags::XML_ELE_EXTENSION);
    extension.SetText(Tags::XML_ATT_EXTENSION_EXTENDER, Tags::XML_VAL_EXTENSION_EXTENDER);
    extension.SetText(Tags::XML_ATT_EXT_NAME, kUnlistedCategories);
    extension.SetText(Tags::XML_ATT_EXT_VALUE, "accept");
}

bool AcceptsUnlisted(Element field)
{
    for (const Element extension : field.Children(Tags::XML_ELE_EXTENSION)) {
        if (extension.Text(Tags::XML_ATT_EXTENSION_EXTENDER) == Tags::XML_VAL_EXTENSION_EXTENDER &&
            extension.Text(Tags::XML_ATT_EXT_NAME) == kUnlistedCategories) {
            return true;
        }
    }
    return false;
}

}  // namespace MCVelscore_850
