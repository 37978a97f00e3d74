#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/documents/adapterrules.h"
#include "engine/documents/names.h"
#include "engine/documents/ownextensions.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/values/numbertext.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

constexpr std::string_view kDataType = "dataType";
constexpr std::string_view kCategorical = "categorical";
constexpr std::string_view kInvalidTreatment = "invalidValueTreatment";
constexpr std::string_view kDiscreteOptypes[] = {kCategorical, "ordinal"};
constexpr std::string_view kWordTypes[] = {"string", "boolean"};
// A mining field without a usageType is an active one.
const std::string_view kActiveUsages[] = {"", Tags::XML_ATT_MF_FUT_ACTIVE};

// The categories that the cells of the PPMatrix name, by factor, each once.
std::map<std::string, std::vector<std::string>> CategoriesOfCells(Element root)
{
    std::map<std::string, std::vector<std::string>> categories;
    std::set<std::pair<std::string, std::string>> seen;
    const Element matrix = ModelElement(root).Child(Tags::XML_ELE_PP_MATRIX);
    for (const Element cell : matrix.Children(Tags::XML_ELE_PP_CELL)) {
        const std::string predictor = cell.Text(Tags::XML_ATT_PPC_PREDNAME);
        const std::string value = cell.Text(Tags::XML_ATT_PPC_VALUE);
        if (!value.empty() && seen.emplace(predictor, value).second) {
            categories[predictor].push_back(value);
        }
    }
    return categories;
}

// A contrast matrix or its categories, in any form; an extension of another name is none.
bool IsOfContrasts(Element child)
{
    return !child.Is(Tags::XML_ELE_EXTENSION) ||
           child.Text(Tags::XML_ATT_EXT_NAME) == Tags::XML_EXT_NAME_COXREG_CONTRASTMATRIX;
}

// The factors whose categories can come from cells: those without contrasts, which count
// categories and may list them.
std::set<std::string> FactorsWithoutContrasts(Element root)
{
    std::set<std::string> names;
    for (const Element predictor : Predictors(root, Tags::XML_ELE_FAC_LIST)) {
        const ElementRange children = predictor.Children();
        if (std::none_of(children.begin(), children.end(), IsOfContrasts)) {
            names.insert(predictor.Text(Tags::XML_ATT_PRED_NAME));
        }
    }
    return names;
}

bool IsOpenText(Element field)
{
    return IsOneOf(field.Text(Tags::XML_ATT_DATAFIELD_OPTYPE), kDiscreteOptypes) &&
           IsOneOf(field.Text(kDataType), kWordTypes) && !field.Child(Tags::XML_ELE_VALUE);
}

std::map<Element::RawText, Element::RawText> AttributesOf(Element element)
{
    std::map<Element::RawText, Element::RawText> attributes;
    element.ForEachAttribute([&](auto name, auto text) { attributes.emplace(name, text); });
    return attributes;
}

// Whether nothing within it is read: what other makers put into Extensions is left out later.
bool IsEmptyToReaders(Element element)
{
    const ElementRange children = element.Children();
    return std::all_of(children.begin(), children.end(), [](Element child) {
        return child.Is(Tags::XML_ELE_EXTENSION) && ExtenderOf(child) == Extender::Another;
    });
}

// The same attributes with the same texts, and nothing within that could differ.
bool AreAlike(Element one, Element other)
{
    return IsEmptyToReaders(one) && IsEmptyToReaders(other) &&
           AttributesOf(one) == AttributesOf(other);
}

// The names of the fields that are read as numbers, derived ones among them.
std::set<std::string> ContinuousFields(Element root)
{
    std::set<std::string> names;
    for (const Element field : DataAndDerivedFields(root)) {
        if (field.Text(Tags::XML_ATT_DATAFIELD_OPTYPE) == Tags::XML_VAL_OT_CONTINUOUS) {
            names.insert(field.Text(Tags::XML_ATT_NAME));
        }
    }
    return names;
}

