#include "engine/documents/verificationsection.h"

#include <unordered_map>

#include <fmt/format.h>
#include <xercesc/dom/DOM.hpp>

#include "engine/documents/documenttree.h"
#include "engine/documents/treetext.h"
#include "engine/documents/treewriting.h"
#include "engine/messages/failure.h"
#include "host/documents/documentplace.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
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

const DOMElement* ForcedChild(const DOMElement* parent, const std::string& tag)
{
    const DOMElement* child = ChildElement(parent, tag);
    if (child != nullptr) return child;
    RefuseAt(parent, kAbsent, tag.c_str(), Utf8FromXml(parent->getTagName()).c_str());
}

void ReadShare(const DOMElement* field, const std::string& attribute, double& share)
{
    const std::string text = AttributeText(field, attribute);
    if (text.empty()) return;
    if (ReadNumber(text, share) == NumberText::Number && share >= 0.0) return;
    RefuseAt(field, kNotANumber, text.c_str(), attribute.c_str());
}

}  // namespace

std::unique_ptr<VerificationTable> ReadVerification(const Document& document)
{
    const DOMElement* root = document.GetTree().dom->getDocumentElement();
    const DOMElement* section = ChildElement(ModelElement(root), kSection);
    if (section == nullptr) return nullptr;
    if (ChildElement(section, "TableLocator") != nullptr) {
        RefuseAt(section, kExpressionNotSupported, "TableLocator", kSection.c_str());
    }
    auto table = std::make_unique<VerificationTable>();
    std::unordered_map<std::string, size_t> places;  // of the columns' elements
    for (const DOMElement* element : ChildElements(ForcedChild(section, kFields), kField)) {
        VerificationTable::Field field;
        field.name = AttributeText(element, kFieldName);
        field.place = PlaceOf(element);
        ReadShare(element, kPrecision, field.precision);
        ReadShare(element, kZeroThreshold, field.zeroThreshold);
        std::string column = AttributeText(element, kColumn);
        if (column.empty()) column = field.name;
        places.emplace(LocalNameOf(column), table->fields.size());
        table->fields.push_back(std::move(field));
    }
    for (const DOMElement* row : ChildElements(ForcedChild(section, kTable), kRow)) {
        std::vector<std::string> record(table->fields.size());
        for (const auto* cell = row->getFirstElementChild(); cell != nullptr;
             cell = cell->getNextElementSibling()) {
            const std::string tag = Utf8FromXml(cell->getTagName());
            const auto found = places.find(std::string(LocalNameOf(tag)));
            if (found != places.end()) {
                record[found->second] = TrimBlanks(Utf8FromXml(cell->getTextContent()));
            }
        }
        table->records.push_back(std::move(record));
    }
    return table;
}

std::string TextWithVerification(const std::string& path, const VerificationTable& table)
{
    const Document document = LoadDocument(path);
    const Document::Tree& tree = document.GetTree();
    DOMElement* model = ModelElement(tree.dom->getDocumentElement());
    if (model == nullptr) {
        throw Failure(FailureKind::Document, kNotAModelDocument,
                      {document.File(), document.RootName()});
    }
    if (DOMElement* old = ChildElement(model, kSection)) {
        old->getParentNode()->removeChild(old)->release();
    }
    // A prefix of the document's own elements is the new ones' too.
    const std::string tag = Utf8FromXml(model->getTagName());
    std::string prefix(PrefixOf(tag));
    if (!prefix.empty()) prefix += ':';
    const auto add = [&](DOMElement* parent, const std::string& name) {
        return AddElement(parent, prefix + name);
    };
    DOMElement* section = add(model, kSection);
    // Before the extensions that may end a model.
    xercesc::DOMNode* place = nullptr;
    for (DOMElement* last = section->getPreviousElementSibling();
         last != nullptr && LocalNameOf(Utf8FromXml(last->getTagName())) == Tags::XML_ELE_EXTENSION;
         last = last->getPreviousElementSibling()) {
        place = last;
    }
    if (place != nullptr) model->insertBefore(section, place);
    SetAttributeText(section, "recordCount", std::to_string(table.records.size()));
    SetAttributeText(section, "fieldCount", std::to_string(table.fields.size()));
    DOMElement* fields = add(section, kFields);
    std::vector<std::string> columns;
    for (const VerificationTable::Field& field : table.fields) {
        columns.push_back(fmt::format("c{}", columns.size() + 1));
        DOMElement* element = add(fields, kField);
        SetAttributeText(element, kFieldName, field.name);
        SetAttributeText(element, kColumn, columns.back());
        std::string precision;
        AppendNumber(field.precision, precision);
        SetAttributeText(element, kPrecision, precision);
    }
    DOMElement* rows = add(section, kTable);
    for (const std::vector<std::string>& record : table.records) {
        DOMElement* row = add(rows, kRow);
        for (size_t i = 0; i < record.size(); ++i) {
            if (record[i].empty()) continue;  // a cell that isn't there is a missing value
            add(row, columns[i])->setTextContent(XmlFromUtf8(record[i]).c_str());
        }
    }
    return TreeText(*tree.dom);
}

}  // namespace MCVelscore_850
