// The Targets element of a PMML document.

#include <algorithm>
#include <cmath>
#include <memory>

#include <xercesc/dom/DOM.hpp>

#include "host/documents/pmmlmodeltags.h"
#include "host/documents/pmmltranslator.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/values/numericvalue.h"
#include "host/variables/dictvar.h"
#include "host/variables/scoredictionary.h"
#include "host/variables/targetdeclaration.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using Tags = PMMLModelTags;

namespace {

struct CastRow {
    const char* word;
    TargetDeclaration::Cast cast;
};

constexpr CastRow kCasts[] = {
    {"round", TargetDeclaration::Cast::Round},
    {"ceiling", TargetDeclaration::Cast::Ceiling},
    {"floor", TargetDeclaration::Cast::Floor},
};

}  // namespace

double TargetDeclaration::Apply(double predicted) const
{
    if (NumericValue::IsSystemMissingValue(predicted) || std::isnan(predicted)) return predicted;
    double y = std::max(minimum, std::min(maximum, predicted));
    y = y * rescaleFactor + rescaleConstant;
    switch (cast) {
        case Cast::Round: return std::round(y);
        case Cast::Ceiling: return std::ceil(y);
        case Cast::Floor: return std::floor(y);
        case Cast::None: break;
    }
    return y;
}

const std::string* TargetDeclaration::DefaultCategory() const
{
    const auto largest =
        std::max_element(priors.begin(), priors.end(),
                         [](const auto& a, const auto& b) { return a.second < b.second; });
    return largest == priors.end() ? nullptr : &largest->first;
}

void PMMLTranslator::HandleTargets(DOMElement* element, ScoreDictionary* dictionary)
{
    for (DOMElement* child = GetFirstChildElt(element); child != nullptr;
         child = GetNextSiblingElt(child)) {
        if (!IsEqual(child->getTagName(), "Target")) continue;
        std::string name = Transcode(GetAttribute(child, "field"));
        if (name.empty()) name = NameOfTarget(element->getParentNode());
        ScoreDictVar* var = dictionary->GetVar(name);
        if (var == nullptr) {
            NoteElement(child);
            Refuse(kNotInDictionaries, name.c_str(), Tags::XML_ELE_DATADICTIONARY.c_str(),
                   Tags::XML_ELE_TRANSFORMATION.c_str());
        }
        // Every variable of this host is a DictVar.
        static_cast<DictVar*>(var)->SetTargetDeclaration(ReadTarget(child, name));
    }
}

// The target of the mining schema: a Target without a name is for it.
std::string PMMLTranslator::NameOfTarget(const xercesc::DOMNode* model) const
{
    const DOMElement* schema = GetChildByTag(model, Tags::XML_ELE_MININGSCHEMA);
    if (schema == nullptr) return {};
    for (DOMElement* field = GetFirstChildElt(schema); field != nullptr;
         field = GetNextSiblingElt(field)) {
        const XMLCh* usage = GetAttribute(field, Tags::XML_ATT_MININGFIELD_USAGETYPE);
        if (IsEqual(usage, Tags::XML_ATT_MF_FUT_TARGET) ||
            IsEqual(usage, Tags::XML_ATT_MF_FUT_PREDICTED)) {
            return Transcode(GetAttribute(field, Tags::XML_ATT_MININGFIELD_NAME));
        }
    }
    return {};
}

TargetDeclaration PMMLTranslator::ReadTarget(DOMElement* element, const std::string& name) const
{
    TargetDeclaration target;
    const auto read = [&](const char* attribute, double& number) {
        const XMLCh* text = GetAttribute(element, attribute);
        if (!IsBlank(text)) number = VerifyDouble(text);
    };
    read("min", target.minimum);
    read("max", target.maximum);
    read("rescaleFactor", target.rescaleFactor);
    read("rescaleConstant", target.rescaleConstant);
    if (const XMLCh* cast = GetAttribute(element, "castInteger"); !IsBlank(cast)) {
        const auto row = std::find_if(std::begin(kCasts), std::end(kCasts),
                                      [&](const CastRow& r) { return IsEqual(cast, r.word); });
        if (row == std::end(kCasts)) {
            Refuse(kUnknownDataType, ToString(cast).c_str(), "castInteger", name.c_str());
        }
        target.cast = row->cast;
    }
    for (DOMElement* child = GetFirstChildElt(element); child != nullptr;
         child = GetNextSiblingElt(child)) {
        if (!IsEqual(child->getTagName(), "TargetValue")) continue;
        const std::string value = Transcode(GetAttribute(child, Tags::XML_ATT_VALUE));
        const std::string display = Transcode(GetAttribute(child, "displayValue"));
        if (!value.empty() && !display.empty()) target.displayValues.emplace_back(value, display);
        const XMLCh* prior = GetAttribute(child, "priorProbability");
        if (!value.empty() && !IsBlank(prior)) {
            target.priors.emplace_back(value, VerifyDouble(prior));
        }
        const XMLCh* standard = GetAttribute(child, "defaultValue");
        if (!IsBlank(standard)) {
            target.hasDefault = true;
            target.defaultValue = VerifyDouble(standard);
        }
    }
    return target;
}

}  // namespace MCVelscore_850
