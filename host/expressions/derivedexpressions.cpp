// The expressions of derived fields and of functions, from their elements.

#include <xercesc/dom/DOM.hpp>

#include "host/documents/pmmlmodeltags.h"
#include "host/documents/pmmltypes.h"
#include "host/expressions/derivedfieldreader.h"
#include "host/expressions/functions.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kDataType = "dataType";
const std::string kField = "field";
const std::string kMapMissingTo = "mapMissingTo";
const std::string kDefaultValue = "defaultValue";
const std::string kConstant = "Constant";
const std::string kColumn = "column";
const std::string kFunction = "function";

// The patterns of a section: each is compiled, and keeps memory of its own.
constexpr int kMostPatterns = 1000;

struct OutlierRow {
    std::string name;
    int treatment;
};

struct TreatmentRow {
    const char* name;
    InvalidTreatment treatment;
};

constexpr TreatmentRow kTreatments[] = {
    {"returnInvalid", InvalidTreatment::ReturnInvalid},
    {"asIs", InvalidTreatment::AsIs},
    {"asMissing", InvalidTreatment::AsMissing},
};

// The type that a function's outcome has by itself; null where its arguments say it.
const DataType* ResultType(const Function& function)
{
    switch (function.result) {
        case Function::Number: return FindDataType("double");
        case Function::Boolean: return FindDataType("boolean");
        case Function::Text: return FindDataType("string");
        case Function::ArgumentsOwn: break;
    }
    return nullptr;
}

std::string CountText(int least, int most)
{
    if (most == Function::kAny) return std::to_string(least) + " or more";
    if (least == most) return std::to_string(least);
    return std::to_string(least) + " to " + std::to_string(most);
}

}  // namespace

const PMMLTranslator::DerivedFieldReader::ExpressionRow
    PMMLTranslator::DerivedFieldReader::kExpressions[] = {
        {"FieldRef", &DerivedFieldReader::ReadFieldRef},
        {"Constant", &DerivedFieldReader::ReadConstant},
        {"NormContinuous", &DerivedFieldReader::ReadNormContinuous},
        {"NormDiscrete", &DerivedFieldReader::ReadNormDiscrete},
        {"Discretize", &DerivedFieldReader::ReadDiscretize},
        {"MapValues", &DerivedFieldReader::ReadMapValues},
        {"Apply", &DerivedFieldReader::ReadApply},
};

// The expression among the children of a DerivedField or DefineFunction.
std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadOnlyExpression(
    DOMElement* element, const DataType* type)
{
    for (DOMElement* child = t_.GetFirstChildElt(element); child != nullptr;
         child = t_.GetNextSiblingElt(child)) {
        if (!t_.IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION) &&
            !t_.IsEqual(child->getTagName(), Tags::XML_ELE_VALUE) &&
            !t_.IsEqual(child->getTagName(), "ParameterField")) {
            return ReadExpression(child, type);
        }
    }
    t_.NoteElement(element);
    Refuse(kExpressionMissing, field_.c_str());
}

std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadExpression(DOMElement* element,
                                                                               const DataType* type)
{
    if (++depth_ > kGreatestHeight) Refuse(kExpressionTooDeep, field_.c_str());
    for (const ExpressionRow& row : kExpressions) {
        if (!t_.IsEqual(element->getTagName(), row.tag)) continue;
        auto expression = (this->*row.read)(element, type);
        --depth_;
        return expression;
    }
    t_.NoteElement(element);
    Refuse(kExpressionNotSupported, t_.ToString(element->getTagName()).c_str(), field_.c_str());
}

// The field or parameter that an element names. A function sees its parameters alone.
FieldSource PMMLTranslator::DerivedFieldReader::ReadSource(DOMElement* element)
{
    const std::string name = t_.Transcode(t_.GetAttributeForced(element, kField));
    if (inFunction_ == nullptr) return FieldSource(FindField(name));
    const auto found = inFunction_->parameters.find(name);
    if (found == inFunction_->parameters.end()) {
        Refuse(kUnknownFieldReference, name.c_str(), field_.c_str());
    }
    return FieldSource(static_cast<int>(found->second), inFunction_->parameterTypes[found->second]);
}

// A text as a value of that type; without a type a number where the text spells one.
ExpressionValue PMMLTranslator::DerivedFieldReader::ValueOf(const std::string& text,
                                                            const DataType* type)
{
    ExpressionValue value;
    double number = 0.0;
    if (type == nullptr) {
        if (ReadNumber(text, number) == NumberText::Number) {
            value.SetNumber(number);
        } else {
            value.SetText(text);
        }
    } else if (!ReadValue(text, *type, value)) {
        if (type->valueType == ScoreDictVar::NUMERIC) {
            Refuse(kNotANumber, text.c_str(), t_.HolderOf(text).c_str());
        }
        Refuse(kNotOfDataType, text.c_str(), type->name, field_.c_str());
    }
    return value;
}

