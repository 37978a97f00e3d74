#include "engine/documents/regressiontarget.h"

#include <algorithm>
#include <set>

#include "engine/documents/names.h"
#include "engine/documents/regressionpredictors.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kTargetFieldName = "targetFieldName";
const std::string kOrderedOptype = "ordinal";
const std::string kUnorderedOptype = "categorical";
const std::string kDataType = "dataType";

}  // namespace

// The mining schema decides; old documents name the field in the model's attribute alone.
RegressionTarget::RegressionTarget(Element root, Element model) : model_(model)
{
    const Element schema = model_.Child(Tags::XML_ELE_MININGSCHEMA);
    const std::string named = model_.Text(kTargetFieldName);
    Element ofName;
    for (const Element field : schema.Children(Tags::XML_ELE_MININGFIELD)) {
        const std::string usage = field.Text(Tags::XML_ATT_MININGFIELD_USAGETYPE);
        const std::string name = field.Text(Tags::XML_ATT_MININGFIELD_NAME);
        if (!miningField_ &&
            (usage == Tags::XML_ATT_MF_FUT_TARGET || usage == Tags::XML_ATT_MF_FUT_PREDICTED)) {
            miningField_ = field;
            name_ = name;
        }
        if (name == named) ofName = field;
    }
    if (!miningField_) {
        if (named.empty() || !schema) RefuseAt(model_, kNoTargetField, model_.Tag().c_str());
        miningField_ = ofName ? ofName : AppendFor(schema, Tags::XML_ELE_MININGFIELD, model_);
        miningField_.SetText(Tags::XML_ATT_MININGFIELD_NAME, named);
        miningField_.SetText(Tags::XML_ATT_MININGFIELD_USAGETYPE, Tags::XML_ATT_MF_FUT_TARGET);
        name_ = named;
    } else if (!named.empty() && named != name_) {
        RefuseAt(model_, kTargetFieldsDiffer, named.c_str(), name_.c_str());
    }
    for (const Element field : DataFields(root)) {
        if (field.Text(Tags::XML_ATT_NAME) == name_) field_ = field;
    }
    if (!field_) {
        RefuseAt(miningField_, kUnknownTermField, name_.c_str(), miningField_.Tag().c_str());
    }
    const std::string optype = miningField_.Text(Tags::XML_ATT_DATAFIELD_OPTYPE);
    if (!optype.empty()) field_.SetText(Tags::XML_ATT_DATAFIELD_OPTYPE, optype);
}

void RegressionTarget::MatchTables(std::vector<RegressionTable>& tables)
{
    if (!Classifies(tables)) {
        ExpectOneTable(tables);
        return;
    }
    SettleCategories(tables);
    NameTables(tables);
}

// A regression over several categories is what old exporters call a classification.
bool RegressionTarget::Classifies(const std::vector<RegressionTable>& tables) const
{
    const std::string function = model_.Text(Tags::XML_ATT_FUNCTIONNAME);
    if (function == Tags::XML_VAL_RM_FUNC_NAME_C) return true;
    if (function != Tags::XML_VAL_MT_REGRESS) {
        RefuseAt(model_, kUnknownFunctionName, function.c_str());
    }
    return tables.size() > 1 &&
           std::none_of(tables.begin(), tables.end(),
                        [](const RegressionTable& table) { return table.category.empty(); });
}

void RegressionTarget::ExpectOneTable(const std::vector<RegressionTable>& tables) const
{
    if (tables.size() > 1) {
        RefuseAt(tables[1].element, kTableCount, static_cast<int>(tables.size()));
    }
    const std::string dataType = field_.Text(kDataType);
    if (dataType == "string" || dataType == "boolean") {
        RefuseAt(field_, kTextInEquation, name_.c_str(), dataType.c_str(), model_.Tag().c_str());
    }
    field_.SetText(Tags::XML_ATT_DATAFIELD_OPTYPE, Tags::XML_VAL_OT_CONTINUOUS);
}

void RegressionTarget::SettleCategories(const std::vector<RegressionTable>& tables)
{
    for (const RegressionTable& table : tables) {
        if (!table.category.empty()) continue;
        RefuseAt(table.element, kTableWithoutCategory, static_cast<int>(tables.size()));
    }
    if (field_.Text(Tags::XML_ATT_DATAFIELD_OPTYPE) == Tags::XML_VAL_OT_CONTINUOUS) {
        field_.SetText(Tags::XML_ATT_DATAFIELD_OPTYPE, kUnorderedOptype);
    }
    ListCategories(tables);
    for (const Element value : ValidValues(field_)) {
        categories_.push_back(value.Text(Tags::XML_ATT_VALUE));
    }
    if (categories_.size() < 2) {
        const std::string only = "beside " + Listed(categories_);
        RefuseAt(field_, kTablesMissing, only.c_str(), NormalizationOf(model_).c_str());
    }
}

// A target that lists no categories has those of the tables, in their order.
void RegressionTarget::ListCategories(const std::vector<RegressionTable>& tables) const
{
    if (!ValidValues(field_).empty()) return;
    std::set<std::string> keys;
    for (const RegressionTable& table : tables) {
        if (!keys.insert(CategoryKeyOf(field_, table.category)).second) continue;
        AppendFor(field_, Tags::XML_ELE_VALUE, table.element)
            .SetText(Tags::XML_ATT_VALUE, table.category);
    }
}

// Gives each table its category as the target lists it.
void RegressionTarget::NameTables(std::vector<RegressionTable>& tables) const
{
    std::unordered_map<std::string, std::string> listed;  // by key
    for (const std::string& category : categories_) {
        listed.emplace(CategoryKeyOf(field_, category), category);
    }
    std::set<std::string> named;
    for (RegressionTable& table : tables) {
        const auto category = listed.find(CategoryKeyOf(field_, table.category));
        if (category == listed.end()) {
            RefuseAt(table.element, kUnknownTableCategory, table.category.c_str(), name_.c_str(),
                     Listed(categories_).c_str());
        }
        table.category = category->second;
        if (!named.insert(table.category).second) {
            RefuseAt(table.element, kTableTwice, table.category.c_str());
        }
    }
}

RegressionShape RegressionTarget::Shape() const
{
    if (categories_.empty()) return RegressionShape::Number;
    // Of two categories there is one probability, and the order of the tables says whose.
    if (categories_.size() == 2) return RegressionShape::TwoCategories;
    return field_.Text(Tags::XML_ATT_DATAFIELD_OPTYPE) == kOrderedOptype
               ? RegressionShape::OrderedCategories
               : RegressionShape::Categories;
}

std::string RegressionTarget::TextOf(const std::string& category) const
{
    if (!IsNumericType(field_.Text(kDataType))) return category;
    return NumericValue(category).GetString();
}

}  // namespace MCVelscore_850
