// The derived fields and the functions of a PMML document's transformation sections.

#include <utility>

#include <xercesc/dom/DOM.hpp>

#include "host/documents/pmmlmodeltags.h"
#include "host/documents/pmmltypes.h"
#include "host/expressions/derivedfieldreader.h"
#include "host/expressions/functions.h"
#include "host/expressions/transformvar.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/values/stringvalue.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kDerivedField = "DerivedField";
const std::string kDefineFunction = "DefineFunction";
const std::string kParameterField = "ParameterField";

// The texts that all derived fields of a section can yield. Each field holds its own, so a short
// document of many fields that refer to one of many categories could ask for any memory.
constexpr size_t kMostTexts = 1000000;

// The expressions that one case computes, those of functions counted at each call. Without
// functions a document has fewer; functions that call functions could ask for any time.
constexpr int kMostSteps = 1000000;

}  // namespace

PMMLTranslator::DerivedFieldReader::DerivedFieldReader(PMMLTranslator& translator,
                                                       const ScoreDictionary& dictionary,
                                                       TransformationDictionary& derived)
    : t_(translator), dictionary_(dictionary), derived_(derived), textsLeft_(kMostTexts)
{}

PMMLTranslator::DerivedFieldReader::~DerivedFieldReader() = default;

void PMMLTranslator::DerivedFieldReader::ReadAll(DOMElement* section)
{
    NoteSection(section, false);
    ReadFunctions(section);
    for (DOMElement* child = t_.GetFirstChildElt(section); child != nullptr;
         child = t_.GetNextSiblingElt(child)) {
        if (!t_.IsEqual(child->getTagName(), kDerivedField)) continue;
        const std::string name = t_.Transcode(t_.GetAttributeForced(child, Tags::XML_ATT_NAME));
        if (derived_.GetVar(name) == nullptr) ReadField(name);
    }
}

void PMMLTranslator::DerivedFieldReader::ReadGiven(const std::vector<DerivedDeclaration>& fields,
                                                   DOMElement* model)
{
    DOMElement* section = t_.GetChildByTag(model, Tags::XML_ELE_LOCALTRANSFORMATIONS);
    if (section != nullptr) NoteSection(section, true);
    for (const DerivedDeclaration& field : fields) {
        t_.NoteElement(field.element);
        NoteField(field.name, {field.element, &field});
    }
    ReadFunctions(model);
    for (const DerivedDeclaration& field : fields) {
        if (derived_.GetVar(field.name) == nullptr) ReadField(field.name);
    }
}

// Those that were noted, and those of the element's document, which are known to its models too.
void PMMLTranslator::DerivedFieldReader::ReadFunctions(DOMElement* element)
{
    DOMElement* global = t_.GetChildByTag(element->getOwnerDocument()->getDocumentElement(),
                                          Tags::XML_ELE_TRANSFORMATION);
    if (global != nullptr && global != element) NoteSection(global, true);
    for (const auto& [name, function] : functionElements_) FindDefinedFunction(name);
}

void PMMLTranslator::DerivedFieldReader::NoteField(const std::string& name,
                                                   const Declared& declared)
{
    if (dictionary_.GetVar(name) != nullptr || !fields_.emplace(name, declared).second) {
        Refuse(kDuplicateField, name.c_str());
    }
}

// Notes what the section declares, by name. A function of the document's own section stays behind
// one of the same name in the model's.
void PMMLTranslator::DerivedFieldReader::NoteSection(DOMElement* section, bool functionsAlone)
{
    std::set<std::string> functions;
    for (DOMElement* child = t_.GetFirstChildElt(section); child != nullptr;
         child = t_.GetNextSiblingElt(child)) {
        if (t_.IsEqual(child->getTagName(), kDefineFunction)) {
            const std::string name = t_.Transcode(t_.GetAttributeForced(child, Tags::XML_ATT_NAME));
            if (FindFunction(name) != nullptr || !functions.insert(name).second) {
                Refuse(kDuplicateFunction, name.c_str());
            }
            functionElements_.emplace(name, child);
        } else if (functionsAlone) {
            continue;
        } else if (t_.IsEqual(child->getTagName(), kDerivedField)) {
            const std::string name = t_.Transcode(t_.GetAttributeForced(child, Tags::XML_ATT_NAME));
            NoteField(name, {child, nullptr});
        } else if (!t_.IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION)) {
            t_.NoteElement(child);
            Refuse(kExpressionNotSupported, t_.ToString(child->getTagName()).c_str(),
                   t_.ToString(section->getTagName()).c_str());
        }
    }
}

const ScoreDictVar* PMMLTranslator::DerivedFieldReader::ReadField(const std::string& name)
{
    const auto [element, given] = fields_.at(name);
    t_.NoteElement(element);
    if (!underway_.insert(name).second) Refuse(kDerivedFieldCycle, name.c_str());
    const std::string outer = std::exchange(field_, name);
    const DictVarType type = given == nullptr ? TypeOfField(element, name)
                                              : FieldType(name, given->optype, given->dataType);
    const DataType* outerType = std::exchange(fieldType_, &DataTypeOf(type));
    std::shared_ptr<const Expression> expression =
        given == nullptr ? ReadOnlyExpression(element, fieldType_)
                         : ReadExpression(given->expression, fieldType_);
    auto var = std::make_unique<TransformVar>(type, expression);
    // Fields that stand in the order of their use are read one by one, and evaluated all the
    // way down.
    t_.NoteElement(element);
    if (var->Height() > kGreatestHeight) Refuse(kExpressionTooDeep, name.c_str());
    CountSteps(*expression);
    if (given == nullptr) t_.ReadDeclaredValues(element, *var);
    ListTexts(*expression, *var);
    var->SetUpCatEncoder();
    const ScoreDictVar* made = var.get();
    derived_.AddVar(name, var.release());
    field_ = outer;
    fieldType_ = outerType;
    underway_.erase(name);
    return made;
}

