#include <algorithm>
#include <map>
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
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kDerivedField = "DerivedField";
const std::string kDataType = "dataType";
const std::string kCategorical = "categorical";
const std::string kOrdinal = "ordinal";
const std::string kUnlistedCategories = "unlistedCategories";
const std::string kInvalidTreatment = "invalidValueTreatment";

std::set<std::string> PredictorNames(const xercesc::DOMElement* root, const std::string& list)
{
    std::set<std::string> names;
    for (const auto* predictor : Predictors(root, list)) {
        names.insert(AttributeText(predictor, Tags::XML_ATT_PRED_NAME));
    }
    return names;
}

// The categories that the cells of the PPMatrix name, by factor, each once.
std::map<std::string, std::vector<std::string>> CategoriesOfCells(const xercesc::DOMElement* root)
{
    std::map<std::string, std::vector<std::string>> categories;
    std::set<std::pair<std::string, std::string>> seen;
    const auto* matrix = ChildElement(ModelElement(root), Tags::XML_ELE_PP_MATRIX);
    for (const auto* cell : ChildElements(matrix, Tags::XML_ELE_PP_CELL)) {
        const std::string predictor = AttributeText(cell, Tags::XML_ATT_PPC_PREDNAME);
        const std::string value = AttributeText(cell, Tags::XML_ATT_PPC_VALUE);
        if (!value.empty() && seen.emplace(predictor, value).second) {
            categories[predictor].push_back(value);
        }
    }
    return categories;
}

// A contrast matrix or its categories, in any form; an extension of another name is none.
bool IsOfContrasts(const xercesc::DOMElement* child)
{
    return Utf8FromXml(child->getTagName()) != Tags::XML_ELE_EXTENSION ||
           AttributeText(child, Tags::XML_ATT_EXT_NAME) == Tags::XML_EXT_NAME_COXREG_CONTRASTMATRIX;
}

// The factors whose categories can come from cells: those without contrasts, which count
// categories and may list them.
std::set<std::string> FactorsWithoutContrasts(const xercesc::DOMElement* root)
{
    std::set<std::string> names;
    for (const auto* predictor : Predictors(root, Tags::XML_ELE_FAC_LIST)) {
        const auto* child = predictor->getFirstElementChild();
        while (child != nullptr && !IsOfContrasts(child)) child = child->getNextElementSibling();
        if (child == nullptr) names.insert(AttributeText(predictor, Tags::XML_ATT_PRED_NAME));
    }
    return names;
}

bool IsOpenText(const xercesc::DOMElement* field)
{
    const std::string optype = AttributeText(field, Tags::XML_ATT_DATAFIELD_OPTYPE);
    const std::string type = AttributeText(field, kDataType);
    return (optype == kCategorical || optype == kOrdinal) &&
           (type == "string" || type == "boolean") &&
           ChildElement(field, Tags::XML_ELE_VALUE) == nullptr;
}

xercesc::DOMElement* AppendElement(xercesc::DOMElement* parent, const std::string& tag)
{
    auto* element = parent->getOwnerDocument()->createElement(XmlFromUtf8(tag).c_str());
    parent->appendChild(element);
    return element;
}

// The dictionary's own extension by which a field takes values that it doesn't list.
void AcceptUnlisted(xercesc::DOMElement* field)
{
    auto* extension = AppendElement(field, Tags::XML_ELE_EXTENSION);
    SetAttributeText(extension, Tags::XML_ATT_EXTENSION_EXTENDER, Tags::XML_VAL_EXTENSION_EXTENDER);
    SetAttributeText(extension, Tags::XML_ATT_EXT_NAME, kUnlistedCategories);
    SetAttributeText(extension, Tags::XML_ATT_EXT_VALUE, "accept");
}

