#include "engine/documents/verificationsection.h"

#include <unordered_map>

#include <fmt/format.h>

#include "engine/documents/documenttree.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/names.h"
#include "engine/documents/treewriting.h"
#include "engine/messages/failure.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

using Tags = PMMLModelTags;

namespace {

const std::string kSection = "ModelVerification";
const std::string kFields = "VerificationFields";
const std::string kField = "VerificationField";
const std::string kTable = "InlineTable";
const std::string kRow = "row";
const std::string kFieldName = "field";
const std::string kColumn = "column";
const std::string kPrecision = "precision";
const std::string kZeroThreshold = "zeroThreshold";

Element ForcedChild(Element parent, const std::string& tag)
{
    if (const Element child = parent.Child(tag)) return child;
    RefuseAt(parent, kAbsent, tag.c_str(), parent.Tag().c_str());
}

void ReadShare(Element field, const std::string& attribute, double& share)
{
    const std::string text = field.Text(attribute);
    if (text.empty()) return;
    if (ReadNumber(text, share) == NumberText::Number && share >= 0.0) return;
    RefuseAt(field, kNotANumber, text.c_str(), attribute.c_str());
}

}  // namespace

std::unique_ptr<VerificationTable> ReadVerification(const Document& document)
{
    const Element section = ModelElement(document.Root()).Child(kSection);
    if (!section) return nullptr;
    if (section.Child("TableLocator")) {
        RefuseAt(section, kExpressionNotSupported, "TableLocator", kSection.c_str());
    }
    auto table = std::make_unique<VerificationTable>();
    std::unordered_map<std::string, size_t> places;  // of the columns' elements
    for (const Element element : ForcedChild(section, kFields).Children(kField)) {
        VerificationTable::Field field;
        field.name = element.Text(kFieldName);
        field.place = element.Place();
        ReadShare(element, kPrecision, field.precision);
        ReadShare(element, kZeroThreshold, field.zeroThreshold);
        std::string column = element.Text(kColumn);
        if (column.empty()) column = field.name;
        places.emplace(LocalNameOf(column), table->fields.size());
        table->fields.push_back(std::move(field));
    }
    for (const Element row : ForcedChild(section, kTable).Children(kRow)) {
        std::vector<std::string> record(table->fields.size());
        for (const Element cell : row.Children()) {
            const auto found = places.find(std::string(LocalNameOf(cell.Tag())));
            if (found != places.end()) record[found->second] = TrimBlanks(cell.Content());
        }
        table->records.push_back(std::move(record));
    }
    return table;
}

std::string TextWithVerification(const std::string& path, const VerificationTable& table)
{
    const Document document = LoadDocument(path);
    const Element model = ModelElement(document.Root());
    if (!model) {
        throw Failure(FailureKind::Document, kNotAModelDocument,
                      {document.File(), document.RootName()});
    }
    if (Element old = model.Child(kSection)) old.Erase();
    const Element section = model.Append(kSection);
    // Before the extensions that may end a model.
    Element place;
    for (Element last = section.PreviousSibling();
         LocalNameOf(last.Tag()) == Tags::XML_ELE_EXTENSION; last = last.PreviousSibling()) {
        place = last;
    }
    if (place) model.Insert(section, place);
    section.SetText("recordCount", std::to_string(table.records.size()));
    section.SetText("fieldCount", std::to_string(table.fields.size()));
    const Element fields = section.Append(kFields);
    std::vector<std::string> columns;
    for (const VerificationTable::Field& field : table.fields) {
        columns.push_back(fmt::format("c{}", columns.size() + 1));
        const Element element = fields.Append(kField);
        element.SetText(kFieldName, field.name);
        element.SetText(kColumn, columns.back());
        std::string precision;
        AppendNumber(field.precision, precision);
        element.SetText(kPrecision, precision);
    }
    const Element rows = section.Append(kTable);
    for (const std::vector<std::string>& record : table.records) {
        const Element row = rows.Append(kRow);
        for (size_t i = 0; i < record.size(); ++i) {
            if (record[i].empty()) continue;  // a cell that isn't there is a missing value
            row.Append(columns[i]).SetContent(record[i]);
        }
    }
    return TreeText(*document.GetTree().dom);
}

}  // namespace MCVelscore_850