// True when the text is none of the data field's categories, those that its cells add among them.
// False for a field that takes any text, and for dates, whose texts have many spellings.
bool IsUnlisted(const std::string& text, Element field, const std::vector<std::string>& ofCells)
{
    const std::string type = field.Text(kDataType);
    const bool isBoolean = type == "boolean";
    if (!IsOneOf(type, kWordTypes) && !IsNumericType(type)) return false;
    if (!field.Child(Tags::XML_ELE_VALUE) || AcceptsUnlisted(field)) return false;
    const auto isText = [&](const std::string& category) {
        return CategoryKey(field, text) == CategoryKey(field, category) ||
               (isBoolean && TruthOf(text) && TruthOf(text) == TruthOf(category));
    };
    std::vector<std::string> categories = ofCells;
    for (const Element value : ValidValues(field)) {
        categories.push_back(value.Text(Tags::XML_ATT_VALUE));
    }
    return !categories.empty() && std::none_of(categories.begin(), categories.end(), isText);
}

}  // namespace

std::optional<Change> DropRepeatedMiningFields(Element root)
{
    std::unordered_map<std::string, Element> seen;
    std::vector<std::string> names;
    DocumentPlace place;
    for (Element field : MiningFields(root).List()) {
        const std::string name = field.Text(Tags::XML_ATT_MININGFIELD_NAME);
        const auto [first, isNew] = seen.emplace(name, field);
        if (isNew || !AreAlike(first->second, field)) continue;
        if (names.empty()) place = field.Place();
        names.push_back(name);
        field.Erase();
    }
    if (names.empty()) return std::nullopt;
    return Change{place, "mining field " + Listed(names) + " stands twice alike and counts once"};
}

std::optional<Change> MakeNumericCovariatesContinuous(Element root)
{
    const std::set<std::string> covariates = NamesOf(Predictors(root, Tags::XML_ELE_COV_LIST));
    if (covariates.empty()) return std::nullopt;
    const std::set<std::string> factors = NamesOf(Predictors(root, Tags::XML_ELE_FAC_LIST));
    std::vector<std::string> names;
    DocumentPlace place;
    for (const Element field : DataFields(root)) {
        const std::string name = field.Text(Tags::XML_ATT_NAME);
        // a field that is a factor too can't be both, and the reader says so
        if (!covariates.contains(name) || factors.contains(name)) continue;
        if (field.Text(Tags::XML_ATT_DATAFIELD_OPTYPE) != kCategorical) continue;
        if (!IsNumericType(field.Text(kDataType))) continue;
        field.SetText(Tags::XML_ATT_DATAFIELD_OPTYPE, Tags::XML_VAL_OT_CONTINUOUS);
        if (names.empty()) place = field.Place();
        names.push_back(name);
    }
    if (names.empty()) return std::nullopt;
    return Change{place, "covariate " + Listed(names) +
                             " holds numbers: optype \"categorical\" is read as \"continuous\""};
}

std::optional<Change> DropReplacementsThatAreNoNumbers(Element root)
{
    Elements fields = MiningFields(root).List();
    const Element schema = ModelElement(root).Child(Tags::XML_ELE_MININGSCHEMA);
    for (const Element extension : schema.Children(Tags::XML_ELE_EXTENSION)) {
        const ElementRange nested = extension.Children(Tags::XML_ELE_MININGFIELD);
        fields.insert(fields.end(), nested.begin(), nested.end());
    }
    const std::set<std::string> continuous = ContinuousFields(root);
    std::vector<std::string> names;
    std::string firstText;
    DocumentPlace place;
    const auto drop = [&](Element field, const std::string& attribute) {
        const std::string text = field.Text(attribute);
        double number = 0.0;
        // A number that is too large is one all the same: the reader refuses it.
        if (text.empty() || ReadNumber(text, number) != NumberText::NotANumber) return false;
        const std::string name = field.Text(Tags::XML_ATT_MININGFIELD_NAME);
        if (!continuous.contains(name)) return false;
        if (names.empty()) {
            place = field.Place();
            firstText = attribute;
            firstText.append(" \"").append(text).append("\"");
        }
        names.push_back(name);
        field.RemoveAttribute(attribute);
        return true;
    };
    for (const Element field : fields) {
        drop(field, Tags::XML_ATT_MININGFIELD_MISSREPLACE);
        // Without its replacement the treatment says nothing.
        if (field.Text(kInvalidTreatment) == "asValue" && drop(field, "invalidValueReplacement")) {
            field.RemoveAttribute(kInvalidTreatment);
        }
    }
    if (names.empty()) return std::nullopt;
    return Change{place, firstText + " of " + Listed(names) + " is no number and is dropped"};
}

