// The options of single families that stand beside the published tables: leading Extension
// children of the model element, each a name and a value.

#include "host/pmmlmodeltags.h"
#include "models/blrmodel.h"
#include "readers/codes.h"
#include "readers/generalregressiontranslator.h"
#include "readers/parse.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using Tags = PMMLModelTags;

namespace {

// One option: the families that read it, its name, what its value does.
struct ExtensionRow {
    FamilySet families;
    const std::string& name;
    void (*apply)(const BaseTranslator& reader, Parse& parse, const std::string& value);
};

// Compared in this order; the first hit ends an extension's turn, and a name that no row has is
// passed over.
const ExtensionRow kExtensions[] = {
    {kAllFamilies, Tags::XML_VAL_NAME_MODELDF,
     [](const BaseTranslator& reader, Parse& parse, const std::string& value) {
         if (!value.empty()) parse.model->SetDF(reader.VerifyDouble(value));
     }},
    {kAllFamilies, Tags::XML_ATT_RM_EXT_NAME_ALLMISSINGFACTORS,
     [](const BaseTranslator&, Parse& parse, const std::string& value) {
         if (value == "true") parse.model->SetAllowMissingFactors(true);  // this spelling alone
     }},
    {Family(kBinary), Tags::XML_ATT_RM_EXT_NAME_CUTOFF,
     [](const BaseTranslator& reader, Parse& parse, const std::string& value) {
         static_cast<BLRModel&>(*parse.model).SetCutoff(reader.VerifyDouble(value));
     }},
};

}  // namespace

void GeneralRegressionTranslator::ReadExtensions(Parse& parse)
{
    // Leading children only: an extension behind a child of another kind is never seen.
    for (DOMElement* child = GetFirstChildElt(parse.modelElement);
         child != nullptr && IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION);
         child = GetNextSiblingElt(child)) {
        const std::string name = AttributeText(child, Tags::XML_ATT_EXT_NAME);
        const std::string value = AttributeText(child, Tags::XML_ATT_VALUE);
        for (const ExtensionRow& row : kExtensions) {
            if (!parse.IsAmong(row.families) || name != row.name) continue;
            row.apply(*this, parse, value);
            break;
        }
        if (parse.IsAmong(kCoxFamilies)) ReadCoxExtension(parse, child, name, value);
    }
}

}  // namespace MCVelscore_850
