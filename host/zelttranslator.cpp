#include "host/zelttranslator.h"

#include "host/messages.h"
#include "host/vsexception.h"

namespace MCVelscore_850 {

ZELTTranslator::ZELTTranslator() = default;
ZELTTranslator::~ZELTTranslator() = default;

ScoreDictionary* ZELTTranslator::ParseDictionary(xercesc::DOMElement* element)
{
    NoteElement(element);
    Refuse(kFamilyNotAvailable, "the older document form", "zelt-ml");
}

}  // namespace MCVelscore_850