bool AcceptsUnlisted(const xercesc::DOMElement* field)
{
    for (const auto* extension : ChildElements(field, Tags::XML_ELE_EXTENSION)) {
        if (AttributeText(extension, Tags::XML_ATT_EXTENSION_EXTENDER) ==
                Tags::XML_VAL_EXTENSION_EXTENDER &&
            AttributeText(extension, Tags::XML_ATT_EXT_NAME) == kUnlistedCategories) {
            return true;
        }
    }
    return false;
}

// The same attributes with the same texts, and nothing within that could differ.
bool AreAlike(const xercesc::DOMElement* one, const xercesc::DOMElement* other)
{
    if (one->getFirstElementChild() != nullptr || other->getFirstElementChild() != nullptr) {
        return false;
    }
    const xercesc::DOMNamedNodeMap* attributes = one->getAttributes();
    if (attributes->getLength() != other->getAttributes()->getLength()) return false;
    for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
        const xercesc::DOMNode* attribute = attributes->item(i);
        const XMLCh* name = attribute->getNodeName();
        if (!other->hasAttribute(name)) return false;
        if (!xercesc::XMLString::equals(attribute->getNodeValue(), other->getAttribute(name))) {
            return false;
        }
    }
    return true;
}

// The names of the fields that are read as numbers: continuous ones of the dictionary, and derived
// ones of both transformation sections.
std::set<std::string> ContinuousFields(const xercesc::DOMElement* root)
{
    std::vector<xercesc::DOMElement*> fields = DataFields(root);
    for (const auto* section :
         {ChildElement(root, Tags::XML_ELE_TRANSFORMATION),
          ChildElement(ModelElement(root), Tags::XML_ELE_LOCALTRANSFORMATIONS)}) {
        const auto derived = ChildElements(section, kDerivedField);
        fields.insert(fields.end(), derived.begin(), derived.end());
    }
    std::set<std::string> names;
    for (const auto* field : fields) {
        if (AttributeText(field, Tags::XML_ATT_DATAFIELD_OPTYPE) == Tags::XML_VAL_OT_CONTINUOUS) {
            names.insert(AttributeText(field, Tags::XML_ATT_NAME));
        }
    }
    return names;
}

// True when the text is none of the data field's categories, those that its cells add among them.
// False for a field that takes any text, and for dates, whose texts have many spellings.
bool IsUnlisted(const std::string& text, const xercesc::DOMElement* field,
                const std::vector<std::string>& ofCells)
{
    const std::string type = AttributeText(field, kDataType);
    const bool isBoolean = type == "boolean";
    if (!isBoolean && type != "string" && !IsNumericType(type)) return false;
    if (ChildElement(field, Tags::XML_ELE_VALUE) == nullptr || AcceptsUnlisted(field)) return false;
    const auto isText = [&](const std::string& category) {
        return CategoryKey(field, text) == CategoryKey(field, category) ||
               (isBoolean && TruthOf(text) && TruthOf(text) == TruthOf(category));
    };
    std::vector<std::string> categories = ofCells;
    for (const auto* value : ValidValues(field)) {
        categories.push_back(AttributeText(value, Tags::XML_ATT_VALUE));
    }
    return !categories.empty() && std::none_of(categories.begin(), categories.end(), isText);
}

}  // namespace

std::optional<Change> DropRepeatedMiningFields(xercesc::DOMElement* root)
{
    std::unordered_map<std::string, const xercesc::DOMElement*> seen;
    std::vector<std::string> names;
    DocumentPlace place;
    for (auto* field : MiningFields(root)) {
        const std::string name = AttributeText(field, Tags::XML_ATT_MININGFIELD_NAME);
        const auto [first, isNew] = seen.emplace(name, field);
        if (isNew || !AreAlike(first->second, field)) continue;
        if (names.empty()) place = PlaceOf(field);
        names.push_back(name);
        field->getParentNode()->removeChild(field)->release();
    }
    if (names.empty()) return std::nullopt;
    return Change{place, "mining field " + Listed(names) + " stands twice alike and counts once"};
}

