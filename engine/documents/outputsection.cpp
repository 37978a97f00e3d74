#include "engine/documents/outputsection.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "engine/documents/documentloader.h"
#include "engine/documents/names.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/pmmltranslator.h"
#include "host/expressions/transformvar.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/model/scoremodel.h"
#include "host/variables/dictvar.h"
#include "host/variables/targetdeclaration.h"

namespace MCVelscore_850 {

using Tags = PMMLModelTags;
using Feature = OutputField::Feature;

namespace {

// What an OutputField holds beside its expression.
const std::string_view kNoExpressions[] = {Tags::XML_ELE_EXTENSION, Tags::XML_ELE_VALUE,
                                           "Decisions"};
// The expressions that yield texts where nothing else is said.
constexpr std::string_view kTextExpressions[] = {"MapValues", "Discretize"};
constexpr std::string_view kTextTypes[] = {"string", "boolean"};

struct FeatureRow {
    std::string_view word;
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
Element ExpressionOf(Element field)
{
    for (const Element child : field.Children()) {
        if (!IsOneOf(child.Tag(), kNoExpressions)) return child;
    }
    return {};
}

// The type of what an expression yields, where neither it nor the field says so.
std::string TypeOf(Element field, Element expression)
{
    for (const Element element : {field, expression}) {
        std::string type = element.Text("dataType");
        if (!type.empty()) return type;
    }
    return IsOneOf(expression.Tag(), kTextExpressions) ? "string" : "double";
}

Feature FeatureOf(Element element)
{
    const std::string word = element.Text("feature");
    const auto* row = std::find_if(std::begin(kFeatures), std::end(kFeatures),
                                   [&](const FeatureRow& each) { return each.word == word; });
    if (row != std::end(kFeatures)) return row->feature;
    RefuseAt(element, kOutputFeature, word.c_str(), element.Text(Tags::XML_ATT_NAME).c_str());
}

OutputField FieldOf(Element element)
{
    OutputField field;
    field.name = element.Text(Tags::XML_ATT_NAME);
    field.feature = FeatureOf(element);
    field.category = element.Text(Tags::XML_ATT_VALUE);
    return field;
}

// The derived field that an output field with an expression is.
DerivedDeclaration DeclarationOf(Element element)
{
    DerivedDeclaration declared;
    declared.name = element.Text(Tags::XML_ATT_NAME);
    declared.element = element.Dom();
    const Element expression = ExpressionOf(element);
    if (!expression) RefuseAt(element, kExpressionMissing, declared.name.c_str());
    declared.expression = expression.Dom();
    declared.dataType = TypeOf(element, expression);
    declared.optype = element.Text(Tags::XML_ATT_DATAFIELD_OPTYPE);
    if (declared.optype.empty()) {
        const bool isText = IsOneOf(declared.dataType, kTextTypes);
        declared.optype = isText ? "categorical" : Tags::XML_VAL_OT_CONTINUOUS;
    }
    return declared;
}

// The declared categories' words for people, the Target's before the field's own.
std::map<std::string, std::string> DisplayValues(Element root, const ScoreModel& model)
{
    std::map<std::string, std::string> display;
    const auto* target = dynamic_cast<const DictVar*>(model.GetTargetVar());
    if (target != nullptr && target->GetTargetDeclaration() != nullptr) {
        for (const auto& [value, text] : target->GetTargetDeclaration()->displayValues) {
            display.emplace(value, text);
        }
    }
    for (const Element value : ValidValues(TargetDataField(root))) {
        const std::string text = value.Text("displayValue");
        if (!text.empty()) display.emplace(value.Text(Tags::XML_ATT_VALUE), text);
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

void ReadExpressions(const std::vector<DerivedDeclaration>& declared, Element model,
                     OutputSection& section)
{
    ExpressionReader reader;
    try {
        section.expressions.reset(
            reader.ReadDerivedFields(declared, model.Dom(), section.dictionary.get()));
    } catch (VSException& refusal) {
        refusal.SetPlace(PlaceOf(reader.CurrentElement()));
        throw VSException(refusal);
    }
    for (OutputField& field : section.fields) {
        if (field.feature != Feature::Expression) continue;
        field.expression =
            static_cast<const TransformVar*>(section.expressions->GetVar(field.name));
    }
}

// The fields of the data that the section reads, in the order of their names.
std::vector<std::string> InputsOf(const OutputSection& section, const ScoreModel& model,
                                  const std::set<std::string>& outputNames)
{
    std::set<std::string> inputs;
    for (const OutputField& field : section.fields) {
        if (field.feature == Feature::Residual && model.GetTargetVar() != nullptr) {
            inputs.insert(model.GetTargetVar()->GetName());
        }
        if (field.expression == nullptr) continue;
        for (const ScoreDictVar* input : field.expression->Inputs()) {
            if (!outputNames.contains(input->GetName())) inputs.insert(input->GetName());
        }
    }
    return {inputs.begin(), inputs.end()};
}

}  // namespace

std::unique_ptr<OutputSection> ReadOutputSection(const Document& document, const ScoreModel& model)
{
    const Element root = document.Root();
    const Element output = ModelElement(root).Child("Output");
    if (!output) return nullptr;

    auto section = std::make_unique<OutputSection>();
    section->displayValues = DisplayValues(root, model);
    section->dictionary = std::make_unique<BaseDictionary>();
    const ElementRange elements = output.Children("OutputField");
    const std::set<std::string> names = NamesOf(elements);
    AddFields(*section->dictionary, model, names);
    std::vector<DerivedDeclaration> declared;
    for (const Element element : elements) {
        OutputField field = FieldOf(element);
        if (field.feature == Feature::Expression) {
            declared.push_back(DeclarationOf(element));
        } else if (!section->dictionary->AddVar(field.name, VariableOf(field, model).release())) {
            RefuseAt(element, kDuplicateField, field.name.c_str());
        }
        section->fields.push_back(std::move(field));
    }
    ReadExpressions(declared, ModelElement(root), *section);
    section->inputs = InputsOf(*section, model, names);
    return section;
}

}  // namespace MCVelscore_850
