#ifndef VELSCORE_ENGINE_REPORTS_EXPLANATIONJSON_H
#define VELSCORE_ENGINE_REPORTS_EXPLANATIONJSON_H

#include <string>

namespace MCVelscore_850 {

class ExplanationLines;
class LoadedModel;
struct ExplainedCase;

/// What is said of a model before its cases: document, family, link and the like. An object that
/// isn't closed, up to the array of the cases; ExplanationEnd() closes both.
std::string ExplanationBegin(const LoadedModel& model, const std::string& baseline);
std::string ExplanationEnd(bool hasCases);

/// A case as an object on a line of its own, with a comma in front but for the first. Numbers that
/// aren't finite are null.
std::string ExplanationJson(const ExplainedCase& each, ExplanationLines& lines, bool isFirst);

}  // namespace MCVelscore_850

#endif
