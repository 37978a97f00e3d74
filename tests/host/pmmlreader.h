#ifndef VELSCORE_TESTS_HOST_PMMLREADER_H
#define VELSCORE_TESTS_HOST_PMMLREADER_H

#include <memory>
#include <string>

#include "host/documents/pmmltranslator.h"
#include "host/model/scoremodel.h"
#include "host/variables/scoredictionary.h"

namespace MCVelscore_850 {

/// The base of the readers with nothing of its own.
class PmmlReader final : public PMMLTranslator {
public:
    explicit PmmlReader(const std::string& encoding = "") : PMMLTranslator(encoding) {}
    using PMMLTranslator::CurrentElement;
    ScoreModel* ParseFromTree(xercesc::DOMDocument*, const std::string&) override
    {
        return nullptr;
    }
};

}  // namespace MCVelscore_850

#endif