// The dataType attribute, null where there is none.
const DataType* PMMLTranslator::DerivedFieldReader::ReadTypeAttribute(DOMElement* element)
{
    const XMLCh* name = t_.GetAttribute(element, kDataType);
    if (IsBlank(name)) return nullptr;
    const std::string text = t_.ToString(name);
    const DataType* type = FindDataType(text);
    if (type == nullptr) {
        Refuse(kUnknownDataType, text.c_str(), kDataType.c_str(), field_.c_str());
    }
    return type;
}

Replacement PMMLTranslator::DerivedFieldReader::ReadReplacement(DOMElement* element,
                                                                const std::string& attribute,
                                                                const DataType* type)
{
    Replacement replacement;
    const XMLCh* text = t_.GetAttribute(element, attribute);
    if (text == nullptr) return replacement;
    replacement.given = true;
    replacement.value = ValueOf(t_.Transcode(text), type);
    return replacement;
}

std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadFieldRef(DOMElement* element,
                                                                             const DataType*)
{
    const FieldSource source = ReadSource(element);
    return MakeFieldRef(source, ReadReplacement(element, kMapMissingTo, source.Type()));
}

std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadConstant(DOMElement* element,
                                                                             const DataType* type)
{
    const XMLCh* missing = t_.GetAttribute(element, "missing");
    if (t_.IsEqual(missing, "true") || t_.IsEqual(missing, "1")) return MakeConstant({});
    const DataType* own = ReadTypeAttribute(element);
    // Without a type of its own it is what its text spells, but a text where one is wanted.
    const bool wantsText = type != nullptr && type->valueType == ScoreDictVar::STRING;
    if (own == nullptr && wantsText && !type->boolean) own = type;
    return MakeConstant(ValueOf(t_.Transcode(element->getTextContent()), own));
}

std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadNormContinuous(
    DOMElement* element, const DataType*)
{
    const FieldSource source = ReadSource(element);
    std::vector<NormPoint> points;
    bool ascending = true;
    for (DOMElement* child = t_.GetFirstChildElt(element); child != nullptr;
         child = t_.GetNextSiblingElt(child)) {
        if (!t_.IsEqual(child->getTagName(), "LinearNorm")) continue;
        const double orig = t_.VerifyDouble(t_.GetAttributeForced(child, "orig"));
        const double norm = t_.VerifyDouble(t_.GetAttributeForced(child, "norm"));
        ascending = ascending && (points.empty() || points.back().orig < orig);
        points.push_back({orig, norm});
    }
    t_.NoteElement(element);
    if (points.size() < 2 || !ascending) Refuse(kNormPoints, field_.c_str());
    static const OutlierRow kOutliers[] = {
        {"asIs", ScoreDictVar::AS_IS},
        {Tags::XML_VAL_MININGFIELD_OUTLIERS_ASMISS, ScoreDictVar::AS_MISSING},
        {Tags::XML_VAL_MININGFIELD_OUTLIERS_ASEXTREME, ScoreDictVar::AS_EXTREME},
    };
    const XMLCh* outliers = t_.GetAttribute(element, Tags::XML_ATT_MININGFIELD_OUTLIERS);
    const OutlierRow row = FindRow(kOutliers, IsBlank(outliers) ? "asIs" : t_.ToString(outliers),
                                   Tags::XML_ATT_MININGFIELD_OUTLIERS.c_str(), field_);
    return MakeNormContinuous(source, std::move(points), row.treatment,
                              ReadReplacement(element, kMapMissingTo, FindDataType("double")));
}

std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadNormDiscrete(
    DOMElement* element, const DataType*)
{
    const FieldSource source = ReadSource(element);
    const std::string method = "method";
    const XMLCh* given = t_.GetAttribute(element, method);
    // The one method that the standard kept.
    if (!IsBlank(given) && !t_.IsEqual(given, "indicator")) {
        Refuse(kUnknownDataType, t_.ToString(given).c_str(), method.c_str(), field_.c_str());
    }
    const std::string value = t_.Transcode(t_.GetAttributeForced(element, Tags::XML_ATT_VALUE));
    return MakeNormDiscrete(source, ValueOf(value, source.Type()),
                            ReadReplacement(element, kMapMissingTo, FindDataType("double")));
}

