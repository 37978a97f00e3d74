// The DataDictionary of a PMML document.

#include <limits>

#include <xercesc/dom/DOM.hpp>

#include "host/documents/pmmlmodeltags.h"
#include "host/documents/pmmltranslator.h"
#include "host/documents/pmmltypes.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/values/datetimetext.h"
#include "host/values/numbertext.h"
#include "host/values/scorevalue.h"
#include "host/variables/datatypes.h"
#include "host/variables/dictvar.h"
#include "host/variables/scoredictionary.h"

namespace MCVelscore_850 {

namespace {

using xercesc::DOMElement;
using Tags = PMMLModelTags;

const std::string kDataField = "DataField";
const std::string kDataType = "dataType";
const std::string kInterval = "Interval";
const std::string kProperty = "property";
const std::string kUnlistedCategories = "unlistedCategories";
const std::string kAccept = "accept";

struct OptypeRow {
    const char* name;
    ScoreDictVar::MeasureLevel level;
};

constexpr OptypeRow kOptypes[] = {
    {"continuous", ScoreDictVar::CONTINUOUS},
    {"categorical", ScoreDictVar::CATEGORICAL},
    {"ordinal", ScoreDictVar::ORDINAL},
};

struct PropertyRow {
    const char* name;
    DictVar::Property property;
};

constexpr PropertyRow kProperties[] = {
    {"valid", DictVar::Property::Valid},
    {"invalid", DictVar::Property::Invalid},
    {"missing", DictVar::Property::Missing},
};

struct ClosureRow {
    const char* name;
    bool lowClosed;
    bool highClosed;
};

constexpr ClosureRow kClosures[] = {
    {"openOpen", false, false},
    {"openClosed", false, true},
    {"closedOpen", true, false},
    {"closedClosed", true, true},
};

// Documents before this version may leave a field's dataType out.
constexpr double kFirstVersionWithDataType = 3.1;

}  // namespace

DictVarType FieldType(const std::string& name, const std::string& optype,
                      const std::string& dataType)
{
    const DataType* row = FindDataType(dataType);
    if (row == nullptr) {
        Refuse(kUnknownDataType, dataType.c_str(), kDataType.c_str(), name.c_str());
    }
    DictVarType type;
    type.name = name;
    type.level = FindRow(kOptypes, optype, Tags::XML_ATT_DATAFIELD_OPTYPE.c_str(), name).level;
    type.valueType = row->valueType;
    type.dateTimeType = row->dateTimeType;
    type.boolean = row->boolean;
    type.dataType = dataType;
    return type;
}

void PMMLTranslator::ReadDeclaredValues(DOMElement* element, DictVar& var)
{
    const std::string& name = var.GetName();
    for (DOMElement* child = GetFirstChildElt(element); child != nullptr;
         child = GetNextSiblingElt(child)) {
        if (IsEqual(child->getTagName(), Tags::XML_ELE_VALUE)) {
            const std::string text = Transcode(GetAttributeForced(child, Tags::XML_ATT_VALUE));
            const XMLCh* property = GetAttribute(child, kProperty);
            const auto row = FindRow(kProperties, IsBlank(property) ? "valid" : ToString(property),
                                     kProperty.c_str(), name);
            std::unique_ptr<ScoreValue> value(CarefullyMakeVarValue(&var, text));
            // Text that is no value of the type, such as an empty one, can still stand for a
            // missing one: it can never be met, and a valid one of that kind is refused.
            if (value == nullptr && var.GetValueType() == ScoreDictVar::STRING) {
                value.reset(var.MakeValue(text));
            }
            if (value != nullptr) {
                var.DeclareValue(std::move(value), text, row.property);
            } else if (row.property == DictVar::Property::Valid) {
                Refuse(kInvalidValue, text.c_str(), name.c_str());
            } else if (row.property == DictVar::Property::Missing) {
                var.DeclareMissingWord(text);
            }
        } else if (IsEqual(child->getTagName(), kInterval)) {
            DictVar::Interval interval = ReadInterval(child, var.GetDateTimeType(), name);
            // The values of a variable count from 1970.
            const double shift = OriginShift(var.GetDateTimeType());
            interval.low -= shift;
            interval.high -= shift;
            var.DeclareInterval(interval);
        } else if (IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION) &&
                   IsEqual(GetAttribute(child, Tags::XML_ATT_EXTENSION_EXTENDER),
                           Tags::XML_VAL_EXTENSION_EXTENDER) &&
                   IsEqual(GetAttribute(child, Tags::XML_ATT_NAME), kUnlistedCategories) &&
                   IsEqual(GetAttribute(child, Tags::XML_ATT_VALUE), kAccept)) {
            var.SetAcceptsUnlisted(true);
        }
    }
    var.EndDeclarations();
}

DictVar::Interval PMMLTranslator::ReadInterval(DOMElement* element, ScoreDictVar::DateTimeType type,
                                               const std::string& field) const
{
    const std::string closure = "closure";
    const auto row =
        FindRow(kClosures, ToString(GetAttributeForced(element, closure)), closure.c_str(), field);
    const auto margin = [&](const char* attribute, double unbounded) {
        const XMLCh* text = GetAttribute(element, attribute);
        double plain = 0.0;
        if (IsBlank(text)) return unbounded;
        if (type != ScoreDictVar::NOT_DATETIME && ReadDateTime(ToString(text), type, plain)) {
            return plain + OriginShift(type);
        }
        return VerifyDouble(text);
    };
    constexpr double kNoBound = std::numeric_limits<double>::infinity();
    return {margin("leftMargin", -kNoBound), margin("rightMargin", kNoBound), row.lowClosed,
            row.highClosed};
}

std::string PMMLTranslator::DataTypeText(DOMElement* field, const std::string& optype) const
{
    const DOMElement* root = field->getOwnerDocument()->getDocumentElement();
    double version = 0.0;
    if (GetAttribute(field, kDataType) == nullptr &&
        ReadNumber(ToString(GetAttribute(root, Tags::XML_ATT_VERSION)), version) ==
            NumberText::Number &&
        version < kFirstVersionWithDataType) {
        return optype == Tags::XML_VAL_OT_CONTINUOUS ? "double" : "string";
    }
    return ToString(GetAttributeForced(field, kDataType));
}

ScoreDictionary* PMMLTranslator::ParseDictionary(xercesc::DOMNode* node, bool withValues)
{
    auto dictionary = std::make_unique<BaseDictionary>();
    for (DOMElement* field = GetFirstChildElt(node); field != nullptr;
         field = GetNextSiblingElt(field)) {
        if (!IsEqual(field->getTagName(), kDataField)) continue;
        const std::string name = Transcode(GetAttributeForced(field, Tags::XML_ATT_NAME));
        const std::string optype =
            ToString(GetAttributeForced(field, Tags::XML_ATT_DATAFIELD_OPTYPE));
        const std::string dataType = DataTypeText(field, optype);
        auto var = std::make_unique<DictVar>(FieldType(name, optype, dataType));
        if (withValues) ReadDeclaredValues(field, *var);
        NoteElement(field);
        if (!dictionary->AddVar(name, var.release())) Refuse(kDuplicateField, name.c_str());
    }
    return dictionary.release();
}

}  // namespace MCVelscore_850
