#ifndef VELSCORE_HOST_ZELTTRANSLATOR_H
#define VELSCORE_HOST_ZELTTRANSLATOR_H

#include "host/basetranslator.h"

namespace MCVelscore_850 {

/// The base of readers of documents in the older form, whose root is "zelt-ml".
class VELHOST_API ZELTTranslator : public BaseTranslator {
public:
    ZELTTranslator();
    ~ZELTTranslator() override;

    /// A new dictionary of the element's variables, owned by the caller. Documents of this form
    /// aren't read yet: refuses with kFamilyNotAvailable.
    ScoreDictionary* ParseDictionary(xercesc::DOMElement* element);
};

}  // namespace MCVelscore_850

#endif
