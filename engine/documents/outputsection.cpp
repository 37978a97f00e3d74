#include "engine/documents/outputsection.h"

#include <algorithm>
#include <set>
#include <unordered_map>

#include <xercesc/dom/DOM.hpp>

#include "engine/documents/documenttree.h"
#include "engine/documents/treefields.h"
#include "engine/documents/treetext.h"
#include "host/documents/documentplace.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/pmmltranslator.h"
#include "host/documents/veltranscoder.h"
#include "host/expressions/transformvar.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/model/scoremodel.h"
#include "host/variables/dictvar.h"
#include "host/variables/targetdeclaration.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using Tags = PMMLModelTags;
using Feature = OutputField::Feature;

namespace {

const std::string kDerivedField = "DerivedField";
const std::string kDefineFunction = "DefineFunction";
const std::string kDataType = "dataType";
const std::string kCategorical = "categorical";

struct FeatureRow {
    const char* word;
    Feature feature;
};

// A field without a feature is the predicted value.
constexpr FeatureRow kFeatures[] = {
    {"", Feature::PredictedValue},
    {"predictedValue", Feature::PredictedValue},
    {"predictedDisplayValue", Feature::PredictedDisplayValue},
    {"probability", Feature::Probability},
    {"standardError", Feature::StandardError},
    {"confidenceIntervalLower", Feature::ConfidenceIntervalLower},
    {"confidenceIntervalUpper", Feature::ConfidenceIntervalUpper},
    {"residual", Feature::Residual},
    {"transformedValue", Feature::Expression},
    {"decision", Feature::Expression},
};

// The host's part of a reader, for the expressions.
class ExpressionReader final : public PMMLTranslator {
public:
    ExpressionReader() : PMMLTranslator("") {}
    ScoreModel* ParseFromTree(xercesc::DOMDocument*, const std::string&) override
    {
        return nullptr;
    }
    using PMMLTranslator::CurrentElement;
};

// The expression of an output field; null without one.
const DOMElement* ExpressionOf(const DOMElement* field)
{
    for (const auto* child = field->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
        const std::string tag = Utf8FromXml(child->getTagName());
        if (tag != Tags::XML_ELE_EXTENSION && tag != Tags::XML_ELE_VALUE && tag != "Decisions") {
            return child;
        }
    }
    return nullptr;
}

// The type of what an expression yields, where neither it nor the field says so.
std::string TypeOf(const DOMElement* field, const DOMElement* expression)
{
    for (const DOMElement* element : {field, expression}) {
        std::string type = AttributeText(element, kDataType);
        if (!type.empty()) return type;
    }
    const std::string tag = Utf8FromXml(expression->getTagName());
    const bool text = tag == "MapValues" || tag == "Discretize";
    return text ? "string" : "double";
}

bool IsTextType(const std::string& dataType)
{
    return dataType == "string" || dataType == "boolean";
}

// A section of transformations beside the document's tree, made of copies of its elements; released
// at the end. It knows which element of the document each one stands for.
class ExpressionSection {
public:
    explicit ExpressionSection(xercesc::DOMDocument* tree)
        : tree_(tree),
          section_(tree->createElement(XmlFromUtf8(Tags::XML_ELE_LOCALTRANSFORMATIONS).c_str()))
    {}
    ExpressionSection(const ExpressionSection&) = delete;
    ExpressionSection& operator=(const ExpressionSection&) = delete;
    ~ExpressionSection() { section_->release(); }

    DOMElement* Get() const { return section_; }
    void AddFunction(const DOMElement* function) { AppendCopy(section_, function); }
    // A derived field for the output field that has this expression; its attributes are to be set.
    DOMElement* AddField(const DOMElement* outputField, const DOMElement* expression)
    {
        DOMElement* field = tree_->createElement(XmlFromUtf8(kDerivedField).c_str());
        section_->appendChild(field);
        sources_.emplace(field, outputField);
        AppendCopy(field, expression);
        return field;
    }
    // An element of the document stands for itself.
    const DOMElement* SourceOf(const DOMElement* element) const
    {
        const auto found = sources_.find(element);
        return found == sources_.end() ? element : found->second;
    }

private:
    void AppendCopy(DOMElement* parent, const DOMElement* source)
    {
        auto* copy = static_cast<DOMElement*>(tree_->importNode(source, true));
        parent->appendChild(copy);
        NoteSources(copy, source);
    }
    // The guard bounds the depth, and with it this recursion.
    void NoteSources(const DOMElement* copy, const DOMElement* source)
    {
        sources_.emplace(copy, source);
        const DOMElement* child = source->getFirstElementChild();
        for (const auto* each = copy->getFirstElementChild(); each != nullptr;
             each = each->getNextElementSibling(), child = child->getNextElementSibling()) {
            NoteSources(each, child);
        }
    }

