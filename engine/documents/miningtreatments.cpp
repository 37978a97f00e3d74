#include "engine/documents/miningtreatments.h"

#include "engine/documents/documentloader.h"
#include "engine/documents/treefields.h"

namespace MCVelscore_850 {

namespace {

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
    for (const Element field : MiningFields(document.Root())) {
        MiningFieldTreatment treatment;
        for (const Attribute& attribute : kAttributes) {
            treatment.*attribute.member = field.Text(attribute.name);
        }
        treatments.push_back(std::move(treatment));
    }
    return treatments;
}

}  // namespace MCVelscore_850
