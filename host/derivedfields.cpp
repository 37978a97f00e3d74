// The derived fields of a PMML document: DerivedField and its expression.

#include <map>
#include <set>
#include <utility>

#include <xercesc/dom/DOM.hpp>

#include "host/expression.h"
#include "host/messages.h"
#include "host/numbertext.h"
#include "host/pmmlmodeltags.h"
#include "host/pmmltranslator.h"
#include "host/pmmltypes.h"
#include "host/stringvalue.h"
#include "host/transformationdictionary.h"
#include "host/transformvar.h"
#include "host/vsexception.h"

namespace MCVelscore_850 {

namespace {

using xercesc::DOMElement;
using Tags = PMMLModelTags;

const std::string kDerivedField = "DerivedField";
const std::string kDataType = "dataType";
const std::string kField = "field";
const std::string kMapMissingTo = "mapMissingTo";

// The texts that all derived fields of a section can yield. Each field holds its own, so a short
// document of many fields that refer to one of many categories could ask for any memory.
constexpr size_t kMostTexts = 1000000;

}  // namespace

// Reads the derived fields of one section. A field may use one that stands after it, so each is
// read when it is first asked for; a field that is asked for while it is being read depends on
// itself.
class PMMLTranslator::DerivedFieldReader {
public:
    DerivedFieldReader(PMMLTranslator& translator, const ScoreDictionary& dictionary,
                       TransformationDictionary& derived)
        : t_(translator), dictionary_(dictionary), derived_(derived)
    {}

    void ReadAll(DOMElement* section)
    {
        std::vector<std::string> order;
        for (DOMElement* child = t_.GetFirstChildElt(section); child != nullptr;
             child = t_.GetNextSiblingElt(child)) {
            if (t_.IsEqual(child->getTagName(), kDerivedField)) {
                const std::string name =
                    t_.Transcode(t_.GetAttributeForced(child, Tags::XML_ATT_NAME));
                if (dictionary_.GetVar(name) != nullptr || !elements_.emplace(name, child).second) {
                    Refuse(kDuplicateField, name.c_str());
                }
                order.push_back(name);
            } else if (!t_.IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION)) {
                t_.NoteElement(child);
                Refuse(kExpressionNotSupported, t_.ToString(child->getTagName()).c_str(),
                       t_.ToString(section->getTagName()).c_str());
            }
        }
        for (const std::string& name : order) {
            if (derived_.GetVar(name) == nullptr) ReadField(name);
        }
    }

private:
    using Read = std::unique_ptr<Expression> (DerivedFieldReader::*)(DOMElement*);
    struct ExpressionRow {
        const char* tag;
        Read read;
    };
    static const ExpressionRow kExpressions[];

    const ScoreDictVar* ReadField(const std::string& name)
    {
        DOMElement* element = elements_.at(name);
        t_.NoteElement(element);
        if (!underway_.insert(name).second) Refuse(kDerivedFieldCycle, name.c_str());
        const std::string outer = std::exchange(field_, name);
        const DictVarType type = FieldType(
            name, t_.ToString(t_.GetAttributeForced(element, Tags::XML_ATT_DATAFIELD_OPTYPE)),
            t_.ToString(t_.GetAttributeForced(element, kDataType)));
        const std::string outerType = std::exchange(fieldType_, type.dataType);
        std::shared_ptr<const Expression> expression = ReadOnlyExpression(element);
        auto var = std::make_unique<TransformVar>(type, expression);
        // Fields that stand in the order of their use are read one by one, and evaluated all the
        // way down.
        if (var->Height() > kGreatestHeight) {
            t_.NoteElement(element);
            Refuse(kExpressionTooDeep, name.c_str());
        }
        t_.ReadDeclaredValues(element, *var);
        ListTexts(*expression, *var);
        var->SetUpCatEncoder();
        const ScoreDictVar* made = var.get();
        derived_.AddVar(name, var.release());
        field_ = outer;
        fieldType_ = outerType;
        underway_.erase(name);
        return made;
    }

    // A derived text without values of its own has those that its expression can yield.
    void ListTexts(const Expression& expression, DictVar& var)
    {
        if (var.GetValueType() != ScoreDictVar::STRING || !var.HasOpenCategories()) return;
        std::vector<std::string> texts;
        if (!expression.CollectTexts(texts)) return;
        listedTexts_ += texts.size();
        if (listedTexts_ > kMostTexts) {
            Refuse(kTooManyDerivedTexts, static_cast<int>(kMostTexts), var.GetName().c_str());
        }
        for (const std::string& text : texts) var.AddCategory(new StringValue(text), text);
    }

    const ScoreDictVar* FindField(const std::string& name)
    {
        if (const ScoreDictVar* var = dictionary_.GetVar(name)) return var;
        if (const ScoreDictVar* var = derived_.GetVar(name)) return var;
        if (elements_.contains(name)) return ReadField(name);
        Refuse(kUnknownFieldReference, name.c_str(), field_.c_str());
    }

