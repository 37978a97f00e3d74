#ifndef VELSCORE_READERS_GENERALREGRESSIONTRANSLATOR_H
#define VELSCORE_READERS_GENERALREGRESSIONTRANSLATOR_H

#include <map>
#include <string>
#include <vector>

#include "host/documents/pmmltranslator.h"

namespace MCVelscore_850 {

class RegressionModel;
class ScoreModel;
struct Baseline;
struct ContrastMatrix;
struct Parse;

/// Reads a PMML document with a GeneralRegressionModel into a finished model.
///
/// Errors  VSException for every refusal; the half-built model is released.
/// Owner   the model is the caller's; the document stays the caller's.
/// Threads one reader serves one parse at a time.
class GeneralRegressionTranslator final : public PMMLTranslator {
public:
    GeneralRegressionTranslator();
    ~GeneralRegressionTranslator() override;

    using BaseTranslator::ParseFromTree;
    ScoreModel* ParseFromTree(xercesc::DOMDocument* document, const std::string& encoding) override;

    /// Reads every field of a mining schema. Derived fields are known to it only through the
    /// derivedField extension, which is looked at when `hasTransformations`.
    void ParseMiningSchema(xercesc::DOMElement* schema, const ScoreDictionary* dictionary,
                           const ScoreDictionary* transformations, ScoreModel* model,
                           bool hasTransformations);
    /// Gives one field its role, replacement, limits and outlier treatment.
    void HandleMiningField(xercesc::DOMElement* field, const ScoreDictionary* dictionary,
                           const ScoreDictionary* transformations, bool useTransformations,
                           ScoreModel* model);
    /// Adds a category that only a cell names to its variable; its position goes to `index`, which
    /// stays as it is for a variable without encoder. False, with nothing changed, for a null
    /// variable and for one whose categories are open.
    bool FillCateValuesToDataDict(ScoreDictVar* variable, const std::string& text, int& index);
    /// The variable of that name: in the dictionary, else among the derived ones, which notes that
    /// the model needs them. Refuses with 260125.
    ScoreDictVar* FindVariable(Parse& parse, const std::string& name);

    /// Adds the reference points of a list of elements; a parameter that has one keeps it.
    void HandleBasePointElem(const xercesc::DOMNodeList* points,
                             std::map<std::string, double>& basePoints);
    /// One baseline: from time to cumulative hazard, of cells of one time the first. The time of
    /// the first cell of all goes to `firstTime`, which stays as it is without cells. The second
    /// is the published form.
    void HandleBaseCumHazardTables(xercesc::DOMElement* table, std::map<double, double>& cells,
                                   double& firstTime);
    void HandleBaseCumHazardTablesEx(xercesc::DOMElement* table, std::map<double, double>& cells,
                                     double& firstTime);
    /// The baselines of a section, appended to the collections; answers the stratum variable's
    /// name, empty without one. The own form lets tables and largest times be absent, and what it
    /// has of a stratum then no longer stands at one index; the published form demands them.
    std::string HandleStratumElements(xercesc::DOMElement* section,
                                      std::vector<std::map<double, double>>& hazardTables,
                                      std::vector<std::string>& stratumCategories,
                                      std::vector<double>& minTimes, std::vector<double>& maxTimes,
                                      std::map<std::string, double>& stratumMaxTimes);
    std::string HandleStratumElementsEx(xercesc::DOMElement* section,
                                        std::vector<std::map<double, double>>& hazardTables,
                                        std::vector<std::string>& stratumCategories,
                                        std::vector<double>& minTimes,
                                        std::vector<double>& maxTimes,
                                        std::map<std::string, double>& stratumMaxTimes);
    /// The baselines of an extension's own form, with their strata, into the model.
    void ReadBaselineExtension(Parse& parse, xercesc::DOMElement* extension);

    // The contrast matrix of a factor. Each reader fills the rows and the category of each row,
    // null for one that the document declares and doesn't have; both are empty before. The
    // categories are the caller's, after a refusal too.

