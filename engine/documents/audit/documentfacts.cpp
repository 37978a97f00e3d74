#include "engine/documents/audit/documentfacts.h"

#include <algorithm>

#include "engine/documents/audit/cellattributes.h"
#include "engine/documents/audit/covariancecells.h"
#include "engine/documents/audit/familyfacts.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"
#include "host/documents/zeltmodeltags.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

using Tags = PMMLModelTags;
using Old = ZELTModelTags;

uint32_t NameIndex::Add(Element::RawText name)
{
    const auto found = numbers_.find(name);
    if (found != numbers_.end()) return found->second;
    const auto number = static_cast<uint32_t>(names_.size());
    const auto place = numbers_.emplace(std::basic_string<XMLCh>(name), number).first;
    names_.push_back(Utf8FromXml(place->first.c_str()));
    rawNames_.push_back(&place->first);
    return number;
}

uint32_t NameIndex::Find(Element::RawText name) const
{
    const auto found = numbers_.find(name);
    return found == numbers_.end() ? kNone : found->second;
}

uint32_t NameIndex::Find(std::string_view name) const { return Find(XmlFromUtf8(name)); }

namespace {

// The parameter that a linear regression appends where none is listed.
const std::string kConstant = "(Constant)";

std::string Utf8Of(Element::RawText text)
{
    std::string narrow(text.size(), '\0');
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] >= 0x80) return Utf8FromXml(text.data());
        narrow[i] = static_cast<char>(text[i]);
    }
    return narrow;
}

// What the sections of a model are called.
struct Section {
    const std::string& list;
    const std::string& element;
};
struct Words {
    Section parameters;
    Section factors;
    Section covariates;
    Section designs;
    Section estimates;
    AttributeNames<2> parameter;  // name, label
    AttributeNames<4> design;     // parameter, predictor, value, target category
    AttributeNames<4> estimate;   // parameter, target category, beta, df
};

const Words& PublishedWords()
{
    static const Words kWords{
        {Tags::XML_ELE_PARAM_LIST, Tags::XML_ELE_PARAM},
        {Tags::XML_ELE_FAC_LIST, Tags::XML_ELE_PREDICTOR},
        {Tags::XML_ELE_COV_LIST, Tags::XML_ELE_PREDICTOR},
        {Tags::XML_ELE_PP_MATRIX, Tags::XML_ELE_PP_CELL},
        {Tags::XML_ELE_PARAM_MATRIX, Tags::XML_ELE_PCELL},
        AttributeNames(Tags::XML_ATT_PARAM_NAME, Tags::XML_ATT_PARAM_LABEL),
        AttributeNames(Tags::XML_ATT_PPC_PARAMNAME, Tags::XML_ATT_PPC_PREDNAME,
                       Tags::XML_ATT_PPC_VALUE, Tags::XML_ATT_PC_TARGET_CAT),
        AttributeNames(Tags::XML_ATT_PC_PARAMNAME, Tags::XML_ATT_PC_TARGET_CAT,
                       Tags::XML_ATT_PC_BETA, Tags::XML_ATT_PC_DF)};
    return kWords;
}

// This form has no labels of parameters, one design for all categories, and covariances of linear
// regressions alone.
const Words& OlderWords()
{
    static const std::string kNone;
    static const Words kWords{
        {Old::XML_ELE_PARAM_LIST, Old::XML_ELE_PARAM},
        {Old::XML_ELE_FAC_LIST, Old::XML_ELE_PREDICTOR},
        {Old::XML_ELE_COV_LIST, Old::XML_ELE_PREDICTOR},
        {Old::XML_ELE_PP_MATRIX, Old::XML_ELE_PP_CELL},
        {Old::XML_ELE_P_TABLE, Old::XML_ELE_P_CELL},
        AttributeNames(Old::XML_ATT_NAME, kNone),
        AttributeNames(Old::XML_ATT_PARAMETER_NAME, Old::XML_ATT_PP_PREDICTOR, Old::XML_ATT_VALUE,
                       kNone),
        AttributeNames(Old::XML_ATT_PARAMETER_NAME, Old::XML_ATT_PC_TARGET_CAT,
                       Old::XML_ATT_PC_BETA, Old::XML_ATT_PC_DF)};
    return kWords;
}

std::string OptypeOfLevel(const std::string& level, bool isText)
{
    if (level == Old::XML_VAL_ML_CONTINUOUS) return Tags::XML_VAL_OT_CONTINUOUS;
    if (level == Old::XML_VAL_ML_ORDINAL) return "ordinal";
    if (level == Old::XML_VAL_ML_NOMINAL || isText) return "categorical";
    return Tags::XML_VAL_OT_CONTINUOUS;
}

