#ifndef VELSCORE_HOST_DOCUMENTS_ZELTTRANSLATOR_H
#define VELSCORE_HOST_DOCUMENTS_ZELTTRANSLATOR_H

#include <string>

#include "host/documents/basetranslator.h"

namespace MCVelscore_850 {

class DictVar;

/// The base of readers of documents in the older form, whose root is "zelt-ml".
class VELHOST_API ZELTTranslator : public BaseTranslator {
public:
    ZELTTranslator();
    ~ZELTTranslator() override;

    /// A new dictionary of the element's variables, owned by the caller; categorical ones have
    /// their encoders.
    ///
    /// Errors  VSException: 260153 for an unknown element or word, 260115 for an absent name or
    ///         value, 260127 for a category that can't be read, kDuplicateField, and
    ///         kStorageAndLevel for texts that are declared continuous.
    ScoreDictionary* ParseDictionary(xercesc::DOMElement* element);

private:
    std::string Attribute(const xercesc::DOMElement* element, const std::string& name) const;
    void ExpectElement(const xercesc::DOMElement* element, const std::string& tag,
                       const std::string& parent) const;
    void ReadVariable(xercesc::DOMElement* element, DictVar& var);
    void ReadCategories(xercesc::DOMElement* element, DictVar& var);
    void ReadMissingValues(xercesc::DOMElement* element, DictVar& var);
    void ReadVarStats(xercesc::DOMElement* element, DictVar& var);
    void DeclareText(xercesc::DOMElement* element, DictVar& var, bool missing);
};

}  // namespace MCVelscore_850

#endif