    // The expression among the children of a DerivedField.
    std::unique_ptr<Expression> ReadOnlyExpression(DOMElement* element)
    {
        for (DOMElement* child = t_.GetFirstChildElt(element); child != nullptr;
             child = t_.GetNextSiblingElt(child)) {
            if (!t_.IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION) &&
                !t_.IsEqual(child->getTagName(), Tags::XML_ELE_VALUE)) {
                return ReadExpression(child);
            }
        }
        t_.NoteElement(element);
        Refuse(kExpressionMissing, field_.c_str());
    }

    std::unique_ptr<Expression> ReadExpression(DOMElement* element);

    const ScoreDictVar* ReadFieldName(DOMElement* element)
    {
        return FindField(t_.Transcode(t_.GetAttributeForced(element, kField)));
    }

    // A text as a value of the derived field's type, or a number where the text spells one and no
    // type was given.
    ExpressionValue ValueOf(const std::string& text, const std::string& dataType)
    {
        ExpressionValue value;
        double number = 0.0;
        if (dataType != "string" && dataType != "boolean" &&
            ReadNumber(text, number) == NumberText::Number) {
            value.SetNumber(number);
        } else if (dataType.empty() || dataType == "string" || dataType == "boolean") {
            value.SetText(text);
        } else {
            Refuse(kNotANumber, text.c_str());
        }
        return value;
    }

    Replacement ReadReplacement(DOMElement* element, const std::string& attribute,
                                const std::string& dataType)
    {
        Replacement replacement;
        const XMLCh* text = t_.GetAttribute(element, attribute);
        if (text == nullptr) return replacement;
        replacement.given = true;
        replacement.value = ValueOf(t_.Transcode(text), dataType);
        return replacement;
    }

    std::unique_ptr<Expression> ReadFieldRef(DOMElement* element)
    {
        const ScoreDictVar* var = ReadFieldName(element);
        return MakeFieldRef(
            var,
            ReadReplacement(element, kMapMissingTo,
                            var->GetValueType() == ScoreDictVar::STRING ? "string" : "double"));
    }

    std::unique_ptr<Expression> ReadConstant(DOMElement* element)
    {
        const XMLCh* type = t_.GetAttribute(element, kDataType);
        if (t_.IsEqual(t_.GetAttribute(element, "missing"), "true")) return MakeConstant({});
        return MakeConstant(ValueOf(t_.Transcode(element->getTextContent()), t_.ToString(type)));
    }

    std::unique_ptr<Expression> ReadNormContinuous(DOMElement* element)
    {
        const ScoreDictVar* var = ReadFieldName(element);
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
        const XMLCh* outliers = t_.GetAttribute(element, Tags::XML_ATT_MININGFIELD_OUTLIERS);
        const int treatment = t_.IsEqual(outliers, Tags::XML_VAL_MININGFIELD_OUTLIERS_ASMISS)
                                  ? ScoreDictVar::AS_MISSING
                              : t_.IsEqual(outliers, Tags::XML_VAL_MININGFIELD_OUTLIERS_ASEXTREME)
                                  ? ScoreDictVar::AS_EXTREME
                                  : ScoreDictVar::AS_IS;
        return MakeNormContinuous(var, std::move(points), treatment,
                                  ReadReplacement(element, kMapMissingTo, "double"));
    }

    std::unique_ptr<Expression> ReadApply(DOMElement* element)
    {
        const std::string name = t_.ToString(t_.GetAttributeForced(element, "function"));
        const ArithmeticFunction* function = FindArithmeticFunction(name);
        if (function == nullptr) Refuse(kFunctionNotSupported, name.c_str(), field_.c_str());
        Replacement mapMissingTo = ReadReplacement(element, kMapMissingTo, fieldType_);
        Replacement defaultValue = ReadReplacement(element, "defaultValue", fieldType_);
        std::vector<std::unique_ptr<Expression>> arguments;
        for (DOMElement* child = t_.GetFirstChildElt(element); child != nullptr;
             child = t_.GetNextSiblingElt(child)) {
            if (t_.IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION)) continue;
            arguments.push_back(ReadExpression(child));
        }
        t_.NoteElement(element);
        const int found = static_cast<int>(arguments.size());
        if (found != function->arguments) {
            Refuse(kWrongArgumentCount, name.c_str(), found, function->arguments, field_.c_str());
        }
        return MakeApply(*function, std::move(arguments), std::move(mapMissingTo),
                         std::move(defaultValue));
    }

    PMMLTranslator& t_;
    const ScoreDictionary& dictionary_;
    TransformationDictionary& derived_;
    std::map<std::string, DOMElement*> elements_;
    std::set<std::string> underway_;
    size_t listedTexts_ = 0;
    int depth_ = 0;          // of expressions that are being read, through all fields
    std::string field_;      // the derived field being read, for messages
    std::string fieldType_;  // its dataType
};

const PMMLTranslator::DerivedFieldReader::ExpressionRow
    PMMLTranslator::DerivedFieldReader::kExpressions[] = {
        {"FieldRef", &DerivedFieldReader::ReadFieldRef},
        {"Constant", &DerivedFieldReader::ReadConstant},
        {"NormContinuous", &DerivedFieldReader::ReadNormContinuous},
        {"Apply", &DerivedFieldReader::ReadApply},
};

std::unique_ptr<Expression> PMMLTranslator::DerivedFieldReader::ReadExpression(DOMElement* element)
{
    if (++depth_ > kGreatestHeight) Refuse(kExpressionTooDeep, field_.c_str());
    for (const ExpressionRow& row : kExpressions) {
        if (!t_.IsEqual(element->getTagName(), row.tag)) continue;
        auto expression = (this->*row.read)(element);
        --depth_;
        return expression;
    }
    t_.NoteElement(element);
    Refuse(kExpressionNotSupported, t_.ToString(element->getTagName()).c_str(), field_.c_str());
}

TransformationDictionary* PMMLTranslator::HandleTransformationDictionary(
    DOMElement* element, const ScoreDictionary* dictionary)
{
    auto derived = std::make_unique<TransformationDictionary>();
    DerivedFieldReader(*this, *dictionary, *derived).ReadAll(element);
    return derived->GetVarCount() == 0 ? nullptr : derived.release();
}

}  // namespace MCVelscore_850