std::optional<Change> NoteUnlistedReplacements(Element root)
{
    // Where a contrast matrix gives every category a row there is nothing to meet.
    const std::set<std::string> factors = TakesContrasts(root)
                                              ? FactorsWithoutContrasts(root)
                                              : NamesOf(Predictors(root, Tags::XML_ELE_FAC_LIST));
    if (factors.empty()) return std::nullopt;
    auto cells = CategoriesOfCells(root);
    std::map<std::string, Element> dataFields;
    for (const Element field : DataFields(root)) {
        dataFields.emplace(field.Text(Tags::XML_ATT_NAME), field);
    }
    std::vector<std::string> names;
    std::string firstText;
    DocumentPlace place;
    for (const Element field : MiningFields(root)) {
        const std::string name = field.Text(Tags::XML_ATT_MININGFIELD_NAME);
        const auto dataField = dataFields.find(name);
        if (!factors.contains(name) || dataField == dataFields.end()) continue;
        std::vector<std::string> texts{field.Text(Tags::XML_ATT_MININGFIELD_MISSREPLACE)};
        if (field.Text(kInvalidTreatment) == "asValue") {
            texts.push_back(field.Text("invalidValueReplacement"));
        }
        for (const std::string& text : texts) {
            if (text.empty() || !IsUnlisted(text, dataField->second, cells[name])) continue;
            if (names.empty()) {
                place = field.Place();
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

std::optional<Change> AcceptValuesAsIs(Element root)
{
    const std::set<std::string> factors = FactorsWithoutContrasts(root);
    std::set<std::string> asIs;
    for (const Element field : MiningFields(root)) {
        const std::string usage = field.Text(Tags::XML_ATT_MININGFIELD_USAGETYPE);
        if (field.Text(kInvalidTreatment) != "asIs" || !IsOneOf(usage, kActiveUsages)) continue;
        asIs.insert(field.Text(Tags::XML_ATT_MININGFIELD_NAME));
    }
    std::vector<std::string> names;
    DocumentPlace place;
    for (const Element field : DataFields(root)) {
        const std::string name = field.Text(Tags::XML_ATT_NAME);
        if (!asIs.contains(name)) continue;
        const Elements intervals = field.Children("Interval").List();
        const bool isFactorOfTexts = factors.contains(name) && field.Text(kDataType) == "string" &&
                                     field.Child(Tags::XML_ELE_VALUE) && !AcceptsUnlisted(field);
        if (intervals.empty() && !isFactorOfTexts) continue;
        for (Element interval : intervals) interval.Erase();
        if (isFactorOfTexts) AcceptUnlisted(field);
        if (names.empty()) place = field.Place();
        names.push_back(name);
    }
    if (names.empty()) return std::nullopt;
    return Change{place,
                  "invalidValueTreatment \"asIs\": " + Listed(names) +
                      " takes values out of its intervals or categories, of which the latter "
                      "count as the reference"};
}

std::optional<Change> ListCategoriesOfCells(Element root)
{
    const std::set<std::string> factors = FactorsWithoutContrasts(root);
    if (factors.empty()) return std::nullopt;
    const auto categories = CategoriesOfCells(root);
    std::vector<std::string> names;
    DocumentPlace place;
    for (const Element field : DataFields(root)) {
        const std::string name = field.Text(Tags::XML_ATT_NAME);
        const auto found = categories.find(name);
        if (!factors.contains(name) || found == categories.end() || !IsOpenText(field)) continue;
        AcceptUnlisted(field);
        for (const std::string& category : found->second) {
            field.Append(Tags::XML_ELE_VALUE).SetText(Tags::XML_ATT_VALUE, category);
        }
        if (names.empty()) place = field.Place();
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
