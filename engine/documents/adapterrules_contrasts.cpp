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
#include "host/messages/messages.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using xercesc::DOMElement;

constexpr size_t kMostNumbers = 100'000;  // of a matrix, each of which becomes a row of a table
const std::string kCategoryColumn = "category";
const std::string kContrastColumn = "contrast";

// A contrast matrix in the published form: a row a category, in the categories' order.
struct Contrasts {
    std::vector<std::string> categories;
    std::vector<std::vector<std::string>> rows;  // the numbers as they are written
};

std::vector<std::string> Words(const std::string& text)
{
    constexpr const char* kBlanks = " \t\r\n";
    std::vector<std::string> words;
    size_t at = text.find_first_not_of(kBlanks);
    while (at != std::string::npos) {
        const size_t end = std::min(text.find_first_of(kBlanks, at), text.size());
        words.push_back(text.substr(at, end - at));
        at = text.find_first_not_of(kBlanks, end);
    }
    return words;
}

// No rows when the matrix isn't whole: the reader then tells what is wrong with it.
Contrasts ReadContrasts(const DOMElement* predictor, const DOMElement* field)
{
    Contrasts contrasts;
    const DOMElement* categories = ChildElement(predictor, Tags::XML_ELE_GRM_CATEGORIES);
    for (const DOMElement* value : categories == nullptr
                                       ? ValidValues(field)
                                       : ChildElements(categories, Tags::XML_ELE_GRM_CATEGORY)) {
        contrasts.categories.push_back(AttributeText(value, Tags::XML_ATT_VALUE));
    }
    const DOMElement* matrix = ChildElement(predictor, Tags::XML_ELE_MATRIX);
    if (matrix == nullptr) return {};
    for (const auto* row = matrix->getFirstElementChild(); row != nullptr;
         row = row->getNextElementSibling()) {
        contrasts.rows.push_back(Words(Utf8FromXml(row->getTextContent())));
        double number = 0.0;
        for (const std::string& word : contrasts.rows.back()) {
            if (ReadNumber(word, number) != NumberText::Number) return {};
        }
    }
    if (contrasts.rows.size() != contrasts.categories.size()) return {};
    return contrasts;
}

// The cells say the same without the matrix: each of their columns marks its own category alone.
bool IsIndicator(const Contrasts& contrasts, const std::vector<size_t>& columns)
{
    for (const size_t column : std::set<size_t>(columns.begin(), columns.end())) {
        for (size_t row = 0; row < contrasts.rows.size(); ++row) {
            double number = 0.0;
            ReadNumber(contrasts.rows[row][column], number);
            if (number != (row == column ? 1.0 : 0.0)) return false;
        }
    }
    return true;
}

DOMElement* Append(DOMElement* parent, const std::string& tag)
{
    auto* element = parent->getOwnerDocument()->createElement(XmlFromUtf8(tag).c_str());
    parent->appendChild(element);
    return element;
}

void AppendText(DOMElement* parent, const std::string& tag, const std::string& text)
{
    Append(parent, tag)->setTextContent(XmlFromUtf8(text).c_str());
}

DOMElement* ChildOrNew(DOMElement* model, const std::string& tag)
{
    DOMElement* child = ChildElement(model, tag);
    return child != nullptr ? child : Append(model, tag);
}

// A derived field that is the number of the case's category in that column of the matrix.
void DeriveColumn(DOMElement* section, const std::string& name, const std::string& factor,
                  const Contrasts& contrasts, size_t column)
{
    DOMElement* derived = Append(section, "DerivedField");
    SetAttributeText(derived, Tags::XML_ATT_NAME, name);
    SetAttributeText(derived, Tags::XML_ATT_DATAFIELD_OPTYPE, Tags::XML_VAL_OT_CONTINUOUS);
    SetAttributeText(derived, "dataType", "double");
    DOMElement* map = Append(derived, "MapValues");
    SetAttributeText(map, "outputColumn", kContrastColumn);
    SetAttributeText(map, "dataType", "double");
    DOMElement* pair = Append(map, "FieldColumnPair");
    SetAttributeText(pair, "field", factor);
    SetAttributeText(pair, "column", kCategoryColumn);
    DOMElement* table = Append(map, "InlineTable");
    for (size_t row = 0; row < contrasts.rows.size(); ++row) {
        DOMElement* line = Append(table, "row");
        AppendText(line, kCategoryColumn, contrasts.categories[row]);
        AppendText(line, kContrastColumn, contrasts.rows[row][column]);
    }
}