// The model types of the older form.
std::optional<FamilyCode> FamilyOfType(const std::string& type)
{
    if (type == Old::XML_VAL_MT_REGRESS) return kLinear;
    if (type == Old::XML_VAL_MT_MLR) return kMultinomial;
    if (type == Old::XML_VAL_MT_CLR) return kConditional;
    return std::nullopt;
}

// Fills the facts of a document, section after section.
class Gatherer {
public:
    explicit Gatherer(Element root)
        : words_(root.Is(Old::XML_ELE_ZELTML) ? OlderWords() : PublishedWords())
    {
        facts_.root = root;
        facts_.older = root.Is(Old::XML_ELE_ZELTML);
        facts_.version = root.Number(Tags::XML_ATT_VERSION).value_or(0.0);
    }

    DocumentFacts Gather(CovarianceCells& cells) &&
    {
        facts_.older ? GatherOlderHead() : GatherHead();
        if (!facts_.model) return std::move(facts_);
        GatherParameters();
        GatherPredictors(words_.factors, true);
        GatherPredictors(words_.covariates, false);
        GatherDesigns();
        GatherEstimates();
        GatherCovariances(cells);
        facts_.repeatedDesigns = RepeatedDesigns(facts_);
        facts_.repeatedEstimates = RepeatedEstimates(facts_);
        facts_.repeatedCovariances = RepeatedCovariances(facts_);
        if (facts_.older) return std::move(facts_);
        GatherOptions(facts_);
        GatherBaselines(facts_);
        return std::move(facts_);
    }

private:
    void GatherHead()
    {
        facts_.model = facts_.root.Child(Tags::XML_ELE_REGRESSMODEL);
        AddFields(facts_.root.Child(Tags::XML_ELE_DATADICTIONARY), "DataField", false);
        AddFields(facts_.root.Child(Tags::XML_ELE_TRANSFORMATION), "DerivedField", true);
        AddFields(facts_.model.Child(Tags::XML_ELE_LOCALTRANSFORMATIONS), "DerivedField", true);
        if (!facts_.model) return;
        FindFamily();
        const Element target = TargetDataField(facts_.root);
        for (const DocumentFacts::Field& field : facts_.fields) {
            if (target && field.element == target) facts_.target = &field;
        }
    }

    void FindFamily()
    {
        facts_.family = FamilyOfModel(facts_.root, facts_.model);
        if (!facts_.family) return;
        facts_.family = FamilyUnderLink(*facts_.family,
                                        facts_.model.Text(Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION),
                                        facts_.model.Text(Tags::XML_ATT_LINKFUNCTION));
    }

    void GatherOlderHead()
    {
        facts_.model = facts_.root.Child(Old::XML_ELE_MODEL).Child(Old::XML_ELE_REGRESS_MODEL);
        for (const Element variable :
             facts_.root.Child(Old::XML_ELE_DICTIONARY).Children(Old::XML_ELE_VARIABLE)) {
            AddVariable(variable);
        }
        facts_.family = FamilyOfType(facts_.model.Text(Old::XML_ATT_RM_MODEL_TYPE));
        const uint32_t target =
            facts_.fieldNames.Find(facts_.model.Raw(Old::XML_ATT_RM_TARGET_VAR));
        if (target != NameIndex::kNone) facts_.target = &facts_.fields[target];
    }

    void AddFields(Element section, std::string_view tag, bool derived)
    {
        for (const Element element : section.Children(tag)) {
            DocumentFacts::Field field;
            field.element = element;
            field.name = element.Text(Tags::XML_ATT_NAME);
            field.label = element.Text("displayName");
            field.optype = element.Text(Tags::XML_ATT_DATAFIELD_OPTYPE);
            field.dataType = element.Text("dataType");
            field.derived = derived;
            for (const Element value : ValidValues(element)) {
                field.categories.push_back(value.Text(Tags::XML_ATT_VALUE));
                field.categoryKeys.push_back(CategoryKey(element, field.categories.back()));
            }
            AddField(std::move(field));
        }
    }

    void AddVariable(Element element)
    {
        DocumentFacts::Field field;
        field.element = element;
        field.name = element.Text(Old::XML_ATT_NAME);
        field.label = element.Text(Old::XML_ATT_LABEL);
        const bool isText = element.Text(Old::XML_ATT_VR_STORAGE_TYPE) == Old::XML_VAL_ST_STRING;
        field.dataType = isText ? "string" : "double";
        field.optype = OptypeOfLevel(element.Text(Old::XML_ATT_VR_MEASUREMENT_LEVEL), isText);
        for (const Element category :
             element.Child(Old::XML_ELE_CATEGORIES).Children(Old::XML_ELE_CATEGORY)) {
            field.categories.push_back(category.Text(Old::XML_ATT_VALUE));
            field.categoryKeys.push_back(CategoryKey(field.dataType, field.categories.back()));
        }
        AddField(std::move(field));
    }

