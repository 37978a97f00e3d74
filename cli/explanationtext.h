#ifndef VELSCORE_CLI_EXPLANATIONTEXT_H
#define VELSCORE_CLI_EXPLANATIONTEXT_H

#include <string>

namespace MCVelscore_850 {

class ExplanationLines;
class LoadedModel;
struct ExplainedCase;

/// What is said of the model before its cases, for people. `baseline` is empty without one.
std::string ExplanationHead(const LoadedModel& model, const std::string& baseline);

/// A case: the terms of each equation as an aligned table, their sum, and the results; or the
/// reason why it has none. Numbers have so many significant digits.
std::string ExplanationText(const ExplainedCase& each, ExplanationLines& lines, int digits);

}  // namespace MCVelscore_850

#endif
