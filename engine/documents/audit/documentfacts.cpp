#include "engine/documents/audit/documentfacts.h"

#include "engine/documents/audit/familyfacts.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"

namespace MCVelscore_850 {

using Tags = PMMLModelTags;

uint32_t NameIndex::Add(Element::RawText name)
{
    const auto [place, isNew] =
        numbers_.emplace(std::basic_string<XMLCh>(name), static_cast<uint32_t>(names_.size()));
    if (isNew) names_.push_back(Utf8FromXml(place->first.c_str()));
    return place->second;
}

uint32_t NameIndex::Find(Element::RawText name) const
{
    const auto found = numbers_.find(std::basic_string<XMLCh>(name));
    return found == numbers_.end() ? kNone : found->second;
}

uint32_t NameIndex::Find(std::string_view name) const { return Find(XmlFromUtf8(name)); }

namespace {

// Fills the facts of a document of the published form, section after section.
class Gatherer {
public:
    explicit Gatherer(Element root) { facts_.root = root; }

    DocumentFacts Gather() &&
    {
        facts_.model = facts_.root.Child(Tags::XML_ELE_REGRESSMODEL);
        facts_.version = facts_.root.Number(Tags::XML_ATT_VERSION).value_or(0.0);
        GatherFields();
        if (!facts_.model) return std::move(facts_);
        FindFamily();
        FindTarget();
        GatherParameters();
        GatherPredictors();
        GatherDesigns();
        GatherEstimates();
        GatherCovariances();
        GatherOptions(facts_);
        GatherBaselines(facts_);
        return std::move(facts_);
    }

private:
    void FindFamily()
    {
        facts_.family = FamilyOfModel(facts_.root, facts_.model);
        if (!facts_.family) return;
        facts_.family = FamilyUnderLink(*facts_.family,
                                        facts_.model.Text(Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION),
                                        facts_.model.Text(Tags::XML_ATT_LINKFUNCTION));
    }

    void GatherFields()
    {
        AddFields(facts_.root.Child(Tags::XML_ELE_DATADICTIONARY), "DataField", false);
        AddFields(facts_.root.Child(Tags::XML_ELE_TRANSFORMATION), "DerivedField", true);
        AddFields(facts_.model.Child(Tags::XML_ELE_LOCALTRANSFORMATIONS), "DerivedField", true);
    }

    void AddFields(Element section, std::string_view tag, bool derived)
    {
        for (const Element element : section.Children(tag)) {
            DocumentFacts::Field field;
            field.element = element;
            field.name = element.Text(Tags::XML_ATT_NAME);
            field.optype = element.Text(Tags::XML_ATT_DATAFIELD_OPTYPE);
            field.dataType = element.Text("dataType");
            field.derived = derived;
            for (const Element value : ValidValues(element)) {
                field.categories.push_back(value.Text(Tags::XML_ATT_VALUE));
                field.categoryKeys.push_back(CategoryKey(element, field.categories.back()));
            }
            // A name that comes again keeps the first field.
            if (facts_.fieldNames.Add(element.Raw(Tags::XML_ATT_NAME)) == facts_.fields.size()) {
                facts_.fields.push_back(std::move(field));
            }
        }
    }

    void FindTarget()
    {
        const Element target = TargetDataField(facts_.root);
        for (const DocumentFacts::Field& field : facts_.fields) {
            if (target && field.element == target) facts_.target = &field;
        }
    }

    void GatherParameters()
    {
        for (const Element element :
             facts_.model.Child(Tags::XML_ELE_PARAM_LIST).Children(Tags::XML_ELE_PARAM)) {
            if (facts_.parameterNames.Add(element.Raw(Tags::XML_ATT_PARAM_NAME)) <
                facts_.parameters.size()) {
                continue;
            }
            facts_.parameters.push_back({element, element.Text(Tags::XML_ATT_PARAM_NAME),
                                         element.Text(Tags::XML_ATT_PARAM_LABEL)});
        }
    }

    void GatherPredictors()
    {
        for (const std::string& list : {Tags::XML_ELE_FAC_LIST, Tags::XML_ELE_COV_LIST}) {
            for (const Element element :
                 facts_.model.Child(list).Children(Tags::XML_ELE_PREDICTOR)) {
                const Element::RawText name = element.Raw(Tags::XML_ATT_PRED_NAME);
                if (facts_.predictorNames.Add(name) < facts_.predictors.size()) continue;
                facts_.predictors.push_back({element, element.Text(Tags::XML_ATT_PRED_NAME),
                                             list == Tags::XML_ELE_FAC_LIST,
                                             facts_.fieldNames.Find(name)});
            }
        }
    }

    void GatherDesigns()
    {
        for (const Element element :
             facts_.model.Child(Tags::XML_ELE_PP_MATRIX).Children(Tags::XML_ELE_PP_CELL)) {
            facts_.designs.push_back(
                {element, facts_.parameterNames.Find(element.Raw(Tags::XML_ATT_PPC_PARAMNAME)),
                 facts_.predictorNames.Find(element.Raw(Tags::XML_ATT_PPC_PREDNAME)),
                 element.Text(Tags::XML_ATT_PPC_VALUE), element.Text(Tags::XML_ATT_PC_TARGET_CAT)});
        }
    }

    void GatherEstimates()
    {
        for (const Element element :
             facts_.model.Child(Tags::XML_ELE_PARAM_MATRIX).Children(Tags::XML_ELE_PCELL)) {
            facts_.estimates.push_back(
                {element, facts_.parameterNames.Find(element.Raw(Tags::XML_ATT_PC_PARAMNAME)),
                 element.Text(Tags::XML_ATT_PC_TARGET_CAT), element.Number(Tags::XML_ATT_PC_BETA),
                 element.Number(Tags::XML_ATT_PC_DF)});
        }
    }

    void GatherCovariances()
    {
        const auto category = [this](Element cell, const std::string& attribute) {
            const Element::RawText text = cell.Raw(attribute);
            return text.empty() ? NameIndex::kNone : facts_.covarianceCategories.Add(text);
        };
        for (const Element element :
             facts_.model.Child(Tags::XML_ELE_PCOV_MATRIX).Children(Tags::XML_ELE_PCOV_CELL)) {
            facts_.covariances.push_back(
                {element, facts_.parameterNames.Find(element.Raw(Tags::XML_ATT_PCC_PROW)),
                 facts_.parameterNames.Find(element.Raw(Tags::XML_ATT_PCC_PCOL)),
                 category(element, Tags::XML_ATT_PCC_TROW),
                 category(element, Tags::XML_ATT_PCC_TCol),
                 element.Number(Tags::XML_ATT_PCC_VALUE)});
        }
    }

    DocumentFacts facts_;
};

}  // namespace

std::string KeyOf(const DocumentFacts::Field* field, const std::string& category)
{
    return field == nullptr ? category : CategoryKey(field->element, category);
}

DocumentFacts GatherFacts(const Document& document) { return Gatherer(document.Root()).Gather(); }

}  // namespace MCVelscore_850
