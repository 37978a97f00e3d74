// The stages before the mining schema: dictionary, targets, transformations, degrees of freedom.

#include "host/documents/pmmlmodeltags.h"
#include "readers/codes.h"
#include "readers/generalregressiontranslator.h"
#include "readers/parse.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using Tags = PMMLModelTags;

void GeneralRegressionTranslator::ReadDictionaryAndTargets(Parse& parse)
{
    DOMElement* element = GetChildByTagForced(parse.root, Tags::XML_ELE_DATADICTIONARY);
    parse.dictionary = ParseDictionary(element, true);
    parse.model->SetScoreDictionary(parse.dictionary);
    // Targets stand below the model; below the root they aren't seen.
    if (DOMElement* targets = GetChildByTag(parse.modelElement, Tags::XML_ELE_TARGETS)) {
        HandleTargets(targets, parse.dictionary);
    }
}

void GeneralRegressionTranslator::ReadModelDf(Parse& parse)
{
    const XMLCh* df = GetAttribute(parse.modelElement, Tags::XML_VAL_NAME_MODELDF);
    if (!IsBlank(df)) parse.model->SetDF(VerifyDouble(df));
}

void GeneralRegressionTranslator::ReadTransformations(Parse& parse)
{
    // A local section takes the place of a global one, also when it yields nothing: the two aren't
    // merged. The model then keeps the global one, which the look-ups no longer see.
    DOMElement* const sections[] = {
        GetChildByTag(parse.root, Tags::XML_ELE_TRANSFORMATION),
        GetChildByTag(parse.modelElement, Tags::XML_ELE_LOCALTRANSFORMATIONS)};
    for (DOMElement* section : sections) {
        if (section == nullptr) continue;
        parse.transformations = HandleTransformationDictionary(section, parse.dictionary);
        if (parse.transformations == nullptr) continue;
        parse.transformations->SetUpDerivedCaseRecord();
        parse.model->SetTransformationScoreDictionary(parse.transformations);
    }
}

ScoreDictVar* GeneralRegressionTranslator::FindVariable(Parse& parse, const std::string& name)
{
    ScoreDictVar* variable = parse.dictionary->GetVar(name);
    if (variable == nullptr && parse.transformations != nullptr) {
        variable = parse.transformations->GetVar(name);
        parse.model->SetNeedDerivedPredictor(true);  // also when the name isn't found there
    }
    if (variable == nullptr) {
        Refuse(kNotInDictionaries, name.c_str(), Tags::XML_ELE_DATADICTIONARY.c_str(),
               Tags::XML_ELE_TRANSFORMATION.c_str());
    }
    return variable;
}

}  // namespace MCVelscore_850
