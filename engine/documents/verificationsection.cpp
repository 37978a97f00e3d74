#include "engine/documents/verificationsection.h"

#include <unordered_map>

#include <xercesc/dom/DOM.hpp>

#include "engine/documents/documenttree.h"
#include "engine/documents/treetext.h"
#include "host/documentplace.h"
#include "host/messages.h"
#include "host/numbertext.h"
#include "host/pmmlmodeltags.h"
#include "host/veltranscoder.h"
#include "host/vsexception.h"

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
    RefuseAt(parent, 260115, tag.c_str(), Utf8FromXml(parent->getTagName()).c_str());
}

void ReadShare(const DOMElement* field, const std::string& attribute, double& share)
{
    const std::string text = AttributeText(field, attribute);
    if (text.empty()) return;
    if (ReadNumber(text, share) == NumberText::Number && share >= 0.0) return;
    RefuseAt(field, kNotANumber, text.c_str());
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

}  // namespace MCVelscore_850
