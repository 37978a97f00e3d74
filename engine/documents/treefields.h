#ifndef VELSCORE_ENGINE_DOCUMENTS_TREEFIELDS_H
#define VELSCORE_ENGINE_DOCUMENTS_TREEFIELDS_H

#include <optional>
#include <string>
#include <vector>

#include <xercesc/util/XercesDefs.hpp>

#include "host/model/modelfamilies.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

namespace MCVelscore_850 {

/// The DataFields of a document's dictionary, in order.
std::vector<xercesc::DOMElement*> DataFields(const xercesc::DOMElement* root);
/// The fields of the model's mining schema, in order; those within extensions not among them.
std::vector<xercesc::DOMElement*> MiningFields(const xercesc::DOMElement* root);
/// The Predictor elements of a FactorList or CovariateList, in order.
std::vector<xercesc::DOMElement*> Predictors(const xercesc::DOMElement* root,
                                             const std::string& list);
/// The family that the document's model asks for, before what its distribution and link decide.
std::optional<FamilyCode> FamilyOfModel(const xercesc::DOMElement* root,
                                        const xercesc::DOMElement* model);
/// True where that family reads contrast matrices.
bool TakesContrasts(const xercesc::DOMElement* root);
/// The DataField of the model's target: the one of the mining schema, else the one that the model
/// names; null without one.
xercesc::DOMElement* TargetDataField(const xercesc::DOMElement* root);
/// The Value elements of a field that declare a valid value; none for a null field.
std::vector<xercesc::DOMElement*> ValidValues(const xercesc::DOMElement* field);
/// A key that two texts share when they are the same category of the field: the text itself, or its
/// number in a field of numbers.
std::string CategoryKey(const xercesc::DOMElement* field, const std::string& text);
std::string CategoryKey(const std::string& dataType, const std::string& text);
/// True for the data types whose values are numbers.
bool IsNumericType(const std::string& dataType);

}  // namespace MCVelscore_850

#endif
