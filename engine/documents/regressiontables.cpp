#include "engine/documents/regressiontables.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "engine/documents/vocabulary.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"
#include "host/messages/messages.h"
#include "host/messages/nearword.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kTable = "RegressionTable";
const std::string kMapMissingTo = "mapMissingTo";

// A misspelt attribute would count as one that is left out. Others' own are passed over.
void ExpectKnownAttributes(Element element)
{
    const ElementWord* word = FindElementWord(element.Tag());
    if (word == nullptr) return;
    const auto isKnown = [&](std::string_view name) {
        return std::any_of(word->attributes.begin(), word->attributes.end(),
                           [&](const AttributeWord& row) { return row.name == name; });
    };
    element.ForEachAttribute([&](Element::RawText raw, Element::RawText) {
        const std::string name = Utf8FromXml(raw.data());
        if (isKnown(name)) return;
        std::vector<std::string> known;
        for (const AttributeWord& row : word->attributes) known.emplace_back(row.name);
        const std::string meant = NearWord(name, known);
        if (meant.empty()) return;
        RefuseAt(element, kMisspeltAttribute, name.c_str(), element.Tag().c_str(), meant.c_str());
    });
}

std::string Required(Element element, const std::string& attribute)
{
    ExpectKnownAttributes(element);
    if (!element.Has(attribute)) {
        RefuseAt(element, kAbsent, attribute.c_str(), element.Tag().c_str());
    }
    return element.Text(attribute);
}

double FiniteNumber(Element element, const std::string& attribute)
{
    const std::optional<double> number = element.Number(attribute);
    if (!number || !std::isfinite(*number)) {
        RefuseAt(element, kNotFinite, element.Text(attribute).c_str(), attribute.c_str(),
                 element.Tag().c_str());
    }
    return *number;
}

std::string Coefficient(Element element)
{
    std::string text = Required(element, "coefficient");
    FiniteNumber(element, "coefficient");
    return text;
}

RegressionTerm ReadNumeric(Element element)
{
    const double exponent = element.Has("exponent") ? FiniteNumber(element, "exponent") : 1.0;
    return {element,
            Coefficient(element),
            {{.field = Required(element, "name"), .exponent = exponent}}};
}

RegressionTerm ReadCategorical(Element element)
{
    return {element,
            Coefficient(element),
            {{.field = Required(element, "name"), .category = Required(element, "value")}}};
}

RegressionTerm ReadProduct(Element element)
{
    RegressionTerm term{element, Coefficient(element), {}};
    for (const Element child : element.Children()) {
        if (child.Is(Tags::XML_ELE_EXTENSION)) continue;
        if (!child.Is("FieldRef")) {
            RefuseAt(child, kUnexpectedTableElement, child.Tag().c_str(), element.Tag().c_str());
        }
        TermFactor factor{.field = Required(child, "field")};
        if (child.Has(kMapMissingTo)) {
            FiniteNumber(child, kMapMissingTo);
            factor.mapMissingTo = child.Text(kMapMissingTo);
        }
        term.factors.push_back(std::move(factor));
    }
    if (term.factors.empty()) {
        RefuseAt(element, kAbsent, "FieldRef", element.Tag().c_str());
    }
    return term;
}

struct TermReader {
    std::string_view tag;
    RegressionTerm (*read)(Element);
};

constexpr TermReader kTermReaders[] = {
    {"NumericPredictor", ReadNumeric},
    {"CategoricalPredictor", ReadCategorical},
    {"PredictorTerm", ReadProduct},
};

RegressionTable ReadTable(Element element)
{
    ExpectKnownAttributes(element);
    RegressionTable table{element, element.Text("targetCategory"), "0", {}};
    if (element.Has("intercept")) {
        FiniteNumber(element, "intercept");
        table.intercept = element.Text("intercept");
    }
    for (const Element child : element.Children()) {
        if (child.Is(Tags::XML_ELE_EXTENSION)) continue;
        const auto* reader = std::find_if(std::begin(kTermReaders), std::end(kTermReaders),
                                          [&](const TermReader& row) { return child.Is(row.tag); });
        if (reader == std::end(kTermReaders)) {
            RefuseAt(child, kUnexpectedTableElement, child.Tag().c_str(), kTable.c_str());
        }
        table.terms.push_back(reader->read(child));
    }
    return table;
}

}  // namespace

bool RegressionTable::IsEmpty() const
{
    return terms.empty() && element.Number("intercept").value_or(0.0) == 0.0;  // exact: as written
}

std::vector<RegressionTable> ReadRegressionTables(Element model)
{
    ExpectKnownAttributes(model);
    std::vector<RegressionTable> tables;
    for (const Element child : model.Children(kTable)) tables.push_back(ReadTable(child));
    if (tables.empty()) RefuseAt(model, kAbsent, kTable.c_str(), model.Tag().c_str());
    return tables;
}

}  // namespace MCVelscore_850