std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadDiscretize(DOMElement* element,
                                                                               const DataType* type)
{
    const FieldSource source = ReadSource(element);
    if (const DataType* own = ReadTypeAttribute(element)) type = own;
    // A text counts as a number wherever one is wanted.
    if (type == nullptr) type = FindDataType("string");
    const ScoreDictVar::DateTimeType dateTime =
        source.Type() == nullptr ? ScoreDictVar::NOT_DATETIME : source.Type()->dateTimeType;
    std::vector<Bin> bins;
    for (DOMElement* child = t_.GetFirstChildElt(element); child != nullptr;
         child = t_.GetNextSiblingElt(child)) {
        if (!t_.IsEqual(child->getTagName(), "DiscretizeBin")) continue;
        ExpressionValue value =
            ValueOf(t_.Transcode(t_.GetAttributeForced(child, "binValue")), type);
        DOMElement* interval = t_.GetChildByTagForced(child, "Interval");
        bins.push_back({t_.ReadInterval(interval, dateTime, field_), std::move(value)});
    }
    t_.NoteElement(element);
    Replacement mapMissingTo = ReadReplacement(element, kMapMissingTo, type);
    return MakeDiscretize(source, std::move(bins), std::move(mapMissingTo),
                          ReadReplacement(element, kDefaultValue, type));
}

// The tag without its prefix: the cells of a table may stand in a namespace of their own.
std::string PMMLTranslator::DerivedFieldReader::LocalName(const DOMElement* element) const
{
    const std::string tag = t_.Transcode(element->getTagName());
    return tag.substr(tag.find(':') + 1);  // npos + 1 is 0
}

std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadMapValues(DOMElement* element,
                                                                              const DataType* type)
{
    if (const DataType* own = ReadTypeAttribute(element)) type = own;
    if (type == nullptr) type = FindDataType("string");
    const auto unprefixed = [](const std::string& name) { return name.substr(name.find(':') + 1); };
    const std::string output =
        unprefixed(t_.Transcode(t_.GetAttributeForced(element, "outputColumn")));
    MapColumns columns;
    std::vector<FieldSource> sources;
    for (DOMElement* child = t_.GetFirstChildElt(element); child != nullptr;
         child = t_.GetNextSiblingElt(child)) {
        if (!t_.IsEqual(child->getTagName(), "FieldColumnPair")) continue;
        const std::string column = unprefixed(t_.Transcode(t_.GetAttributeForced(child, kColumn)));
        if (!columns.emplace(column, sources.size()).second) {
            Refuse(kMapColumnTwice, column.c_str(), field_.c_str());
        }
        sources.push_back(ReadSource(child));
    }
    t_.NoteElement(element);
    if (sources.empty()) Refuse(kMapWithoutColumns, field_.c_str());
    if (t_.GetChildByTag(element, "TableLocator") != nullptr) {
        Refuse(kTableLocator, field_.c_str());
    }
    MapTable table(std::move(sources));
    DOMElement* rows = t_.GetChildByTagForced(element, "InlineTable");
    for (DOMElement* row = t_.GetFirstChildElt(rows); row != nullptr;
         row = t_.GetNextSiblingElt(row)) {
        if (LocalName(row) == "row") ReadMapRow(row, columns, output, type, table);
    }
    t_.NoteElement(element);
    Replacement mapMissingTo = ReadReplacement(element, kMapMissingTo, type);
    return std::move(table).MakeExpression(std::move(mapMissingTo),
                                           ReadReplacement(element, kDefaultValue, type));
}

void PMMLTranslator::DerivedFieldReader::ReadMapRow(DOMElement* row, const MapColumns& columns,
                                                    const std::string& outputColumn,
                                                    const DataType* type, MapTable& table)
{
    std::vector<std::string> cells(columns.size());
    std::vector<bool> met(columns.size());
    std::string output;
    bool hasOutput = false;
    for (DOMElement* cell = t_.GetFirstChildElt(row); cell != nullptr;
         cell = t_.GetNextSiblingElt(cell)) {
        const std::string name = LocalName(cell);
        const auto column = columns.find(name);
        if (column != columns.end()) {
            cells[column->second] = t_.Transcode(cell->getTextContent());
            met[column->second] = true;
        }
        if (name == outputColumn) {
            output = t_.Transcode(cell->getTextContent());
            hasOutput = true;
        }
    }
    t_.NoteElement(row);
    for (const auto& [name, position] : columns) {
        if (!met[position]) Refuse(kMapCellMissing, name.c_str(), field_.c_str());
    }
    if (!hasOutput) Refuse(kMapCellMissing, outputColumn.c_str(), field_.c_str());
    // An empty cell is no number and no date: the row's outcome is missing.
    const bool empty = type->valueType != ScoreDictVar::STRING && TrimBlanks(output).empty();
    table.AddRow(cells, empty ? ExpressionValue{} : ValueOf(output, type));
}

std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadApply(DOMElement* element,
                                                                          const DataType* type)
{
    const std::string name = t_.Transcode(t_.GetAttributeForced(element, kFunction));
    if (const Function* function = FindFunction(name)) {
        return ReadBuiltInCall(element, *function, type);
    }
    return ReadDefinedCall(element, name, type);
}

