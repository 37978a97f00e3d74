// The DataDictionary of a PMML document.

#include <limits>

#include <xercesc/dom/DOM.hpp>

#include "host/dictvar.h"
#include "host/messages.h"
#include "host/pmmlmodeltags.h"
#include "host/pmmltranslator.h"
#include "host/pmmltypes.h"
#include "host/scoredictionary.h"
#include "host/scorevalue.h"
#include "host/vsexception.h"

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

struct DataTypeRow {
    const char* name;
    ScoreDictVar::ValueType valueType;
    ScoreDictVar::DateTimeType dateTimeType;
    bool boolean;
};

constexpr DataTypeRow kDataTypes[] = {
    {"string", ScoreDictVar::STRING, ScoreDictVar::NOT_DATETIME, false},
    {"boolean", ScoreDictVar::STRING, ScoreDictVar::NOT_DATETIME, true},
    {"integer", ScoreDictVar::NUMERIC, ScoreDictVar::NOT_DATETIME, false},
    {"float", ScoreDictVar::NUMERIC, ScoreDictVar::NOT_DATETIME, false},
    {"double", ScoreDictVar::NUMERIC, ScoreDictVar::NOT_DATETIME, false},
    {"date", ScoreDictVar::DATETIME, ScoreDictVar::DATE, false},
    {"time", ScoreDictVar::DATETIME, ScoreDictVar::TIME, false},
    {"dateTime", ScoreDictVar::DATETIME, ScoreDictVar::DATE_TIME, false},
    {"dateDaysSince[0]", ScoreDictVar::DATETIME, ScoreDictVar::DATE_DAYS_SINCE_0, false},
    {"dateDaysSince[1960]", ScoreDictVar::DATETIME, ScoreDictVar::DATE_DAYS_SINCE_1960, false},
    {"dateDaysSince[1970]", ScoreDictVar::DATETIME, ScoreDictVar::DATE_DAYS_SINCE_1970, false},
    {"dateDaysSince[1980]", ScoreDictVar::DATETIME, ScoreDictVar::DATE_DAYS_SINCE_1980, false},
    {"timeSeconds", ScoreDictVar::DATETIME, ScoreDictVar::TIME_SECONDS, false},
    {"dateTimeSecondsSince[0]", ScoreDictVar::DATETIME, ScoreDictVar::DATE_TIME_SECONDS_SINCE_0,
     false},
    {"dateTimeSecondsSince[1960]", ScoreDictVar::DATETIME,
     ScoreDictVar::DATE_TIME_SECONDS_SINCE_1960, false},
    {"dateTimeSecondsSince[1970]", ScoreDictVar::DATETIME,
     ScoreDictVar::DATE_TIME_SECONDS_SINCE_1970, false},
    {"dateTimeSecondsSince[1980]", ScoreDictVar::DATETIME,
     ScoreDictVar::DATE_TIME_SECONDS_SINCE_1980, false},
};

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

// The row of that name; refuses a text that the standard doesn't know for this attribute.
template <class Row, size_t N>
const Row& FindRow(const Row (&rows)[N], const std::string& text, const char* attribute,
                   const std::string& field)
{
    for (const Row& row : rows) {
        if (text == row.name) return row;
    }
    Refuse(kUnknownDataType, text.c_str(), attribute, field.c_str());
}

}  // namespace

DictVarType FieldType(const std::string& name, const std::string& optype,
                      const std::string& dataType)
{
    const DataTypeRow& row = FindRow(kDataTypes, dataType, kDataType.c_str(), name);
    DictVarType type;
    type.name = name;
    type.level = FindRow(kOptypes, optype, Tags::XML_ATT_DATAFIELD_OPTYPE.c_str(), name).level;
    type.valueType = row.valueType;
    type.dateTimeType = row.dateTimeType;
    type.boolean = row.boolean;
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
            const auto& row = FindRow(kProperties, IsBlank(property) ? "valid" : ToString(property),
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
                Refuse(260127, text.c_str(), name.c_str());
            }
        } else if (IsEqual(child->getTagName(), kInterval)) {
            ReadInterval(child, var);
        } else if (IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION) &&
                   IsEqual(GetAttribute(child, Tags::XML_ATT_EXTENSION_EXTENDER),
                           Tags::XML_VAL_EXTENSION_EXTENDER) &&
                   IsEqual(GetAttribute(child, Tags::XML_ATT_NAME), kUnlistedCategories) &&
                   IsEqual(GetAttribute(child, Tags::XML_ATT_VALUE), kAccept)) {
            var.SetAcceptsUnlisted(true);
        }
    }
}

void PMMLTranslator::ReadInterval(DOMElement* element, DictVar& var)
{
    const std::string closure = "closure";
    const auto& row = FindRow(kClosures, ToString(GetAttributeForced(element, closure)),
                              closure.c_str(), var.GetName());
    constexpr double kNoBound = std::numeric_limits<double>::infinity();
    const XMLCh* low = GetAttribute(element, "leftMargin");
    const XMLCh* high = GetAttribute(element, "rightMargin");
    var.DeclareInterval({IsBlank(low) ? -kNoBound : VerifyDouble(low),
                         IsBlank(high) ? kNoBound : VerifyDouble(high), row.lowClosed,
                         row.highClosed});
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
        const std::string dataType = ToString(GetAttributeForced(field, kDataType));
        auto var = std::make_unique<DictVar>(FieldType(name, optype, dataType));
        if (withValues) ReadDeclaredValues(field, *var);
        NoteElement(field);
        if (!dictionary->AddVar(name, var.release())) Refuse(kDuplicateField, name.c_str());
    }
    return dictionary.release();
}

}  // namespace MCVelscore_850