DictVarType PMMLTranslator::DerivedFieldReader::TypeOfField(DOMElement* element,
                                                            const std::string& name)
{
    const std::string optype =
        t_.ToString(t_.GetAttributeForced(element, Tags::XML_ATT_DATAFIELD_OPTYPE));
    return FieldType(name, optype, t_.DataTypeText(element, optype));
}

// A derived text without values of its own has those that its expression can yield.
void PMMLTranslator::DerivedFieldReader::ListTexts(const Expression& expression, DictVar& var)
{
    if (var.GetValueType() != ScoreDictVar::STRING || !var.HasOpenCategories()) return;
    Outcomes outcomes{{}, textsLeft_};
    if (!expression.CollectOutcomes(outcomes)) {
        if (textsLeft_ > 0) return;
        Refuse(kTooManyDerivedTexts, static_cast<int>(kMostTexts), var.GetName().c_str());
    }
    for (ExpressionValue& outcome : outcomes.values) {
        CastTo(*fieldType_, outcome);
        MakeText(outcome);
        if (outcome.HasValue()) var.AddCategory(new StringValue(outcome.text), outcome.text);
    }
}

void PMMLTranslator::DerivedFieldReader::CountSteps(const Expression& expression)
{
    steps_ += expression.Steps();
    if (steps_ > kMostSteps) Refuse(kTooManySteps, kMostSteps, field_.c_str());
}

const ScoreDictVar* PMMLTranslator::DerivedFieldReader::FindField(const std::string& name)
{
    if (const ScoreDictVar* var = dictionary_.GetVar(name)) return var;
    if (const ScoreDictVar* var = derived_.GetVar(name)) return var;
    if (fields_.contains(name)) return ReadField(name);
    Refuse(kUnknownFieldReference, name.c_str(), field_.c_str());
}

std::shared_ptr<const DefinedFunction> PMMLTranslator::DerivedFieldReader::FindDefinedFunction(
    const std::string& name)
{
    const auto found = functions_.find(name);
    if (found != functions_.end()) return found->second;
    return functionElements_.contains(name) ? ReadFunction(name) : nullptr;
}

std::shared_ptr<const DefinedFunction> PMMLTranslator::DerivedFieldReader::ReadFunction(
    const std::string& name)
{
    DOMElement* element = functionElements_.at(name);
    t_.NoteElement(element);
    if (!functionsUnderway_.insert(name).second) Refuse(kFunctionCycle, name.c_str());
    const std::string outer = std::exchange(field_, name);
    const DataType* outerType = fieldType_;
    const DefinedFunction* outerFunction = inFunction_;
    auto function = std::make_shared<DefinedFunction>();
    function->name = name;
    function->type = ReadTypeAttribute(element);
    ReadParameters(element, *function);
    fieldType_ = function->type;
    inFunction_ = function.get();
    function->body = ReadOnlyExpression(element, function->type);
    t_.NoteElement(element);
    if (function->body->Height() > kGreatestHeight) Refuse(kExpressionTooDeep, name.c_str());
    field_ = outer;
    fieldType_ = outerType;
    inFunction_ = outerFunction;
    functionsUnderway_.erase(name);
    functions_.emplace(name, function);
    return function;
}

void PMMLTranslator::DerivedFieldReader::ReadParameters(DOMElement* element,
                                                        DefinedFunction& function)
{
    std::set<std::string> names;
    for (DOMElement* child = t_.GetFirstChildElt(element); child != nullptr;
         child = t_.GetNextSiblingElt(child)) {
        if (!t_.IsEqual(child->getTagName(), kParameterField)) continue;
        const std::string name = t_.Transcode(t_.GetAttributeForced(child, Tags::XML_ATT_NAME));
        if (!names.insert(name).second) Refuse(kDuplicateField, name.c_str());
        function.parameters.emplace(name, function.parameters.size());
        function.parameterTypes.push_back(ReadTypeAttribute(child));
    }
}

TransformationDictionary* PMMLTranslator::HandleTransformationDictionary(
    xercesc::DOMElement* element, const ScoreDictionary* dictionary)
{
    auto derived = std::make_unique<TransformationDictionary>();
    DerivedFieldReader(*this, *dictionary, *derived).ReadAll(element);
    return derived->GetVarCount() == 0 ? nullptr : derived.release();
}

TransformationDictionary* PMMLTranslator::ReadDerivedFields(
    const std::vector<DerivedDeclaration>& fields, xercesc::DOMElement* model,
    const ScoreDictionary* dictionary)
{
    auto derived = std::make_unique<TransformationDictionary>();
    DerivedFieldReader(*this, *dictionary, *derived).ReadGiven(fields, model);
    return derived->GetVarCount() == 0 ? nullptr : derived.release();
}

}  // namespace MCVelscore_850