// Names that no field may get again.
std::set<std::string> FieldNames(const DOMElement* root)
{
    std::vector<DOMElement*> fields = DataFields(root);
    for (const auto* section :
         {ChildElement(root, Tags::XML_ELE_TRANSFORMATION),
          ChildElement(ModelElement(root), Tags::XML_ELE_LOCALTRANSFORMATIONS)}) {
        const auto derived = ChildElements(section, "DerivedField");
        fields.insert(fields.end(), derived.begin(), derived.end());
    }
    std::set<std::string> names;
    for (const auto* field : fields) names.insert(AttributeText(field, Tags::XML_ATT_NAME));
    return names;
}

// What the factors of a document have in common.
struct Parts {
    DOMElement* model;
    std::set<std::string> names;  // of fields
    std::unordered_map<std::string, const DOMElement*> dataFields;
    std::unordered_map<std::string, std::vector<DOMElement*>> cellsOf;  // by predictor
};

// Rewrites one factor; false where its cells need no matrix, or the reader should judge it.
bool SpreadFactor(Parts& document, DOMElement* predictor)
{
    DOMElement* model = document.model;
    const std::string factor = AttributeText(predictor, Tags::XML_ATT_PRED_NAME);
    const auto field = document.dataFields.find(factor);
    const Contrasts contrasts =
        ReadContrasts(predictor, field == document.dataFields.end() ? nullptr : field->second);
    if (contrasts.rows.empty()) return false;
    const size_t width = contrasts.rows.front().size();
    if (std::any_of(contrasts.rows.begin(), contrasts.rows.end(),
                    [&](const auto& row) { return row.size() != width; })) {
        return false;
    }
    std::unordered_map<std::string, size_t> columnOf;
    for (size_t i = 0; i < width && i < contrasts.categories.size(); ++i) {
        columnOf.emplace(contrasts.categories[i], i);
    }
    const std::vector<DOMElement*>& cells = document.cellsOf[factor];
    std::vector<size_t> columns;  // of each cell
    for (const auto* cell : cells) {
        const auto column = columnOf.find(AttributeText(cell, Tags::XML_ATT_PPC_VALUE));
        if (column == columnOf.end()) return false;
        columns.push_back(column->second);
    }
    if (cells.empty() || IsIndicator(contrasts, columns)) return false;

    const std::set<size_t> distinct(columns.begin(), columns.end());
    if (distinct.size() > kMostNumbers / contrasts.rows.size()) {
        RefuseAt(predictor, kContrastsTooLarge, factor.c_str(), static_cast<int>(kMostNumbers));
    }

    std::map<size_t, std::string> derived;  // by column
    for (size_t i = 0; i < cells.size(); ++i) {
        std::string& name = derived[columns[i]];
        if (name.empty()) {
            name = factor + "[" + contrasts.categories[columns[i]] + "]";
            while (!document.names.insert(name).second) name += "'";
            DeriveColumn(ChildOrNew(model, Tags::XML_ELE_LOCALTRANSFORMATIONS), name, factor,
                         contrasts, columns[i]);
            SetAttributeText(
                Append(ChildOrNew(model, Tags::XML_ELE_COV_LIST), Tags::XML_ELE_PREDICTOR),
                Tags::XML_ATT_PRED_NAME, name);
        }
        SetAttributeText(cells[i], Tags::XML_ATT_PPC_PREDNAME, name);
        SetAttributeText(cells[i], Tags::XML_ATT_PPC_VALUE, "1");
    }
    predictor->getParentNode()->removeChild(predictor)->release();
    return true;
}

}  // namespace

std::optional<Change> SpreadContrasts(DOMElement* root)
{
    const DOMElement* model = ModelElement(root);
    if (model == nullptr || TakesContrasts(root)) return std::nullopt;
    Parts document{ModelElement(root), FieldNames(root), {}, {}};
    for (const auto* field : DataFields(root)) {
        document.dataFields.emplace(AttributeText(field, Tags::XML_ATT_NAME), field);
    }
    for (auto* cell :
         ChildElements(ChildElement(model, Tags::XML_ELE_PP_MATRIX), Tags::XML_ELE_PP_CELL)) {
        document.cellsOf[AttributeText(cell, Tags::XML_ATT_PPC_PREDNAME)].push_back(cell);
    }
    std::vector<std::string> spread;
    DocumentPlace place;
    for (auto* predictor : Predictors(root, Tags::XML_ELE_FAC_LIST)) {
        const DocumentPlace at = PlaceOf(predictor);
        const std::string factor = AttributeText(predictor, Tags::XML_ATT_PRED_NAME);
        if (!SpreadFactor(document, predictor)) continue;
        if (spread.empty()) place = at;
        spread.push_back(factor);
    }
    if (spread.empty()) return std::nullopt;
    return Change{place, "the contrasts of factor " + Listed(spread) +
                             " become derived covariates, one for each column of the matrix"};
}

}  // namespace MCVelscore_850
