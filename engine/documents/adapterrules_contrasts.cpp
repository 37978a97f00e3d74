#include <algorithm>
#include <map>
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
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

constexpr size_t kMostNumbers = 100'000;  // of a matrix, each of which becomes a row of a table
constexpr std::string_view kCategoryColumn = "category";
constexpr std::string_view kContrastColumn = "contrast";

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
Contrasts ReadContrasts(Element predictor, Element field)
{
    Contrasts contrasts;
    const Element categories = predictor.Child(Tags::XML_ELE_GRM_CATEGORIES);
    for (const Element value :
         categories ? categories.Children(Tags::XML_ELE_GRM_CATEGORY).List() : ValidValues(field)) {
        contrasts.categories.push_back(value.Text(Tags::XML_ATT_VALUE));
    }
    for (const Element row : predictor.Child(Tags::XML_ELE_MATRIX).Children()) {
        contrasts.rows.push_back(Words(row.Content()));
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

Element ChildOrNew(Element model, std::string_view tag)
{
    const Element child = model.Child(tag);
    return child ? child : model.Append(tag);
}

// A derived field that is the number of the case's category in that column of the matrix.
void DeriveColumn(Element section, const std::string& name, const std::string& factor,
                  const Contrasts& contrasts, size_t column)
{
    const Element derived = section.Append("DerivedField");
    derived.SetText(Tags::XML_ATT_NAME, name);
    derived.SetText(Tags::XML_ATT_DATAFIELD_OPTYPE, Tags::XML_VAL_OT_CONTINUOUS);
    derived.SetText("dataType", "double");
    const Element map = derived.Append("MapValues");
    map.SetText("outputColumn", kContrastColumn);
    map.SetText("dataType", "double");
    const Element pair = map.Append("FieldColumnPair");
    pair.SetText("field", factor);
    pair.SetText("column", kCategoryColumn);
    const Element table = map.Append("InlineTable");
    for (size_t row = 0; row < contrasts.rows.size(); ++row) {
        const Element line = table.Append("row");
        line.Append(kCategoryColumn).SetContent(contrasts.categories[row]);
        line.Append(kContrastColumn).SetContent(contrasts.rows[row][column]);
    }
}

// Names that no field may get again.
std::set<std::string> FieldNames(Element root)
{
    std::set<std::string> names;
    for (const Element field : DataAndDerivedFields(root)) {
        names.insert(field.Text(Tags::XML_ATT_NAME));
    }
    return names;
}

// What the factors of a document have in common.
struct Parts {
    Element model;
    std::set<std::string> names;  // of fields
    std::unordered_map<std::string, Element> dataFields;
    std::unordered_map<std::string, Elements> cellsOf;  // by predictor
};

// Rewrites one factor; false where its cells need no matrix, or the reader should judge it.
bool SpreadFactor(Parts& document, Element predictor)
{
    Element model = document.model;
    const std::string factor = predictor.Text(Tags::XML_ATT_PRED_NAME);
    const auto field = document.dataFields.find(factor);
    const Contrasts contrasts =
        ReadContrasts(predictor, field == document.dataFields.end() ? Element() : field->second);
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
    const Elements& cells = document.cellsOf[factor];
    std::vector<size_t> columns;  // of each cell
    for (const Element cell : cells) {
        const auto column = columnOf.find(cell.Text(Tags::XML_ATT_PPC_VALUE));
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
            ChildOrNew(model, Tags::XML_ELE_COV_LIST)
                .Append(Tags::XML_ELE_PREDICTOR)
                .SetText(Tags::XML_ATT_PRED_NAME, name);
        }
        cells[i].SetText(Tags::XML_ATT_PPC_PREDNAME, name);
        cells[i].SetText(Tags::XML_ATT_PPC_VALUE, "1");
    }
    predictor.Erase();
    return true;
}

}  // namespace

std::optional<Change> SpreadContrasts(Element root)
{
    const Element model = ModelElement(root);
    if (!model || TakesContrasts(root)) return std::nullopt;
    Parts document{model, FieldNames(root), {}, {}};
    for (const Element field : DataFields(root)) {
        document.dataFields.emplace(field.Text(Tags::XML_ATT_NAME), field);
    }
    for (const Element cell :
         model.Child(Tags::XML_ELE_PP_MATRIX).Children(Tags::XML_ELE_PP_CELL)) {
        document.cellsOf[cell.Text(Tags::XML_ATT_PPC_PREDNAME)].push_back(cell);
    }
    std::vector<std::string> spread;
    DocumentPlace place;
    for (const Element predictor : Predictors(root, Tags::XML_ELE_FAC_LIST).List()) {
        const DocumentPlace at = predictor.Place();
        const std::string factor = predictor.Text(Tags::XML_ATT_PRED_NAME);
        if (!SpreadFactor(document, predictor)) continue;
        if (spread.empty()) place = at;
        spread.push_back(factor);
    }
    if (spread.empty()) return std::nullopt;
    return Change{place, "the contrasts of factor " + Listed(spread) +
                             " become derived covariates, one for each column of the matrix"};
}

}  // namespace MCVelscore_850