    // A name that comes again keeps the first field.
    void AddField(DocumentFacts::Field field)
    {
        if (facts_.fieldNames.Add(field.element.Raw(Tags::XML_ATT_NAME)) == facts_.fields.size()) {
            facts_.fields.push_back(std::move(field));
        }
    }

    void GatherParameters()
    {
        AttributeReader reader(words_.parameter);
        for (const Element element : Of(words_.parameters)) {
            const auto [name, label] = reader.Of(element);
            if (facts_.parameterNames.Add(name) < facts_.parameters.size()) continue;
            facts_.parameters.push_back({element, Utf8Of(name), Utf8Of(label)});
        }
        if (facts_.Is(kLinear) && !facts_.older) AddImpliedConstant();
    }

    void AddImpliedConstant()
    {
        if (facts_.parameterNames.Has(kConstant)) return;
        facts_.parameterNames.Add(XmlFromUtf8(kConstant));
        facts_.parameters.push_back(
            {facts_.model.Child(words_.parameters.list), kConstant, kConstant, true});
    }

    void GatherPredictors(const Section& section, bool areFactors)
    {
        for (const Element element : Of(section)) {
            const Element::RawText name = element.Raw(Tags::XML_ATT_PRED_NAME);
            if (facts_.predictorNames.Add(name) < facts_.predictors.size()) continue;
            facts_.predictors.push_back(
                {element, Utf8Of(name), areFactors, facts_.fieldNames.Find(name)});
        }
    }

    void GatherDesigns()
    {
        facts_.hasDesign.assign(facts_.parameters.size(), false);
        AttributeReader reader(words_.design);
        for (const Element element : Of(words_.designs)) {
            const auto [parameter, predictor, value, category] = reader.Of(element);
            facts_.designs.push_back({element, facts_.parameterNames.Find(parameter),
                                      facts_.predictorNames.Find(predictor), Utf8Of(value),
                                      Utf8Of(category)});
            const uint32_t named = facts_.designs.back().parameter;
            if (named != NameIndex::kNone) facts_.hasDesign[named] = true;
        }
    }

    void GatherEstimates()
    {
        AttributeReader reader(words_.estimate);
        for (const Element element : Of(words_.estimates)) {
            const auto [parameter, category, beta, df] = reader.Of(element);
            facts_.estimates.push_back({element, facts_.parameterNames.Find(parameter),
                                        Utf8Of(category), NumberIn(beta), NumberIn(df)});
        }
    }

    void GatherCovariances(CovarianceCells& cells)
    {
        if (!cells.AreRead()) cells.ReadAll(facts_.root);
        facts_.covariances = cells.TakeCells(facts_.parameterNames);
        facts_.covarianceCategories = cells.TakeCategories();
    }

    ElementRange Of(const Section& section) const
    {
        return facts_.model.Child(section.list).Children(section.element);
    }

    const Words& words_;
    DocumentFacts facts_;
};

}  // namespace

std::string KeyOf(const DocumentFacts::Field* field, const std::string& category)
{
    return field == nullptr ? category : CategoryKey(field->element, category);
}

bool DocumentFacts::Field::HasCategory(const std::string& text) const
{
    return std::find(categoryKeys.begin(), categoryKeys.end(), CategoryKey(dataType, text)) !=
           categoryKeys.end();
}

bool DocumentFacts::HasEquations() const
{
    if (Is(kGeneralizedLinear)) {
        return model.Text(Tags::XML_ATT_RM_FUNC_NAME) == Tags::XML_VAL_RM_FUNC_NAME_C;
    }
    return IsMultinomial() || Is(kConditional) || Is(kBinary);
}

std::string DocumentFacts::OptionText(std::string_view name) const
{
    if (model.Has(name)) return model.Text(name);
    for (const Element extension : model.Children(Tags::XML_ELE_EXTENSION)) {
        if (extension.Text(Tags::XML_ATT_EXT_NAME) == name) {
            return extension.Text(Tags::XML_ATT_VALUE);
        }
    }
    return {};
}

DocumentFacts GatherFacts(const Document& document, CovarianceCells& cells)
{
    return Gatherer(document.Root()).Gather(cells);
}

}  // namespace MCVelscore_850
