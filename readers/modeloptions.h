#ifndef VELSCORE_READERS_MODELOPTIONS_H
#define VELSCORE_READERS_MODELOPTIONS_H

#include <string>

#include <xercesc/dom/DOM.hpp>

#include "readers/modelchoice.h"

namespace MCVelscore_850 {

class GeneralRegressionTranslator;
struct Parse;

/// An option of the model as a document spells it: a leading Extension child of the model element,
/// or an attribute of it.
struct ModelOption {
    GeneralRegressionTranslator& reader;
    Parse& parse;
    xercesc::DOMElement* element;  ///< the extension, or the model element
    const std::string& name;
    const std::string& value;
};

/// A row of a table of options: the families that have it, its name, what its value does.
struct ModelOptionRow {
    FamilySet families;
    const std::string& name;
    void (*take)(const ModelOption& option);
};

inline constexpr FamilySet kGeneralizedFamilies =
    Family(kGeneralizedLinear) | Family(kOrdinalGeneralized);

// What the options of the generalized families do, in either spelling. Of the two an ordinal model
// has no trials and no link parameter.

/// Refuses with 260125 for an unknown name and 260161 for one without a role, which the mining
/// schema gives; then with 260223 in an ordinal model.
void TakeTrialsVariable(const ModelOption& option);
/// The same refusals but the last.
void TakeOffsetVariable(const ModelOption& option);
/// The offset variable of the attribute spelling, which gets the role of an offset here and so
/// needs none from the mining schema.
void TakeOffsetVariableWithRole(const ModelOption& option);
/// An ordinal model passes it over, whatever it says.
void TakeTrialsValue(const ModelOption& option);
void TakeOffsetValue(const ModelOption& option);
/// The link by the words of the one spelling or of the other; refuses with 260153 for any other
/// word. A link with a parameter is noted.
void TakeLinkOfExtension(const ModelOption& option);
void TakeLinkOfAttribute(const ModelOption& option);
/// Notes that there is a parameter. An ordinal model has no use for the number, which has to be one
/// all the same.
void TakeLinkParameter(const ModelOption& option);
/// Refuses with 260153 for an unknown word.
void TakeDistribution(const ModelOption& option);

// What the options of Cox models do, as extensions.

/// Refuse with 260125 for an unknown name.
void TakeEndTimeVariable(const ModelOption& option);
void TakeStartTimeVariable(const ModelOption& option);
void TakeSubjectVariable(const ModelOption& option);
/// The reference points of parameters, and the baselines of the strata: the extension's children.
void TakeReferencePoints(const ModelOption& option);
void TakeHazardTables(const ModelOption& option);

}  // namespace MCVelscore_850

#endif
