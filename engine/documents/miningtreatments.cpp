#include "engine/documents/miningtreatments.h"

#include "engine/documents/documenttree.h"
#include "engine/documents/treetext.h"
#include "host/documents/pmmlmodeltags.h"

namespace MCVelscore_850 {

namespace {

using xercesc::DOMElement;

// The attributes of a MiningField that are kept, and where. The plug-in's reader knows the last one
// too, for continuous fields.
struct Attribute {
    const char* name;
    std::string MiningFieldTreatment::*member;
};
const Attribute kAttributes[] = {
    {"name", &MiningFieldTreatment::name},
    {"invalidValueTreatment", &MiningFieldTreatment::invalidValueTreatment},
    {"invalidValueReplacement", &MiningFieldTreatment::invalidValueReplacement},
    {"missingValueTreatment", &MiningFieldTreatment::missingValueTreatment},
    {"missingValueReplacement", &MiningFieldTreatment::missingValueReplacement},
};

}  // namespace

std::vector<MiningFieldTreatment> ReadMiningTreatments(const Document& document)
{
    std::vector<MiningFieldTreatment> treatments;
    const DOMElement* model = ModelElement(document.GetTree().dom->getDocumentElement());
    const DOMElement* schema = ChildElement(model, PMMLModelTags::XML_ELE_MININGSCHEMA);
    for (const DOMElement* field : ChildElements(schema, PMMLModelTags::XML_ELE_MININGFIELD)) {
        MiningFieldTreatment treatment;
        for (const Attribute& attribute : kAttributes) {
            treatment.*attribute.member = AttributeText(field, attribute.name);
        }
        treatments.push_back(std::move(treatment));
    }
    return treatments;
}

}  // namespace MCVelscore_850
