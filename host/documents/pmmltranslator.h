#ifndef VELSCORE_HOST_DOCUMENTS_PMMLTRANSLATOR_H
#define VELSCORE_HOST_DOCUMENTS_PMMLTRANSLATOR_H

#include <string>
#include <vector>

#include "host/documents/basetranslator.h"
#include "host/variables/dictvar.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

struct TargetDeclaration;
class TransformationDictionary;

/// A derived field that something else than a DerivedField declares.
struct DerivedDeclaration {
    std::string name;
    std::string optype;
    std::string dataType;
    xercesc::DOMElement* element = nullptr;  ///< what declares it: where it stands for refusals
    xercesc::DOMElement* expression = nullptr;
};

/// The base of readers of PMML documents: what the standard puts around a model.
class VELHOST_API PMMLTranslator : public BaseTranslator {
public:
    explicit PMMLTranslator(const std::string& encoding);
    ~PMMLTranslator() override;

    using BaseTranslator::ToString;

    /// A new dictionary of all DataFields below the DataDictionary element, owned by the caller.
    /// Refuses a second field of one name, and types that the standard doesn't know.
    ScoreDictionary* ParseDictionary(xercesc::DOMNode* element, bool withValues);
    /// Reads the Targets element into the declarations of the dictionary's variables; no model
    /// reads them. A Target without a field is for the mining schema's target. Refuses with 260125
    /// a field that isn't in the dictionary, and kUnknownDataType for an unknown castInteger.
    void HandleTargets(xercesc::DOMElement* element, ScoreDictionary* dictionary);
    /// A new dictionary of the DerivedFields below the element, owned by the caller; null when
    /// there is none. All expressions of the standard but TextIndex, Lag and Aggregate, and the
    /// functions that the section or the document's TransformationDictionary defines.
    TransformationDictionary* HandleTransformationDictionary(xercesc::DOMElement* element,
                                                             const ScoreDictionary* dictionary);
    /// A new dictionary of these fields, owned by the caller; null when there is none. Their
    /// expressions may name each other, in any order, and the functions of the model and of the
    /// document. Refuses as the section of derived fields.
    TransformationDictionary* ReadDerivedFields(const std::vector<DerivedDeclaration>& fields,
                                                xercesc::DOMElement* model,
                                                const ScoreDictionary* dictionary);
    /// Gives a categorical variable its encoder; a second call does nothing.
    void SetupCatEncoder(ScoreDictVar* var);
    /// The numbers of an Array element, blanks between them. Refuses with kArrayLength when they
    /// aren't `count`.
    std::vector<double> VerifyDoubleArray(xercesc::DOMElement* element, int count) const;
    /// "continuous", "categorical", "ordinal".
    std::string ToString(ScoreDictVar::MeasureLevel level) const;

private:
    class DerivedFieldReader;

    /// Value, Interval and the own Extension children of a field.
    void ReadDeclaredValues(xercesc::DOMElement* element, DictVar& var);
    /// The margins count from the type's own origin; a date or time may be spelled out there.
    DictVar::Interval ReadInterval(xercesc::DOMElement* element, ScoreDictVar::DateTimeType type,
                                   const std::string& field) const;
    /// The dataType of a DataField or DerivedField, which the first versions may leave out.
    std::string DataTypeText(xercesc::DOMElement* field, const std::string& optype) const;
    TargetDeclaration ReadTarget(xercesc::DOMElement* element, const std::string& name) const;
    std::string NameOfTarget(const xercesc::DOMNode* model) const;
};

}  // namespace MCVelscore_850

#endif
