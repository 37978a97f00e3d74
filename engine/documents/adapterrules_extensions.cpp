#include <string>
#include <vector>

#include "engine/documents/adapterrules.h"
#include "engine/documents/element.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/names.h"
#include "engine/documents/ownextensions.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

// Takes Extensions of other makers out of a model, and keeps those that the reader would have
// obeyed for the message.
class Cleaning {
public:
    Cleaning(Element root, Element model) : model_(model), family_(FamilyOfModel(root, model)) {}

    std::optional<Change> Clean() &&
    {
        CleanOptions();
        for (const Element field :
             model_.Child(Tags::XML_ELE_MININGSCHEMA).Children(Tags::XML_ELE_MININGFIELD)) {
            CleanMiningField(field);
        }
        for (const std::string& tag : {Tags::XML_ELE_PARAM_LIST, Tags::XML_ELE_FAC_LIST,
                                       Tags::XML_ELE_COV_LIST, Tags::XML_ELE_PP_MATRIX}) {
            CleanStrict(model_.Child(tag));
        }
        for (const Element factor :
             model_.Child(Tags::XML_ELE_FAC_LIST).Children(Tags::XML_ELE_PREDICTOR)) {
            CleanStrict(factor);
            CleanStrict(factor.Child(Tags::XML_ELE_GRM_CATEGORIES));
            CleanStrict(factor.Child(Tags::XML_ELE_MATRIX));
        }
        CleanWhole(model_.Child(Tags::XML_ELM_BASECUMHAZARDTABLES));
        if (names_.empty()) return std::nullopt;
        return Change{place_, "Extension " + Listed(names_) + " of extender " +
                                  Listed({extender_}) + " isn't velscore's and is left out"};
    }

private:
    static Elements ExtensionsOf(Element parent)
    {
        return parent.Children(Tags::XML_ELE_EXTENSION).List();
    }

    // The reader obeys a leading Extension of a name that it knows, whoever signed it.
    void CleanOptions()
    {
        for (Element extension : ExtensionsOf(model_)) {
            const OwnExtension* own = FindOwnExtension(extension);
            if (own == nullptr || ExtenderOf(extension) != Extender::Another) continue;
            if (IsLeading(extension) && own->IsHeededBy(family_)) Tell(extension, own->name);
            extension.Erase();
        }
    }

    // Of a Cox model's target it reads the values that mean the event, from any Extension.
    void CleanMiningField(Element field)
    {
        for (Element extension : ExtensionsOf(field)) {
            const Element status = extension.Child(Tags::XML_EXT_ELE_COXREG_STRATUM);
            if (!status || ExtenderOf(extension) != Extender::Another) continue;
            if (status.Text(Tags::XML_ATT_NAME) == Tags::XML_EXT_NAME_COXREG_STATUS) {
                Tell(extension, Tags::XML_EXT_NAME_COXREG_STATUS);
            }
            extension.Erase();
        }
    }

    // Where the reader counts children, or looks at the first one alone. Words of the system that
    // are misspelt stay for the audit.
    void CleanStrict(Element parent)
    {
        for (Element extension : ExtensionsOf(parent)) {
            const Extender extender = ExtenderOf(extension);
            const OwnExtension* own = FindOwnExtension(extension);
            if (extender == Extender::Another) {
                if (own != nullptr && own->IsHeededBy(family_)) Tell(extension, own->name);
                extension.Erase();
            } else if (extender == Extender::None && own == nullptr &&
                       NearOwnName(extension).empty()) {
                extension.Erase();
            }
        }
    }

    // Cells are looked for at any depth, within Extensions too. The guard bounds the depth, and
    // with it this recursion.
    void CleanWhole(Element parent)
    {
        CleanStrict(parent);
        for (const Element child : parent.Children()) CleanWhole(child);
    }

    void Tell(Element extension, std::string_view name)
    {
        if (names_.empty()) {
            place_ = extension.Place();
            extender_ = extension.Text(Tags::XML_ATT_EXTENSION_EXTENDER);
        }
        names_.emplace_back(name);
    }

    Element model_;
    std::optional<FamilyCode> family_;
    std::vector<std::string> names_;
    std::string extender_;  // of the first
    DocumentPlace place_;
};

}  // namespace

std::optional<Change> TakeOutForeignExtensions(Element root)
{
    const Element model = ModelElement(root);
    if (!model) return std::nullopt;
    return Cleaning(root, model).Clean();
}

}  // namespace MCVelscore_850
