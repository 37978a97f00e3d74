#include "engine/documents/modelelement.h"

#include "engine/documents/names.h"
#include "host/documents/pmmlmodeltags.h"

namespace MCVelscore_850 {

using Tags = PMMLModelTags;

bool IsPmmlRoot(Element root) { return LocalNameOf(root.Tag()) == Tags::XML_ELE_PMML; }

double VersionOf(Element root) { return root.Number(Tags::XML_ATT_VERSION).value_or(0.0); }

Element ModelElement(Element root) { return root.Child(Tags::XML_ELE_REGRESSMODEL); }

std::string SelectorOf(Element model)
{
    std::string selector = model.Text(Tags::XML_ATT_MODELALGO);
    if (selector.empty()) selector = model.Text(Tags::XML_ATT_RM_MODEL_NAME);
    return selector;
}

std::optional<FamilyCode> FamilyOfModel(Element root, Element model)
{
    return FindFamily(model.Text(Tags::XML_ATT_RM_MODEL_TYPE), VersionOf(root), SelectorOf(model));
}

bool TakesContrasts(Element root)
{
    const Element model = ModelElement(root);
    if (!model) return false;
    const auto family = FamilyOfModel(root, model);
    return family && FamilyOf(*family).takesContrasts;
}

}  // namespace MCVelscore_850
