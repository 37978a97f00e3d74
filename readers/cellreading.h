#ifndef VELSCORE_READERS_CELLREADING_H
#define VELSCORE_READERS_CELLREADING_H

#include <memory>
#include <string>

#include <xercesc/util/XercesDefs.hpp>

#include "host/model/scoremodel.h"
#include "host/values/scorevalue.h"
#include "models/paramtable.h"
#include "readers/codes.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

namespace MCVelscore_850 {

class BaseTranslator;
class RegressionModel;
class ScoreDictVar;

// What the readers of both document forms do alike: they differ in the words of the document.

/// Refuses, as a rule with 260153, unless the element has the tag; `parent` is for the message.
void ExpectTag(const BaseTranslator& reader, const xercesc::DOMElement* element,
               const std::string& tag, const std::string& parent, int code = kUnexpectedWord);

/// The cell of a beta and its degrees of freedom, from their attributes' texts. A beta has to be
/// there; without df it has 0.
ParamTableCell MakeParamTableCell(const BaseTranslator& reader, const XMLCh* beta, const XMLCh* df);

/// The value that a text names as a category of the target. For a target of numbers the text takes
/// the number's own spelling: "1.0" becomes "1".
std::unique_ptr<ScoreValue> MakeTargetValue(const ScoreDictVar& target, std::string& text);

/// Adds a category that only a cell names to its variable; its position goes to `index`, which
/// stays as it is for a variable without encoder. Refuses with 260126 a variable whose list of
/// values is still empty then.
void AddCategoryOfCell(const BaseTranslator& reader, ScoreDictVar& variable,
                       const std::string& text, int& index);

/// A cell of the predictor-to-parameter matrix, as an object and as a number.
struct PredictorCell {
    std::unique_ptr<ScoreValue> value;
    double number;
};
/// The cell of a factor (its category; `index` is that of a text) or of a covariate (its exponent).
/// Any other role refuses with 260155.
PredictorCell MakePredictorCell(const BaseTranslator& reader, ScoreModel::VarRole role,
                                const ScoreDictVar* variable, const std::string& predictor,
                                const std::string& text, int index);
/// Writes the number into the model's numeric matrix, when it has one and knows both names.
void StoreCellNumber(RegressionModel& model, const std::string& parameter,
                     const std::string& predictor, double number);

}  // namespace MCVelscore_850

#endif
