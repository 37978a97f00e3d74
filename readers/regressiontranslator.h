#ifndef VELSCORE_READERS_REGRESSIONTRANSLATOR_H
#define VELSCORE_READERS_REGRESSIONTRANSLATOR_H

#include <memory>
#include <string>

#include "host/documents/zelttranslator.h"
#include "host/model/scoremodel.h"

namespace MCVelscore_850 {

class RegressionModel;
class ScoreDictVar;
class ScoreDictionary;

/// Reads a document in the older form (root "zelt-ml") into a multinomial logistic, a conditional
/// logistic or a linear regression model.
///
/// Errors  VSException for every refusal; the half-built model is released.
/// Owner   the model is the caller's; the document stays the caller's.
/// Threads one reader serves one parse at a time.
class RegressionTranslator final : public ZELTTranslator {
public:
    RegressionTranslator();
    ~RegressionTranslator() override;

    using BaseTranslator::ParseFromTree;
    ScoreModel* ParseFromTree(xercesc::DOMDocument* document, const std::string& encoding) override;

    /// Adds a category that only a cell names to its variable; its position goes to `index`, which
    /// stays as it is for a variable without encoder. False, with nothing changed, for a null
    /// variable, one whose categories are open, and an empty text. The variable, const as
    /// dictionaries give it, is one that may be changed.
    bool FillCateValuesToDataDict(const ScoreDictVar* variable, const std::string& text,
                                  int& index);

private:
    struct Parse;

    // The stages of a parse, in their order.

    void ConstructModel(Parse& parse);
    void ReadDictionaryAndTarget(Parse& parse);
    void ReadParameters(Parse& parse);
    void ReadPredictors(Parse& parse, const std::string& listTag, ScoreModel::VarRole role);
    void SetUpModel(Parse& parse);
    void ReadParamTable(Parse& parse);
    void ReadPPMatrix(Parse& parse);
    void ReadPCovMatrix(Parse& parse);

    /// Empty for an attribute that is absent. This form forces none: a name that isn't there is
    /// the empty name, which is known or unknown as any other.
    std::string Attribute(const xercesc::DOMElement* element, const std::string& name) const;
    ScoreDictVar* FindVariable(const Parse& parse, const std::string& name) const;
};

}  // namespace MCVelscore_850

#endif