ApplyRules PMMLTranslator::DerivedFieldReader::ReadRules(DOMElement* element, const DataType* type)
{
    // A text field may name a missing number by a word.
    const bool isText = fieldType_ != nullptr && fieldType_->valueType == ScoreDictVar::STRING;
    const auto read = [&](const std::string& attribute) {
        const XMLCh* text = t_.GetAttribute(element, attribute);
        ExpressionValue value;
        const bool fits =
            text == nullptr || type == nullptr || ReadValue(t_.Transcode(text), *type, value);
        return ReadReplacement(element, attribute, !fits && isText ? FindDataType("string") : type);
    };
    ApplyRules rules;
    rules.mapMissingTo = read(kMapMissingTo);
    rules.defaultValue = read(kDefaultValue);
    const std::string treatment = "invalidValueTreatment";
    const XMLCh* given = t_.GetAttribute(element, treatment);
    rules.invalid = FindRow(kTreatments, IsBlank(given) ? "returnInvalid" : t_.ToString(given),
                            treatment.c_str(), field_)
                        .treatment;
    return rules;
}

std::vector<xercesc::DOMElement*> PMMLTranslator::DerivedFieldReader::ArgumentElements(
    DOMElement* element)
{
    std::vector<DOMElement*> elements;
    for (DOMElement* child = t_.GetFirstChildElt(element); child != nullptr;
         child = t_.GetNextSiblingElt(child)) {
        if (!t_.IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION)) elements.push_back(child);
    }
    return elements;
}

void PMMLTranslator::DerivedFieldReader::RefuseArgumentCount(DOMElement* element,
                                                             const std::string& function,
                                                             size_t found, int least, int most)
{
    t_.NoteElement(element);
    Refuse(kWrongArgumentCount, function.c_str(), static_cast<int>(found),
           CountText(least, most).c_str(), field_.c_str());
}

std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadBuiltInCall(
    DOMElement* element, const Function& function, const DataType* type)
{
    const std::vector<DOMElement*> elements = ArgumentElements(element);
    const int found = static_cast<int>(elements.size());
    if (found < function.least || found > function.most) {
        RefuseArgumentCount(element, function.name, elements.size(), function.least, function.most);
    }
    // The branches of if are wanted in the type of the whole.
    const bool branches = function.result == Function::ArgumentsOwn;
    ApplyRules rules = ReadRules(element, branches ? type : ResultType(function));
    Arguments arguments;
    for (DOMElement* argument : elements) {
        const bool isBranch = branches && !arguments.empty();
        arguments.push_back(ReadExpression(argument, isBranch ? type : nullptr));
    }
    t_.NoteElement(element);
    CheckPattern(function, elements, arguments);
    return MakeApply(function, std::move(arguments), std::move(rules));
}

// A pattern that is the same for every case is tried at once.
void PMMLTranslator::DerivedFieldReader::CheckPattern(const Function& function,
                                                      const std::vector<DOMElement*>& elements,
                                                      const Arguments& arguments)
{
    if (function.makeState == nullptr) return;
    if (++patterns_ > kMostPatterns) Refuse(kTooManyPatterns, kMostPatterns, field_.c_str());
    const auto position = static_cast<size_t>(function.patternArgument);
    if (!t_.IsEqual(elements[position]->getTagName(), kConstant)) return;
    size_t left = 1;
    Outcomes outcomes{{}, left};
    arguments[position]->CollectOutcomes(outcomes);
    ExpressionValue& pattern = outcomes.values.front();
    MakeText(pattern);
    std::string reason;
    if (pattern.HasValue() && !function.makeState()->Prepare(pattern.text, reason)) {
        Refuse(kBadPattern, pattern.text.c_str(), function.name, reason.c_str(), field_.c_str());
    }
}

std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadDefinedCall(
    DOMElement* element, const std::string& name, const DataType* type)
{
    const std::shared_ptr<const DefinedFunction> function = FindDefinedFunction(name);
    t_.NoteElement(element);
    if (function == nullptr) Refuse(kFunctionNotSupported, name.c_str(), field_.c_str());
    const std::vector<DOMElement*> elements = ArgumentElements(element);
    const size_t wanted = function->parameterTypes.size();
    if (elements.size() != wanted) {
        const int count = static_cast<int>(wanted);
        RefuseArgumentCount(element, name, elements.size(), count, count);
    }
    ApplyRules rules = ReadRules(element, function->type != nullptr ? function->type : type);
    Arguments arguments;
    for (size_t i = 0; i < wanted; ++i) {
        arguments.push_back(ReadExpression(elements[i], function->parameterTypes[i]));
    }
    return MakeCall(function, std::move(arguments), std::move(rules));
}

}  // namespace MCVelscore_850