std::optional<Change> MakeNumericCovariatesContinuous(xercesc::DOMElement* root)
{
    const std::set<std::string> covariates = PredictorNames(root, Tags::XML_ELE_COV_LIST);
    if (covariates.empty()) return std::nullopt;
    const std::set<std::string> factors = PredictorNames(root, Tags::XML_ELE_FAC_LIST);
    std::vector<std::string> names;
    DocumentPlace place;
    for (auto* field : DataFields(root)) {
        const std::string name = AttributeText(field, Tags::XML_ATT_NAME);
        // a field that is a factor too can't be both, and the reader says so
        if (!covariates.contains(name) || factors.contains(name)) continue;
        if (AttributeText(field, Tags::XML_ATT_DATAFIELD_OPTYPE) != kCategorical) continue;
        if (!IsNumericType(AttributeText(field, kDataType))) continue;
        SetAttributeText(field, Tags::XML_ATT_DATAFIELD_OPTYPE, Tags::XML_VAL_OT_CONTINUOUS);
        if (names.empty()) place = PlaceOf(field);
        names.push_back(name);
    }
    if (names.empty()) return std::nullopt;
    return Change{place, "covariate " + Listed(names) +
                             " holds numbers: optype \"categorical\" is read as \"continuous\""};
}

std::optional<Change> DropReplacementsThatAreNoNumbers(xercesc::DOMElement* root)
{
    std::vector<xercesc::DOMElement*> fields = MiningFields(root);
    const auto* schema = ChildElement(ModelElement(root), Tags::XML_ELE_MININGSCHEMA);
    for (const auto* extension : ChildElements(schema, Tags::XML_ELE_EXTENSION)) {
        const auto nested = ChildElements(extension, Tags::XML_ELE_MININGFIELD);
        fields.insert(fields.end(), nested.begin(), nested.end());
    }
    const std::set<std::string> continuous = ContinuousFields(root);
    std::vector<std::string> names;
    std::string firstText;
    DocumentPlace place;
    const auto drop = [&](xercesc::DOMElement* field, const std::string& attribute) {
        const std::string text = AttributeText(field, attribute);
        double number = 0.0;
        // A number that is too large is one all the same: the reader refuses it.
        if (text.empty() || ReadNumber(text, number) != NumberText::NotANumber) return false;
        const std::string name = AttributeText(field, Tags::XML_ATT_MININGFIELD_NAME);
        if (!continuous.contains(name)) return false;
        if (names.empty()) {
            place = PlaceOf(field);
            firstText = attribute;
            firstText.append(" \"").append(text).append("\"");
        }
        names.push_back(name);
        field->removeAttribute(XmlFromUtf8(attribute).c_str());
        return true;
    };
    for (auto* field : fields) {
        drop(field, Tags::XML_ATT_MININGFIELD_MISSREPLACE);
        // Without its replacement the treatment says nothing.
        if (AttributeText(field, kInvalidTreatment) == "asValue" &&
            drop(field, "invalidValueReplacement")) {
            field->removeAttribute(XmlFromUtf8(kInvalidTreatment).c_str());
        }
    }
    if (names.empty()) return std::nullopt;
    return Change{place, firstText + " of " + Listed(names) + " is no number and is dropped"};
}

