#include "host/documents/pmmltranslator.h"

#include <algorithm>

#include <xercesc/dom/DOM.hpp>

#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/values/numbertext.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

PMMLTranslator::PMMLTranslator(const std::string& encoding) { CreateTranscoder(encoding); }
PMMLTranslator::~PMMLTranslator() = default;

void PMMLTranslator::SetupCatEncoder(ScoreDictVar* var)
{
    // Every variable of this host is a DictVar.
    if (var != nullptr) static_cast<DictVar*>(var)->SetUpCatEncoder();
}

std::vector<double> PMMLTranslator::VerifyDoubleArray(xercesc::DOMElement* element, int count) const
{
    NoteElement(element);
    const std::string text = ToString(element->getTextContent());
    std::vector<double> numbers;
    std::string_view left = TrimBlanks(text);
    while (!left.empty()) {
        const size_t end = std::min(left.find_first_of(" \t\r\n"), left.size());
        numbers.push_back(VerifyDouble(std::string(left.substr(0, end))));
        left = TrimBlanks(left.substr(end));
    }
    if (numbers.size() != static_cast<size_t>(count)) {
        Refuse(kArrayLength, static_cast<int>(numbers.size()), count);
    }
    return numbers;
}

std::string PMMLTranslator::ToString(ScoreDictVar::MeasureLevel level) const
{
    switch (level) {
        case ScoreDictVar::CONTINUOUS: return "continuous";
        case ScoreDictVar::CATEGORICAL: return "categorical";
        case ScoreDictVar::ORDINAL: return "ordinal";
    }
    return {};
}

}  // namespace MCVelscore_850