    xercesc::DOMDocument* tree_;
    DOMElement* section_;
    std::unordered_map<const DOMElement*, const DOMElement*> sources_;
};

Feature FeatureOf(const DOMElement* element)
{
    const std::string word = AttributeText(element, "feature");
    for (const FeatureRow& row : kFeatures) {
        if (word == row.word) return row.feature;
    }
    RefuseAt(element, kOutputFeature, word.c_str(),
             AttributeText(element, Tags::XML_ATT_NAME).c_str());
}

// The declared categories' words for people, the Target's before the field's own.
std::map<std::string, std::string> DisplayValues(const DOMElement* root, const ScoreModel& model)
{
    std::map<std::string, std::string> display;
    const auto* target = dynamic_cast<const DictVar*>(model.GetTargetVar());
    if (target != nullptr && target->GetTargetDeclaration() != nullptr) {
        for (const auto& [value, text] : target->GetTargetDeclaration()->displayValues) {
            display.emplace(value, text);
        }
    }
    for (const DOMElement* value : ValidValues(TargetDataField(root))) {
        const std::string text = AttributeText(value, "displayValue");
        if (!text.empty()) display.emplace(AttributeText(value, Tags::XML_ATT_VALUE), text);
    }
    return display;
}

// A variable for what an output field without expression holds.
std::unique_ptr<DictVar> VariableOf(const OutputField& field, const ScoreModel& model)
{
    DictVarType type;
    type.name = field.name;
    const ScoreDictVar* target = model.GetTargetVar();
    const bool text = field.feature == Feature::PredictedDisplayValue ||
                      (field.feature == Feature::PredictedValue && target != nullptr &&
                       target->GetValueType() == ScoreDictVar::STRING);
    if (text) {
        type.level = ScoreDictVar::CATEGORICAL;
        type.valueType = ScoreDictVar::STRING;
    }
    return std::make_unique<DictVar>(type);
}

// The document's own fields, those but that have the name of an output field.
void AddFields(BaseDictionary& dictionary, const ScoreModel& model,
               const std::set<std::string>& outputNames)
{
    if (model.GetDictionary() != nullptr) {
        for (const ScoreDictVar* var : model.GetDictionary()->GetVars()) {
            if (!outputNames.contains(var->GetName())) {
                dictionary.AddVar(var->GetName(), var->Clone());
            }
        }
    }
    if (model.GetTransformationDictionary() == nullptr) return;
    for (const ScoreDictVar* var : model.GetTransformationDictionary()->GetVars()) {
        // Its value is in the case already; here it is a field like any other.
        if (!outputNames.contains(var->GetName())) {
            const DictVarType& type = static_cast<const TransformVar&>(*var).Type();
            dictionary.AddVar(var->GetName(), new DictVar(type));
        }
    }
}

}  // namespace

std::unique_ptr<OutputSection> ReadOutputSection(const Document& document, const ScoreModel& model)
{
    xercesc::DOMDocument* tree = document.GetTree().dom.get();
    const DOMElement* root = tree->getDocumentElement();
    const DOMElement* modelElement = ModelElement(root);
    const DOMElement* output = ChildElement(modelElement, "Output");
    if (output == nullptr) return nullptr;

    auto section = std::make_unique<OutputSection>();
    section->displayValues = DisplayValues(root, model);
    section->dictionary = std::make_unique<BaseDictionary>();

    // The document's own section of functions is read with any other.
    ExpressionSection expressions(tree);
    for (const DOMElement* function : ChildElements(
             ChildElement(modelElement, Tags::XML_ELE_LOCALTRANSFORMATIONS), kDefineFunction)) {
        expressions.AddFunction(function);
    }
    const auto elements = ChildElements(output, "OutputField");
    std::set<std::string> names;
    for (const DOMElement* element : elements) {
        names.insert(AttributeText(element, Tags::XML_ATT_NAME));
    }
    AddFields(*section->dictionary, model, names);
    for (const DOMElement* element : elements) {
        OutputField field;
        field.name = AttributeText(element, Tags::XML_ATT_NAME);
        field.feature = FeatureOf(element);
        field.category = AttributeText(element, Tags::XML_ATT_VALUE);
        const DOMElement* expression = ExpressionOf(element);
        if (field.feature == Feature::Expression) {
            if (expression == nullptr) RefuseAt(element, kExpressionMissing, field.name.c_str());
            const std::string type = TypeOf(element, expression);
            const std::string optype = AttributeText(element, Tags::XML_ATT_DATAFIELD_OPTYPE);
            DOMElement* derived = expressions.AddField(element, expression);
            SetAttributeText(derived, Tags::XML_ATT_NAME, field.name);
            SetAttributeText(derived, kDataType, type);
            SetAttributeText(derived, Tags::XML_ATT_DATAFIELD_OPTYPE,
                             !optype.empty()    ? optype
                             : IsTextType(type) ? kCategorical
                                                : Tags::XML_VAL_OT_CONTINUOUS);
        } else if (!section->dictionary->AddVar(field.name, VariableOf(field, model).release())) {
            RefuseAt(element, kDuplicateField, field.name.c_str());
        }
        section->fields.push_back(std::move(field));
    }

    ExpressionReader reader;
    try {
        section->expressions.reset(
            reader.HandleTransformationDictionary(expressions.Get(), section->dictionary.get()));
    } catch (VSException& refusal) {
        refusal.SetPlace(PlaceOf(expressions.SourceOf(reader.CurrentElement())));
        throw VSException(refusal);
    }
    std::set<std::string> inputs;
    for (OutputField& field : section->fields) {
        if (field.feature == Feature::Residual && model.GetTargetVar() != nullptr) {
            inputs.insert(model.GetTargetVar()->GetName());
        }
        if (field.feature != Feature::Expression) continue;
        field.expression =
            static_cast<const TransformVar*>(section->expressions->GetVar(field.name));
        for (const ScoreDictVar* input : field.expression->Inputs()) {
            if (!names.contains(input->GetName())) inputs.insert(input->GetName());
        }
    }
    section->inputs.assign(inputs.begin(), inputs.end());
    return section;
}

}  // namespace MCVelscore_850