std::optional<Change> NoteUnlistedReplacements(xercesc::DOMElement* root)
{
    // Where a contrast matrix gives every category a row there is nothing to meet.
    const std::set<std::string> factors = TakesContrasts(root)
                                              ? FactorsWithoutContrasts(root)
                                              : PredictorNames(root, Tags::XML_ELE_FAC_LIST);
    if (factors.empty()) return std::nullopt;
    auto cells = CategoriesOfCells(root);
    std::map<std::string, const xercesc::DOMElement*> dataFields;
    for (const auto* field : DataFields(root)) {
        dataFields.emplace(AttributeText(field, Tags::XML_ATT_NAME), field);
    }
    std::vector<std::string> names;
    std::string firstText;
    DocumentPlace place;
    for (const auto* field : MiningFields(root)) {
        const std::string name = AttributeText(field, Tags::XML_ATT_MININGFIELD_NAME);
        const auto dataField = dataFields.find(name);
        if (!factors.contains(name) || dataField == dataFields.end()) continue;
        std::vector<std::string> texts{AttributeText(field, Tags::XML_ATT_MININGFIELD_MISSREPLACE)};
        if (AttributeText(field, kInvalidTreatment) == "asValue") {
            texts.push_back(AttributeText(field, "invalidValueReplacement"));
        }
        for (const std::string& text : texts) {
            if (text.empty() || !IsUnlisted(text, dataField->second, cells[name])) continue;
            if (names.empty()) {
                place = PlaceOf(field);
                firstText = text;
            }
            names.push_back(name);
            break;
        }
    }
    if (names.empty()) return std::nullopt;
    return Change{place, "replacement \"" + firstText + "\" of " + Listed(names) +
                             " is none of its categories: a row that takes it is scored, and no "
                             "category of the factor is met"};
}

std::optional<Change> AcceptValuesAsIs(xercesc::DOMElement* root)
{
    const std::set<std::string> factors = FactorsWithoutContrasts(root);
    std::set<std::string> asIs;
    for (const auto* field : MiningFields(root)) {
        const std::string usage = AttributeText(field, Tags::XML_ATT_MININGFIELD_USAGETYPE);
        if (AttributeText(field, kInvalidTreatment) != "asIs") continue;
        if (!usage.empty() && usage != Tags::XML_ATT_MF_FUT_ACTIVE) continue;
        asIs.insert(AttributeText(field, Tags::XML_ATT_MININGFIELD_NAME));
    }
    std::vector<std::string> names;
    DocumentPlace place;
    for (auto* field : DataFields(root)) {
        const std::string name = AttributeText(field, Tags::XML_ATT_NAME);
        if (!asIs.contains(name)) continue;
        const auto intervals = ChildElements(field, "Interval");
        const bool isFactorOfTexts =
            factors.contains(name) && AttributeText(field, kDataType) == "string" &&
            ChildElement(field, Tags::XML_ELE_VALUE) != nullptr && !AcceptsUnlisted(field);
        if (intervals.empty() && !isFactorOfTexts) continue;
        for (auto* interval : intervals) field->removeChild(interval)->release();
        if (isFactorOfTexts) AcceptUnlisted(field);
        if (names.empty()) place = PlaceOf(field);
        names.push_back(name);
    }
    if (names.empty()) return std::nullopt;
    return Change{place,
                  "invalidValueTreatment \"asIs\": " + Listed(names) +
                      " takes values out of its intervals or categories, of which the latter "
                      "count as the reference"};
}

std::optional<Change> ListCategoriesOfCells(xercesc::DOMElement* root)
{
    const std::set<std::string> factors = FactorsWithoutContrasts(root);
    if (factors.empty()) return std::nullopt;
    const auto categories = CategoriesOfCells(root);
    std::vector<std::string> names;
    DocumentPlace place;
    for (auto* field : DataFields(root)) {
        const std::string name = AttributeText(field, Tags::XML_ATT_NAME);
        const auto found = categories.find(name);
        if (!factors.contains(name) || found == categories.end() || !IsOpenText(field)) continue;
        AcceptUnlisted(field);
        for (const std::string& category : found->second) {
            SetAttributeText(AppendElement(field, Tags::XML_ELE_VALUE), Tags::XML_ATT_VALUE,
                             category);
        }
        if (names.empty()) place = PlaceOf(field);
        names.push_back(name);
    }
    if (names.empty()) return std::nullopt;
    Change change{place, "factor " + Listed(names) +
                             " lists no values: those of its cells are taken, and any other value "
                             "counts as the reference"};
    change.listedByCells = std::move(names);
    return change;
}

}  // namespace MCVelscore_850