    /// The own form: a child for each row, which names its category.
    void HandleContrastMatrix(xercesc::DOMElement* element,
                              std::vector<std::vector<double>>& contrastRows,
                              std::vector<ScoreValue*>& contrastValues,
                              const ScoreDictVar* variable);
    /// The bare matrix, its rows in the order of the variable's values.
    void HandleContrastMatrixEx(xercesc::DOMElement* matrix,
                                std::vector<std::vector<double>>& contrastRows,
                                std::vector<ScoreValue*>& contrastValues,
                                const ScoreDictVar* variable);
    /// The published form: a predictor with a contrast type, a list of categories or none, and a
    /// matrix. A listed category closes an open variable, which is one that may be changed, though
    /// const as dictionaries give it.
    void HandleContrastMatrix41(xercesc::DOMElement* predictor,
                                std::vector<std::vector<double>>& contrastRows,
                                std::vector<ScoreValue*>& contrastValues,
                                const ScoreDictVar* variable);

private:
    // The stages of a parse, in their order. Each asks for itself whether it applies.

    void ReadHead(xercesc::DOMDocument* document, Parse& parse);
    void ReadTargetAttribute(Parse& parse);
    void ConstructModel(Parse& parse);
    void ReadOrdinalLink(Parse& parse);
    void ReadDictionaryAndTargets(Parse& parse);
    void ReadTargetReferenceCategory(Parse& parse);
    void ReadCoxAttributes(Parse& parse);
    void ReadModelDf(Parse& parse);
    void ReadTransformations(Parse& parse);
    void ReadOrdinalOffset(Parse& parse);
    void ReadMiningSchema(Parse& parse);
    void ResolveTarget(Parse& parse, bool hasSchema);
    void CheckTarget(Parse& parse);
    void ReadParameterList(Parse& parse);
    void DetectIntercept(Parse& parse);
    void ReadExtensions(Parse& parse);
    void ReadBaseCumHazardTables(Parse& parse);
    void ReadModelAttributes(Parse& parse);
    void ReadDistributionParameter(Parse& parse);
    void ExpectLinkParameter(Parse& parse);
    void AddParameters(Parse& parse);
    void RecordVersion(Parse& parse);
    void ReadFactorList(Parse& parse);
    void ReadCovariateList(Parse& parse);
    void ExpectTablesFit(const Parse& parse) const;
    void SetUpModel(Parse& parse);
    void ReadParamMatrix(Parse& parse);
    void ReadReferencePoints(Parse& parse);
    void ReadPCovMatrix(Parse& parse);
    void ReadPPMatrix(Parse& parse);
    void CheckAndFinish(Parse& parse);

    /// An attribute's text in the narrow encoding, empty when absent.
    std::string AttributeText(const xercesc::DOMElement* element, const std::string& name) const;
    std::string ForcedText(const xercesc::DOMElement* element, const std::string& name) const;
    void ReadFieldLimits(xercesc::DOMElement* field, ScoreDictVar* variable);
    void ReadParamCell(Parse& parse, xercesc::DOMElement* element, struct TargetCells& cells);
    std::string CellCategory(Parse& parse, xercesc::DOMElement* element, TargetCells& cells);
    void ReadPPCell(Parse& parse, xercesc::DOMElement* element);

    // Contrast matrices of factors.

    void ReadContrastMatrix(Parse& parse, xercesc::DOMElement* predictor, ScoreDictVar* variable);
    void ReadContrastCategories(xercesc::DOMElement* list, std::vector<ScoreValue*>& contrastValues,
                                const ScoreDictVar* variable);
    /// Gives the matrix to a family that takes contrasts; `element` is for the message.
    void TakeContrastMatrix(Parse& parse, ContrastMatrix& contrast, const ScoreDictVar* variable,
                            const std::string& element);

    // What only a Cox document has.

    void ReadHazardCells(const xercesc::DOMNodeList* elements, std::map<double, double>& cells,
                         double& firstTime);
    void FindStratum(Parse& parse, const Baseline& baseline, const xercesc::DOMElement* section);
    void TakeBaseline(Parse& parse, const Baseline& baseline);
    void ReadCoxStatus(xercesc::DOMElement* field, ScoreModel* model);
    void CheckCox(Parse& parse);
    double ForcedNumber(const xercesc::DOMElement* element, const std::string& name) const;

    double pmmlVersion = 0.0;
};

}  // namespace MCVelscore_850

#endif
